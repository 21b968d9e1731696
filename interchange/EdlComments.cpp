#include "interchange/EdlComments.h"

#include "interchange/Timeline.h"
#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace cutroom {

namespace {

// The text behind a keyword and its colon, if `text` begins with them.
std::optional<std::string> valueOf(std::string_view text, std::string_view key) {
    if (!text.starts_with(key))
        return {};
    return std::string(trim(text.substr(key.size())));
}

// Takes the next word off `text`.
std::string_view nextWord(std::string_view& text) {
    text = trim(text);
    const auto end = std::min(text.find_first_of(" \t"), text.size());
    const auto word = text.substr(0, end);
    text.remove_prefix(end);
    return word;
}

constexpr std::array<std::string_view, 19> kKeywords = {
    "FROM CLIP", "TO CLIP",     "SOURCE FILE:", "REEL",    "FROM FILE:", "ASC_SAT", "ASC_SOP",
    "COMMENT:",  "EFFECT NAME", "EFFECTS NAME", "LOC:",    "KEY CLIP",   "PATCH ",  "BLEND,",
    "* FREEZE",  "*FREEZE",     "PROBLEM WITH", "CLIP FI", "TO FILE:",
};

void takeNames(EdlEvent& event, std::string_view text) {
    // The file that goes out in a transition is that of another event.
    std::string ignored;
    std::string* const fromFile = event.isTransition() ? &ignored : &event.sourceFile;
    const std::array<std::pair<std::string_view, std::string*>, 12> texts = {{
        {"FROM CLIP NAME:", &event.fromName},
        {"TO CLIP NAME:", &event.toName},
        {"KEY CLIP NAME:", &event.keyName},
        {"SOURCE FILE:", &event.sourceFile},
        {"FROM CLIP:", fromFile},
        {"FROM FILE:", fromFile},
        {"TO CLIP:", &event.sourceFile},
        {"TO FILE:", &event.sourceFile},
        {"REEL:", &event.reelName},
        {"EFFECT NAME:", &event.effectName},
        {"EFFECTS NAME IS", &event.effectName},
        {"EFFECTS NAME:", &event.effectName},
    }};
    for (const auto& [key, target] : texts) {
        if (auto value = valueOf(text, key)) {
            if (!value->empty())
                *target = std::move(*value);
            return;
        }
    }
    event.fromGenerated |= text.starts_with("FROM CLIP IS A GENERATOR");
    event.toGenerated |= text.starts_with("TO CLIP IS A GENERATOR");
    // "REEL x IS CLIP y" names the clip of an otherwise nameless event.
    if (const auto is = text.find(" IS CLIP "); text.starts_with("REEL ") && is != text.npos) {
        event.reelName = trim(text.substr(5, is - 5));
        event.fromName = trim(text.substr(is + 9));
    }
}

// "TIMECODE COLOUR text"; the colour and the text may be missing.
bool takeLocator(EdlList& list, std::string owner, std::string_view text, long line) {
    const auto label = parseEdlLabel(nextWord(text));
    if (!label)
        return false;
    EdlMarker marker{line, std::move(owner), *label, {}, {}, {}, 0, 0, {}};
    std::string_view rest = text;
    if (const auto colour = nextWord(rest); markerColour(colour)) {
        marker.colour = colour;
        text = rest;
    }
    marker.text = trim(text);
    list.markers.push_back(std::move(marker));
    return true;
}

// "10  White   USER   01:06:00:01   V1   text", the rows of a table of markers.
bool takeTableRow(EdlList& list, std::string_view text, long line) {
    const auto number = nextWord(text);
    if (!isDigits(number))
        return false;
    EdlMarker marker;
    marker.number = leadingInt(number);
    marker.line = line;
    marker.owner = "list";
    marker.colour = nextWord(text);
    if (!markerColour(marker.colour))
        return false;
    std::optional<EdlLabel> label;
    while (!label && !trim(text).empty()) {
        const auto word = nextWord(text);
        label = parseEdlLabel(word);
        if (!label)
            marker.name += (marker.name.empty() ? "" : " ") + std::string(word);
    }
    if (!label)
        return false;
    marker.at = *label;
    std::string_view rest = text;
    auto word = nextWord(rest);
    while (parseEdlLabel(word)) { // an end, then a length
        text = rest;
        word = nextWord(rest);
    }
    marker.track = word;
    marker.text = trim(rest);
    list.markers.push_back(std::move(marker));
    return true;
}

} // namespace

bool isKnownEdlComment(std::string_view text) {
    return std::any_of(kKeywords.begin(), kKeywords.end(),
                       [&](std::string_view key) { return text.starts_with(key); });
}

bool isBareEdlComment(std::string_view text) {
    static constexpr std::array kBare{"REM", "RVTR", "SPLIT:", ">>>", "FINAL CUT PRO REEL:"};
    return std::any_of(kBare.begin(), kBare.end(),
                       [&](std::string_view key) { return text.starts_with(key); });
}

