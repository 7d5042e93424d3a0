#ifndef TOOLS_VARMEX_DESCRIBE_MODULES_H
#define TOOLS_VARMEX_DESCRIBE_MODULES_H

#include <string>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/json.h"
#include "varmex/varmex.hpp"

namespace tool {

// The modules of an installation as a document by docs/varmex.schema.json: "modules" in the order
// of their places, and "failureCount". What can't be answered stands in "failures" of the document
// or of its module, and hides nothing else; a slot that can't be opened is an entry with nothing
// but its place.
tJson describeModules(const varmex::Session& session);

// The same where the installation can't be read at all.
tJson describeUnreadModules(const std::exception& failure);

// For programs: of either kind, where a failure has been told to people as well.
tJson describeModulesOrFailure(const tInstallation& installation);

// The one module that goes by a name, as varmex::Module::isCalled has it, or by a PCI address in
// either notation; an alias goes ahead of all else. Throws std::runtime_error where there is none,
// and where there are several, with their places.
varmex::Module moduleCalled(const varmex::Session& session, const std::string& name);

// One thing that is told of a module, in a column of a table.
struct tModuleColumn {
  const char* key;    // by which it is asked for
  const char* title;  // above the column of a table
  const char* about;
};

// All there are.
extern const std::vector<tModuleColumn> kModuleColumns;

using tModuleColumns = std::vector<const tModuleColumn*>;

// The columns of some keys. Throws CLI::ValidationError for a key of none.
tModuleColumns moduleColumns(const std::vector<std::string>& keys);

// What a module has in a column; empty where there is nothing, a mark where its query failed.
std::string textOf(const tJson& module, const tModuleColumn& column, tPciNotation notation);

// The modules in a table, then what is broken among them.
void showModules(tJson& document, const tModuleColumns& columns, tPciNotation notation);

}  // namespace tool

#endif
