#ifndef TOOLS_VARMEX_DESCRIBE_FAULTS_H
#define TOOLS_VARMEX_DESCRIBE_FAULTS_H

#include <ostream>
#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// One reason why answers are missing from a description.
struct tFault {
  std::string mark;   // "!1", which stands in place of the answers; empty where nothing does
  std::string where;  // the first of them: "slot 1/5, PeripheralSlotLinkWidth1"
  std::size_t answers;
  std::string reason;
};

using tFaults = std::vector<tFault>;

// Adds an answer that is missing: to the fault of that mark and reason, if it is there already.
void addFault(tFaults& faults, const std::string& mark, const std::string& where,
              const std::string& reason);

// Gives every failure of a description its mark, the same for the same reason.
void markFaults(tJson& description);

// What the marks in a description, or in a part of it, stand for.
tFaults faultsOf(const tJson& part);

// The mark in place of an answer, or of the item itself ("opening"); empty where there is none.
std::string markOf(const tJson& item, const char* name);

// "!1  slot 1/19 and 2 more: ..." for one fault.
std::string lineOf(const tFault& fault);

// Tells each fault, and that they may hide what `hidden` names, on the standard error output.
void tellFaults(const tFaults& faults, const std::string& hidden);

// How many faults there are and what to do; empty without any.
std::string summaryOf(const tFaults& faults);

// A line for each fault, as far as one reads them, and the summary.
void showFaults(const tJson& description, std::ostream& out);

}  // namespace tool

#endif
