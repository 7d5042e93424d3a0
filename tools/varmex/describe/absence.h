#ifndef TOOLS_VARMEX_DESCRIBE_ABSENCE_H
#define TOOLS_VARMEX_DESCRIBE_ABSENCE_H

namespace tool {

// The code for "not available" stands both for what is not there and for what can't be read; the
// library's text tells them apart. The first row counts whose text it holds. The Python package is
// made with the same rows (bindings/python/make_constants.py).
struct tAbsenceRow {
  const char* text;
  bool isAbsence;
  const char* otherwise;  // the attribute of which the contrary holds
};

inline constexpr tAbsenceRow kAbsenceRows[] = {
    // A slot type that nobody knows is a fault of the type, once, not of all that depends on it.
    {"\"bad_slot_type\"", true, "SlotType"},
    {" item: SlotType not found\"", true, "SlotType"},
    // A bridge names a line map that is not there.
    {"\"mappingSection_\"", false, ""},
    // What a chassis, a bus, a bridge, a star trigger and a line map that are there must have. A
    // line of a star trigger is asked for where it stands alone, so that it has no value then.
    {" item: TriggerBusList not found\"", false, ""},
    {" item: SlotList not found\"", false, ""},
    {" item: SourceTriggerBus not found\"", false, ""},
    {" item: DestinationTriggerBus not found\"", false, ""},
    {" item: LineMappingSpec not found\"", false, ""},
    {" item: ControllerSlot not found\"", false, ""},
    {" item: SystemTimingS", false, ""},
    {" item: StarSystemTimingS", false, ""},
    {" item: PXI_STAR", false, ""},
    {" item: PXI_TRIG", false, ""},
    // The reader's words, and whatever else they are.
    {" not found\"", true, ""},
    {"\"wrappedMessage\"", false, ""},
    {"", true, ""},
};

}  // namespace tool

#endif
