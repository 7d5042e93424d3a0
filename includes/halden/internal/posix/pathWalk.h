#ifndef HALDEN_INTERNAL_POSIX_PATHWALK_H
#define HALDEN_INTERNAL_POSIX_PATHWALK_H

#include <string>

namespace halden {

// Told of all that decides what a path stands for. Each operation is called ahead of the look at
// what it names, and ends the walk by answering false.
class iPathVisitor {
 public:
  virtual ~iPathVisitor() = default;

  // A name is about to be looked up in a folder.
  virtual bool visitEntry(const std::string& folder, const std::string& name) = 0;

  // A link on the way, or what is at its end.
  virtual bool visitItself(const std::string& path) = 0;
};

// Goes the way of a path as the system does, from folder to folder and through every link, as far
// as it leads at this moment. False when the visitor ended it.
bool walkPath(const std::string& path, iPathVisitor& visitor);

}  // namespace halden

#endif
