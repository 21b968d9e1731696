// What came with a timeline and has no place of its own in an edit: JSON object texts on the edit,
// its channels, segments, transitions, markers and on the logs. The importer writes them, exporters
// write them back. Pieces of the file stand in them as they were read, bare NaN and Infinity
// included: read them tolerantly.
//
//   edit        "format" ("otio", "edl"), "schema" of the root, "file", "rate" and "start"
//               ({"value", "rate"}) as written, "metadata", "extra"
//   channel     "kind" as written, "enabled" when false, "metadata", "effects", "extra"
//   segment     "metadata", "effects", "extra", "media" (all references), "rate" of the source as
//               written, "channel" of an edit list's event, "enabled" when false on a channel that
//               is not enabled itself
//   transition  "type", "channel", "rate", "metadata", "effects", "extra"
//   marker      "owner", "placement", "written" and "meant" (seconds), "rate", "colour" as written,
//               "metadata"
//   log         "kind" of its media, "media" (all references of the first clip that plays it)
#pragma once

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

} // namespace cutroom
