#include "interchange/EdlWriter.h"

#include "interchange/EdlChannelsOut.h"
#include "interchange/EdlEventsOut.h"
#include "interchange/EdlMarkersOut.h"
#include "interchange/EdlReels.h"
#include "interchange/EdlSelection.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace cutroom {

namespace {

constexpr int kMostFrames = 99;        // that two digits can number
constexpr std::size_t kNumbered = 999; // events, in three digits

std::int64_t frames(Flicks time, const Kv::FrameRate& rate) {
    return rate.flicksToFrameNearest(time);
}

class Writer {
public:
    Writer(const Timeline& timeline, std::vector<int> tracks)
        : timeline_(timeline),
          rate_(timeline.rate.rate), record_{rate_, timeline.dropFrame && rate_.allowsDropFrame()},
          events_(inTheirLines(edlEventsOf(timeline, tracks, losses_))) {}

    bool empty() const { return events_.empty() && timeline_.markers.empty(); }
    EdlLosses& losses() { return losses_; }

    EdlText write() {
        digits_ = edlDigitsOf(events_);
        line("TITLE:   " + edlOneLine(timeline_.name));
        mode(record_.dropFrame);
        std::size_t marker = 0;
        const auto inOrder = EdlMarkersOut::locators(timeline_);
        for (std::size_t i = 0; i < events_.size(); ++i) {
            // Markers follow the event that they lie in; those before the first one stand first.
            while (marker < inOrder.size() && frameOf(*inOrder[marker]) < events_[i].recordIn)
                locator(*inOrder[marker++]);
            event(events_[i], i > 0 ? &events_[i - 1] : nullptr);
        }
        while (marker < inOrder.size())
            locator(*inOrder[marker++]);
        for (const Marker* row : EdlMarkersOut::rows(timeline_))
            comment(markers_.row(*row, record(frameOf(*row))));
        return {std::move(text_), warnings()};
    }

private:
    void line(const std::string& text) {
        text_ += text;
        text_ += '\n';
    }
    void comment(const std::string& text) { line("* " + text); }
    void locator(const Marker& marker) {
        comment(markers_.locator(marker, record(frameOf(marker))));
    }
    std::int64_t frameOf(const Marker& marker) const { return frames(marker.start, rate_); }

    void mode(bool drop) {
        line(drop ? "FCM: DROP FRAME" : "FCM: NON-DROP FRAME");
        drop_ = drop;
    }

    std::string record(std::int64_t frame) const {
        return timecodeText(startFrame() + frame, record_);
    }
    std::int64_t startFrame() const { return timeline_.startFrame.value_or(0); }

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
    static TimecodeFormat labelled(const TimecodeFormat& format) {
        const Kv::FrameRate dropped(format.rate.nominal() * 1000, 1001);
        return {format.dropFrame ? dropped : format.rate, format.dropFrame};
    }
    static std::string sourceText(std::int64_t frame, const TimecodeFormat& format) {
        return timecodeText(frame, labelled(format));
    }

    // The media time at a place of an item.
    static Flicks sourceAt(const Item& item, Flicks at) {
        if (item.speed <= 0)
            return item.sourceStart;
        return item.sourceStart + std::llround(static_cast<double>(at - item.start) * item.speed);
    }

    std::string timecodes(const EdlEventOut& each) {
        const std::string records = record(each.recordIn) + ' ' + record(each.recordOut);
        if (!each.item) {
            if (isRecord(each.facts, each.recordIn, each.recordOut))
                return importedText(each.facts, "timecodes");
            const TimecodeFormat format{rate_, record_.dropFrame};
            return timecodeText(0, format) + ' ' + timecodeText(each.length(), format) + ' ' +
                   records;
        }
        const Item& item = *each.item;
        const TimecodeFormat format = sourceFormat(item);
        const std::int64_t in =
            frames(sourceAt(item, rate_.frameToFlicks(each.recordIn)), format.rate);
        if (isWritten(each))
            return importedText(each.facts, "timecodes");
        losses_.wrapped += in < 0 || in >= framesPerDay(labelled(format));
        losses_.rates += format.rate != rate_;
        return sourceText(in, format) + ' ' + sourceText(sourceOut(each, in, format), format) +
               ' ' + records;
    }

    // A freeze takes one frame of its source.
    std::int64_t sourceOut(const EdlEventOut& each, std::int64_t in,
                           const TimecodeFormat& format) const {
        const double speed = each.item->speed;
        if (speed == 0)
            return in + 1;
        if (speed > 0)
            return frames(sourceAt(*each.item, rate_.frameToFlicks(each.recordOut)), format.rate);
        const auto length = static_cast<double>(rate_.frameToFlicks(each.length()));
        return in + frames(std::llround(length * -speed), format.rate);
    }

    // --- what was read and still holds -----------------------------------------------------------
    static std::vector<std::string> labelsOf(std::string_view facts) {
        auto labels = split(importedText(facts, "timecodes"), ' ');
        return labels.size() == 4 ? std::move(labels) : std::vector<std::string>();
    }

