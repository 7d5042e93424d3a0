#ifndef TOOLS_VARMEX_CHECK_ANSWERS_H
#define TOOLS_VARMEX_CHECK_ANSWERS_H

#include <functional>
#include <optional>
#include <string>

#include "tools/varmex/describe/installation.h"

namespace tool {

// What the library answers to a question, in words: a value, or the failure.
class tAnswers {
 public:
  explicit tAnswers(const tInstallation& installation);

  // How the session opens.
  std::string session() const {
    return ask("session", [](const varmex::Session&) { return "opens"; });
  }

  // How the chassis or slot opens.
  std::string chassis(std::uint32_t number) const;
  std::string slot(std::uint32_t chassis, std::uint32_t number) const;

  // An attribute of one that does.
  template <class Get>
  std::string chassis(std::uint32_t number, const char* attribute, Get get) const {
    return ask(
        "chassis " + std::to_string(number) + ", " + attribute,
        [=](const varmex::Session& session) { return inWords(get(session.chassis(number))); });
  }
  template <class Get>
  std::string slot(std::uint32_t chassisNumber, std::uint32_t number, const char* attribute,
                   Get get) const {
    return ask(
        "slot " + std::to_string(chassisNumber) + '/' + std::to_string(number) + ", " + attribute,
        [=](const varmex::Session& session) {
          return inWords(get(session.chassis(chassisNumber).slot(number)));
        });
  }
  template <class Get>
  std::string bridge(std::uint32_t chassisNumber, std::uint32_t number,
                     const std::string& attribute, Get get) const {
    return ask(
        "bridge " + std::to_string(chassisNumber) + '/' + std::to_string(number) + ", " + attribute,
        [=](const varmex::Session& session) {
          for (const varmex::TriggerBridge& bridge :
               session.chassis(chassisNumber).triggerBridges()) {
            if (bridge.number() == number) return inWords(get(bridge));
          }
          return std::string("no such bridge");
        });
  }

  bool opensSession() const { return session_.has_value(); }
  bool fails(const std::string& answer) const {
    return answer.find(" fails with ") != std::string::npos;
  }

 private:
  static std::string inWords(const std::string& text) { return '"' + text + '"'; }
  static std::string inWords(std::uint32_t number) { return std::to_string(number); }
  std::string ask(const std::string& question,
                  const std::function<std::string(const varmex::Session&)>& answer) const;

  std::optional<varmex::Session> session_;
  std::string failure_;
};

}  // namespace tool

#endif
