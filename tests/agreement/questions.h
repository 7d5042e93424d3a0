#ifndef TESTS_AGREEMENT_QUESTIONS_H
#define TESTS_AGREEMENT_QUESTIONS_H

#include <string>
#include <vector>

#include "varmex/varmex.hpp"

namespace agreement {

// What the library said no to.
struct tRefusal {
  std::string question;
  std::string words;  // varmex::Error::what
};

// Asks for every attribute and every list of whatever opens by its number or stands in a list, and
// collects the refusals that are no plain absence.
std::vector<tRefusal> askEverything();

// Asks one question in the check's words: "slot 1/3, TriggerBusNumber". The refusal's words; empty
// where there is an answer.
std::string askAgain(const std::string& question);

}  // namespace agreement

#endif
