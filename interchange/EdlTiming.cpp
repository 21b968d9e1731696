#include "interchange/EdlTiming.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace cutroom {

namespace {

constexpr std::array<int, 5> kNominals = {24, 25, 30, 50, 60};

bool countsDrop(int nominal) { return nominal % 30 == 0; }

std::int64_t sourceLength(const EdlEvent& event, int nominal) {
    const bool drop =
        countsDrop(nominal) && (event.sourceDrop || event.sourceIn.drop || event.sourceOut.drop);
    const auto length =
        edlFrame(event.sourceOut, nominal, drop) - edlFrame(event.sourceIn, nominal, drop);
    const EdlLabel midnight{24, 0, 0, 0, false};
    return length < 0 ? length + edlFrame(midnight, nominal, drop) : length;
}

// Tells whether most record labels carry the mark, or the first mode says so.
bool meansDrop(const EdlList& list) {
    const auto marked = std::count_if(list.events.begin(), list.events.end(),
                                      [](const EdlEvent& event) { return event.recordIn.drop; });
    return list.recordDrop.value_or(false) ||
           marked * 2 > static_cast<std::ptrdiff_t>(list.events.size());
}

// Tells whether drop-frame counting leaves this label out.
bool isLeftOut(const EdlLabel& label, int nominal) {
    return label.seconds == 0 && label.minutes % 10 != 0 && label.frames < nominal / 15;
}

// The highest frame number of the record, and the first line that has it.
struct HighestFrame {
    int number = -1;
    long line = 0;

    void see(int frame, long at) {
        if (frame > number)
            *this = {frame, at};
    }
};

HighestFrame highestRecordFrame(const EdlList& list) {
    HighestFrame highest;
    for (const EdlEvent& event : list.events)
        highest.see(std::max(event.recordIn.frames, event.recordOut.frames), event.line);
    if (list.events.empty())
        for (const EdlMarker& marker : list.markers)
            highest.see(marker.at.frames, marker.line);
    return highest;
}

struct Guess {
    int nominal = 0;
    long agreeing = 0;
    long compared = 0;
};

// Compares the lengths on both sides at each candidate above every record frame number.
Guess guessNominal(const EdlList& list, int highest, bool drop) {
    Guess best;
    for (const int nominal : kNominals) {
        if (nominal <= highest || (drop && !countsDrop(nominal)))
            continue;
        Guess guess{nominal, 0, 0};
        for (const EdlEvent& event : list.events) {
            const auto length =
                edlFrame(event.recordOut, nominal, drop) - edlFrame(event.recordIn, nominal, drop);
            if (event.framesPerSecond || length <= 0)
                continue;
            ++guess.compared;
            guess.agreeing += sourceLength(event, nominal) == length &&
                              std::max(event.sourceIn.frames, event.sourceOut.frames) < nominal;
        }
        if (best.nominal == 0 || guess.agreeing > best.agreeing)
            best = guess;
    }
    return best;
}

void giveUpDrop(const EdlList& list, EdlClock& clock, std::vector<std::string>& warnings) {
    const int nominal = clock.rate.nominal();
    if (clock.recordDrop && !countsDrop(nominal)) {
        clock.recordDrop = false;
        warnings.push_back("the list says drop frame, which " + clock.rate.asString() +
                           " frames a second do not have; counted as non-drop");
    }
    if (!clock.recordDrop)
        return;
    for (const EdlEvent& event : list.events)
        if (isLeftOut(event.recordIn, nominal) || isLeftOut(event.recordOut, nominal)) {
            clock.recordDrop = false;
            warnings.push_back(format("the list says drop frame but uses labels that drop frame "
                                      "leaves out (first: line %ld); counted as non-drop",
                                      event.line));
            return;
        }
}

// Drop frame exists at 29.97 and 59.94 only, on whichever side it is counted.
void makeRateOfDrop(EdlClock& clock) {
    if (clock.rate.den() == 1 && countsDrop(clock.rate.nominal()))
        clock.rate = Kv::FrameRate(clock.rate.nominal() * 1000, 1001);
}

} // namespace

std::int64_t EdlClock::record(const EdlLabel& label) const noexcept {
    return edlFrame(label, rate.nominal(), recordDrop);
}

std::int64_t EdlClock::day() const noexcept {
    EdlLabel last{23, 59, 59, rate.nominal() - 1, false};
    return record(last) + 1;
}

Result<EdlClock> chooseClock(const EdlList& list, std::optional<Kv::FrameRate> given,
                             const std::string& file, std::vector<std::string>& warnings) {
    const HighestFrame highest = highestRecordFrame(list);
    const bool drop = meansDrop(list);
    const auto refusal = [&](std::string reason) {
        return Status(StatusCode::damaged, file, std::move(reason), highest.line);
    };
    EdlClock clock;
    if (given) {
        if (highest.number >= given->nominal())
            return refusal(format("frame number %d cannot exist at %s frames a second",
                                  highest.number, given->asString().c_str()));
        clock = {*given, drop};
    } else {
        const Guess guess = guessNominal(list, highest.number, drop);
        if (guess.nominal == 0)
            return refusal(
                format("frame number %d is above every usual rate; give the rate", highest.number));
        clock = {Kv::FrameRate(guess.nominal), drop, true};
        if (list.anyDrop)
            makeRateOfDrop(clock);
        warnings.push_back(format("the list states no rate; %s taken (%ld of %ld events are as "
                                  "long on both sides)",
                                  clock.rate.asString().c_str(), guess.agreeing, guess.compared));
    }
    giveUpDrop(list, clock, warnings);
    if (given && clock.recordDrop)
        makeRateOfDrop(clock);
    return clock;
}

