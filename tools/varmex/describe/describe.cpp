#include "tools/varmex/describe/describe.h"

#include <optional>
#include <utility>

#include "tools/varmex/describe/attributes.h"
#include "tools/varmex/describe/listing.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/saved/savedFile.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

// What has no answer, by the attribute's name; "opening" for the item itself.
using tNotes = std::vector<std::pair<const char*, tReason>>;

void tellNotes(const char* name, const tNotes& notes, tSink& sink) {
  if (notes.empty()) return;
  sink.beginObject(name);
  for (const auto& [about, reason] : notes) {
    sink.beginObject(about);
    sink.number("code", reason.code);
    sink.text("constant", reason.constant);
    sink.text("detail", reason.detail);
    sink.text("sentence", reason.sentence);
    sink.endObject();
  }
  sink.endObject();
}

void tellUnits(tSink& sink) {
  sink.beginObject("units");
  for (const tAttributes* const attributes :
       {&kSlotAttributes, &kDeviceAttributes, &kBridgeAttributes}) {
    for (const tAttribute& attribute : *attributes) {
      if (attribute.unit) sink.text(attribute.name, attribute.unit);
    }
  }
  sink.endObject();
}

class tDescriber {
 public:
  tDescriber(const varmex::Session& session, bool isWhyAsked, tSink& sink,
             const tSavedInstallation* saved)
      : session_(session), isWhyAsked_(isWhyAsked), sink_(sink), saved_(saved) {}

  std::size_t run(const tPlace& place) {
    std::optional<varmex::Chassis> chassis;
    std::optional<varmex::Slot> slot;
    if (place.chassis) chassis = session_.chassis(*place.chassis);
    if (place.slot) slot = chassis->slot(*place.slot);
    sink_.beginObject(nullptr);
    sink_.number("schemaVersion", kSchemaVersion);
    tellMachine();
    tellUnits(sink_);
    tNotes failures;
    sink_.beginList("Chassis");
    if (chassis) {
      tellChassis(*chassis, slot ? &*slot : nullptr);
    } else {
      tellAllChassis(failures);
    }
    sink_.endList();
    tellFailures(failures);
    sink_.number("failureCount", static_cast<std::int64_t>(failureCount_));
    sink_.endObject();
    return failureCount_;
  }

 private:
  void tellMachine() {
    tNotes failures;
    sink_.beginObject("machine");
    tellAttributes(session_, kSessionAttributes, failures);
    if (saved_) tellOrigin();
    endItem(failures);
  }

  void tellOrigin() {
    sink_.beginObject("saved");
    sink_.text("taken", saved_->taken);
    sink_.text("host", saved_->host);
    sink_.text("platform", saved_->platform);
    sink_.text("version", saved_->version);
    sink_.endObject();
  }

  void tellAllChassis(tNotes& failures) {
    tryTo("Chassis", failures, [&] {
      const auto numbers = [&](const varmex::Error&) { return listing().chassis(); };
      for (const auto& attempt : session_.eachChassis(numbers)) {
        if (attempt.item) {
          tellChassis(*attempt.item, nullptr);
        } else {
          tellUnopened({{"ChassisNumber", attempt.number}}, {"Slots", "TriggerBridges"},
                       reasonOf(*attempt.error, {attempt.number}));
        }
      }
    });
  }

  // A chassis with all that is below it, or with one slot alone.
  void tellChassis(const varmex::Chassis& chassis, const varmex::Slot* slot) {
    tNotes failures;
    sink_.beginObject(nullptr);
    tellAttributes(chassis, kChassisAttributes, failures);
    sink_.beginList("Slots");
    bool isListed = true;
    if (slot) {
      tellSlot(*slot);
    } else {
      tryTo("Slots", failures, [&] { isListed = tellSlots(chassis); });
    }
    sink_.endList();
    if (!slot) {
      sink_.beginList("TriggerBridges");
      tryTo("TriggerBridges", failures, [&] { tellBridges(chassis, isListed); });
      sink_.endList();
    }
    endItem(failures);
  }

  // False when the library's list fails.
  bool tellSlots(const varmex::Chassis& chassis) {
    bool isListed = true;
    const std::uint32_t number = chassis.number();
    const auto numbers = [&](const varmex::Error&) {
      isListed = false;
      return listing().slots(number);
    };
    for (const auto& attempt : chassis.eachSlot(numbers)) {
      if (attempt.item) {
        tellSlot(*attempt.item);
      } else {
        tellUnopened({{"ChassisNumber", number}, {"SlotNumber", attempt.number}}, {"Devices"},
                     reasonOf(*attempt.error, {number, attempt.number}));
      }
    }
    return isListed;
  }

  void tellSlot(const varmex::Slot& slot) {
    tNotes failures;
    sink_.beginObject(nullptr);
    tellAttributes(slot, kSlotAttributes, failures);
    sink_.beginList("Devices");
    tryTo("Devices", failures, [&] {
      for (const varmex::Device& device : slot.devices()) tellItem(device, kDeviceAttributes);
    });
    sink_.endList();
    endItem(failures);
  }

