// Verbs for what is selected: channels, segments, cuts, level nodes.
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/Edit.h"
#include "vob/VobModificationBatch.h"

#include <vector>

namespace cutroom::cli {

namespace {

void setChannels(Session& session, SessionWords& words, bool on) {
    if (words.takeIf("all")) {
        words.expectEnd();
        session.viewer()->setSelected(kChanAllSelected, on);
        return;
    }
    for (const auto& [word, type] : {std::pair{"video", kChanVideo}, {"audio", kChanAudio}})
        if (words.takeIf(word)) {
            words.expectEnd();
            session.viewer()->setSelected(type, kSubNormal, on);
            return;
        }
    std::vector<IdStamp> channels;
    do
        channels.push_back(session.takeChannel(words));
    while (!words.done());
    const VobModificationBatch batch(session.viewer());
    for (const IdStamp& channel : channels) {
        if (session.viewer()->constrainTrackSelection(channel, on) != on)
            session.say("  " + session.channelName(channel) + " cannot be selected");
        session.viewer()->setSelected(session.edit()->getIdx(channel), on);
    }
}

void tellWhetherThere(Session& session, SessionWords& words) {
    const auto type = words.takeChoice<EditChanType>("a type", {{"video", kChanVideo},
                                                                {"audio", kChanAudio},
                                                                {"levels", kChanLevels},
                                                                {"subtitle", kChanSubtitle},
                                                                {"other", kChanOther}});
    bool selected = false;
    bool material = false;
    while (!words.done()) {
        if (words.takeOneOf("a word", {"selected", "material"}) == "selected")
            selected = true;
        else
            material = true;
    }
    session.say(session.viewer()->hasChanOfType(type, selected, material) ? "  yes" : "  no");
}

CelEventPair takeSegment(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    CelEventPair segment(session.edit(), channel, session.takePlace(words));
    if (!segment.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "nothing lies there");
    return segment;
}

void segment(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = session.viewer();
    const auto& action = words.takeOneOf("a word", {"add", "remove", "toggle", "clear"});
    if (action == "clear") {
        vob->clearSelectedSegments();
        return;
    }
    LightweightVector<CelEventPair> segments;
    do
        segments.push_back(takeSegment(session, words));
    while (!words.done());
    if (action == "toggle")
        for (const auto& one : segments)
            vob->toggleSegmentSelection(one);
    else if (segments.size() == 1)
        vob->selectSegment(segments.front(), action == "add");
    else
        vob->selectSegments(segments, action == "add");
}

// The cut at a time: the in point there, or the out point with the word "out".
ce_handle takeCut(Session& session, SessionWords& words, const IdStamp& channel) {
    const double seconds = session.takePlace(words);
    const std::uint8_t flags = words.takeAnywhere("out") ? kEventOut : 0;
    const ce_handle point = session.edit()->get_edit_cel_p(channel)->find_ceh(seconds, flags);
    if (!point.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "no cut lies there or later");
    return point;
}

// Where a point lies among the unjoined cuts of its channel.
void tellCut(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const ce_handle point = takeCut(session, words, channel);
    const TrackSelections* const selected = session.viewer()->findTrackSelections(channel);
    const UnjoinedCuts cuts = selected ? selected->getUnjoinedCuts() : UnjoinedCuts();
    const int nearest = cuts.getNearestHandle(point.get_edit_time());
    std::string text = "  " + timeText(point.get_edit_time()) +
                       (cuts.isMember(point) ? format(": unjoined, flags %u", cuts.getFlag(point))
                                             : std::string(": joined")) +
                       (cuts.isPopped(point) ? ", popped" : "");
    if (nearest >= 0)
        text += ", nearest at " +
                timeText(cuts.getHandle(static_cast<unsigned short>(nearest)).get_edit_time());
    session.say(text + format(", %u constrained", cuts.numMatching(kCutConstraints)));
}

// Changes the unjoined cuts of a channel as a whole.
template <class Change> void changeCuts(Session& session, SessionWords& words, Change change) {
    const IdStamp channel = session.takeChannel(words);
    TrackSelections* const selected = session.viewer()->getTrackSelections(channel);
    if (!selected)
        return;
    UnjoinedCuts cuts = selected->getUnjoinedCuts();
    change(cuts, channel);
    selected->setCuts(cuts);
    session.viewer()->informCutSelected(channel);
}

void freeCuts(Session& session, SessionWords& words) {
    changeCuts(session, words,
               [](UnjoinedCuts& cuts, const IdStamp&) { cuts.clearTrimConstraints(); });
}

void reEstablishCuts(Session& session, SessionWords& words) {
    changeCuts(session, words, [&session](UnjoinedCuts& cuts, const IdStamp& channel) {
        cuts.reEstablish(session.edit().getCookie(), channel);
    });
}

void tellSelection(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    std::string channels;
    for (const IdStamp& channel : vob->getSelectedChans())
        channels += ' ' + session.channelName(channel);
    session.say("  channels:" + channels);
    for (const IdStamp& channel : session.edit()->getChans()) {
        const TrackSelections* selected = vob->findTrackSelections(channel);
        if (!selected)
            continue;
        if (selected->anySegments())
            session.say("  " + session.channelName(channel) + " segments " +
                        selected->segmentsAsString());
        if (selected->getUnjoinedCuts().size() > 0)
            session.say("  " + session.channelName(channel) + " cuts " +
                        selected->getUnjoinedCuts().asString());
    }
    if (vob->anySelectedLevelNodes())
        session.say("  level nodes are selected");
}

void remember(Session& session, SessionWords& words) {
    session.remembered().buildFrom(takeSegment(session, words));
}

void tellRemembered(Session& session, SessionWords&) {
    const IndexIndependentEventList& segment = session.remembered();
    if (segment.size() == 0)
        refuse(StatusCode::failed, "remembered?", "no segment is remembered");
    for (std::size_t i = 0; i < segment.size(); ++i) {
        const ce_handle point = segment.getHandleFor(i);
        session.say("  " + timeText(toSeconds(segment.getEvent(i).time)) +
                    (point.valid() ? format(": event %u", point.getIndex())
                                   : std::string(": not there any more")));
    }
}

void addSelectingVerbs(VerbTable& verbs) {
    verbs.add({"select", "CHANNEL ... | all | video | audio", "selects channels",
               [](Session& session, SessionWords& words) { setChannels(session, words, true); }});
    verbs.add({"deselect", "CHANNEL ... | all | video | audio", "deselects channels",
               [](Session& session, SessionWords& words) { setChannels(session, words, false); }});
    verbs.add({"solo", "CHANNEL", "selects this channel and no other of its type",
               [](Session& session, SessionWords& words) {
                   session.viewer()->soloSelect(session.takeChannel(words));
               }});
    verbs.add({"select-from", "CHANNEL", "selects this channel and all after it",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setSelectedFrom(session.takeChannelNumber(words));
               }});
    verbs.add({"has?", "video|audio|levels|subtitle|other [selected] [material]",
               "tells whether the edit has such a channel", tellWhetherThere});
    verbs.add({"selectable?", "CHANNEL", "tells whether a channel's selection may be changed",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   session.say(session.viewer()->canAlterTrackSelection(channel) ? "  yes"
                                                                                 : "  no");
               }});
}

