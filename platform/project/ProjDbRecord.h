// `projdb::Record`: what the project database knows of one edit or log, enough to list and search
// it without opening it.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/LogType.h"
#include "platform/project/LogAttribute.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace projdb {

// What an asset is, as bits; the search criteria want and exclude sets of them. The numbers are
// persisted.
enum eRecordKind : unsigned {
    kKindClip = 1u << 0,
    kKindSequence = 1u << 1,
    kKindSync = 1u << 2,
    kKindPrint = 1u << 3,
    kKindSubClip = 1u << 4,
    kKindClipSection = 1u << 10,
    kKindImage = 1u << 11,
    kKindClipboard = 1u << 12, // beside another kind: it lies on the clipboard
    // The kinds that are one shot, so that their tracks and media can be asked for.
    kKindsShot = kKindClip | kKindSync | kKindPrint | kKindSubClip | kKindClipSection,
};

// The kind of an asset by its log type: 1 and 256 a clip, 2 and 3 a sequence, 4 a sync, 8 a print,
// 16 a sub-clip, 1024 a clip section; 0 for any other.
CUTROOM_API unsigned recordKindOf(eLogType logType) noexcept;

// The marker types, as bits of the searched masks: one for each colour that has a name (red, green,
// blue, cyan, magenta, yellow, white, black: bits 0 to 7), bit 8 for all other colours. `colour` is
// 24 bits, red in the high byte.
CUTROOM_API unsigned markerTypeBit(std::uint32_t colour) noexcept;

// A value; texts are UTF-8.
struct CUTROOM_API Record {
    Cookie cookie;
    unsigned kinds = 0; // eRecordKind bits
    eLogType logType = kLogTypeNone;
    double start = 0.0; // the extent in seconds; the ends may be in either order
    double end = 0.0;
    std::uint32_t videoTracks = 0;
    std::uint32_t audioTracks = 0;
    std::uint32_t created = 0; // seconds since 1970; 0: not known
    std::uint32_t modified = 0;
    std::uint32_t markerTypes = 0; // markerTypeBit of every marker
    // Text by persisted attribute name ("name", "scene", "tags" ...); no entry for an empty text.
    std::map<std::string, std::string, std::less<>> attributes;
    std::vector<std::string> mediaLocations;
    // Name and description of each marker, as far as they are not empty.
    std::vector<std::string> markerTexts;

    // The text of an attribute: cookie, dates (decimal seconds), type (the number), duration
    // (seconds), number of tracks and media locations (joined by "; ") from the fields above, all
    // others from `attributes`. Empty when there is none.
    std::string getText(const LogAttribute& attribute) const;
    std::string getField(std::string_view attributeID) const;
    // Sets or, with an empty text, removes the entry in `attributes`.
    void setField(std::string_view attributeID, std::string_view text);
    const std::string& name() const;

    friend bool operator==(const Record&, const Record&) = default;
};

// What a search gives of each record, held in memory: enough to fill a bin.
struct Summary {
    Cookie cookie;
    unsigned kinds = 0;
    std::uint32_t videoTracks = 0;
    std::uint32_t audioTracks = 0;
    double start = 0.0;
    double end = 0.0;
};

} // namespace projdb
