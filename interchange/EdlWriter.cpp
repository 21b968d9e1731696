#include "interchange/EdlWriter.h"

#include "interchange/EdlChannelsOut.h"
#include "interchange/EdlCommentsOut.h"
#include "interchange/EdlEventsOut.h"
#include "interchange/EdlMarkersOut.h"
#include "interchange/EdlReels.h"
#include "interchange/EdlSelection.h"
#include "interchange/EdlTimesOut.h"
#include "interchange/EdlTiming.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kNumbered = 999; // events, in three digits
// A reader may take a comment of this length for the first part of a folded one, and the next line
// for its rest.
constexpr std::size_t kFoldedFrom = 78;
constexpr std::size_t kFoldedTo = 84;

class Writer {
public:
    Writer(const Timeline& timeline, const std::vector<int>& tracks)
        : timeline_(timeline), times_(timeline),
          events_(times_.inTheirLines(edlEventsOf(timeline, tracks, losses_))) {}

    bool empty() const { return events_.empty() && timeline_.markers.empty(); }
    EdlLosses& losses() { return losses_; }

    EdlText write() {
        digits_ = edlDigitsOf(events_);
        line("TITLE:   " + edlOneLine(timeline_.name));
        mode(times_.record().dropFrame);
        for (const std::string& comment : edlHeaderOf(timeline_))
            line(comment);
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
            if (isSayable(*row))
                line("* " + markers_.row(*row, times_.recordText(frameOf(*row))));
        return {std::move(text_), warnings()};
    }

private:
    void line(const std::string& text) {
        text_ += text;
        if (text.starts_with('*') && text.size() >= kFoldedFrom)
            if (const auto length = toWide(text).size();
                length >= kFoldedFrom && length <= kFoldedTo)
                text_.append(kFoldedTo + 2 - length, ' ');
        text_ += '\n';
    }
    void locator(const Marker& marker) {
        if (isSayable(marker))
            line("* " + markers_.locator(marker, times_.recordText(frameOf(marker))));
    }
    std::int64_t frameOf(const Marker& marker) const { return times_.frameAt(marker.start); }
    // Counts the marker as lost if not.
    bool isSayable(const Marker& marker) {
        const bool early = times_.isBeforeZero(frameOf(marker));
        losses_.early += early;
        return !early;
    }

    void mode(bool drop) {
        line(drop ? "FCM: DROP FRAME" : "FCM: NON-DROP FRAME");
        drop_ = drop;
    }

    static std::string transitionCode(const EdlEventOut& each) {
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
        const bool pairOfKey = (code == "K" || code == "K O") && before &&
                               before->recordIn == each.recordIn &&
                               transitionCode(*before) == "K B";
        number_ += !pairOfKey;
        const EdlChannelText channel =
            edlChannelText(each.channels, each.item ? each.item->channel : std::string(), digits_);
        if (const bool drop = times_.sourceOf(each).dropFrame; drop != drop_)
            mode(drop);
        const std::string_view kept =
            each.transition ? times_.keptOutgoing(each) : std::string_view();
        if (each.transition)
            outgoing(each, kept, channel.text);
        const std::string reel = each.item ? reels_.reelOf(*each.item) : "BL";
        const std::string labels = times_.timecodes(each, losses_);
        eventLine(reel, channel.text, code, durationText(each, code), labels);
        audio(channel.audio);
        if (each.item)
            speedLine(reel, times_.speed(each), labels.substr(0, labels.find(' ')));
        for (const std::string& comment : edlCommentsOf(each, kept, reels_))
            line(comment);
    }

    // The frames of a transition, and those that a key was read with.
    static std::string durationText(const EdlEventOut& each, const std::string& code) {
        if (each.transition)
            return format("%03lld", static_cast<long long>(each.transitionFrames));
        const auto length =
            each.item ? importedNumber(each.facts, "transition_frames") : std::nullopt;
        return length && code[0] == 'K' ? format("%03d", static_cast<int>(*length)) : std::string();
    }

    void audio(const std::vector<int>& numbers) {
        if (numbers.empty())
            return;
        std::string text = "AUD";
        for (const int number : numbers)
            text += format("  %d  ", number);
        line(std::string(trim(text)));
    }

    // The first line of a transition: the clip that goes out, at the frame where the transition
    // begins. `kept` is what was read of that line and still holds.
    void outgoing(const EdlEventOut& each, std::string_view kept, const std::string& channel) {
        std::string reel = "BL";
        if (edlIsOther(kept))
            reel = EdlReels::strictForm(importedText(kept, "reel"));
        else if (each.outgoing)
            reel = reels_.reelOf(*each.outgoing);
        if (kept.empty())
            return eventLine(reel, channel, "C", {},
                             times_.timecodes(each.outgoing, each.recordIn));
        const auto labels = EdlTimesOut::labelsOf(kept);
        const std::string in = times_.recordText(each.recordIn);
        eventLine(reel, channel, "C", {}, labels[0] + ' ' + labels[1] + ' ' + in + ' ' + in);
        speedLine(reel, importedText(kept, "frames_per_second"), labels[0]);
    }

    void speedLine(const std::string& reel, const std::string& speed, const std::string& at) {
        if (!speed.empty())
            line(format("M2   %-8s %-23s ", reel.c_str(), speed.c_str()) + at);
    }

    std::vector<std::string> warnings() {
        losses_.reels = static_cast<long>(reels_.shortened());
        losses_.lasting = markers_.lasting();
        losses_.colours = markers_.colours();
        losses_.fields = markers_.fields();
        std::vector<std::string> all = losses_.text();
        const Kv::FrameRate rate = times_.record().rate;
        if (const Kv::FrameRate read = edlRateRead(times_.record()); read != rate)
            all.push_back("an edit list cannot say its frame rate, " + rate.asString() +
                          (read.valid() ? "; who is not told takes " + read.asString() : ""));
        if (number_ > kNumbered)
            all.push_back(format("%zu events; old programs read numbers up to 999", number_));
        return all;
    }

    const Timeline& timeline_;
    const EdlTimesOut times_;
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
    if (timeline.rate.rate.nominal() > kMostEdlFrames)
        return Status(StatusCode::failed, timeline.name,
                      "runs at " + timeline.rate.rate.asString() +
                          " frames a second, more than an edit list can number");
    long left = 0;
    auto tracks = edlTracksFor(timeline, track, left);
    if (!tracks)
        return tracks.status();
    Writer writer(timeline, *tracks);
    if (writer.empty())
        return Status(StatusCode::failed, timeline.name,
                      "has nothing that an edit list could hold");
    writer.losses().tracks = left;
    return writer.write();
}

} // namespace cutroom
