// What a timeline file holds before it becomes an edit: the neutral form that every reader makes
// and every writer takes. Plain values, owned by the holder of the `Timeline`; any thread.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom {

// A rate as meant, and as the file wrote it ("23.976", "24"), which is how it is written back.
// `literal` is empty where the file states no rate.
struct RateRead {
    Kv::FrameRate rate;
    std::string literal;

    bool valid() const noexcept { return rate.valid(); }
};

// A span of media or timeline time; the end is exclusive.
struct Span {
    Flicks start = 0;
    Flicks duration = 0;

    Flicks end() const noexcept { return start + duration; }
    friend bool operator==(const Span&, const Span&) = default;
};

enum class TrackKind { video, audio, subtitle, other };
enum class ItemType { clip, gap, transition, nested };
enum class ReferenceKind { none, missing, external, generator, imageSequence, other };

// The media a clip plays. Two clips of one source agree in kind, reel, location and name.
struct MediaReference {
    ReferenceKind kind = ReferenceKind::none;
    // URL or path as written; of an image sequence the first file; of a generator its kind.
    std::string location;
    std::string name;
    // Tape or camera roll of an edit list; empty for "no reel" and for other formats.
    std::string reel;
    // The media that exists, in media time; `rate` is what its start is counted in.
    std::optional<Span> available;
    RateRead rate;
    // Whether the log of the media counts in drop frame; nothing when there is no log.
    std::optional<bool> dropFrame;
    // All references of the clip as JSON, for writing them back; empty for edit lists.
    std::string raw;
};

// One thing on a track. Times are in flicks from the start of the timeline, on a frame of the
// timeline's rate; a clip shorter than half a frame may have duration 0.
//
//        clip A        clip B              A transition lies over the cut and moves nothing:
//   |-------------|-------------|          start = cut - inOffset,
//            |=========|                   duration = inOffset + outOffset.
struct Item {
    ItemType type = ItemType::clip;
    std::string name;
    bool enabled = true;
    Flicks start = 0;
    Flicks duration = 0;
    // Media time where its source range begins: the frame shown first, or last of a backward clip.
    // Of a nested thing the time inside it, 0 unless it is trimmed once more.
    Flicks sourceStart = 0;
    RateRead sourceRate;
    bool sourceDrop = false; // an edit list counts its source in drop frame
    // Source seconds per timeline second: 0 a freeze, negative backwards.
    double speed = 1.0;
    MediaReference media;
    // Index into `Timeline::nested` of what a nested thing plays; -1 otherwise.
    int nested = -1;

    // Of a transition only.
    Flicks inOffset = 0;
    Flicks outOffset = 0;
    std::string transitionType; // "SMPTE_Dissolve", "W001", any text

    // The channel of an edit list's event as written: "V", "AA", "A34".
    std::string channel;
    // JSON texts, empty for none: the free metadata (an object), the effects (an array), and the
    // members that the reader has no use for (an object).
    std::string metadata;
    std::string effects;
    std::string extra;
    // Times as written, a JSON object; empty where none are: the source range, of a transition its
    // two offsets. A writer repeats them as long as they still say what is here.
    std::string range;

    Flicks end() const noexcept { return start + duration; }
    Flicks cut() const noexcept { return start + inOffset; }
};

// Items in order of their start. They never overlap save for transitions; a hole between two items,
// or before the first (as under a transition at the head), is a gap.
struct Track {
    TrackKind kind = TrackKind::video;
    std::string kindText; // as written: "Video", "Audio", any text
    std::string name;
    bool enabled = true;
    int place = -1; // among the children of its stack, which count what was left out; -1 unknown
    bool alone = false; // no track in the file, but one thing that plays alone in its stack
    Flicks duration = 0;
    std::vector<Item> items;
    std::string metadata;
    std::string effects;
    std::string extra;
};

// How the place of a marker was found.
enum class MarkerPlacement {
    asMeant,        // counted in the time of its owner
    fromFirstFrame, // counted from the owner's first frame although its time starts elsewhere
    recordTimecode, // written as timecode of the timeline
    outside,        // fits in no way: kept where its owner begins
};

// A marker at its place on the timeline, whatever it was attached to.
struct Marker {
    std::string name;
    std::string comment;
    Flicks start = 0; // never negative
    Flicks duration = 0;
    // 24 bits, red in the high byte; nothing for a colour that is no known name. `colourText` is
    // the colour as written.
    std::optional<std::uint32_t> colour;
    std::string colourText;
    // "stack", "stack/0" a track, "stack/0/2" an item: places from 0, the lowest track first;
    // "root/..." in a file whose root is a clip or track, "event 004" or "list" in an edit list.
    std::string owner;
    MarkerPlacement placement = MarkerPlacement::asMeant;
    // The start as written, and the place that it would have in its owner's time (which may be
    // before the timeline).
    Flicks written = 0;
    Flicks meant = 0;
    RateRead rate;
    std::string metadata;
    std::string extra; // members that the reader has no use for (an object)
    std::string range; // the marked range as written (an object)
    // Values of the fields that projects define for markers, by key.
    std::vector<std::pair<std::string, std::string>> fields;
};

// One timeline, or another thing at the root of a file that can be played.
struct Timeline {
    std::string name;
    // Schema of the root, or of the nested thing: "Timeline.1", "Clip.2", "Stack.1"; "CMX 3600" for
    // an edit list.
    std::string source;
    // The path of its stack, or of the one thing that it is, for the owners of markers.
    std::string owner;
    // The rate of the edit, and whether its labels are counted in drop frame. `rateAssumed`: the
    // file does not state the rate and nobody gave it.
    RateRead rate;
    bool dropFrame = false;
    bool rateAssumed = false;
    // Label of the first frame as a frame count at `rate`; what the file wrote beside it.
    std::optional<std::int64_t> startFrame;
    double startWritten = 0;
    RateRead startRate;
    Flicks duration = 0;
    std::vector<Track> tracks; // the lowest first
    std::vector<Marker> markers;
    // Timelines that items of type `nested` play, trimmed to what is seen of them and starting
    // at 0. Their markers are in `markers` too, where they are seen.
    std::vector<Timeline> nested;
    std::string metadata;
    std::string extra;
    // What was lost, changed or assumed; each said once.
    std::vector<std::string> warnings;
};

// Adds `text` unless it is there already.
CUTROOM_API void addWarning(Timeline& timeline, const std::string& text);

// The colour that a marker colour's name or "#rrggbb" means, whatever its case; nothing for others.
CUTROOM_API std::optional<std::uint32_t> markerColour(std::string_view text);

// The name of exactly this colour, in lower case, else "#rrggbb".
CUTROOM_API std::string markerColourName(std::uint32_t colour);

// The kind that a track's kind text means.
CUTROOM_API TrackKind trackKind(std::string_view text);

// Moves every cut and marker to the nearest frame of the timeline's rate (each cut, not each
// length, so that errors never add up) and sets the durations of tracks and timeline. Warns once
// when something had to move by more than a thousandth of a frame.
CUTROOM_API void roundToFrames(Timeline& timeline);

} // namespace cutroom
