#include "interchange/EdlComments.h"
#include "interchange/EdlList.h"

#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kMaxAudio = 256; // channels that one event can name by numbers

using Words = std::vector<std::string_view>;

Words wordsOf(std::string_view line) {
    Words words;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t begin = line.find_first_not_of(" \t\v\f", at);
        if (begin == std::string_view::npos)
            break;
        const std::size_t end = std::min(line.find_first_of(" \t\v\f", begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        at = end;
    }
    return words;
}

// Takes transition and duration off the end of `words`; false when there is no transition.
bool takeKind(Words& words, EdlEvent& event) {
    const auto kindOf = [](std::string_view word) -> std::optional<EdlKind> {
        if (word == "C")
            return EdlKind::cut;
        if (word == "D")
            return EdlKind::dissolve;
        if (word == "K")
            return EdlKind::key;
        if (word == "KB")
            return EdlKind::keyBackground;
        if (word == "KO")
            return EdlKind::keyOut;
        if (word.starts_with('W') && word.size() <= 4 && isDigits(word.substr(1)))
            return EdlKind::wipe;
        return {};
    };
    if (words.size() > 1 && isDigits(words.back()) && words.back().size() <= 4) {
        event.duration = leadingInt(words.back());
        words.pop_back();
    }
    if (words.size() > 1 && words[words.size() - 2] == "K" &&
        (words.back() == "B" || words.back() == "O")) {
        event.kind = words.back() == "B" ? EdlKind::keyBackground : EdlKind::keyOut;
        event.kindText = "K " + std::string(words.back());
        words.resize(words.size() - 2);
        return true;
    }
    const auto kind = words.empty() ? std::nullopt : kindOf(words.back());
    if (!kind)
        return false;
    event.kind = *kind;
    event.kindText = words.back();
    words.pop_back();
    return true;
}

// Tells whether the line ends in four timecodes behind an event number, and reads it.
// Columns are by custom only, so the line is taken apart from its right end.
bool readEvent(const std::string& line, EdlEvent& event) {
    Words words = wordsOf(line);
    if (words.size() < 7 || !isDigits(words.front()))
        return false;
    EdlLabel* const labels[] = {&event.recordOut, &event.recordIn, &event.sourceOut,
                                &event.sourceIn};
    for (EdlLabel* target : labels) {
        const auto label = parseEdlLabel(words.back());
        if (!label)
            return false;
        *target = *label;
        event.timecodes.insert(0, std::string(words.back()) + (event.timecodes.empty() ? "" : " "));
        words.pop_back();
    }
    if (!takeKind(words, event) || words.size() < 2)
        return false;
    event.channel = words.back();
    words.pop_back();
    event.number = words.front();
    for (std::size_t i = 1; i < words.size(); ++i)
        event.reel += (i > 1 ? " " : "") + std::string(words[i]);
    if (event.reel == "AX")
        event.reel.clear();
    return true;
}

// Tells whether a line that is not a sound event was surely meant as one.
bool looksLikeEvent(std::string_view line) {
    const Words words = wordsOf(line);
    const auto times = std::count_if(words.begin(), words.end(), [](std::string_view word) {
        return std::count(word.begin(), word.end(), ':') > 1;
    });
    return words.size() >= 7 && (times >= 4 || (isDigits(words.front()) && times > 0));
}

// Tells whether a note of a marker ends with this line. A comment has to have the whole form, for
// its text may hold bars too.
bool endsNote(std::string_view line) {
    const auto colour = line.find("|C:");
    const auto name = colour == line.npos ? colour : line.find("|M:", colour);
    if (name == line.npos || !trim(line).starts_with('*'))
        return name != line.npos;
    const auto length = line.rfind("|D:");
    return length != line.npos && length > name && isDigits(trim(line.substr(length + 3)));
}

// Which lines are notes of markers. A note runs from its event to the line with the colour and may
// begin as other lines do: "REEL 2 is late |C:ResolveColorRed |M:Marker 1 |D:1". Empty for none.
std::vector<bool> findNotes(const std::vector<std::string>& lines) {
    std::vector<bool> notes;
    bool inside = false;
    for (std::size_t i = lines.size(); i-- > 0;) {
        EdlEvent event;
        if (endsNote(lines[i]))
            inside = true;
        else if (inside)
            inside = !readEvent(lines[i], event);
        if (inside && notes.empty())
            notes.resize(lines.size());
        if (inside)
            notes[i] = true;
    }
    return notes;
}

// Lines of one kind.
struct Seen {
    long times = 0;
    long first = 0;

    void add(long line) {
        if (times++ == 0)
            first = line;
    }
    void tell(const char* what, std::vector<std::string>& warnings) const {
        if (times > 0)
            warnings.push_back(format("%s: %ld (first: line %ld)", what, times, first));
    }
};

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) >> 6) != 2;
    }));
}

// Reads lines one after the other. A comment is held back until it is known whether the next line
// is the rest of it: some writers fold comments at 80 characters, in mid-word.
class LineReader {
public:
    EdlList read(const std::vector<std::string>& lines) {
        const std::vector<bool> notes = findNotes(lines);
        for (const std::string& line : lines) {
            const auto index = static_cast<std::size_t>(number_++);
            if (!notes.empty() && notes[index] && !list_.events.empty())
                takeNote(trim(line));
            else
                take(line);
        }
        takeHeldComment();
        settleEdlSpeeds(list_);
        list_.firstBadEvent = badEvents_.first;
        takeMarkerEvents(list_);
        nameKeys();
        tellLosses();
        return std::move(list_);
    }

private:
    void take(const std::string& raw) {
        const std::string_view line = trim(raw);
        if (line.empty())
            return;
        if (line.front() == '*') {
            holdComment(std::string_view(raw).substr(raw.find('*') + 1));
            return;
        }
        takeHeldComment();
        EdlEvent event;
        if (readEvent(raw, event))
            addEvent(std::move(event));
        else if (!takeHeader(line) && !takeExtra(line))
            takeUnknown(line);
    }

