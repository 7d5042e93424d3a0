#include "halden/tools/FileModificationTime.h"

#include "halden/tools/nativeModificationTime.h"
#include "ostrel/quarks/failure.h"

namespace halden {

using namespace varmex;

bool readLastWriteTime(const std::string& path, std::uint64_t& time, tStatusRecord& status) {
  if (isFailure(status)) return false;
  const tTimeAnswer answer = queryLastWriteTime(path.c_str(), time, status);
  if (answer == tTimeAnswer::denied || answer == tTimeAnswer::failed) {
    const tSystemError error = lastSystemError();
    const tErrorCode& code =
        answer == tTimeAnswer::denied ? kOstrelInsufficientPermissions : kOstrelOsFault;
    tFailure(code, OSTREL_HERE).systemError(error).reportTo(status);
  }
  return answer == tTimeAnswer::found;
}

}  // namespace halden
