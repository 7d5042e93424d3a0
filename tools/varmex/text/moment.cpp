#include "tools/varmex/text/moment.h"

#include <cstdlib>
#include <ctime>

namespace tool {

std::string momentInUtc() {
  const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
  const std::time_t moment = epoch ? std::strtoll(epoch, nullptr, 10) : std::time(nullptr);
  const std::tm* const utc = std::gmtime(&moment);
  char text[32];
  return utc ? std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", utc))
             : std::string();
}

std::string momentForPeople(const std::string& moment) {
  if (moment.size() != 20 || moment[10] != 'T' || moment[19] != 'Z') return moment;
  return moment.substr(0, 10) + ' ' + moment.substr(11, 8) + " UTC";
}

}  // namespace tool
