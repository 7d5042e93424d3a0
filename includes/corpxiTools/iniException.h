#ifndef CORPXITOOLS_INIEXCEPTION_H
#define CORPXITOOLS_INIEXCEPTION_H

#include <stdexcept>

namespace varmex::inline nCORPXITOOLS000 {

// What the reader of description files throws, allocation failures aside. What look-ups refuse is
// no exception.
class tIniException : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class tIniFileIOException : public tIniException {
  using tIniException::tIniException;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
