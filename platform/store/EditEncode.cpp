// Writing the stored form of an edit's state.
#include "platform/store/EditCodec.h"
#include "platform/store/EditFields.h"

namespace cutroom {

namespace {

using fields::put;

std::string headOf(const EditState& state) {
    ByteWriter out;
    put(out, state.name);
    out.u32(state.logType);
    put(out, state.rate);
    out.u8(static_cast<std::uint8_t>(state.dropFrame | (state.readOnly << 1) |
                                     (state.imported << 2) | (state.celCues << 3) |
                                     (state.labelsFromMaterial << 4)));
    out.u32(static_cast<std::uint32_t>(state.originalMaterial));
    out.u32(state.created);
    out.u32(state.modified);
    return out.take();
}

std::string channelOf(const EditChannel& channel, CelChunkWriter& chunks) {
    SectionWriter out;
    ByteWriter head;
    put(head, channel.id);
    head.u32(channel.type);
    head.u32(channel.subType);
    put(head, channel.userName);
    put(head, channel.metadata);
    head.f64(channel.syncError);
    put(head, channel.levelsOf);
    out.add("HEAD", head);
    ByteWriter list;
    list.varint(chunks.number(channel.id, *channel.cel));
    list.i64(CelAccess::offset(*channel.cel));
    list.u32(channel.cel->getFlags());
    out.add("LIST", list);
    ByteWriter nodes;
    for (const LevelNode& node : *channel.nodes) {
        nodes.i64(node.time);
        put(nodes, node.gain);
    }
    if (!channel.nodes->empty())
        out.add("NODE", nodes);
    if (!(channel.font == SubtitleFont())) {
        ByteWriter font;
        put(font, channel.font.name);
        put(font, channel.font.size);
        font.u32(channel.font.colour);
        font.u32(channel.font.flags);
        out.add("FONT", font);
    }
    for (const auto& [tag, bytes] : channel.unknown)
        out.add(tag, bytes);
    return out.take();
}

std::string cuesOf(const CueList& cues) {
    ByteWriter out;
    out.varint(cues.getNumCuePoints());
    for (const Cue& cue : cues.cues()) {
        put(out, cue.getExtID());
        put(out, cue.getChannel());
        out.f64(cue.getTime());
        out.f64(cue.getEndTime());
        out.u32(cue.getColour());
        out.u32(cue.getFlags());
        put(out, cue.getName());
        put(out, cue.getDescription());
        put(out, cue.getImportedMetadata());
        out.varint(cue.getCustomMetadata().size());
        for (const auto& [key, value] : cue.getCustomMetadata()) {
            put(out, key);
            put(out, value);
        }
    }
    return out.take();
}

std::string labelsOf(const std::vector<EditLabel>& labels) {
    ByteWriter out;
    out.varint(labels.size());
    for (const EditLabel& label : labels) {
        out.u32(static_cast<std::uint32_t>(label.type()));
        out.u32(static_cast<std::uint32_t>(label.get_MediumRoll().first));
        out.u32(static_cast<std::uint32_t>(label.get_MediumRoll().second));
        put(out, label.format().rate);
        out.u8(label.format().dropFrame);
        out.i64(label.get_abs_posn());
    }
    return out.take();
}

std::string configOf(const configb& config) {
    ByteWriter out;
    out.varint(config.entries().size());
    for (const auto& [key, value] : config.entries()) {
        put(out, key);
        put(out, value);
    }
    return out.take();
}

std::string textsOf(const EditTexts& texts) {
    ByteWriter out;
    put(out, texts.video);
    put(out, texts.audio);
    put(out, texts.imported);
    put(out, texts.playbackFormat);
    out.varint(texts.mediaLocations.size());
    for (const auto& location : texts.mediaLocations)
        put(out, location);
    return out.take();
}

std::string graphsOf(const std::map<IdStamp, EffectGraph>& graphs) {
    ByteWriter out;
    out.varint(graphs.size());
    for (const auto& [id, graph] : graphs) {
        put(out, id);
        put(out, graph.kind);
        put(out, graph.name);
        out.text(graph.effectTemplate.asString());
        out.i64(graph.inOffset);
        out.i64(graph.outOffset);
        put(out, graph.parameters);
        out.u8(graph.magic);
    }
    return out.take();
}

std::string burntInOf(const BITCEffect& burntIn) {
    ByteWriter out;
    out.u8(burntIn.enabled());
    out.varint(burntIn.labels().size());
    for (const BITCLabel& label : burntIn.labels()) {
        out.u32(static_cast<std::uint32_t>(label.type));
        out.u32(static_cast<std::uint32_t>(label.mediumRoll.first));
        out.u32(static_cast<std::uint32_t>(label.mediumRoll.second));
        put(out, label.x);
        put(out, label.y);
        put(out, label.size);
        out.u32(label.colour);
        put(out, label.prefix);
    }
    return out.take();
}

std::string groupsOf(const ChannelGroupList& groups) {
    ByteWriter out;
    out.varint(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto channels = groups.getGroupContents(i);
        out.varint(channels.size());
        for (const IdStamp& channel : channels)
            put(out, channel);
    }
    return out.take();
}

} // namespace

void encodeState(SectionWriter& out, const EditState& state, CelChunkWriter& chunks) {
    out.add("HEAD", headOf(state));
    for (const EditChannel& channel : state.channels)
        out.add("CHAN", channelOf(channel, chunks));
    if (state.cues.getNumCuePoints() > 0)
        out.add("CUES", cuesOf(state.cues));
    if (!state.labels->empty())
        out.add("LABL", labelsOf(*state.labels));
    if (!state.config->entries().empty())
        out.add("CONF", configOf(*state.config));
    if (!(*state.texts == EditTexts()))
        out.add("TEXT", textsOf(*state.texts));
    if (!state.graphs->empty())
        out.add("GRPH", graphsOf(*state.graphs));
    if (!(state.burntIn == BITCEffect()))
        out.add("BITC", burntInOf(state.burntIn));
    if (state.groups && state.groups->size() > 0)
        out.add("GRPS", groupsOf(*state.groups));
    if (state.mix && state.mix->valid())
        out.add("MIX ", state.mix->asString());
    for (const auto& [tag, bytes] : state.unknown)
        out.add(tag, bytes);
}

} // namespace cutroom
