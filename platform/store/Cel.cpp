#include "platform/store/Cel.h"

#include "platform/store/CelStorage.h"

#include <algorithm>

using cutroom::Flicks;

namespace {

// In flicks; nothing when the store has no such time.
std::optional<Flicks> flicksOf(double seconds) noexcept {
    if (!cutroom::isStorableTime(seconds))
        return std::nullopt;
    return cutroom::toFlicks(seconds);
}

} // namespace

Cel::Cel() = default;

Cel::~Cel() {
    if (life_)
        life_->cel = nullptr;
}

// Limits the time to the store's range, so that callers may ask about any number.
Flicks Cel::inside(Flicks time) const noexcept {
    return std::clamp(time, -2 * cutroom::kMaxFlicks, 2 * cutroom::kMaxFlicks) - offset_;
}

std::uint32_t Cel::get_num_events() const {
    return static_cast<std::uint32_t>(storage().events.size());
}

ChannelEvent Cel::get_event(std::uint32_t index) const {
    const auto& events = storage().events;
    if (index >= events.size())
        return {};
    ChannelEvent event = events[index];
    event.time += offset_;
    return event;
}

ce_handle Cel::find_ceh(double seconds, std::uint8_t flags) const {
    const cutroom::CelStorage& list = storage();
    const auto time = flicksOf(seconds);
    if (!time || list.empty())
        return {};
    // Cuts count from 0: cut i is the start of segment i, the last one the end of the list.
    const auto found = std::lower_bound(list.starts.begin(), list.starts.end(), inside(*time));
    auto cut = static_cast<std::uint32_t>(found - list.starts.begin());
    const auto segments = static_cast<std::uint32_t>(list.segments());
    if (cut == segments && list.end() < inside(*time))
        return {};
    if ((flags & kEventOut) == 0)
        return cut < segments ? ce_handle(*this, 2 * cut) : ce_handle();
    cut = std::max(cut, 1u);
    return ce_handle(*this, 2 * cut - 1);
}

std::uint32_t Cel::nextAfter(Flicks time) const noexcept {
    const cutroom::CelStorage& list = storage();
    const auto found = std::upper_bound(list.starts.begin(), list.starts.end(), inside(time));
    const auto cut = static_cast<std::uint32_t>(found - list.starts.begin());
    if (cut == 0)
        return 0;
    if (cut == list.segments() && list.end() <= inside(time))
        return 2 * cut;
    return 2 * cut - 1;
}

std::int64_t Cel::lastBefore(Flicks time) const noexcept {
    const cutroom::CelStorage& list = storage();
    const auto found = std::lower_bound(list.starts.begin(), list.starts.end(), inside(time));
    const std::int64_t cut = found - list.starts.begin();
    if (cut == 0)
        return -1;
    if (found == list.starts.end() && list.end() < inside(time))
        return 2 * cut - 1;
    return 2 * (cut - 1);
}

CelSegment Cel::getSegment(std::uint32_t index) const {
    const cutroom::CelStorage& list = storage();
    if (index >= list.segments())
        return {};
    const ChannelEvent& in = list.events[2 * index];
    const ChannelEvent& out = list.events[2 * index + 1];
    CelSegment segment;
    segment.start = in.time + offset_;
    segment.end = out.time + offset_;
    segment.stripStart = in.stripTime;
    segment.material = in.material;
    segment.speed = in.speed;
    segment.inGraph = in.effectGraph;
    segment.outGraph = out.effectGraph;
    segment.flags = in.flags;
    segment.detail = list.detail(in.detail);
    return segment;
}

std::int64_t Cel::findSegment(Flicks time) const noexcept {
    const cutroom::CelStorage& list = storage();
    const Flicks at = inside(time);
    if (list.empty() || at < list.start() || at >= list.end())
        return -1;
    return static_cast<std::int64_t>(list.segmentNear(at));
}

