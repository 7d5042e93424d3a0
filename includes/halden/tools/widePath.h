#ifndef HALDEN_TOOLS_WIDEPATH_H
#define HALDEN_TOOLS_WIDEPATH_H

#include <string>

#include "varmex/status.h"

namespace halden {

// Turns a UTF-8 path into UTF-16 without validating it: the first byte of a character tells its
// length, any byte that starts none stands for itself, and following bytes give their low six bits
// whatever else they hold. False when `status` holds an error, or when memory runs out, which is
// reported there; `wide` is then as it was.
bool widenPath(const char* path, std::u16string& wide, tStatusRecord& status);

}  // namespace halden

#endif
