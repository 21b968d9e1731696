#include "interchange/EdlWriter.h"

#include "interchange/EdlComments.h"
#include "interchange/EdlEventsOut.h"
#include "interchange/EdlReels.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace cutroom {

namespace {

constexpr int kMostFrames = 99;        // that two digits can number
constexpr std::size_t kNumbered = 999; // events, in three digits

// One line without line breaks and control characters, which would end it.
std::string oneLine(std::string_view text) {
    std::string line(trim(text));
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    return line;
}

std::int64_t frames(Flicks time, const Kv::FrameRate& rate) {
    return rate.flicksToFrameNearest(time);
}

EdlEvent eventNamed(const std::string& channel) {
    EdlEvent event;
    event.channel = channel;
    return event;
}

// How a set of channels is named: a channel text, and the sound channels that an AUD line adds.
struct ChannelText {
    std::string text;
    std::vector<int> audio;
};

using Channels = std::set<EdlChannel>;

// `text` with an AUD line for what it leaves out; nothing when it names other channels too.
std::optional<ChannelText> completed(const std::string& text, const Channels& channels,
                                     EdlDigits digits) {
    ChannelText result{text, {}};
    Channels named;
    if (text != "NONE")
        for (EdlChannel& channel : channelsOf(eventNamed(text), digits))
            named.insert(std::move(channel));
    if (!std::includes(channels.begin(), channels.end(), named.begin(), named.end()))
        return {};
    for (const EdlChannel& channel : channels) {
        if (named.contains(channel))
            continue;
        if (channel.kind != TrackKind::audio)
            return {};
        result.audio.push_back(channel.number);
    }
    return result;
}

ChannelText textOf(const Channels& channels, const std::string& written, EdlDigits digits) {
    if (!written.empty())
        if (auto text = completed(written, channels, digits))
            return *text;
    const EdlChannel& first = *channels.begin();
    if (channels.size() == 1) {
        const bool ambiguous =
            first.kind == TrackKind::audio && first.number > 9 && digits != EdlDigits::oneNumber;
        if (ambiguous)
            return {"NONE", {first.number}};
        return {first.name == "A1" ? "A" : first.name, {}};
    }
    for (const char* const text : {"AA/V", "AA", "B", "A2/V", "V", "A", "A2"})
        if (auto found = completed(text, channels, digits))
            return *found;
    return {"NONE", completed("NONE", channels, digits).value_or(ChannelText()).audio};
}

class Writer {
public:
    Writer(const Timeline& timeline, std::vector<int> tracks)
        : timeline_(timeline),
          rate_(timeline.rate.rate), record_{rate_, timeline.dropFrame && rate_.allowsDropFrame()},
          events_(edlEventsOf(timeline, tracks, losses_)) {}

    bool empty() const { return events_.empty() && timeline_.markers.empty(); }
    EdlLosses& losses() { return losses_; }

    EdlText write() {
        digits_ = digitsOfAll();
        line("TITLE:   " + oneLine(timeline_.name));
        mode(record_.dropFrame);
        std::size_t marker = 0;
        const auto inOrder = markersInOrder();
        for (std::size_t i = 0; i < events_.size(); ++i) {
            // Markers follow the event that they lie in; those before the first one stand first.
            while (marker < inOrder.size() && frameOf(*inOrder[marker]) < events_[i].recordIn)
                locator(*inOrder[marker++]);
            event(events_[i], i > 0 ? &events_[i - 1] : nullptr);
        }
        while (marker < inOrder.size())
            locator(*inOrder[marker++]);
        table();
        return {std::move(text_), warnings()};
    }

private:
    void line(const std::string& text) {
        text_ += text;
        text_ += '\n';
    }
    void comment(const std::string& text) { line("* " + text); }

    void mode(bool drop) {
        line(drop ? "FCM: DROP FRAME" : "FCM: NON-DROP FRAME");
        drop_ = drop;
    }

