// Verbs for channels: adding, naming, grouping, level nodes, subtitles.
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace cutroom::cli {

namespace {

void addChannel(Session& session, SessionWords& words) {
    const auto type = words.takeChoice<EditChanType>("a type", {{"video", kChanVideo},
                                                                {"audio", kChanAudio},
                                                                {"subtitle", kChanSubtitle},
                                                                {"other", kChanOther},
                                                                {"levels", kChanLevels}});
    if (type == kChanLevels) {
        const IdStamp audio = session.takeChannel(words);
        const EditModifier modifier = session.editForChange();
        if (!modifier->addLevelsChan(audio).valid())
            refuse(StatusCode::failed, "levels", "only an audio channel without one takes it");
        return;
    }
    EditChanSubType subType = kSubNormal;
    if (!words.done())
        subType = words.takeChoice<EditChanSubType>("a sub-type", {{"normal", kSubNormal},
                                                                   {"right-eye", kSubStereoRight},
                                                                   {"matte", kSubMatte},
                                                                   {"derived", kSubDerived}});
    const EditModifier modifier = session.editForChange();
    modifier->addChan(type, subType);
}

void listChannels(Session& session, SessionWords&) {
    const EditPtr edit = session.edit();
    for (const IdStamp& channel : edit->getChans()) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        session.say("  " + session.channelName(channel) +
                    format(" type %u sub-type %u, %u segments", edit->getChanType(channel),
                           edit->getChanSubtype(channel), cel->numSegments()) +
                    (cel->hasFlag(kCelHasMaterial) ? ", material" : "") +
                    (edit->getSyncError(channel) != 0
                         ? ", sync error " + timeText(edit->getSyncError(channel))
                         : "") +
                    (edit->getChanType(channel) == kChanLevels
                         ? format(", %zu nodes", edit->getLevelNodes(channel).size())
                         : ""));
    }
    if (edit->hasStereoscopicVideo())
        session.say("  stereoscopic");
}

void groupChannels(Session& session, SessionWords& words) {
    const bool on = words.takeOnOff("on or off");
    std::vector<IdStamp> channels;
    while (!words.done())
        channels.push_back(session.takeChannel(words));
    session.editForChange()->groupChannels(channels, on);
}

void listGroups(Session& session, SessionWords&) {
    const Kv::Ptr<ChannelGroupList> groups = session.edit()->openObjectInternal();
    for (std::size_t i = 0; groups && i < groups->size(); ++i) {
        std::string members;
        for (const IdStamp& channel : groups->getGroupContents(i))
            members += ' ' + session.channelName(channel);
        session.say(format("  %zu:", i + 1) + members);
    }
}

void level(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const Flicks at = toFlicks(session.takePlace(words));
    LevelNodes nodes = session.edit()->getLevelNodes(channel);
    std::erase_if(nodes, [&](const LevelNode& node) { return node.time == at; });
    if (!words.takeIf("none"))
        nodes.push_back({at, static_cast<float>(words.takeNumber("a gain"))});
    const EditModifier modifier = session.editForChange();
    if (!modifier->setLevelNodes(channel, std::move(nodes)))
        refuse(StatusCode::failed, session.channelName(channel),
               "takes no such node: a levels channel and a gain of 0 or more are needed");
}

void listLevels(Session& session, SessionWords& words) {
    for (const LevelNode& node : session.edit()->getLevelNodes(session.takeChannel(words)))
        session.say("  " + timeText(toSeconds(node.time)) + " gain " +
                    timeText(static_cast<double>(node.gain)));
}

// Subtitles need no source: their material is the edit's own text.
void subtitle(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    CelSegment segment;
    segment.start = toFlicks(session.takePlace(words));
    segment.end = toFlicks(session.takePlace(words));
    while (!words.done())
        segment.detail.lines.push_back(toWide(words.take("a line")));
    if (session.edit()->getChanType(channel) != kChanSubtitle)
        refuse(StatusCode::wrongUsage, session.channelName(channel), "not a subtitle channel");
    segment.material = convertCookie(session.edit()->getCookie(), 'T', 0);
    const EditModifier modifier = session.editForChange();
    require(modifier->get_edit_cel_p(channel)->overwrite(segment));
    modifier->addModification(kModSubtitles, false);
}

void font(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    SubtitleFont font = session.edit()->getSubtitleFont(channel);
    font.flags = 0;
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"bold", "italic", "plain", "name", "size"});
        if (word == "bold" || word == "italic")
            font.flags |= word == "bold" ? kFontBold : kFontItalic;
        else if (word == "name")
            font.name = toWide(words.take("a name"));
        else if (word == "size")
            font.size = static_cast<float>(words.takeNumber("a size"));
    }
    session.editForChange()->setSubtitleFont(channel, font);
}

} // namespace

void addChannelVerbs(VerbTable& verbs) {
    verbs.heading("Channels (each change is one step of undo)");
    verbs.add({"add-channel", "video|audio|subtitle|other [SUBTYPE] | levels AUDIO",
               "adds a channel", addChannel});
    verbs.add({"remove-channel", "CHANNEL", "removes a channel",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   session.editForChange()->removeChan(channel, false);
               }});
    verbs.add({"channels", "", "lists the edit's channels", listChannels});
    verbs.add({"name-channel", "CHANNEL NAME", "gives a channel a name of its own",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   session.editForChange()->setChanUserName(channel, toWide(words.take("a name")));
               }});
    verbs.add({"sync-error", "CHANNEL T", "notes how far a channel is out of sync",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   const double seconds = words.takeNumber("seconds");
                   session.editForChange()->setSyncError(channel, seconds);
               }});
    verbs.add(
        {"group-channels", "on|off CHANNEL ...", "groups channels, or parts them", groupChannels});
    verbs.add({"channel-groups", "", "lists the groups", listGroups});
    verbs.add({"level", "CHANNEL T GAIN|none", "sets or removes a level node", level});
    verbs.add({"levels", "CHANNEL", "lists the level nodes", listLevels});
    verbs.add({"auto-levels", "", "gives every audio channel a levels channel",
               [](Session& session, SessionWords&) {
                   const EditModifier modifier = session.editForChange();
                   EditModule module = session.viewer()->getEditModule();
                   autoInitAudioLevelsTracks(module);
               }});
    verbs.add(
        {"subtitle", "CHANNEL T T LINE ...", "lays a subtitle on a subtitle channel", subtitle});
    verbs.add({"font", "CHANNEL [bold] [italic] [plain] [name N] [size N]",
               "a subtitle channel's font", font});
}

} // namespace cutroom::cli