  void tellBridges(const varmex::Chassis& chassis, bool isListed) {
    if (isListed) {
      for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
        tellItem(bridge, kBridgeAttributes);
      }
      return;
    }
    const std::uint32_t number = chassis.number();
    for (const std::uint32_t bridge : listing().bridges(number)) tellReadBridge(number, bridge);
  }

  // A bridge in a chassis whose lists fail.
  void tellReadBridge(std::uint32_t chassis, std::uint32_t number) {
    std::optional<varmex::tBridgePlace> bridge;
    try {
      bridge = listing().openBridge(chassis, number);
    } catch (const std::exception& failure) {
      return tellUnopened({{"ChassisNumber", chassis}, {"BridgeNumber", number}}, {},
                          reasonOf(failure));
    }
    tNotes failures;
    sink_.beginObject(nullptr);
    for (const tAttribute& attribute : kBridgeAttributes) {
      try {
        sink_.number(attribute.name, listing().numberOf(*bridge, attribute.number));
      } catch (const std::exception& failure) {
        const tAsked asked{chassis, std::nullopt, number, lineOf(attribute.number)};
        failures.emplace_back(attribute.name, reasonOf(failure, asked));
      }
    }
    endItem(failures);
  }

  void tellItem(const varmex::ItemBase& item, const tAttributes& attributes) {
    tNotes failures;
    sink_.beginObject(nullptr);
    tellAttributes(item, attributes, failures);
    endItem(failures);
  }

  // An item of which nothing but its place is known.
  void tellUnopened(std::initializer_list<std::pair<const char*, std::uint32_t>> place,
                    std::initializer_list<const char*> lists, const tReason& reason) {
    sink_.beginObject(nullptr);
    for (const auto& [name, number] : place) sink_.number(name, number);
    for (const char* const list : lists) {
      sink_.beginList(list);
      sink_.endList();
    }
    endItem({{"opening", reason}});
  }

  void tellAttributes(const varmex::ItemBase& item, const tAttributes& attributes,
                      tNotes& failures) {
    absent_.clear();
    for (const tAttribute& attribute : attributes) {
      try {
        tellAttribute(item, attribute, failures);
      } catch (const std::exception& failure) {
        addTo(failures, item, attribute, failure);
      }
    }
    tellNotes("absent", absent_, sink_);
  }

  void tellAttribute(const varmex::ItemBase& item, const tAttribute& attribute, tNotes& failures) {
    varmex::Status status;
    if (attribute.isText) {
      const char* const text = varmex_getStringAttribute(item.handle(), attribute.number, status);
      if (status.code() >= 0) return tellText(item, attribute.name, text);
    } else {
      const std::uint32_t number = varmex_getU32Attribute(item.handle(), attribute.number, status);
      if (status.code() >= 0) return sink_.number(attribute.name, number);
    }
    if (!isAbsence(status, attribute)) {
      addTo(failures, item, attribute, status.error());
    } else if (isWhyAsked_) {
      addTo(absent_, item, attribute, status.error());
    }
  }

  static void addTo(tNotes& notes, const varmex::ItemBase& item, const tAttribute& attribute,
                    const std::exception& failure) {
    notes.emplace_back(attribute.name, reasonOf(failure, askedOf(item, attribute.number)));
  }

  // What a session answers are paths and its version.
  void tellText(const varmex::ItemBase& item, const char* name, const char* text) {
    if (&item == &session_) return sink_.text(name, withShownPaths(text));
    sink_.text(name, text);
  }

  template <class Work>
  void tryTo(const char* name, tNotes& failures, Work work) {
    try {
      work();
    } catch (const std::exception& failure) {
      failures.emplace_back(name, reasonOf(failure));
    }
  }

  void endItem(const tNotes& failures) {
    tellFailures(failures);
    sink_.endObject();
  }

  void tellFailures(const tNotes& failures) {
    failureCount_ += failures.size();
    tellNotes("failures", failures, sink_);
  }

  // The description is read at the first need, which a healthy one never has.
  const tListing& listing() {
    if (!listing_) listing_.emplace(session_);
    return *listing_;
  }

  const varmex::Session& session_;
  bool isWhyAsked_;
  tSink& sink_;
  const tSavedInstallation* saved_;  // null for any other
  tNotes absent_;
  std::size_t failureCount_ = 0;
  std::optional<tListing> listing_;
};

}  // namespace

std::size_t describe(const varmex::Session& session, const tPlace& place, bool isWhyAsked,
                     tSink& sink, const tSavedInstallation* saved) {
  return tDescriber(session, isWhyAsked, sink, saved).run(place);
}

void describeUnreadable(const std::exception& failure, tSink& sink) {
  sink.beginObject(nullptr);
  sink.number("schemaVersion", kSchemaVersion);
  sink.beginList("Chassis");
  sink.endList();
  tellNotes("failures", {{"opening", reasonOf(failure)}}, sink);
  sink.number("failureCount", 1);
  sink.endObject();
}

tJson describe(const varmex::Session& session, const tPlace& place) {
  tTreeMaker tree;
  describe(session, place, false, tree);
  return tree.takeTree();
}

}  // namespace tool