    void addEvent(EdlEvent event) {
        event.line = number_;
        event.sourceDrop = drop_;
        for (const EdlLabel& label :
             {event.sourceIn, event.sourceOut, event.recordIn, event.recordOut})
            list_.anyDrop |= label.drop;
        list_.events.push_back(std::move(event));
        settleEdlSpeedsAtEvent(list_);
    }

    bool takeHeader(std::string_view line) {
        if (equalNoCase(line.substr(0, 6), "TITLE:")) {
            if (list_.title.empty())
                list_.title = trim(line.substr(6));
            return true;
        }
        if (!equalNoCase(line.substr(0, 4), "FCM:"))
            return false;
        // One writer glues a path to the mode, so only its beginning counts.
        const auto mode = trim(line.substr(4));
        drop_ = equalNoCase(mode.substr(0, 4), "DROP");
        list_.anyDrop |= drop_;
        if (list_.events.empty() && !list_.recordDrop)
            list_.recordDrop = drop_;
        return true;
    }

    // Lines about the event above that have no asterisk.
    bool takeExtra(std::string_view line) {
        EdlEvent* event = list_.events.empty() ? nullptr : &list_.events.back();
        if (line.starts_with("M2 ") || line.starts_with("M2\t")) {
            if (!takeEdlSpeed(list_, line))
                badSpeeds_.add(number_);
            return true;
        }
        if (line.starts_with("AUD ") || line.starts_with("AUD\t") || line == "AUD") {
            bool whole = event != nullptr;
            for (const auto word : wordsOf(line.substr(3))) {
                if (!event || !isDigits(word) || word.size() > 3)
                    continue;
                whole = whole && event->audio.size() < kMaxAudio;
                if (whole)
                    event->audio.push_back(leadingInt(word));
            }
            return whole;
        }
        if (isBareEdlComment(line)) {
            (event ? event->comments : list_.header).emplace_back(line);
            if (line.starts_with("SPLIT:"))
                splits_.add(number_);
            return true;
        }
        if (!isKnownEdlComment(line))
            return false;
        takeEdlComment(list_, event, std::string(line), number_);
        return true;
    }

    void takeUnknown(std::string_view line) {
        (looksLikeEvent(line) ? badEvents_ : others_).add(number_);
        if (!list_.events.empty())
            addNote(line);
    }

    // An event line that cannot be read does not end a note, but is told of all the same.
    void takeNote(std::string_view line) {
        if (looksLikeEvent(line))
            badEvents_.add(number_);
        addNote(line);
    }

    void addNote(std::string_view line) {
        std::string& note = list_.events.back().note;
        if (!line.empty())
            note += (note.empty() ? "" : "\n") + std::string(line);
    }

    // Holds a comment back, or adds the rest of one that is held.
    void holdComment(std::string_view body) {
        if (body.starts_with(" "))
            body.remove_prefix(1);
        if (body.ends_with(' '))
            body.remove_suffix(1);
        const bool folded = heldLine_ && lastLength_ >= 78 && lastLength_ <= 81 &&
                            !isKnownEdlComment(trim(body)) && !trim(body).empty();
        if (!folded) {
            takeHeldComment();
            heldLine_ = number_;
        }
        held_ += body;
        lastLength_ = characters(body);
    }

    void takeHeldComment() {
        if (heldLine_)
            takeEdlComment(list_, list_.events.empty() ? nullptr : &list_.events.back(), held_,
                           heldLine_);
        heldLine_ = 0;
        held_.clear();
    }

    // Comments below the two lines of a key name the background first, then what is keyed.
    void nameKeys() {
        for (std::size_t i = 1; i < list_.events.size(); ++i) {
            EdlEvent& key = list_.events[i];
            EdlEvent& background = list_.events[i - 1];
            if (key.kind != EdlKind::key || background.kind != EdlKind::keyBackground ||
                key.number != background.number || !background.fromName.empty())
                continue;
            background.fromName = std::move(key.fromName);
            key.fromName = key.keyName;
        }
    }

    void tellLosses() {
        badEvents_.tell("lines that look like events but cannot be read", list_.warnings);
        others_.tell("lines of no known form left out", list_.warnings);
        badSpeeds_.tell("speeds (M2) that cannot be read left out", list_.warnings);
        splits_.tell("split edits (SPLIT) kept as comments, picture and sound lie where their "
                     "events say",
                     list_.warnings);
        const std::pair<long, const char*> counts[] = {
            {list_.extraSpeeds, "second speeds for one event ignored"},
            {list_.lostSpeeds, "speeds of no event left out"},
            {list_.lostLocators, "locators (LOC) without a timecode kept as comments"}};
        for (const auto& [times, what] : counts)
            if (times > 0)
                list_.warnings.push_back(format("%s: %ld", what, times));
    }

    EdlList list_;
    long number_ = 0;
    bool drop_ = false;
    std::string held_;
    long heldLine_ = 0;
    std::size_t lastLength_ = 0; // of the line of the held comment that was read last
    Seen badEvents_, others_, badSpeeds_, splits_;
};

} // namespace

EdlList parseEdlLines(const std::vector<std::string>& lines) { return LineReader().read(lines); }

} // namespace cutroom
