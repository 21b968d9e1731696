// Reading the stored form of an edit's state: every value is checked before it counts.
#include "platform/store/EditCodec.h"
#include "platform/store/EditFields.h"

namespace cutroom {

namespace {

eLabelType labelType(ByteReader& in) {
    const std::uint32_t type = in.u32();
    if (!fields::isLabelType(type))
        in.fail();
    return static_cast<eLabelType>(type);
}

MediumRoll mediumRoll(ByteReader& in) {
    const auto medium = static_cast<std::int32_t>(in.u32());
    return {medium, static_cast<std::int32_t>(in.u32())};
}

std::uint32_t channelBit(ByteReader& in) {
    const std::uint32_t bit = in.u32();
    if (!fields::isChannelBit(bit))
        in.fail();
    return bit;
}

} // namespace

bool StateReader::take(const Section& section) {
    using Taker = bool (StateReader::*)(std::string_view);
    static constexpr std::pair<std::string_view, Taker> kTakers[] = {
        {"HEAD", &StateReader::head},   {"CHAN", &StateReader::channel},
        {"CUES", &StateReader::cues},   {"LABL", &StateReader::labels},
        {"CONF", &StateReader::config}, {"TEXT", &StateReader::texts},
        {"GRPH", &StateReader::graphs}, {"BITC", &StateReader::burntIn},
        {"GRPS", &StateReader::groups}, {"MIX ", &StateReader::mix},
    };
    for (const auto& [tag, taker] : kTakers)
        if (section.tag == tag)
            return (this->*taker)(section.bytes);
    state_.unknown.emplace_back(section.tag, section.bytes);
    return true;
}

std::optional<EditState> StateReader::finish(const char* end) {
    if (!trouble_.status().ok())
        return std::nullopt;
    const std::string wrong = hasHead_ ? checkState(state_) : "the head of the edit is missing";
    if (!wrong.empty()) {
        trouble_.at(end, wrong);
        return std::nullopt;
    }
    return std::move(state_);
}

bool StateReader::head(std::string_view bytes) {
    ByteReader in(bytes);
    state_.name = fields::wide(in);
    state_.logType = static_cast<eLogType>(in.u32());
    state_.rate = fields::rate(in);
    const unsigned flags = in.u8();
    state_.dropFrame = (flags & 1u) != 0;
    state_.readOnly = (flags & 2u) != 0;
    state_.imported = (flags & 4u) != 0;
    state_.celCues = (flags & 8u) != 0;
    state_.labelsFromMaterial = (flags & 16u) != 0;
    state_.originalMaterial = static_cast<std::int32_t>(in.u32());
    state_.created = in.u32();
    state_.modified = in.u32();
    hasHead_ = true;
    return trouble_.finished(in, bytes, "the head of the edit");
}

bool StateReader::channelHead(EditChannel& channel, std::string_view bytes) {
    ByteReader in(bytes);
    channel.id = fields::stamp(in);
    channel.type = static_cast<EditChanType>(channelBit(in));
    channel.subType = static_cast<EditChanSubType>(channelBit(in));
    channel.userName = fields::wide(in);
    channel.metadata = fields::narrow(in);
    channel.syncError = in.f64();
    channel.levelsOf = fields::stamp(in);
    if (!isStorableTime(channel.syncError))
        in.fail();
    return trouble_.finished(in, bytes, "a channel");
}

bool StateReader::channelList(EditChannel& channel, std::string_view bytes) {
    ByteReader in(bytes);
    const std::uint64_t number = in.varint();
    const Flicks offset = in.i64();
    const unsigned flags = in.u32();
    if (number >= chunks_.size() || offset < -2 * kMaxFlicks || offset > 2 * kMaxFlicks)
        in.fail();
    if (in.ok())
        channel.cel = CelAccess::make(chunks_[static_cast<std::size_t>(number)], offset, flags);
    return trouble_.finished(in, bytes, "a channel's list");
}

bool StateReader::channelNodes(EditChannel& channel, std::string_view bytes) {
    ByteReader in(bytes);
    LevelNodes nodes;
    while (in.ok() && !in.atEnd()) {
        const Flicks time = fields::time(in);
        nodes.push_back({time, fields::finite(in)});
        if (nodes.back().gain < 0)
            in.fail();
    }
    channel.nodes = Shared<LevelNodes>(std::move(nodes));
    return trouble_.finished(in, bytes, "a channel's level nodes");
}

bool StateReader::channel(std::string_view bytes) {
    EditChannel channel;
    SectionReader sections(bytes);
    Section section;
    bool fine = true;
    while (fine && sections.next(section)) {
        if (section.tag == "HEAD") {
            fine = channelHead(channel, section.bytes);
        } else if (section.tag == "LIST") {
            fine = channelList(channel, section.bytes);
        } else if (section.tag == "NODE") {
            fine = channelNodes(channel, section.bytes);
        } else if (section.tag == "FONT") {
            ByteReader in(section.bytes);
            channel.font.name = fields::wide(in);
            channel.font.size = fields::finite(in);
            channel.font.colour = in.u32();
            channel.font.flags = in.u32();
            fine = trouble_.finished(in, section.bytes, "a channel's font");
        } else {
            channel.unknown.emplace_back(section.tag, section.bytes);
        }
    }
    if (!sections.ok() || (fine && !channel.cel))
        fine = trouble_.at(bytes.data() + sections.position(), "a channel is not whole");
    if (fine)
        state_.channels.push_back(std::move(channel));
    return fine;
}

bool StateReader::cues(std::string_view bytes) {
    ByteReader in(bytes);
    CueList cues;
    const std::uint64_t count = in.count(52);
    double last = -kNoTime;
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        Cue cue;
        cue.setExtID(fields::stamp(in));
        cue.setChannel(fields::stamp(in));
        cue.setTime(in.f64());
        cue.setEndTime(in.f64());
        cue.setColour(in.u32());
        cue.setFlags(in.u32());
        cue.setName(fields::wide(in));
        cue.setDescription(fields::wide(in));
        cue.setImportedMetadata(fields::narrow(in));
        const std::uint64_t custom = in.count(2);
        for (std::uint64_t field = 0; field < custom && in.ok(); ++field) {
            const std::string key = fields::narrow(in);
            cue.setCustomMetadata(key, fields::wide(in));
        }
        if (!(cue.getTime() >= last) || cues.addCuePoint(cue) == SIZE_MAX)
            in.fail();
        last = cue.getTime();
    }
    state_.cues = std::move(cues);
    return trouble_.finished(in, bytes, "the cues");
}