    bool isAt(const std::string& label, std::int64_t frame) const {
        const auto read = parseEdlLabel(label), here = parseEdlLabel(record(frame));
        const int nominal = rate_.nominal();
        return read && here && edlFrame(*read, nominal, false) == edlFrame(*here, nominal, false);
    }

    // Tells whether the record labels of an event are still those that it was read with.
    bool isRecord(std::string_view facts, std::int64_t in, std::int64_t out) const {
        const auto labels = labelsOf(facts);
        return !labels.empty() && isAt(labels[2], in) && isAt(labels[3], out);
    }

    // Tells whether an item is, at a place of it, at the frame of its source that was read there.
    bool isSource(std::string_view facts, const Item& item, std::int64_t at) const {
        const auto labels = labelsOf(facts);
        const auto label = labels.empty() ? std::nullopt : parseEdlLabel(labels[0]);
        const TimecodeFormat format = sourceFormat(item);
        return label && speedText(facts, item.speed) &&
               edlFrame(*label, format.rate.nominal(), format.dropFrame) ==
                   frames(sourceAt(item, rate_.frameToFlicks(at)), format.rate);
    }

    // The four timecodes of an event stay as written while they say where it is and what it plays.
    bool isWritten(const EdlEventOut& each) const {
        return isRecord(each.facts, each.recordIn, each.recordOut) &&
               isSource(each.facts, *each.item, each.recordIn);
    }

    static std::string_view restOf(std::string_view facts) {
        return importedMember(facts, "continued");
    }

    // Tells whether a clip still stands, in one event or two, where it was read.
    bool isUnchanged(const Item& item) const {
        const std::string_view facts = edlFacts(item);
        const auto first = labelsOf(facts);
        const auto last = restOf(facts).empty() ? first : labelsOf(restOf(facts));
        const std::int64_t in = frames(item.start, rate_);
        return !first.empty() && !last.empty() && isAt(first[2], in) &&
               isAt(last[3], frames(item.end(), rate_)) && isSource(facts, item, in);
    }

    // A clip that was read from two events becomes two again while both hold.
    std::vector<EdlEventOut> inTheirLines(const std::vector<EdlEventOut>& events) const {
        std::vector<EdlEventOut> all;
        for (const EdlEventOut& event : events) {
            const auto labels = labelsOf(restOf(event.facts));
            EdlEventOut first = event, rest = event;
            rest.transition = rest.outgoing = nullptr;
            rest.facts = restOf(event.facts);
            const auto at = labels.empty() ? std::nullopt : parseEdlLabel(labels[2]);
            if (at)
                first.recordOut = rest.recordIn =
                    edlFrame(*at, rate_.nominal(), record_.dropFrame) - startFrame();
            first.goesOn = at && event.item && isWritten(first) && isWritten(rest) &&
                           first.transitionFrames <= first.length();
            all.push_back(first.goesOn ? first : event);
            if (first.goesOn)
                all.push_back(std::move(rest));
        }
        std::stable_sort(all.begin(), all.end(), [](const EdlEventOut& a, const EdlEventOut& b) {
            return a.recordIn < b.recordIn;
        });
        return all;
    }