const EventDetail& Cel::getDetail(std::uint32_t detail) const { return storage().detail(detail); }

double Cel::getStartTime() const {
    return storage().empty() ? kNoTime : cutroom::toSeconds(storage().start() + offset_);
}

double Cel::getEndTime() const {
    return storage().empty() ? kNoTime : cutroom::toSeconds(storage().end() + offset_);
}

double Cel::get_significant_start_time() const {
    for (const ChannelEvent& event : storage().events)
        if (!event.isBlack())
            return cutroom::toSeconds(event.time + offset_);
    return kNoTime;
}

double Cel::get_significant_end_time() const {
    const auto& events = storage().events;
    for (auto event = events.rbegin(); event != events.rend(); ++event)
        if (!event->isBlack())
            return cutroom::toSeconds(event->time + offset_);
    return kNoTime;
}

Cookie Cel::get_strip_cookie(double seconds) const {
    const auto time = flicksOf(seconds);
    const std::int64_t segment = time ? findSegment(*time) : -1;
    return segment < 0 ? Cookie()
                       : storage().events[static_cast<std::size_t>(2 * segment)].material;
}

double Cel::get_strip_time(double seconds) const {
    const auto time = flicksOf(seconds);
    const std::int64_t segment = time ? findSegment(*time) : -1;
    if (segment < 0)
        return kNoTime;
    const ChannelEvent& in = storage().events[static_cast<std::size_t>(2 * segment)];
    return in.isBlack() ? kNoTime : cutroom::toSeconds(cutroom::stripTimeAt(in, inside(*time)));
}

std::uint32_t Cel::checkQuantisation(const Kv::FrameRate& rate) const {
    if (!rate.valid())
        return 0;
    const auto& events = storage().events;
    for (std::size_t i = 0; i < events.size(); ++i)
        if (!rate.isOnFrame(events[i].time + offset_))
            return static_cast<std::uint32_t>(i);
    return 0;
}

std::string Cel::checkConsistency() const {
    const cutroom::CelStorage& list = storage();
    if (list.events.size() != 2 * list.starts.size())
        return "the events are no pairs";
    for (std::size_t i = 0; i < list.segments(); ++i) {
        const ChannelEvent& in = list.events[2 * i];
        const ChannelEvent& out = list.events[2 * i + 1];
        const std::string place = " in segment " + std::to_string(i);
        if (in.isOut() || !out.isOut())
            return "in and out do not alternate" + place;
        if (out.time <= in.time)
            return "the end is not after the start" + place;
        if (in.time != list.starts[i])
            return "the index of times differs" + place;
        if (i > 0 && list.events[2 * i - 1].time != in.time)
            return "the segment before does not touch" + place;
        if (in.detail != out.detail || (in.detail != 0 && list.detail(in.detail).empty()))
            return "the details are not one entry" + place;
        for (const ChannelEvent* event : {&in, &out}) {
            ChannelEvent shown = *event;
            shown.time += offset_;
            if (const auto status = cutroom::checkEventValues(shown); !status)
                return status.message() + place;
        }
    }
    return {};
}

bool Cel::sameContents(const Cel& other) const {
    const cutroom::CelStorage& mine = storage();
    const cutroom::CelStorage& theirs = other.storage();
    if (flags_ != other.flags_ || mine.events.size() != theirs.events.size())
        return false;
    if (&mine == &theirs)
        return mine.empty() || offset_ == other.offset_;
    for (std::size_t i = 0; i < mine.events.size(); ++i) {
        ChannelEvent a = mine.events[i];
        ChannelEvent b = theirs.events[i];
        if (!(mine.detail(a.detail) == theirs.detail(b.detail)))
            return false;
        a.time += offset_;
        b.time += other.offset_;
        a.detail = b.detail;
        if (!(a == b))
            return false;
    }
    return true;
}

std::size_t Cel::storageBytes() const noexcept { return storage().bytes(); }