// Segments and unjoined cuts.
void addJoiningVerbs(VerbTable& verbs) {
    verbs.add(
        {"segment", "add|remove|toggle (CHANNEL T) ... | clear", "selects segments", segment});
    verbs.add({"unjoin", "CHANNEL T [out] [flags N]", "unjoins a cut for trimming",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   const ce_handle point = takeCut(session, words, channel);
                   const unsigned flags =
                       words.takeIf("flags")
                           ? static_cast<unsigned>(words.takeInt("bits", 0, 0xFFFF))
                           : 0;
                   words.expectEnd();
                   session.viewer()->unjoinCut(channel, point, flags);
               }});
    verbs.add({"toggle-cut", "CHANNEL T [out]", "unjoins a cut, or joins it again",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   session.viewer()->toggleCut(channel, takeCut(session, words, channel));
               }});
    verbs.add({"cut?", "CHANNEL T [out]", "tells how a cut lies to those unjoined", tellCut});
    verbs.add({"free-cuts", "CHANNEL", "takes the trim constraints off unjoined cuts", freeCuts});
    verbs.add({"re-establish", "CHANNEL", "finds unjoined cuts by their effects, then their place",
               reEstablishCuts});
    verbs.add({"rejoin", "", "joins all cuts again",
               [](Session& session, SessionWords&) { session.viewer()->rejoinCuts(); }});
}

} // namespace

void addSelectionVerbs(VerbTable& verbs) {
    verbs.heading("Selection");
    addSelectingVerbs(verbs);
    addJoiningVerbs(verbs);
    verbs.add({"node", "CHANNEL T [off] | clear",
               "selects a level node of a levels channel, or none",
               [](Session& session, SessionWords& words) {
                   if (words.takeIf("clear")) {
                       session.viewer()->clearSelectedLevelNodes();
                       return;
                   }
                   const IdStamp channel = session.takeChannel(words);
                   const double seconds = session.takePlace(words);
                   session.viewer()->selectLevelNode(channel, seconds, !words.takeIf("off"));
               }});
    verbs.add(
        {"remember", "CHANNEL T", "remembers a segment by what its two points are", remember});
    verbs.add({"remembered?", "", "tells where these points are now", tellRemembered});
    verbs.add({"selection?", "", "tells what is selected", tellSelection});
    verbs.add({"bind-levels", "on|off", "whether levels channels follow their audio channels",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setLevelsBoundToAudio(words.takeOnOff("on or off"));
               }});
}

} // namespace cutroom::cli
