#ifndef TESTS_SUPPORT_MODEL_H
#define TESTS_SUPPORT_MODEL_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/status.h"
#include "tests/support/testMachine.h"
#include "varmex/varmex.h"

namespace test {

// Heads of the section of chassis 1 in either file.
inline constexpr const char* kClassicChassis = "[Chassis1]\nVendor=V\nModel=M\n";
inline constexpr const char* kExpressChassis = "[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n";

struct tCloser {
  void operator()(varmex_Item* item) const { varmex_close(item); }
  void operator()(varmex_ItemContainer* container) const { varmex_destroyItemContainer(container); }
};
using tItem = std::unique_ptr<varmex_Item, tCloser>;
using tContainer = std::unique_ptr<varmex_ItemContainer, tCloser>;

// A machine with a description, its session and one status record for the calls of a test.
class tModel : public testing::Test {
 protected:
  // An empty text stands for no file.
  void describe(const std::string& pxiSys, const std::string& pxieSys) {
    session_.reset();
    for (const auto& [path, text] :
         {std::pair{machine_.pxiSys(), pxiSys}, std::pair{machine_.pxieSys(), pxieSys}}) {
      std::filesystem::remove(path);
      if (!text.empty()) tTestMachine::write(path, text);
    }
    session_.reset(varmex_openPXISession(0, status_));
  }

  tItem chassis(std::uint32_t number) {
    return tItem(varmex_openChassisByNumber(session_.get(), number, status_));
  }
  tItem slot(std::uint32_t chassisNumber, std::uint32_t number) {
    const tItem owner = chassis(chassisNumber);
    return tItem(varmex_openSlotByNumber(owner.get(), number, status_));
  }
  tItem device(std::uint32_t bus, std::uint32_t number, std::uint32_t function) {
    const tDeviceAddress address{0, bus, number, function};
    return tItem(varmex_openDeviceByAddr(session_.get(), &address, status_));
  }
  tContainer container(const tItem& item, std::uint32_t attribute) {
    return tContainer(varmex_getItemContainer(item.get(), attribute, status_));
  }
  std::vector<tItem> items(const tItem& item, std::uint32_t attribute) {
    std::vector<tItem> list;
    const tContainer source = container(item, attribute);
    if (!source) return list;
    varmex_ItemIterator position = varmex_ItemIterator_begin(source.get(), status_);
    while (position != varmex_ItemIterator_end(source.get(), status_)) {
      list.emplace_back(varmex_ItemIterator_nextItem(source.get(), &position, status_));
    }
    return list;
  }

  std::uint32_t number(const tItem& item, std::uint32_t attribute) {
    return varmex_getU32Attribute(item.get(), attribute, status_);
  }
  std::string text(const tItem& item, std::uint32_t attribute) {
    const char* value = varmex_getStringAttribute(item.get(), attribute, status_);
    return value ? value : "<null>";
  }
  // What each item of a container answers: "1 2 3; 4 5 6".
  std::string listed(const tItem& item, std::uint32_t kind,
                     const std::vector<std::uint32_t>& attributes) {
    std::string all;
    for (const tItem& one : items(item, kind)) {
      if (!all.empty()) all += ';';
      for (const auto attribute : attributes)
        all += (all.empty() ? "" : " ") + std::to_string(number(one, attribute));
    }
    return all;
  }

  // An answer, or the failure that took its place.
  std::string orFailure(const std::string& answer) {
    return status_.code() == 0 ? answer : takeFailure();
  }

  // What the record holds that all calls share, in the form of the functions below.
  std::string takeFailure() { return test::takeFailure(status_); }

  tTestMachine machine_;
  tStatus status_;
  tItem session_;
};

}  // namespace test

#endif
