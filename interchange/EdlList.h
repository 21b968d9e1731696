// An edit list as its lines say it, before anything is concluded from them. Layout after the
// CMX 3600 form: number, reel, channel, transition, [duration], source in and out, record in and
// out; out points are exclusive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// A timecode label whose rate is not known yet.
struct EdlLabel {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
    bool drop = false; // `;`, or only here `.` or `,`, stood before the frames
};

// Reads "HH:MM:SS:FF"; nothing for another shape, or minutes or seconds above 59. "24:00:00:00" is
// midnight.
std::optional<EdlLabel> parseEdlLabel(std::string_view text) noexcept;

// Tells whether `a` is up to half a day sooner than `b`.
bool comesBefore(const EdlLabel& a, const EdlLabel& b) noexcept;

// The frame that a label names among `nominal` labels a second, `drop` after SMPTE ST 12-1.
std::int64_t edlFrame(const EdlLabel& label, int nominal, bool drop) noexcept;

enum class EdlKind { cut, dissolve, wipe, key, keyBackground, keyOut };

// One event line with the lines that belong to it.
struct EdlEvent {
    long line = 0;
    std::string number;
    std::string reel; // empty for AX
    std::string channel;
    std::string timecodes; // the four as written
    EdlKind kind = EdlKind::cut;
    std::string kindText; // "C", "D", "W001", "K B"
    int duration = 0;     // frames of the transition
    EdlLabel sourceIn, sourceOut, recordIn, recordOut;
    bool sourceDrop = false; // the mode in force for the source

    std::string fromName;
    std::string toName;
    std::string keyName;
    std::string reelName; // the reel in full
    std::string sourceFile;
    std::string effectName;
    bool fromGenerated = false;
    bool toGenerated = false;
    std::optional<double> framesPerSecond; // of the M2 line; negative backwards, 0 a freeze
    std::string speedText;
    std::vector<int> audio;            // channels named by AUD lines
    std::vector<std::string> comments; // in full, without the asterisk
    std::string note;                  // lines that belong to no known form

    bool isTransition() const noexcept {
        return kind == EdlKind::dissolve || kind == EdlKind::wipe;
    }
    bool isBlack() const noexcept { return reel == "BL"; }
    // Tells whether it plays backwards and names its source so too, from the end to the start.
    bool isReversed() const noexcept {
        return framesPerSecond.value_or(0) < 0 && comesBefore(sourceOut, sourceIn);
    }
};

// A marker, from a LOC comment, a table at the end, or a marker list in edit-list form.
struct EdlMarker {
    long line = 0;
    std::string owner; // "event 004", "list"
    EdlLabel at;
    std::string colour;
    std::string name;
    std::string text;
    int frames = 0;
    int number = 0;    // of a row of a table
    std::string track; // that the row names
};

// A speed line whose reel is not that of the event above it.
struct EdlSpeed {
    std::string reel;
    double framesPerSecond = 0;
    std::string text;
    std::size_t above = 0; // events before it
    bool named = false;    // an event has come that has its reel, but a speed already
};

struct EdlList {
    std::string title;
    std::optional<bool> recordDrop;  // of the FCM line before any event
    bool anyDrop = false;            // any mode or label says drop frame
    std::vector<std::string> header; // comments before the first event, without the asterisk
    std::vector<EdlEvent> events;
    std::vector<EdlMarker> markers;
    std::vector<EdlSpeed> ahead; // while it is open whether the next event has their reels
    long extraSpeeds = 0;        // speed lines beyond one for each event
    long lostSpeeds = 0;         // speed lines without any event
    long lostLocators = 0;       // LOC comments without a timecode
    long firstBadEvent = 0;      // the first line that was meant as an event but is not sound
    std::vector<std::string> warnings;
};

// Reads all lines. Lines of no known form are counted and give one warning. Never fails: whether a
// list without events is an error is for the caller to say.
EdlList parseEdlLines(const std::vector<std::string>& lines);

// Splits bytes at LF, CRLF and CR, up to a control-Z. Text that is not UTF-8 is taken byte by byte
// as Latin-1, and `*latin1` tells so; a byte order mark is left out.
std::vector<std::string> edlLines(std::string_view bytes, bool* latin1);

} // namespace cutroom