void takeEdlComment(EdlList& list, EdlEvent* event, const std::string& text, long line) {
    const std::string_view body = trim(text);
    if (body.starts_with("LOC:")) {
        if (takeLocator(list, event ? "event " + event->number : "list", body.substr(4), line))
            return;
        ++list.lostLocators;
    }
    if (body.empty() || takeTableRow(list, body, line))
        return;
    if (event)
        takeNames(*event, body);
    (event ? event->comments : list.header).emplace_back(body);
}

namespace {

bool hasReel(const EdlEvent& event, const std::string& reel) {
    return event.reel == reel || (event.reel.empty() && reel == "AX");
}

void giveSpeed(EdlList& list, EdlEvent& event, const EdlSpeed& speed) {
    if (event.framesPerSecond) {
        ++list.extraSpeeds;
    } else {
        event.framesPerSecond = speed.framesPerSecond;
        event.speedText = speed.text;
    }
}

// No further event can have the reel of a speed held back.
void giveUp(EdlList& list, const EdlSpeed& speed) {
    if (speed.named)
        ++list.extraSpeeds;
    else if (speed.above > 0)
        giveSpeed(list, list.events[speed.above - 1], speed);
    else
        ++list.lostSpeeds;
}

} // namespace

// A speed waits for two event lines at most, so that however many wait, each is seen but twice.
void settleEdlSpeedsAtEvent(EdlList& list) {
    EdlEvent& event = list.events.back();
    const std::size_t index = list.events.size() - 1;
    const bool second =
        index > 0 && event.isTransition() && event.number == list.events[index - 1].number;
    for (EdlSpeed& speed : std::exchange(list.ahead, {})) {
        const bool first = speed.above == index;
        if ((first || second) && hasReel(event, speed.reel)) {
            if (!event.framesPerSecond) {
                giveSpeed(list, event, speed);
                continue;
            }
            speed.named = true;
        }
        if (first && !event.isTransition())
            list.ahead.push_back(std::move(speed));
        else
            giveUp(list, speed);
    }
}

void settleEdlSpeeds(EdlList& list) {
    for (const EdlSpeed& speed : std::exchange(list.ahead, {}))
        giveUp(list, speed);
}

bool takeEdlSpeed(EdlList& list, std::string_view text) {
    std::vector<std::string_view> words;
    for (std::string_view rest = text.substr(2); !trim(rest).empty();)
        words.push_back(nextWord(rest));
    if (words.size() > 1 && parseEdlLabel(words.back()))
        words.pop_back();
    const std::string_view number = words.empty() ? std::string_view() : words.back();
    const auto speed = parseDouble(number.starts_with('+') ? number.substr(1) : number);
    if (!speed || !(std::abs(*speed) <= 100'000))
        return false;
    EdlSpeed read{words.size() > 1 ? std::string(words.front()) : std::string(), *speed,
                  std::string(number), list.events.size()};
    for (std::size_t i = 1; i + 1 < words.size(); ++i)
        read.reel += " " + std::string(words[i]);
    // A transition has two lines, and a speed line may mean either.
    bool named = false;
    for (std::size_t back = 1; back <= 2 && back <= list.events.size(); ++back) {
        EdlEvent& candidate = list.events[list.events.size() - back];
        if ((back == 2 && !list.events.back().isTransition()) || !hasReel(candidate, read.reel))
            continue;
        named = true;
        if (!candidate.framesPerSecond) {
            giveSpeed(list, candidate, read);
            return true;
        }
    }
    if (named)
        ++list.extraSpeeds;
    else if (read.reel.empty() && !list.events.empty())
        giveSpeed(list, list.events.back(), read);
    else
        list.ahead.push_back(std::move(read));
    return true;
}

void takeMarkerEvents(EdlList& list) {
    std::vector<EdlEvent> events;
    for (EdlEvent& event : list.events) {
        const auto bar = event.note.find("|C:");
        const auto name = bar == std::string::npos ? bar : event.note.find("|M:", bar);
        if (name == std::string::npos) {
            events.push_back(std::move(event));
            continue;
        }
        const std::string_view note = event.note;
        const auto length = note.rfind("|D:");
        const bool hasLength = length != note.npos && length > name;
        EdlMarker marker{event.line, "event " + event.number, event.recordIn, {}, {}, {}, 1, 0, {}};
        marker.text = trim(note.substr(0, bar));
        marker.colour = trim(note.substr(bar + 3, name - bar - 3));
        if (marker.colour.starts_with("ResolveColor"))
            marker.colour.erase(0, 12);
        marker.name = trim(note.substr(name + 3, hasLength ? length - name - 3 : note.npos));
        if (hasLength)
            marker.frames = std::max(0, leadingInt(trim(note.substr(length + 3))));
        list.markers.push_back(std::move(marker));
    }
    list.events = std::move(events);
}

} // namespace cutroom