    std::string record(std::int64_t frame) const {
        return timecodeText(timeline_.startFrame.value_or(0) + frame, record_);
    }

    // What "A12" will mean to a reader of all these events.
    EdlDigits digitsOfAll() const {
        EdlList list;
        for (const EdlEventOut& each : events_) {
            list.events.push_back(eventNamed(writtenChannel(each)));
            for (const EdlChannel& channel : each.channels)
                if (each.channels.size() == 1 && channel.number < 10)
                    list.events.push_back(eventNamed(channel.name));
        }
        return audioDigits(list);
    }

    static std::string writtenChannel(const EdlEventOut& event) {
        return event.item ? event.item->channel : std::string();
    }

    // --- events --------------------------------------------------------------------------------
    // How the timecode of the source of an item counts.
    TimecodeFormat sourceFormat(const Item& item) const {
        const bool usable =
            item.sourceRate.valid() && item.sourceRate.rate.nominal() <= kMostFrames;
        const Kv::FrameRate rate = usable ? item.sourceRate.rate : rate_;
        const bool drop =
            edlFacts(item).empty() && item.channel.empty() ? record_.dropFrame : item.sourceDrop;
        return {rate, drop && rate.nominal() % 30 == 0};
    }

    // Drop frame is a matter of labels alone, of whole rates too where the list says so.
    static std::string sourceText(std::int64_t frame, const TimecodeFormat& format) {
        const int nominal = format.rate.nominal();
        return timecodeText(frame,
                            {format.dropFrame ? Kv::FrameRate(nominal * 1000, 1001) : format.rate,
                             format.dropFrame});
    }

    // The media time at a place of an item.
    static Flicks sourceAt(const Item& item, Flicks at) {
        if (item.speed <= 0)
            return item.sourceStart;
        return item.sourceStart + std::llround(static_cast<double>(at - item.start) * item.speed);
    }

    std::string timecodes(const EdlEventOut& each) const {
        const std::string records = record(each.recordIn) + ' ' + record(each.recordOut);
        if (!each.item) {
            const TimecodeFormat format{rate_, record_.dropFrame};
            return timecodeText(0, format) + ' ' + timecodeText(each.length(), format) + ' ' +
                   records;
        }
        const Item& item = *each.item;
        const TimecodeFormat format = sourceFormat(item);
        const std::int64_t in =
            frames(sourceAt(item, rate_.frameToFlicks(each.recordIn)), format.rate);
        if (const auto written = asWritten(each, in, format, records))
            return *written;
        const double length = static_cast<double>(rate_.frameToFlicks(each.length()));
        const std::int64_t source =
            frames(std::llround(length * std::abs(item.speed)), format.rate);
        return sourceText(in, format) + ' ' +
               sourceText(in + (item.speed == 0 ? 1 : source), format) + ' ' + records;
    }

    // The four timecodes as they were read, while they say where the event is and what it plays.
    std::optional<std::string> asWritten(const EdlEventOut& each, std::int64_t in,
                                         const TimecodeFormat& format,
                                         const std::string& records) const {
        const std::string kept = importedText(edlFacts(*each.item), "timecodes");
        const auto words = split(kept, ' ');
        if (words.size() != 4 || !speedText(each))
            return {};
        const auto here = split(records, ' ');
        for (std::size_t i = 0; i < 2; ++i) {
            const auto a = parseEdlLabel(words[i + 2]);
            const auto b = parseEdlLabel(here[i]);
            const int nominal = rate_.nominal();
            if (!a || !b || edlFrame(*a, nominal, false) != edlFrame(*b, nominal, false))
                return {};
        }
        const auto source = parseEdlLabel(words[0]);
        if (!source || edlFrame(*source, format.rate.nominal(), format.dropFrame) != in)
            return {};
        return kept;
    }