bool StateReader::labels(std::string_view bytes) {
    ByteReader in(bytes);
    std::vector<EditLabel> labels;
    const std::uint64_t count = in.count(29);
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        const eLabelType type = labelType(in);
        const MediumRoll roll = mediumRoll(in);
        const Kv::FrameRate rate = fields::rate(in);
        const bool drop = in.u8() != 0;
        labels.emplace_back(type, roll, TimecodeFormat{rate, drop}, in.i64());
    }
    state_.labels = Shared<std::vector<EditLabel>>(std::move(labels));
    return trouble_.finished(in, bytes, "the labels");
}

bool StateReader::config(std::string_view bytes) {
    ByteReader in(bytes);
    configb config;
    const std::uint64_t count = in.count(2);
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        const std::string key = fields::narrow(in);
        config.set(key, fields::narrow(in));
    }
    state_.config = Shared<configb>(std::move(config));
    return trouble_.finished(in, bytes, "the configuration");
}

bool StateReader::texts(std::string_view bytes) {
    ByteReader in(bytes);
    EditTexts texts;
    texts.video = fields::narrow(in);
    texts.audio = fields::narrow(in);
    texts.imported = fields::narrow(in);
    texts.playbackFormat = fields::narrow(in);
    const std::uint64_t count = in.count();
    for (std::uint64_t i = 0; i < count && in.ok(); ++i)
        texts.mediaLocations.push_back(fields::wide(in));
    state_.texts = Shared<EditTexts>(std::move(texts));
    return trouble_.finished(in, bytes, "the texts");
}

bool StateReader::graphs(std::string_view bytes) {
    ByteReader in(bytes);
    std::map<IdStamp, EffectGraph> graphs;
    const std::uint64_t count = in.count(32);
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        EffectGraph graph;
        graph.id = fields::stamp(in);
        graph.kind = fields::narrow(in);
        graph.name = fields::wide(in);
        const auto made = Cookie::fromString(in.text());
        graph.effectTemplate = made.value_or(Cookie());
        graph.inOffset = fields::time(in);
        graph.outOffset = fields::time(in);
        graph.parameters = fields::narrow(in);
        graph.magic = in.u8() != 0;
        if (!made || !graphs.emplace(graph.id, graph).second)
            in.fail();
    }
    state_.graphs = Shared<std::map<IdStamp, EffectGraph>>(std::move(graphs));
    return trouble_.finished(in, bytes, "the effects");
}

bool StateReader::burntIn(std::string_view bytes) {
    ByteReader in(bytes);
    state_.burntIn.setEnabled(in.u8() != 0);
    const std::uint64_t count = in.count(41);
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        BITCLabel label;
        label.type = labelType(in);
        label.mediumRoll = mediumRoll(in);
        label.x = fields::finite(in);
        label.y = fields::finite(in);
        label.size = fields::finite(in);
        label.colour = in.u32();
        label.prefix = fields::wide(in);
        state_.burntIn.addLabel(label);
    }
    return trouble_.finished(in, bytes, "the burnt-in timecode");
}

bool StateReader::groups(std::string_view bytes) {
    ByteReader in(bytes);
    state_.groups = Kv::makePtr<ChannelGroupList>();
    const std::uint64_t count = in.count();
    for (std::uint64_t i = 0; i < count && in.ok(); ++i) {
        const std::uint64_t size = in.count(12);
        std::vector<IdStamp> channels;
        for (std::uint64_t k = 0; k < size && in.ok(); ++k)
            channels.push_back(fields::stamp(in));
        state_.groups->addGroup(channels);
    }
    return trouble_.finished(in, bytes, "the groups");
}

bool StateReader::mix(std::string_view bytes) {
    const auto mix = Aud::SimpleMixState::fromString(bytes);
    if (!mix)
        return trouble_.at(bytes.data(), "the mix is not one");
    state_.mix = Kv::makePtr<Aud::SimpleMixState>(*mix);
    return true;
}

} // namespace cutroom
