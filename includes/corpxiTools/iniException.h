#ifndef CORPXITOOLS_INIEXCEPTION_H
#define CORPXITOOLS_INIEXCEPTION_H

#include <stdexcept>

namespace varmex::inline nCORPXITOOLS000 {

// What the reader of description files throws, allocation failures aside.
class tIniException : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class tIniFileIOException : public tIniException {
  using tIniException::tIniException;
};

class tSectionNameTooLongException : public tIniException {
  using tIniException::tIniException;
};

class tItemNotFoundException : public tIniException {
  using tIniException::tIniException;
};

class tBadListStringException : public tIniException {
  using tIniException::tIniException;
};

class tInvalidValueException : public tIniException {
  using tIniException::tIniException;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