    // The speed in frames a second, empty for play speed: as written while it is that speed.
    // Nothing when it was written otherwise.
    std::optional<std::string> speedText(const EdlEventOut& each) const {
        const std::string written = importedText(edlFacts(*each.item), "frames_per_second");
        const auto meant = parseDouble(written.starts_with('+') ? written.substr(1) : written);
        const double speed = each.item->speed;
        if (meant ? *meant / rate_.nominal() == speed : speed == 1)
            return written;
        return {};
    }

    std::string newSpeedText(double speed) const {
        if (speed == 1)
            return {};
        const double perSecond = speed * rate_.nominal();
        std::string text = format("%05.1f", perSecond);
        if (std::abs(parseDouble(trim(text)).value_or(0) - perSecond) < 1e-9)
            return text;
        return toText(perSecond);
    }

    std::string transitionCode(const EdlEventOut& each) const {
        if (!each.transition) {
            const std::string key =
                each.item ? importedText(edlFacts(*each.item), "transition") : std::string();
            return key.starts_with('K') ? key : "C";
        }
        const std::string& type = each.transition->transitionType;
        return type.size() == 4 && type[0] == 'W' ? type : "D";
    }

    void eventLine(const std::string& reel, const std::string& channel, const std::string& code,
                   const std::string& duration, const std::string& labels) {
        line(format("%03zu  %-8s %-5s %-4s %3s ", number_, reel.c_str(), channel.c_str(),
                    code.c_str(), duration.c_str()) +
             labels);
    }

    void event(const EdlEventOut& each, const EdlEventOut* before) {
        const std::string code = transitionCode(each);
        const bool pairOfKey = code == "K" && before && before->recordIn == each.recordIn &&
                               transitionCode(*before) == "K B";
        number_ += !pairOfKey;
        const ChannelText channel = textOf(each.channels, writtenChannel(each), digits_);
        const bool drop = each.item ? sourceFormat(*each.item).dropFrame : record_.dropFrame;
        if (drop != drop_)
            mode(drop);
        std::string duration;
        if (each.transition) {
            outgoing(each, channel.text);
            duration = format("%03lld", static_cast<long long>(each.transitionFrames));
        } else if (const auto length =
                       each.item ? importedNumber(edlFacts(*each.item), "transition_frames")
                                 : std::nullopt;
                   length && code[0] == 'K') {
            duration = format("%03d", static_cast<int>(*length));
        }
        const std::string reel = each.item ? reels_.reelOf(*each.item) : "BL";
        const std::string labels = timecodes(each);
        eventLine(reel, channel.text, code, duration, labels);
        audio(channel.audio);
        if (each.item)
            speed(each, reel, labels);
        names(each);
    }

    void audio(const std::vector<int>& numbers) {
        if (numbers.empty())
            return;
        std::string text = "AUD";
        for (const int number : numbers)
            text += format("  %d  ", number);
        line(std::string(trim(text)));
    }

    // The first line of a transition: what goes out, at the frame where it begins to.
    void outgoing(const EdlEventOut& each, const std::string& channel) {
        const std::string_view kept = keptOutgoing(each);
        const std::string in = record(each.recordIn);
        if (!kept.empty()) {
            const auto labels = split(importedText(kept, "timecodes"), ' ');
            if (labels.size() == 4)
                return eventLine(importedText(kept, "reel"), channel, "C", {},
                                 labels[0] + ' ' + labels[1] + ' ' + in + ' ' + in);
        }
        std::string reel = "BL";
        std::string at = timecodeText(0, record_);
        if (each.outgoing) {
            const TimecodeFormat format = sourceFormat(*each.outgoing);
            reel = reels_.reelOf(*each.outgoing);
            at = sourceText(
                frames(sourceAt(*each.outgoing, rate_.frameToFlicks(each.recordIn)), format.rate),
                format);
        }
        eventLine(reel, channel, "C", {}, at + ' ' + at + ' ' + in + ' ' + in);
    }

    static std::string_view keptOutgoing(const EdlEventOut& each) {
        return importedMember(edlFacts(*each.transition), "outgoing");
    }

