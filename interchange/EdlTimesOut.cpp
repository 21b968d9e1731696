#include "interchange/EdlTimesOut.h"

#include "interchange/EdlList.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom {

namespace {

// The format by which labels are counted. Drop frame only concerns labels, and an edit list may use
// it at a whole rate too.
TimecodeFormat labelled(const TimecodeFormat& format) {
    const Kv::FrameRate dropped(format.rate.nominal() * 1000, 1001);
    return {format.dropFrame ? dropped : format.rate, format.dropFrame};
}

std::string sourceText(std::int64_t frame, const TimecodeFormat& format) {
    return timecodeText(frame, labelled(format));
}

// The media time at a place of an item.
Flicks mediaAt(const Item& item, Flicks at) {
    if (item.speed <= 0)
        return item.sourceStart;
    return item.sourceStart + std::llround(static_cast<double>(at - item.start) * item.speed);
}

} // namespace

EdlTimesOut::EdlTimesOut(const Timeline& timeline)
    : timeline_(timeline), record_{timeline.rate.rate,
                                   timeline.dropFrame && timeline.rate.rate.allowsDropFrame()} {}

std::string EdlTimesOut::recordText(std::int64_t frame) const {
    return timecodeText(startFrame() + frame, record_);
}

TimecodeFormat EdlTimesOut::sourceOf(const Item& item) const {
    const bool usable = item.sourceRate.valid() && item.sourceRate.rate.nominal() <= kMostEdlFrames;
    const Kv::FrameRate rate = usable ? item.sourceRate.rate : record_.rate;
    const bool unsaid = edlFacts(item).empty() && item.channel.empty();
    const bool drop = unsaid ? item.media.dropFrame.value_or(record_.dropFrame) : item.sourceDrop;
    return {rate, drop && rate.nominal() % 30 == 0};
}

TimecodeFormat EdlTimesOut::sourceOf(const EdlEventOut& event) const {
    return event.item ? sourceOf(*event.item) : record_;
}

// The frame of the source that an item plays at a frame of the record.
std::int64_t EdlTimesOut::sourceFrame(const Item& item, std::int64_t frame,
                                      const Kv::FrameRate& rate) const {
    return rate.flicksToFrameNearest(mediaAt(item, record_.rate.frameToFlicks(frame)));
}

// The source's out label for an event whose in label is `in`. A freeze takes one frame.
std::int64_t EdlTimesOut::sourceOut(const EdlEventOut& event, std::int64_t in,
                                    const TimecodeFormat& format) const {
    const double speed = event.item->speed;
    if (speed == 0)
        return in + 1;
    if (speed > 0)
        return sourceFrame(*event.item, event.recordOut, format.rate);
    const auto length = static_cast<double>(record_.rate.frameToFlicks(event.length()));
    return in + format.rate.flicksToFrameNearest(std::llround(length * -speed));
}

std::string EdlTimesOut::timecodes(const EdlEventOut& event, EdlLosses& losses) const {
    const std::string records = recordText(event.recordIn) + ' ' + recordText(event.recordOut);
    if (event.item ? isWritten(event) : isRecord(event))
        return importedText(event.facts, "timecodes");
    const TimecodeFormat format = sourceOf(event);
    if (!event.item)
        return timecodeText(0, format) + ' ' + timecodeText(event.length(), format) + ' ' + records;
    const std::int64_t in = sourceFrame(*event.item, event.recordIn, format.rate);
    losses.wrapped += in < 0 || in >= framesPerDay(labelled(format));
    losses.rates += format.rate != record_.rate;
    return sourceText(in, format) + ' ' + sourceText(sourceOut(event, in, format), format) + ' ' +
           records;
}

std::string EdlTimesOut::timecodes(const Item* outgoing, std::int64_t frame) const {
    std::string at = timecodeText(0, record_);
    if (outgoing) {
        const TimecodeFormat format = sourceOf(*outgoing);
        at = sourceText(sourceFrame(*outgoing, frame, format.rate), format);
    }
    const std::string in = recordText(frame);
    return at + ' ' + at + ' ' + in + ' ' + in;
}

std::string EdlTimesOut::speed(const EdlEventOut& event) const {
    const double speed = event.item->speed;
    if (const auto written = writtenSpeed(event.facts, speed))
        return *written;
    if (speed == 1)
        return {};
    const double perSecond = speed * record_.rate.nominal();
    std::string text = format("%05.1f", perSecond);
    if (std::abs(parseDouble(trim(text)).value_or(0) - perSecond) < 1e-9)
        return text;
    return toText(perSecond);
}

// --- what was read and still holds ---------------------------------------------------------------

