// The canonical text of an edit's contents: a line for each thing, in a fixed order.
#include "platform/base/Strings.h"
#include "platform/store/EditState.h"

namespace cutroom {

namespace {

// Lines of fields: a key, then each value after a blank; texts are quoted so that no value can
// pass for another.
class Lines {
public:
    Lines& line(std::string_view key) {
        text_ += text_.empty() ? "" : "\n";
        text_ += key;
        return *this;
    }
    Lines& operator<<(long long value) { return raw(toText(value)); }
    Lines& operator<<(int value) { return *this << static_cast<long long>(value); }
    Lines& operator<<(unsigned value) { return *this << static_cast<long long>(value); }
    Lines& operator<<(long value) { return *this << static_cast<long long>(value); }
    Lines& operator<<(bool value) { return *this << static_cast<int>(value); }
    Lines& operator<<(double value) { return raw(toText(value)); }
    Lines& operator<<(const IdStamp& value) { return raw(value.asString()); }
    Lines& operator<<(const Cookie& value) { return raw(value.asString()); }
    Lines& operator<<(const std::wstring& value) { return *this << toUtf8(value); }
    Lines& operator<<(const std::string& value) {
        text_ += " \"";
        for (const char c : value) {
            if (c == '"' || c == '\\')
                text_ += '\\';
            text_ += c == '\n' ? std::string("\\n") : std::string(1, c);
        }
        text_ += '"';
        return *this;
    }
    Lines& raw(std::string_view value) {
        text_ += ' ';
        text_ += value;
        return *this;
    }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

void addCel(Lines& lines, const Cel& cel) {
    lines.line(" list") << cel.getFlags() << static_cast<long long>(cel.get_num_events());
    for (std::uint32_t i = 0; i < cel.get_num_events(); ++i) {
        const ChannelEvent event = cel.get_event(i);
        lines.line("  event") << event.time << event.stripTime << event.material << event.speed
                              << event.effectGraph << static_cast<unsigned>(event.flags);
        const EventDetail& detail = cel.getDetail(event.detail);
        if (detail.empty() || event.isOut())
            continue;
        lines.line("  detail") << detail.name << detail.media << detail.metadata;
        for (const auto& text : detail.lines)
            lines << text;
    }
}

void addChannel(Lines& lines, const EditChannel& channel) {
    lines.line("channel") << channel.id << static_cast<unsigned>(channel.type)
                          << static_cast<unsigned>(channel.subType) << channel.userName
                          << channel.metadata << channel.syncError << channel.levelsOf;
    const SubtitleFont& font = channel.font;
    lines.line(" font") << font.name << static_cast<double>(font.size) << font.colour << font.flags;
    for (const LevelNode& node : *channel.nodes)
        lines.line(" node") << node.time << static_cast<double>(node.gain);
    addCel(lines, *channel.cel);
}

void addCue(Lines& lines, const Cue& cue) {
    lines.line("cue") << cue.getExtID() << cue.getTime() << cue.getEndTime() << cue.getColour()
                      << cue.getFlags() << cue.getChannel() << cue.getName() << cue.getDescription()
                      << cue.getImportedMetadata();
    for (const auto& [key, value] : cue.getCustomMetadata())
        lines.line(" field") << key << value;
}

void addLabel(Lines& lines, const EditLabel& label) {
    lines.line("label") << static_cast<int>(label.type()) << label.get_MediumRoll().first
                        << label.get_MediumRoll().second;
    lines.raw(label.format().rate.asString()) << label.format().dropFrame << label.get_abs_posn();
}

void addBurntIn(Lines& lines, const BITCEffect& burntIn) {
    lines.line("burnt-in") << burntIn.enabled();
    for (const BITCLabel& label : burntIn.labels())
        lines.line(" label") << static_cast<int>(label.type) << label.mediumRoll.first
                             << label.mediumRoll.second << static_cast<double>(label.x)
                             << static_cast<double>(label.y) << static_cast<double>(label.size)
                             << label.colour << label.prefix;
}

void addTexts(Lines& lines, const EditTexts& texts) {
    lines.line("texts") << texts.video << texts.audio << texts.imported << texts.playbackFormat;
    for (const auto& location : texts.mediaLocations)
        lines.line(" media") << location;
}

void addGroups(Lines& lines, const EditState& state) {
    for (std::size_t i = 0; state.groups && i < state.groups->size(); ++i) {
        lines.line("group");
        for (const IdStamp& channel : state.groups->getGroupContents(i))
            lines << channel;
    }
}

} // namespace

std::string canonicalText(const EditState& state) {
    Lines lines;
    lines.line("edit") << state.name << static_cast<unsigned>(state.logType);
    lines.raw(state.rate.asString())
        << state.dropFrame << state.readOnly << state.imported << state.celCues
        << state.labelsFromMaterial << state.originalMaterial;
    for (const EditChannel& channel : state.channels)
        addChannel(lines, channel);
    for (const Cue& cue : state.cues.cues())
        addCue(lines, cue);
    for (const EditLabel& label : *state.labels)
        addLabel(lines, label);
    for (const auto& [key, value] : state.config->entries())
        if (!configb::isViewState(key))
            lines.line("config") << key << value;
    addTexts(lines, *state.texts);
    for (const auto& [id, graph] : *state.graphs)
        lines.line("graph") << id << graph.kind << graph.name << graph.effectTemplate
                            << graph.inOffset << graph.outOffset << graph.parameters << graph.magic;
    addBurntIn(lines, state.burntIn);
    addGroups(lines, state);
    if (state.mix && state.mix->valid())
        lines.line("mix") << state.mix->asString();
    return lines.take();
}

} // namespace cutroom
