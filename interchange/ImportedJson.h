// What came with a timeline and has no place of its own in an edit: JSON object texts on the edit,
// its channels, segments, transitions, markers and on the logs. The importer writes them, exporters
// write them back. Pieces of the file stand in them as they were read, bare NaN and Infinity
// included: read them tolerantly.
//
//   edit        "format" ("otio", "edl"), "schema" of the root, "file", "rate" and "start"
//               ({"value", "rate"}) as written, "owner" (the path of the root), "metadata", "extra"
//   channel     "kind" as written, "place" in its stack, "alone" for what was no track, "enabled"
//               when false, "metadata", "effects", "extra"
//   segment     "metadata", "effects", "extra", "media" (all references), "rate" of the source and
//               its "range" as written, "channel" of an edit list's event, "drop" where it counts
//               its source in drop frame, "enabled" when false on a channel that is not enabled
//               itself
//   transition  "type", "channel", "rate", "range" (both offsets as written), "enabled" when false,
//               "name" where it is that of the type, "metadata", "effects", "extra"
//   marker      "owner", "placement", "written" and "meant" (seconds), "rate", "range" and "colour"
//               as written, "metadata", "extra"
//   log         "kind" of its media, "media" (all references of the first clip that plays it)
#pragma once

#include "platform/base/Export.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

inline constexpr char kImportedFormat[] = "format";
inline constexpr char kImportedSchema[] = "schema";
inline constexpr char kImportedFile[] = "file";
inline constexpr char kImportedRate[] = "rate";
inline constexpr char kImportedStart[] = "start";
inline constexpr char kImportedValue[] = "value";
inline constexpr char kImportedMetadata[] = "metadata";
inline constexpr char kImportedEffects[] = "effects";
inline constexpr char kImportedExtra[] = "extra";
inline constexpr char kImportedMedia[] = "media";
inline constexpr char kImportedKind[] = "kind";
inline constexpr char kImportedType[] = "type";
inline constexpr char kImportedChannel[] = "channel";
inline constexpr char kImportedEnabled[] = "enabled";
inline constexpr char kImportedOwner[] = "owner";
inline constexpr char kImportedPlacement[] = "placement";
inline constexpr char kImportedWritten[] = "written";
inline constexpr char kImportedMeant[] = "meant";
inline constexpr char kImportedColour[] = "colour";
inline constexpr char kImportedDrop[] = "drop";
inline constexpr char kImportedRange[] = "range";
inline constexpr char kImportedPlace[] = "place";
inline constexpr char kImportedAlone[] = "alone";
inline constexpr char kImportedName[] = "name";

// Puts together such a text. A value that is empty leaves its key out.
class ImportedJson {
public:
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, double number);
    void addBool(std::string_view key, bool value);
    // `json` is a whole JSON value already.
    void addRaw(std::string_view key, std::string_view json);
    // The object; the empty text when nothing was added.
    std::string take();

private:
    void addKey(std::string_view key);
    std::string text_;
};

// The JSON text of the member `key` of an object's text, which must be well-formed JSON; empty when
// there is none, and for null. Does not look inside other members.
CUTROOM_API std::string_view importedMember(std::string_view object, std::string_view key);
// Calls `visit` with key (as written, without quotes) and text of each member.
CUTROOM_API void
forEachImported(std::string_view object,
                const std::function<void(std::string_view key, std::string_view text)>& visit);
// Each entry of an array's text; none of any other value's.
CUTROOM_API void forEachImportedEntry(std::string_view array,
                                      const std::function<void(std::string_view text)>& visit);
// The text of a string member with its escapes resolved; empty for anything else.
CUTROOM_API std::string importedText(std::string_view object, std::string_view key);
// A number member; nothing for anything else.
CUTROOM_API std::optional<double> importedNumber(std::string_view object, std::string_view key);

} // namespace cutroom
