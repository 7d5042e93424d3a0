#ifndef TOOLS_VARMEX_COMMAND_H
#define TOOLS_VARMEX_COMMAND_H

#include <CLI/CLI.hpp>

namespace tool {

enum tExitStatus : int {
  kDone = 0,
  kFailed = 1,    // something that was asked for could not be had, or the check has findings
  kBadUsage = 2,  // the arguments make no sense, or there is nothing that can be checked
};

// One verb of the command line. It has a file of its own in commands/ with a function that makes
// it, which commands/list.h declares and the list in main.cpp names.
class tCommand {
 public:
  tCommand(const char* name, const char* about) : name_(name), about_(about) {}
  virtual ~tCommand() = default;

  const char* name() const { return name_; }
  const char* about() const { return about_; }

  // Adds arguments and options, each with its help, to the command line of this verb.
  virtual void addOptions(CLI::App& line) = 0;

  // Does the work. Throws CLI::ValidationError for an argument that makes no sense, and what a
  // sentence can be made of (text/failures.h) where it can't be done.
  virtual tExitStatus run() = 0;

 private:
  const char* name_;
  const char* about_;
};

}  // namespace tool

#endif