    void speed(const EdlEventOut& each, const std::string& reel, const std::string& labels) {
        const auto written = speedText(each);
        const std::string text = written ? *written : newSpeedText(each.item->speed);
        if (!text.empty())
            line(format("M2   %-8s %-23s ", reel.c_str(), text.c_str()) +
                 labels.substr(0, labels.find(' ')));
    }

    // --- comments ------------------------------------------------------------------------------
    void names(const EdlEventOut& each) {
        if (each.transition) {
            const std::string_view kept = keptOutgoing(each);
            const std::string from = !kept.empty()   ? importedText(kept, "clip_name")
                                     : each.outgoing ? each.outgoing->name
                                                     : std::string();
            if (!oneLine(from).empty())
                comment("FROM CLIP NAME:  " + oneLine(from));
            if (each.item)
                nameOf(*each.item, "TO CLIP NAME:  ");
            if (const std::string effect = effectName(*each.transition); !effect.empty())
                comment("EFFECT NAME: " + effect);
        } else if (each.item) {
            nameOf(*each.item, "FROM CLIP NAME:  ");
        }
        if (each.item)
            source(*each.item, each.transition != nullptr);
    }

    static std::string effectName(const Item& transition) {
        if (!transition.name.empty())
            return oneLine(transition.name);
        const std::string& type = transition.transitionType;
        const bool shown = type == "SMPTE_Dissolve" || (type.size() == 4 && type[0] == 'W');
        return shown ? std::string() : oneLine(type);
    }

    // Which an event of an edit list has from its reel alone stays unsaid.
    void nameOf(const Item& item, const char* key) {
        const std::string name = oneLine(item.name);
        const bool unsaid = !item.channel.empty() && name == item.media.reel;
        if (!name.empty() && !unsaid)
            comment(key + name);
    }

    // The reel in full, the file, and whatever else the list said below the event.
    void source(const Item& item, bool ofTransition) {
        bool reelTold = !reels_.isShort(item);
        bool fileTold = item.media.location.empty();
        if (item.media.kind == ReferenceKind::generator)
            fileTold = true;
        std::vector<std::string> kept;
        forEachImportedEntry(importedMember(edlFacts(item), "comments"), [&](std::string_view raw) {
            const std::string text = importedText("{\"c\":" + std::string(raw) + "}", "c");
            if (holds(item, text, ofTransition, reelTold, fileTold))
                kept.push_back(text);
        });
        if (!reelTold)
            comment("REEL: " + oneLine(item.media.reel));
        if (!fileTold)
            comment("SOURCE FILE: " + oneLine(item.media.location));
        for (const std::string& text : kept)
            keptLine(text);
    }

    // Tells whether a comment of the list that was read still holds; those that are written anew
    // do not count.
    static bool holds(const Item& item, const std::string& text, bool ofTransition, bool& reelTold,
                      bool& fileTold) {
        for (const char* const key :
             {"FROM CLIP NAME:", "TO CLIP NAME:", "EFFECT NAME:", "EFFECTS NAME", "REEL:"})
            if (text.starts_with(key))
                return false;
        if (const auto is = text.find(" IS CLIP ");
            text.starts_with("REEL ") && is != std::string::npos) {
            const bool same = trim(std::string_view(text).substr(5, is - 5)) == item.media.reel &&
                              trim(std::string_view(text).substr(is + 9)) == item.name;
            reelTold = reelTold || same;
            return same;
        }
        for (const char* const key :
             {"SOURCE FILE:", "TO CLIP:", "TO FILE:", "FROM CLIP:", "FROM FILE:"}) {
            if (!text.starts_with(key))
                continue;
            const auto value = trim(std::string_view(text).substr(std::string_view(key).size()));
            const bool ofOther = ofTransition && key[0] == 'F';
            const bool same = !ofOther && value == item.media.location;
            fileTold = fileTold || same;
            return same || ofOther || value.empty();
        }
        return true;
    }

