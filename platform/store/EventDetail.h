// What an edit point carries beyond its numbers; kept in one shared table per channel, so that
// copies of a channel share it.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Strings.h"

// The texts of a segment. A value.
struct CUTROOM_API EventDetail {
    LightweightString<wchar_t> name;                     // of the clip or gap
    LightweightString<wchar_t> media;                    // where the media lies, as it was written
    LightweightString<char> metadata;                    // JSON object text, or empty
    LightweightVector<LightweightString<wchar_t>> lines; // of a subtitle

    bool empty() const noexcept {
        return name.empty() && media.empty() && metadata.empty() && lines.empty();
    }
    friend bool operator==(const EventDetail&, const EventDetail&) = default;
};
