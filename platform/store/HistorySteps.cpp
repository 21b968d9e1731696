#include "platform/store/HistorySteps.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace cutroom {

namespace {

constexpr std::string_view kSame = "SAME";
constexpr std::size_t kLong = 128; // bytes; shorter sections are stored as they are
constexpr std::size_t kMaxSteps = 10'000;
// The most bytes that the sections of all steps have in full, and those that are written.
constexpr std::size_t kMaxBytes = std::size_t{1} << 30;
constexpr std::size_t kMaxWrittenBytes = std::size_t{3} << 28;

std::optional<std::string_view> sectionAt(std::string_view sections, std::string_view tag,
                                          std::uint64_t place) {
    SectionReader reader(sections);
    Section section;
    while (reader.next(section))
        if (section.tag == tag && place-- == 0)
            return section.bytes;
    return {};
}

// The bytes of the number that a section begins with: mostly the count of what it holds, which
// changes with it.
std::size_t countLength(std::string_view bytes) {
    ByteReader in(bytes);
    in.varint();
    return in.ok() ? in.position() : 0;
}

// `section` as what differs from `base`; nothing when that is no smaller than half of it.
std::optional<std::string> differenceFrom(std::string_view base, std::size_t place,
                                          const Section& section) {
    const std::size_t left = countLength(base);
    const std::size_t begin = countLength(section.bytes);
    const std::string_view was = base.substr(left);
    const std::string_view is = section.bytes.substr(begin);
    const auto head = static_cast<std::size_t>(
        std::mismatch(is.begin(), is.end(), was.begin(), was.end()).first - is.begin());
    const auto most = static_cast<std::ptrdiff_t>(std::min(is.size(), was.size()) - head);
    const auto tail = static_cast<std::size_t>(
        std::mismatch(is.rbegin(), is.rbegin() + most, was.rbegin()).first - is.rbegin());
    if (2 * (is.size() - head - tail) >= is.size())
        return {};
    ByteWriter out;
    out.raw(section.tag);
    out.varint(place);
    out.varint(left);
    out.text(section.bytes.substr(0, begin));
    out.varint(head);
    out.text(is.substr(head, is.size() - head - tail));
    out.varint(tail);
    return out.take();
}

// The sections of a step, with a "SAME" for each that differs in a short stretch from the one of
// its tag, and of its place among those, in `before`: the sections of the step before in full.
std::string shortenedSections(std::string_view sections, std::string_view before) {
    std::map<std::string_view, std::size_t> counts;
    SectionWriter out;
    SectionReader reader(sections);
    Section section;
    while (reader.next(section)) {
        const std::size_t place = counts[section.tag]++;
        std::optional<std::string> difference;
        if (section.bytes.size() >= kLong)
            if (const auto base = sectionAt(before, section.tag, place))
                difference = differenceFrom(*base, place, section);
        out.add(difference ? kSame : section.tag, difference ? *difference : section.bytes);
    }
    return out.take();
}

// A section in full.
struct WholeSection {
    std::string tag;
    std::string bytes;
};

// What a "SAME" stands for; nothing, with the reader failed at the place, when `before` has no such
// section or stretch.
std::optional<WholeSection> readSameSection(ByteReader& in, std::string_view before) {
    const std::string_view tag = in.raw(4);
    const auto base = sectionAt(before, tag, in.varint());
    const std::uint64_t left = in.varint();
    const std::string_view begin = in.text();
    const std::uint64_t head = in.varint();
    const std::string_view between = in.text();
    const std::uint64_t tail = in.varint();
    if (!base || left > base->size() || head > base->size() - left ||
        tail > base->size() - left - head)
        in.fail();
    if (!in.ok())
        return {};
    std::string bytes(begin);
    bytes.append(base->substr(left, head)).append(between);
    return WholeSection{std::string(tag), bytes.append(base->substr(base->size() - tail))};
}

} // namespace

bool StepWriter::add(const EditHistory::Step& step) {
    SectionWriter whole;
    encodeState(whole, step.state, chunks_);
    std::string sections = whole.take();
    if (sections.size() > kMaxWrittenBytes - bytes_)
        return false;
    bytes_ += sections.size();
    ByteWriter head;
    head.text(step.description);
    head.u32(step.when);
    SectionWriter body;
    body.add("STEP", head);
    out_.add("HIST", body.take() + shortenedSections(sections, before_));
    before_ = std::move(sections);
    return true;
}

bool StepReader::take(std::string_view sections) {
    StateReader state(chunks_, trouble_);
    EditHistory::Step step;
    SectionWriter whole;
    SectionReader parts(sections);
    Section part;
    while (parts.next(part))
        if (!takePart(part, step, state, whole))
            return false;
    const char* const end = sections.data() + parts.position();
    if (!parts.ok())
        return trouble_.at(end, "a step is cut off");
    auto read = state.finish(end);
    if (!read)
        return false;
    step.state = std::move(*read);
    history_.steps.push_back(std::move(step));
    before_ = whole.take();
    return history_.steps.size() <= kMaxSteps || tooMany(end);
}

bool StepReader::tooMany(const char* place) {
    return trouble_.at(place, "there are too many steps");
}

bool StepReader::takePart(const Section& part, EditHistory::Step& step, StateReader& state,
                          SectionWriter& whole) {
    ByteReader in(part.bytes);
    if (part.tag == "STEP") {
        step.description = in.text();
        step.when = in.u32();
        return trouble_.finished(in, part.bytes, "a step");
    }
    if (part.tag != kSame) {
        bytes_ += part.bytes.size();
        whole.add(part.tag, part.bytes);
        return bytes_ <= kMaxBytes ? state.take(part) : tooMany(part.bytes.data());
    }
    const auto same = readSameSection(in, before_);
    if (!same)
        return trouble_.finished(in, part.bytes, "what differs from the step before");
    bytes_ += same->bytes.size();
    if (bytes_ > kMaxBytes)
        return tooMany(part.bytes.data());
    whole.add(same->tag, same->bytes);
    trouble_.standIn(part.bytes.data());
    const bool taken = state.take({same->tag, same->bytes});
    trouble_.standIn(nullptr);
    return taken;
}

} // namespace cutroom
