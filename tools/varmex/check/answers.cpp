#include "tools/varmex/check/answers.h"

namespace tool {

namespace {

std::string describeFailure(const std::string& question, const varmex::Error& error) {
  return question + " fails with " + error.what();
}

}  // namespace

tAnswers::tAnswers(const tInstallation& installation) {
  try {
    session_.emplace(installation.open());
  } catch (const varmex::Error& error) {
    failure_ = describeFailure("session", error);
  }
}

std::string tAnswers::chassis(std::uint32_t number) const {
  return ask("chassis " + std::to_string(number), [=](const varmex::Session& session) {
    session.chassis(number);
    return "opens";
  });
}

std::string tAnswers::slot(std::uint32_t chassisNumber, std::uint32_t number) const {
  return ask("slot " + std::to_string(chassisNumber) + '/' + std::to_string(number),
             [=](const varmex::Session& session) {
               session.chassis(chassisNumber).slot(number);
               return "opens";
             });
}

std::string tAnswers::ask(const std::string& question,
                          const std::function<std::string(const varmex::Session&)>& answer) const {
  if (!session_) return failure_;
  try {
    return question + ": " + answer(*session_);
  } catch (const varmex::Error& error) {
    return describeFailure(question, error);
  } catch (const std::out_of_range& error) {
    return question + " fails with the exception std::out_of_range: " + error.what();
  }
}

}  // namespace tool