Kv::FrameRate edlRateRead(const TimecodeFormat& written) noexcept {
    if (written.dropFrame)
        return written.rate;
    for (const int nominal : kNominals)
        if (nominal >= written.rate.nominal())
            return Kv::FrameRate(nominal);
    return {};
}

std::int64_t EdlPlaces::fromFirst(const EdlLabel& label, const EdlClock& clock) const noexcept {
    auto frame = clock.record(label);
    if (overMidnight && frame < clock.day() / 2)
        frame += clock.day();
    return frame - first;
}

namespace {

// Puts events at frames, one list at a time.
class Placer {
public:
    Placer(const EdlList& list, const EdlClock& clock) : list_(list), clock_(clock) {
        for (const EdlEvent& event : list.events) {
            int& most = highestOfReel_[event.reel.empty() ? event.fromName : event.reel];
            most = std::max({most, event.sourceIn.frames, event.sourceOut.frames});
        }
    }

    EdlPlaces place(std::vector<std::string>& warnings) {
        for (const EdlEvent& event : list_.events)
            placeRecord(event);
        fillBroken();
        countOnOverMidnight();
        for (std::size_t i = 0; i < places_.events.size(); ++i)
            placeSource(list_.events[i], places_.events[i]);
        for (const EdlPlace& place : places_.events) {
            places_.first = std::min(places_.first, place.in);
            places_.last = std::max(places_.last, place.out);
        }
        if (!broken_.empty())
            warnings.push_back(format("record out before record in, length taken from the source: "
                                      "%zu events (first: line %ld)",
                                      broken_.size(), list_.events[broken_.front()].line));
        return std::move(places_);
    }

private:
    // Record out before record in is midnight when the length over midnight is that of the source.
    void placeRecord(const EdlEvent& event) {
        EdlPlace place{clock_.record(event.recordIn), clock_.record(event.recordOut), 0, {}};
        if (place.out < place.in) {
            const auto over = place.out + clock_.day() - place.in;
            auto source = sourceLength(event, clock_.rate.nominal());
            if (source < 0)
                source += clock_.day();
            const bool same = std::abs(over - source) <= 2 + source / 100;
            const bool scaled = event.framesPerSecond && over < clock_.day() / 2;
            if (same || scaled) {
                place.out += clock_.day();
                places_.overMidnight = true;
            } else {
                place.out = place.in + source;
                broken_.push_back(places_.events.size());
            }
        }
        if (places_.events.empty() || place.in < places_.first)
            places_.first = place.in;
        places_.events.push_back(place);
    }

    // An event whose source has no length either lasts until the next one on its channel.
    void fillBroken() {
        std::unordered_map<std::string_view, std::int64_t> next;
        auto broken = broken_.rbegin();
        for (std::size_t i = places_.events.size(); broken != broken_.rend() && i-- > 0;) {
            EdlPlace& place = places_.events[i];
            const std::string_view channel = list_.events[i].channel;
            if (i == *broken) {
                if (const auto found = next.find(channel);
                    place.length() == 0 && found != next.end())
                    place.out = std::max(place.in, found->second);
                ++broken;
            }
            next[channel] = place.in;
        }
    }

    void countOnOverMidnight() {
        const auto hour = clock_.day() / 24;
        for (std::size_t i = 1; i < places_.events.size(); ++i)
            places_.overMidnight |=
                places_.events[i - 1].in >= 23 * hour && places_.events[i].in < hour;
        if (!places_.overMidnight)
            return;
        places_.first = clock_.day() * 2;
        for (EdlPlace& place : places_.events) {
            if (place.in < clock_.day() / 2) {
                place.in += clock_.day();
                place.out += clock_.day();
            }
            places_.first = std::min(places_.first, place.in);
        }
    }

    // A reel may be counted at a higher rate than the record; its frame numbers give that away.
    void placeSource(const EdlEvent& event, EdlPlace& place) const {
        int nominal = clock_.rate.nominal();
        const int most = highestOfReel_.at(event.reel.empty() ? event.fromName : event.reel);
        for (const int candidate : kNominals)
            if (most >= nominal && candidate > most)
                nominal = candidate;
        place.sourceRate = clock_.rate;
        if (nominal != clock_.rate.nominal())
            place.sourceRate = clock_.rate.den() == 1001 && countsDrop(nominal)
                                   ? Kv::FrameRate(nominal * 1000, 1001)
                                   : Kv::FrameRate(nominal);
        const bool drop = countsDrop(nominal) && (event.sourceDrop || event.sourceIn.drop);
        const EdlLabel& start = event.isReversed() ? event.sourceOut : event.sourceIn;
        place.source = place.sourceRate.frameToFlicks(edlFrame(start, nominal, drop));
    }

    const EdlList& list_;
    const EdlClock& clock_;
    EdlPlaces places_;
    std::vector<std::size_t> broken_;
    std::unordered_map<std::string, int> highestOfReel_;
};

} // namespace

EdlPlaces placeEvents(const EdlList& list, const EdlClock& clock,
                      std::vector<std::string>& warnings) {
    return Placer(list, clock).place(warnings);
}

} // namespace cutroom