    // The speed in frames a second, empty for play speed: as written while it is that speed.
    // Nothing when it was written otherwise.
    std::optional<std::string> speedText(std::string_view facts, double speed) const {
        const std::string written = importedText(facts, "frames_per_second");
        const auto meant = parseDouble(written.starts_with('+') ? written.substr(1) : written);
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
                each.item ? importedText(each.facts, "transition") : std::string();
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
        const EdlChannelText channel = edlChannelText(each.channels, writtenChannel(each), digits_);
        const bool drop = each.item ? sourceFormat(*each.item).dropFrame : record_.dropFrame;
        if (drop != drop_)
            mode(drop);
        std::string duration;
        if (each.transition) {
            outgoing(each, channel.text);
            duration = format("%03lld", static_cast<long long>(each.transitionFrames));
        } else if (const auto length =
                       each.item ? importedNumber(each.facts, "transition_frames") : std::nullopt;
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
            const auto labels = labelsOf(kept);
            const std::string reel = isOther(kept)
                                         ? EdlReels::strictForm(importedText(kept, "reel"))
                                         : reels_.reelOf(*each.outgoing);
            eventLine(reel, channel, "C", {}, labels[0] + ' ' + labels[1] + ' ' + in + ' ' + in);
            return speedLine(reel, importedText(kept, "frames_per_second"), labels[0]);
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

    // What was read of the outgoing side, while the transition is where it was, and, unless that
    // was another clip from the start, what goes out is too.
    std::string_view keptOutgoing(const EdlEventOut& each) const {
        const std::string_view kept = importedMember(edlFacts(*each.transition), "outgoing");
        const auto labels = labelsOf(kept);
        const bool holds = !labels.empty() && isAt(labels[2], each.recordIn) &&
                           (isOther(kept) || (each.outgoing && isUnchanged(*each.outgoing)));
        return holds ? kept : std::string_view();
    }

    static bool isOther(std::string_view outgoing) {
        return importedMember(outgoing, "other") == "true";
    }

    void speed(const EdlEventOut& each, const std::string& reel, const std::string& labels) {
        const auto written = speedText(each.facts, each.item->speed);
        const std::string text = written ? *written : newSpeedText(each.item->speed);
        speedLine(reel, text, labels.substr(0, labels.find(' ')));
    }

    void speedLine(const std::string& reel, const std::string& speed, const std::string& at) {
        if (!speed.empty())
            line(format("M2   %-8s %-23s ", reel.c_str(), speed.c_str()) + at);
    }

    // --- comments ------------------------------------------------------------------------------
    void names(const EdlEventOut& each) {
        if (each.transition) {
            const std::string_view kept = keptOutgoing(each);
            const std::string from = !kept.empty()   ? importedText(kept, "clip_name")
                                     : each.outgoing ? each.outgoing->name
                                                     : std::string();
            if (!edlOneLine(from).empty())
                comment("FROM CLIP NAME:  " + edlOneLine(from));
            if (each.item)
                nameOf(*each.item, "TO CLIP NAME:  ");
            if (const std::string effect = effectName(*each.transition); !effect.empty())
                comment("EFFECT NAME: " + effect);
        } else if (each.item) {
            nameOf(*each.item, "FROM CLIP NAME:  ");
        }
        if (each.item)
            source(*each.item, each);
        else
            forEachComment(each.facts, [&](const std::string& text) {
                if (!each.transition ||
                    !(text.starts_with("FROM CLIP NAME:") || text.starts_with("EFFECT")))
                    keptLine(text);
            });
    }

    static void forEachComment(std::string_view facts,
                               const std::function<void(const std::string&)>& visit) {
        forEachImportedEntry(importedMember(facts, "comments"), [&](std::string_view raw) {
            visit(importedText("{\"c\":" + std::string(raw) + "}", "c"));
        });
    }

    static std::string effectName(const Item& transition) {
        if (!transition.name.empty())
            return edlOneLine(transition.name);
        const std::string& type = transition.transitionType;
        const bool shown = type == "SMPTE_Dissolve" || (type.size() == 4 && type[0] == 'W');
        return shown ? std::string() : edlOneLine(type);
    }

    // Which an event of an edit list has from its reel alone stays unsaid.
    void nameOf(const Item& item, const char* key) {
        const std::string name = edlOneLine(item.name);
        const bool unsaid = !item.channel.empty() && name == item.media.reel;
        if (!name.empty() && !unsaid)
            comment(key + name);
    }

    // The reel in full, the file, and whatever else the list said below the event.
    void source(const Item& item, const EdlEventOut& each) {
        const bool ofTransition = each.transition != nullptr;
        bool reelTold = !reels_.isShort(item);
        bool fileTold = item.media.location.empty();
        fileTold = fileTold || item.media.kind == ReferenceKind::generator;
        std::vector<std::string> kept;
        const auto keep = [&](const std::string& text) {
            if (holds(item, text, ofTransition, reelTold, fileTold))
                kept.push_back(text);
        };
        forEachComment(each.facts, keep);
        if (!each.goesOn)
            forEachComment(restOf(each.facts), keep);
        const char* const generated =
            ofTransition ? "TO CLIP IS A GENERATOR" : "FROM CLIP IS A GENERATOR";
        if (item.media.kind == ReferenceKind::generator &&
            std::find(kept.begin(), kept.end(), generated) == kept.end())
            comment(generated);
        if (!reelTold)
            comment("REEL: " + edlOneLine(item.media.reel));
        if (!fileTold)
            comment("SOURCE FILE: " + edlOneLine(item.media.location));
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
                return line(edlOneLine(text));
        comment(edlOneLine(text));
    }

    std::vector<std::string> warnings() {
        losses_.reels = static_cast<long>(reels_.shortened());
        losses_.lasting = markers_.lasting();
        losses_.colours = markers_.colours();
        losses_.fields = markers_.fields();
        std::vector<std::string> all = losses_.text();
        if (const Kv::FrameRate read = edlRateRead(record_); read != rate_)
            all.push_back("an edit list cannot say its frame rate, " + rate_.asString() +
                          (read.valid() ? "; who is not told takes " + read.asString() : ""));
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
    EdlMarkersOut markers_;
    std::string text_;
    std::size_t number_ = 0;
    bool drop_ = false; // the mode in force
};

} // namespace

Result<EdlText> writeEdl(const Timeline& timeline, const std::string& track) {
    if (timeline.rate.rate.nominal() > kMostFrames)
        return Status(StatusCode::failed, timeline.name,
                      "runs at " + timeline.rate.rate.asString() +
                          " frames a second, more than an edit list can number");
    long left = 0;
    auto tracks = edlTracksFor(timeline, track, left);
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
