#ifndef TOOLS_VARMEX_DESCRIBE_DESCRIBE_H
#define TOOLS_VARMEX_DESCRIBE_DESCRIBE_H

#include "tools/varmex/describe/place.h"
#include "tools/varmex/describe/sink.h"
#include "varmex/varmex.hpp"

namespace tool {

struct tSavedInstallation;

inline constexpr int kSchemaVersion = 1;

// Tells what the library answers about an installation, or about one chassis or slot of it, as a
// document by docs/varmex.schema.json. What can't be answered stands in "failures" of its item and
// hides nothing else; `isWhyAsked` adds in "absent" what does not apply or is not there, and
// `saved`, where it is one that was saved, when and where that was. Answers the number of failures.
// Throws varmex::Error, and tells nothing, when the chassis or slot that was asked for can't be
// opened.
std::size_t describe(const varmex::Session& session, const tPlace& place, bool isWhyAsked,
                     tSink& sink, const tSavedInstallation* saved = nullptr);

// The same document for an installation that can't be read at all.
void describeUnreadable(const std::exception& failure, tSink& sink);

// The document as a tree.
tJson describe(const varmex::Session& session, const tPlace& place = {});

}  // namespace tool

#endif