    // Lines that stood without an asterisk stand so again.
    void keptLine(const std::string& text) {
        for (const char* const bare : {"REM", "RVTR", "SPLIT:", ">>>", "FINAL CUT PRO REEL:"})
            if (text.starts_with(bare))
                return line(oneLine(text));
        comment(oneLine(text));
    }

    // --- markers -------------------------------------------------------------------------------
    static bool isRow(const Marker& marker) {
        return marker.owner == "list" && !marker.name.empty();
    }
    std::int64_t frameOf(const Marker& marker) const { return frames(marker.start, rate_); }

    std::vector<const Marker*> markersInOrder() const {
        std::vector<const Marker*> all;
        for (const Marker& marker : timeline_.markers)
            if (!isRow(marker))
                all.push_back(&marker);
        std::stable_sort(all.begin(), all.end(),
                         [](const Marker* a, const Marker* b) { return a->start < b->start; });
        return all;
    }

    // A colour that lists know, the nearest one for others.
    std::string colourOf(const Marker& marker, const std::string& text) {
        static constexpr std::array<std::pair<const char*, std::uint32_t>, 8> kKnown = {{
            {"RED", 0xFF0000},
            {"GREEN", 0x00FF00},
            {"BLUE", 0x0000FF},
            {"CYAN", 0x00FFFF},
            {"MAGENTA", 0xFF00FF},
            {"YELLOW", 0xFFFF00},
            {"WHITE", 0xFFFFFF},
            {"BLACK", 0x000000},
        }};
        const std::string first = text.substr(0, text.find(' '));
        if (marker.colourText.empty())
            return markerColour(first) ? "WHITE" : "";
        if (marker.colourText[0] != '#' && markerColour(marker.colourText)) {
            std::string name = marker.colourText;
            std::transform(name.begin(), name.end(), name.begin(), [](char c) {
                return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            });
            return name;
        }
        ++colours_;
        const auto distance = [&](std::uint32_t known) {
            long sum = 0;
            for (const int shift : {0, 8, 16}) {
                const long by = static_cast<long>(known >> shift & 0xFF) -
                                static_cast<long>(marker.colour.value_or(0xFFFFFF) >> shift & 0xFF);
                sum += by * by;
            }
            return sum;
        };
        return std::min_element(kKnown.begin(), kKnown.end(),
                                [&](const auto& a, const auto& b) {
                                    return distance(a.second) < distance(b.second);
                                })
            ->first;
    }

    static std::string textOfMarker(const Marker& marker) {
        const std::string name = oneLine(marker.name);
        const std::string text = oneLine(marker.comment);
        if (name.empty() || text.empty())
            return name + text;
        return name + ": " + text;
    }

    void locator(const Marker& marker) {
        const std::string text = textOfMarker(marker);
        const std::string colour = colourOf(marker, text);
        lasting_ += marker.duration > 0;
        comment("LOC: " + record(frameOf(marker)) +
                (colour.empty() ? "" : format(" %-7s", colour.c_str())) +
                (text.empty() ? "" : " " + text));
    }

    // Markers that came in a table at the end go back to one.
    void table() {
        unsigned long long row = 0;
        for (const Marker& marker : timeline_.markers)
            if (isRow(marker))
                comment("    " + toText(++row) + "  " + colourOf(marker, "white") + "  " +
                        oneLine(marker.name) + "  " + record(frameOf(marker)) + "  V1  " +
                        oneLine(marker.comment));
    }

    std::vector<std::string> warnings() const {
        std::vector<std::string> all;
        const auto say = [&](long times, const char* what) {
            if (times > 0)
                all.push_back(std::string(what) + ": " + toText(static_cast<long long>(times)));
        };
        say(losses_.tracks, "tracks that an edit list cannot hold left out");
        say(losses_.disabled, "disabled clips left out");
        say(losses_.nested, "nested edits, written as clips");
        say(losses_.effects, "clips with effects that an edit list cannot say");
        say(losses_.transitions, "transitions of kinds that an edit list lacks, written as "
                                 "dissolves");
        say(losses_.shortened, "transitions longer than the clip they lead to, shortened");
        say(static_cast<long>(reels_.shortened()),
            "reels cut to eight characters of A-Z, 0-9 and _, told in full below the event");
        say(lasting_, "markers that last, written as points");
        say(colours_, "marker colours, written as the nearest known");
        if (number_ > kNumbered)
            all.push_back(format("%zu events; old programs read numbers up to 999", number_));
        return all;
    }

