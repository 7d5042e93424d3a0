#ifndef SEVRIN_TREGISTRYMANAGER_H
#define SEVRIN_TREGISTRYMANAGER_H

#include <map>

#include "corpxiTools/fileSystem/registryKey.h"
#include "ostrel/quarks/untilUnload.h"
#include "sevrin/iDataTreeManager.h"

namespace varmex::inline nSEVRIN000 {

// The registry as a data tree, under the schemes "reg://" (the process's own view), "reg32://" and
// "reg64://". The values of a key are read in full when it is opened; its subkeys are listed live.
class tRegistryManager : public iDataTreeManager {
 public:
  // `path` is the root's name, a backslash and the subkey. Fails with kStatusFileOpenFault when the
  // root is unknown or the key can't be opened, with kDataTreeMemoryFull when there is no memory
  // for the manager; null then.
  static tDataTreeManagerPtr create(const std::string& path, tRegistryView view,
                                    tStatusRecord& status);

  void release() override { delete this; }
  tDataTreeAttribute getAttribute(const std::string& name, tStatusRecord& status) const override;

  // The name may hold backslashes, and then leads down several levels.
  tDataTreeManagerPtr getChild(const std::string& name, tStatusRecord& status) const override;
  std::vector<std::string> getChildNames(tStatusRecord& status) const override;
  std::vector<std::string> getAttributeNames(tStatusRecord& status) const override;

 private:
  class tRegHandlerRegistration;

  explicit tRegistryManager(tRegistryView view) : view_(view) {}

  void open(const std::string& path, tStatusRecord& status);
  void readAttributes();

  std::string path_;
  tRegistryKey key_;
  std::map<std::string, tDataTreeAttribute> attributes_;
  tRegistryView view_;

  static tUntilUnload<tRegHandlerRegistration> ownView_, view32_, view64_;
};

}  // namespace varmex::inline nSEVRIN000

#endif
