#include "platform/store/CelCodec.h"

#include "platform/store/EditFields.h"

#include <utility>

namespace cutroom {

namespace {

// What a stored segment has beyond its duration, material and strip time.
constexpr unsigned kHasInGraph = 1;
constexpr unsigned kHasOutGraph = 2;
constexpr unsigned kHasSpeed = 4;
constexpr unsigned kHasDetail = 8;
constexpr unsigned kOwnOut = 16; // the out point does not follow from the in point
constexpr unsigned kKnownBits = 31;

// Numbers things by their first use.
template <class T, class Hash = std::hash<T>> class Numbering {
public:
    std::uint64_t of(const T& thing) {
        const auto [entry, fresh] = numbers_.try_emplace(thing, things_.size());
        if (fresh)
            things_.push_back(thing);
        return entry->second;
    }
    const std::vector<T>& things() const noexcept { return things_; }

private:
    std::unordered_map<T, std::uint64_t, Hash> numbers_;
    std::vector<T> things_;
};

class Encoder {
public:
    explicit Encoder(const CelStorage& list) : list_(list) {}

    std::string run() {
        for (std::size_t i = 0; i < list_.segments(); ++i)
            segment(list_.events[2 * i], list_.events[2 * i + 1]);
        ByteWriter out;
        out.varint(materials_.things().size());
        for (const Cookie& material : materials_.things())
            out.text(material.asString());
        out.varint(details_.things().size());
        for (const std::uint32_t number : details_.things())
            detail(out, list_.detail(number));
        out.varint(list_.segments());
        if (!list_.empty())
            out.i64(list_.start());
        out.raw(body_.bytes());
        return out.take();
    }

private:
    void segment(const ChannelEvent& in, const ChannelEvent& outPoint) {
        CelSegment plain;
        plain.start = in.time;
        plain.end = outPoint.time;
        plain.stripStart = in.stripTime;
        plain.material = in.material;
        plain.speed = in.speed;
        plain.flags = in.flags;
        plain.outGraph = outPoint.effectGraph;
        const unsigned bits = (in.effectGraph.valid() ? kHasInGraph : 0u) |
                              (outPoint.effectGraph.valid() ? kHasOutGraph : 0u) |
                              (in.speed != 1.0 ? kHasSpeed : 0u) |
                              (in.detail != 0 ? kHasDetail : 0u) |
                              (pairOf(plain, in.detail)[1] == outPoint ? 0u : kOwnOut);
        body_.varint(static_cast<std::uint64_t>(outPoint.time - in.time));
        body_.u8(static_cast<std::uint8_t>(bits));
        point(in);
        if ((bits & kHasSpeed) != 0)
            body_.f64(in.speed);
        if (in.detail != 0)
            body_.varint(details_.of(in.detail));
        if (in.effectGraph.valid())
            fields::put(body_, in.effectGraph);
        if (outPoint.effectGraph.valid())
            fields::put(body_, outPoint.effectGraph);
        if ((bits & kOwnOut) != 0) {
            point(outPoint);
            body_.f64(outPoint.speed);
        }
    }
    // All of a point but its speed.
    void point(const ChannelEvent& event) {
        body_.u8(event.flags);
        body_.varint(materials_.of(event.material));
        body_.varint(fields::zigzag(event.stripTime));
    }
    static void detail(ByteWriter& out, const EventDetail& detail) {
        fields::put(out, detail.name);
        fields::put(out, detail.media);
        fields::put(out, detail.metadata);
        out.varint(detail.lines.size());
        for (const auto& line : detail.lines)
            fields::put(out, line);
    }

    const CelStorage& list_;
    Numbering<Cookie> materials_;
    Numbering<std::uint32_t> details_;
    ByteWriter body_;
};

class Decoder {
public:
    explicit Decoder(ByteReader& in) : in_(in) {}

    std::optional<CelStorage> run() {
        readMaterials();
        readDetails();
        const std::uint64_t count = in_.count(4);
        Flicks at = count > 0 ? in_.i64() : 0;
        if (at < -kMaxFlicks || at > kMaxFlicks)
            in_.fail();
        std::vector<ChannelEvent> events;
        events.reserve(static_cast<std::size_t>(2 * count));
        for (std::uint64_t i = 0; i < count && in_.ok(); ++i)
            segment(events, at);
        if (!in_.atEnd())
            in_.fail();
        if (!in_.ok())
            return std::nullopt;
        list_.splice(0, 0, std::move(events));
        return std::move(list_);
    }

private:
    void readMaterials() {
        const std::uint64_t count = in_.count();
        for (std::uint64_t i = 0; i < count && in_.ok(); ++i) {
            const auto cookie = Cookie::fromString(in_.text());
            if (!cookie)
                in_.fail();
            materials_.push_back(cookie.value_or(Cookie()));
        }
    }
    void readDetails() {
        const std::uint64_t count = in_.count(4);
        for (std::uint64_t i = 0; i < count && in_.ok(); ++i) {
            EventDetail detail;
            detail.name = fields::wide(in_);
            detail.media = fields::wide(in_);
            detail.metadata = fields::narrow(in_);
            const std::uint64_t lines = in_.count();
            for (std::uint64_t line = 0; line < lines && in_.ok(); ++line)
                detail.lines.push_back(fields::wide(in_));
            if (detail.empty())
                in_.fail();
            if (in_.ok())
                details_.push_back(list_.detailTable().intern(detail));
        }
    }
    template <class T> T entry(const std::vector<T>& things) {
        const std::uint64_t number = in_.varint();
        if (number < things.size())
            return things[static_cast<std::size_t>(number)];
        in_.fail();
        return T{};
    }
    // All of a point but its speed.
    void point(ChannelEvent& event) {
        event.flags = in_.u8();
        event.material = entry(materials_);
        event.stripTime = fields::unzigzag(in_.varint());
    }
    void segment(std::vector<ChannelEvent>& events, Flicks& at) {
        const std::uint64_t length = in_.varint();
        const unsigned bits = in_.u8();
        ChannelEvent in;
        in.time = at;
        point(in);
        in.speed = (bits & kHasSpeed) != 0 ? in_.f64() : 1.0;
        if ((bits & kHasDetail) != 0)
            in.detail = entry(details_);
        CelSegment plain;
        plain.inGraph = (bits & kHasInGraph) != 0 ? fields::stamp(in_) : IdStamp();
        plain.outGraph = (bits & kHasOutGraph) != 0 ? fields::stamp(in_) : IdStamp();
        if (length == 0 || length > static_cast<std::uint64_t>(kMaxFlicks - at) || in.isOut() ||
            (bits & ~kKnownBits) != 0 || !checkEventValues(in))
            in_.fail();
        if (!in_.ok())
            return;
        plain.start = at;
        at = plain.end = at + static_cast<Flicks>(length);
        plain.stripStart = in.stripTime;
        plain.material = in.material;
        plain.speed = in.speed;
        plain.flags = in.flags;
        EventPair pair = pairOf(plain, in.detail);
        if ((bits & kOwnOut) != 0) {
            point(pair[1]);
            pair[1].speed = in_.f64();
        }
        if (!pair[1].isOut() || !checkEventValues(pair[1]))
            in_.fail();
        append(events, pair);
    }

    ByteReader& in_;
    CelStorage list_;
    std::vector<Cookie> materials_;
    std::vector<std::uint32_t> details_;
};

} // namespace

std::string encodeStorage(const CelStorage& list) { return Encoder(list).run(); }

std::optional<CelStorage> decodeStorage(ByteReader& in) { return Decoder(in).run(); }

} // namespace cutroom
