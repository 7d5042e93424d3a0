#ifndef TOOLS_VARMEX_DESCRIBE_FAULTS_H
#define TOOLS_VARMEX_DESCRIBE_FAULTS_H

#include <ostream>
#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// One reason why answers are missing from a description.
struct tFault {
  std::string mark;   // "!1", which stands in place of the answers
  std::string where;  // the first of them: "slot 1/5, PeripheralSlotLinkWidth1"
  std::size_t answers;
  std::string reason;
};

// Gives every failure of a description its mark, the same for the same reason.
void markFaults(tJson& description);

// What the marks in a description, or in a part of it, stand for.
std::vector<tFault> faultsOf(const tJson& part);

// The mark in place of an answer, or of the item itself ("opening"); empty where there is none.
std::string markOf(const tJson& item, const char* name);

// "!1  slot 1/19: ..." for one fault.
std::string lineOf(const tFault& fault);

// How many faults there are and what to do; empty without any.
std::string summaryOf(const std::vector<tFault>& faults);

// A line for each fault, as far as one reads them, and the summary.
void showFaults(const tJson& description, std::ostream& out);

}  // namespace tool

#endif