    const Timeline& timeline_;
    const Kv::FrameRate rate_;
    const TimecodeFormat record_;
    EdlLosses losses_;
    const std::vector<EdlEventOut> events_;
    EdlDigits digits_ = EdlDigits::oneTrackEach;
    EdlReels reels_;
    std::string text_;
    std::size_t number_ = 0;
    bool drop_ = false; // the mode in force
    long lasting_ = 0;
    long colours_ = 0;
};

bool hasClips(const Track& track) {
    return std::any_of(track.items.begin(), track.items.end(), [](const Item& item) {
        return item.type == ItemType::clip || item.type == ItemType::nested;
    });
}

// Tells whether all of the track was read from an edit list, which may hold such tracks together.
bool isListed(const Track& track) {
    return std::all_of(track.items.begin(), track.items.end(), [](const Item& item) {
        return item.type == ItemType::gap || !item.channel.empty();
    });
}

std::string placesOf(const Timeline& timeline) {
    std::string all;
    int pictures = 0;
    for (const Track& track : timeline.tracks)
        if (track.kind == TrackKind::video) {
            const std::string place = "V" + toText(static_cast<long long>(++pictures));
            all += (all.empty() ? "" : ", ") + place;
            if (!track.name.empty() && track.name != place)
                all += " (" + track.name + ")";
        }
    return all;
}

// The tracks that go into the list; `left` counts those that might have and do not.
Result<std::vector<int>> chooseTracks(const Timeline& timeline, const std::string& wanted,
                                      long& left) {
    const int chosen = wanted.empty() ? -1 : edlTrackNamed(timeline, wanted);
    if (!wanted.empty() && chosen < 0)
        return Status(StatusCode::notFound, wanted, "the edit has no such track");
    std::vector<int> tracks;
    int pictures = 0;
    bool listed = true;
    const bool soundAlone =
        chosen >= 0 && timeline.tracks[static_cast<std::size_t>(chosen)].kind != TrackKind::video;
    for (int i = 0; i < static_cast<int>(timeline.tracks.size()); ++i) {
        const Track& track = timeline.tracks[static_cast<std::size_t>(i)];
        const bool picture = track.kind == TrackKind::video;
        const bool holdable = picture || track.kind == TrackKind::audio || isListed(track);
        const bool excluded = chosen >= 0 && i != chosen && (picture || soundAlone);
        if (!hasClips(track) && !(picture && isListed(track)))
            continue;
        left += !holdable;
        if (!holdable || excluded)
            continue;
        tracks.push_back(i);
        pictures += picture && hasClips(track);
        listed = listed && (!picture || isListed(track));
    }
    if (pictures > 1 && !listed)
        return Status(StatusCode::failed, timeline.name,
                      "has several picture tracks and an edit list holds one; choose it with "
                      "--track: " +
                          placesOf(timeline));
    return tracks;
}

} // namespace

Result<EdlText> writeEdl(const Timeline& timeline, const std::string& track) {
    if (timeline.rate.rate.nominal() > kMostFrames)
        return Status(StatusCode::failed, timeline.name,
                      "runs at " + timeline.rate.rate.asString() +
                          " frames a second, more than an edit list can number");
    long left = 0;
    auto tracks = chooseTracks(timeline, track, left);
    if (!tracks)
        return tracks.status();
    Writer writer(timeline, std::move(*tracks));
    if (writer.empty())
        return Status(StatusCode::failed, timeline.name,
                      "has nothing that an edit list could hold");
    writer.losses().tracks = left;
    return writer.write();
}

} // namespace cutroom
