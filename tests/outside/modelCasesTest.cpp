// Runs the cases of tests/outside/cases/: descriptions, and what the items of each answer.
//
//   == a chassis                      begins a case
//   pxisys: [Chassis1] | Vendor=V     lines of a file, between bars; $C and $E are the heads of
//                                     chassis 1. Behind a question they begin a new description
//   again                             the next question is to the same files, opened afresh
//   chassis 1                         what is asked: session, chassis, slot 1/2, device 5.0.0 or
//                                     the only bridge. With "! FAILURE" it can't be opened
//     ChassisVendor: V | u4097: 1     attributes by name, or by "u" or "s" and number, between
//                                     bars; those with one answer between commas
//     Slots by SlotNumber SlotType: 2 8; 3 1
//     containing 2                    goes on with the item that contains it; "copy": with a copy
//
// A failure is "! " and what `refusal` takes; "throws TEXT" is a std::out_of_range. Lines that
// begin with six blanks continue the one ahead.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>
#include <sstream>
#include <stdexcept>

#include "tests/support/model.h"
#include "tests/support/texts.h"
#include "tools/varmex/text/embedded.h"

namespace tool {
extern const tEmbedded kInterface, kBridges, kChassis, kDevices, kSessions, kSlots, kTriggers;
}

namespace test {

namespace {

struct tCase {
  std::string name;
  std::vector<std::string> lines;
};

bool isNoLetter(unsigned char byte) { return std::isalnum(byte) == 0; }

std::vector<tCase> allCases() {
  std::vector<tCase> cases;
  for (const tool::tEmbedded* file : {&tool::kBridges, &tool::kChassis, &tool::kDevices,
                                      &tool::kSessions, &tool::kSlots, &tool::kTriggers}) {
    std::istringstream stream{std::string(file->text)};
    for (std::string line; std::getline(stream, line);) {
      if (line.starts_with("== ")) {
        std::string name = line.substr(3);
        std::replace_if(name.begin(), name.end(), isNoLetter, '_');
        cases.push_back({name, {}});
      } else if (line.starts_with("      ")) {
        cases.back().lines.back() += line.substr(5);
      } else if (!line.empty() && line[0] != '#') {
        cases.back().lines.push_back(line);
      }
    }
  }
  return cases;
}

// The numbers that the interface defines, as "u32_ItemType" and "container_Slots".
const std::map<std::string, std::uint32_t>& interfaceNumbers() {
  static std::map<std::string, std::uint32_t> numbers;
  std::istringstream stream{std::string(numbers.empty() ? tool::kInterface.text : "")};
  for (std::string line; std::getline(stream, line);) {
    char name[64], number[16];
    if (std::sscanf(line.c_str(), "#define varmex_%63s UINT32_C(%15[^)])", name, number) == 2) {
      numbers[name] = static_cast<std::uint32_t>(std::stoul(number, nullptr, 0));
    }
  }
  return numbers;
}

class tModelCases : public tModel, public testing::WithParamInterface<tCase> {
 protected:
  void run(const std::string& line) {
    const auto [file, lines] = cut(line, ": ");
    if (line.starts_with("  ")) {
      ask(line.substr(2));
    } else if (file == "pxisys" || file == "pxiesys") {
      if (std::exchange(isAsked_, false)) files_.clear();
      for (const std::string& each : split(lines, " | ")) {
        files_[file] += each == "$C"   ? kClassicChassis
                        : each == "$E" ? kExpressChassis
                                       : each + '\n';
      }
    } else if (line == "again") {
      isAsked_ = false;
    } else {
      if (!std::exchange(isAsked_, true)) describe(files_["pxisys"], files_["pxiesys"]);
      const auto [place, failure] = cut(line, " ! ");
      expectOpened(open(place), failure);
    }
  }

  tItem open(const std::string& place) {
    std::uint32_t n[3] = {};
    std::sscanf(place.c_str(), "%*[a-z] %u%*[./]%u.%u", &n[0], &n[1], &n[2]);
    if (place.starts_with("chassis")) return chassis(n[0]);
    if (place.starts_with("slot")) return slot(n[0], n[1]);
    if (place.starts_with("device")) return device(n[0], n[1], n[2]);
    if (place == "session") return std::move(session_);
    auto bridges = items(session_, varmex_container_TriggerBridges);
    return bridges.empty() ? tItem() : std::move(bridges[0]);
  }

  void expectOpened(tItem opened, const std::string& failure) {
    EXPECT_EQ(takeFailure(), failure.empty() ? "" : refusal(failure));
    EXPECT_EQ(opened == nullptr, !failure.empty());
    if (opened) item_ = std::move(opened);
  }

  void ask(const std::string& line) {
    const auto [step, failure] = cut(line, " ! ");
    if (step == "copy") {
      expectOpened(tItem(varmex_duplicate(item_.get(), status_)), failure);
    } else if (step.starts_with("containing ")) {
      const auto kind = static_cast<std::uint32_t>(step.back() - '0');
      expectOpened(tItem(varmex_openContainingItem(item_.get(), kind, status_)), failure);
    } else {
      for (const std::string& question : split(line, " | ")) {
        auto [names, answer] = cut(question, ":");
        answer.erase(0, 1);
        const std::string expected = answer.starts_with("! ") ? refusal(answer.substr(2)) : answer;
        for (const std::string& name : split(names, ", ")) EXPECT_EQ(answerTo(name), expected);
      }
    }
  }

  std::string answerTo(const std::string& name) try {
    const auto& known = interfaceNumbers();
    const auto [list, columns] = cut(name, " by ");
    const auto attribute = [&](const std::string& kind) {
      if (known.contains(kind + name)) return known.at(kind + name);
      return static_cast<std::uint32_t>(std::stoul(name.substr(1)));
    };
    std::string answer;
    if (known.contains("container_" + list)) {
      std::vector<std::uint32_t> asked;
      for (const std::string& each : split(columns, " ")) asked.push_back(known.at("u32_" + each));
      answer = listed(item_, known.at("container_" + list), asked);
    } else if (known.contains("str_" + name) || name[0] == 's') {
      answer = text(item_, attribute("str_"));
    } else {
      answer = std::to_string(number(item_, attribute("u32_")));
    }
    return orFailure(answer);
  } catch (const std::out_of_range& exception) {
    return takeFailure() + "throws " + exception.what();
  }

  std::map<std::string, std::string> files_;
  tItem item_;
  bool isAsked_ = false;
};

TEST_P(tModelCases, answers) {
  for (const std::string& line : GetParam().lines) {
    SCOPED_TRACE(line);
    run(line);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, tModelCases, testing::ValuesIn(allCases()),
                         [](const auto& each) { return each.param.name; });

}  // namespace

}  // namespace test