std::vector<std::string> EdlTimesOut::labelsOf(std::string_view facts) {
    auto labels = split(importedText(facts, "timecodes"), ' ');
    return labels.size() == 4 ? std::move(labels) : std::vector<std::string>();
}

// Tells whether a label that was read shows the same numbers as that of the frame.
bool EdlTimesOut::isAt(const std::string& label, std::int64_t frame) const {
    const auto read = parseEdlLabel(label), here = parseEdlLabel(recordText(frame));
    const int nominal = record_.rate.nominal();
    return read && here && edlFrame(*read, nominal, false) == edlFrame(*here, nominal, false);
}

// Tells whether the record labels of an event are still those that it was read with.
bool EdlTimesOut::isRecord(const EdlEventOut& event) const {
    const auto labels = labelsOf(event.facts);
    return !labels.empty() && isAt(labels[2], event.recordIn) && isAt(labels[3], event.recordOut);
}

// Tells whether an item plays, at a frame of the record, the same source frame as when it was read.
bool EdlTimesOut::isSource(std::string_view facts, const Item& item, std::int64_t frame) const {
    const auto labels = labelsOf(facts);
    auto label = labels.empty() ? std::nullopt : parseEdlLabel(labels[0]);
    if (const auto end = labels.empty() ? std::nullopt : parseEdlLabel(labels[1]);
        end && label && item.speed < 0 && comesBefore(*end, *label))
        label = end; // its labels were written backwards
    const TimecodeFormat format = sourceOf(item);
    return label && writtenSpeed(facts, item.speed) &&
           edlFrame(*label, format.rate.nominal(), format.dropFrame) ==
               sourceFrame(item, frame, format.rate);
}

// Tells whether the four timecodes of an event, as they were read, still say where it is and what
// it plays.
bool EdlTimesOut::isWritten(const EdlEventOut& event) const {
    return isRecord(event) && isSource(event.facts, *event.item, event.recordIn);
}

// Tells whether a clip still stands, in one event or two, where it was read.
bool EdlTimesOut::isUnchanged(const Item& item) const {
    const std::string_view facts = edlFacts(item);
    const auto first = labelsOf(facts);
    const auto last = edlRest(facts).empty() ? first : labelsOf(edlRest(facts));
    const std::int64_t in = frameAt(item.start);
    return !first.empty() && !last.empty() && isAt(first[2], in) &&
           isAt(last[3], frameAt(item.end())) && isSource(facts, item, in);
}

// A clip that was read from two events, as those two; nothing for others, and when the two no
// longer hold.
std::optional<std::pair<EdlEventOut, EdlEventOut>>
EdlTimesOut::asTwo(const EdlEventOut& event) const {
    const auto labels = labelsOf(edlRest(event.facts));
    const auto at = labels.empty() ? std::nullopt : parseEdlLabel(labels[2]);
    if (!at || !event.item)
        return std::nullopt;
    EdlEventOut first = event, rest = event;
    first.goesOn = true;
    rest.transition = rest.outgoing = nullptr;
    rest.facts = edlRest(event.facts);
    first.recordOut = rest.recordIn =
        edlFrame(*at, record_.rate.nominal(), record_.dropFrame) - startFrame();
    if (!isWritten(first) || !isWritten(rest) || first.transitionFrames > first.length())
        return std::nullopt;
    return std::pair(std::move(first), std::move(rest));
}

std::vector<EdlEventOut> EdlTimesOut::inTheirLines(const std::vector<EdlEventOut>& events) const {
    std::vector<EdlEventOut> all;
    for (const EdlEventOut& event : events) {
        if (auto two = asTwo(event)) {
            all.push_back(std::move(two->first));
            all.push_back(std::move(two->second));
        } else {
            all.push_back(event);
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const EdlEventOut& a, const EdlEventOut& b) {
        return a.recordIn < b.recordIn;
    });
    return all;
}

// The speed as it was written (empty for none), if the item still plays at it; nothing when it does
// not.
std::optional<std::string> EdlTimesOut::writtenSpeed(std::string_view facts, double speed) const {
    const std::string written = importedText(facts, "frames_per_second");
    const auto meant = parseDouble(written.starts_with('+') ? written.substr(1) : written);
    const double read = meant ? *meant / record_.rate.nominal() : 1;
    return read == speed ? std::optional(written) : std::nullopt;
}

std::string_view EdlTimesOut::keptOutgoing(const EdlEventOut& event) const {
    const std::string_view kept = importedMember(edlFacts(*event.transition), "outgoing");
    const auto labels = labelsOf(kept);
    const bool holds = !labels.empty() && isAt(labels[2], event.recordIn) &&
                       (edlIsOther(kept) || (event.outgoing && isUnchanged(*event.outgoing)));
    return holds ? kept : std::string_view();
}

} // namespace cutroom
