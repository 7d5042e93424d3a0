#ifndef TOOLS_VARMEX_DESCRIBE_LISTING_H
#define TOOLS_VARMEX_DESCRIBE_LISTING_H

#include <cstdint>
#include <string>
#include <vector>

#include "corpxiTools/iniFile.h"
#include "varmex/varmex.hpp"

namespace tool {

using tNumbers = std::vector<std::uint32_t>;

// What the lists of a description name, and the bridges, which the library opens through a list
// alone. Asked only where a list of the library fails as a whole, so that the rest is told all the
// same. Reads the files of a session with the library's own reader; its exceptions pass through.
class tListing {
 public:
  explicit tListing(const varmex::Session& session);

  // In ascending order, each once.
  tNumbers chassis() const;
  tNumbers slots(std::uint32_t chassis) const { return numbers(chassis, "SlotList"); }
  tNumbers bridges(std::uint32_t chassis) const { return numbers(chassis, "TriggerBridgeList"); }

  // A bridge, answering as the library's would.
  class tBridge {
   public:
    std::uint32_t u32(std::uint32_t attribute) const;

   private:
    friend class tListing;
    std::uint32_t lineMapping(const std::string& item) const;

    const tListing* listing_;
    std::uint32_t chassis_;
    std::uint32_t number_;
    std::string section_;
    std::string mapping_;
  };
  // Throws what the library fails with, as varmex::Error or tIniException.
  tBridge openBridge(std::uint32_t chassis, std::uint32_t number) const;

 private:
  tNumbers numbers(std::uint32_t chassis, const char* list) const;
  const varmex::tIniFile* firstWith(const std::string& section) const;

  varmex::tIniFile classic_;
  varmex::tIniFile express_;
};

}  // namespace tool

#endif
