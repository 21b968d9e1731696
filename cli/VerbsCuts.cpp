// Verbs that cut: lay, lift, split, trim, copy in, flatten.
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/Edit.h"
#include "platform/store/Editor.h"
#include "vob/TrimObj.h"

namespace cutroom::cli {

namespace {

Flicks takeFlicks(Session& session, SessionWords& words) {
    return toFlicks(session.takePlace(words));
}

TimeRange takeRange(Session& session, SessionWords& words) {
    const double from = session.takePlace(words);
    return {from, session.takePlace(words)};
}

void lay(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    CelSegment segment;
    const std::string& material = words.take("an edit or log, or black");
    if (material != "black") {
        const Cookie source = require(findEditCookie(material));
        const bool audio = session.edit()->getChanType(channel) == kChanAudio;
        segment.material = convertCookie(source, audio ? 'S' : 'V', 1);
        segment.detail.name = EditPtr(source)->getName();
    }
    segment.start = takeFlicks(session, words);
    segment.end = segment.start + session.takeLength(words);
    while (!words.done()) {
        const auto& word =
            words.takeOneOf("a word", {"from", "speed", "name", "disabled", "freeze"});
        if (word == "from")
            segment.stripStart = session.takeLength(words, "a place in the source");
        else if (word == "speed")
            segment.speed = words.takeNumber("a speed");
        else if (word == "name")
            segment.detail.name = toWide(words.take("a name"));
        else
            segment.flags |= word == "disabled" ? kEventDisabled : kEventFreeze;
    }
    const EditModifier modifier = session.editForChange();
    require(modifier->get_edit_cel_p(channel)->overwrite(segment));
}

void overRange(Session& session, SessionWords& words, Status (Cel::*change)(const TimeRange&)) {
    const IdStamp channel = session.takeChannel(words);
    const TimeRange range = takeRange(session, words);
    const EditModifier modifier = session.editForChange();
    require((modifier->get_edit_cel_p(channel).get()->*change)(range));
}

void gap(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const Flicks at = takeFlicks(session, words);
    const Flicks length = session.takeLength(words);
    const EditModifier modifier = session.editForChange();
    require(modifier->get_edit_cel_p(channel)->insertGap(at, length));
}

void split(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const Flicks at = takeFlicks(session, words);
    const EditModifier modifier = session.editForChange();
    require(modifier->get_edit_cel_p(channel)->split(at));
}

void trim(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const double at = session.takePlace(words);
    const Flicks by = session.takeLength(words, "how far");
    const ce_handle point = session.edit()->get_edit_cel_p(channel)->find_ceh(at, kEventOut);
    if (!point.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "no cut lies there or later");
    const EditModifier modifier = session.editForChange();
    require(modifier->get_edit_cel_p(channel)->trim(point.getIndex(), by));
}

void trimCuts(Session& session, SessionWords& words) {
    const double by = toSeconds(session.takeLength(words, "how far"));
    bool rejoin = false;
    TrimObj trim(*session.viewer());
    while (!words.done())
        if (words.takeIf("rejoin"))
            rejoin = true;
        else
            trim.setSnapChannel(session.takeChannel(words));
    const double nearest = trim.getNearestCutTime(session.viewer()->getCurrentTime());
    if (nearest == kNoTime)
        refuse(StatusCode::notFound, "trim-cuts", "no cut is unjoined");
    const EditModifier modifier = session.editForChange();
    require(trim.trimFrames(by, true, rejoin));
    session.say("  " + session.channelName(trim.getSnapChannel()) + ", nearest cut was at " +
                timeText(nearest));
}

void simplify(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const bool frames = words.takeOneOf("a way", {"join", "quantise"}) == "quantise";
    const EditModifier modifier = session.editForChange();
    const Kv::Ptr<Cel> cel = modifier->get_edit_cel_p(channel);
    if (cel->numSegments() == 0)
        return;
    require(cel->simplify(TimeRange(cel->getStartTime(), cel->getEndTime()),
                          frames ? CelSimplify::quantise : CelSimplify::joinContinuous,
                          modifier->getFrameRate()));
}

void listCuts(Session& session, SessionWords& words) {
    const EditPtr edit = session.edit();
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(session.takeChannel(words));
    for (std::uint32_t i = 0; i < cel->get_num_events(); ++i) {
        const ChannelEvent event = cel->get_event(i);
        session.say(format("  %u %s ", i, event.isOut() ? "out" : "in ") +
                    timeText(event.getTime()) +
                    (event.isBlack() ? " black"
                                     : " of \"" + toUtf8(cel->getDetail(event.detail).name) +
                                           "\" at " + timeText(toSeconds(event.stripTime))) +
                    (event.effectGraph.valid() ? " effect" : ""));
    }
    const std::uint32_t off = cel->checkQuantisation(edit->getFrameRate());
    if (off)
        session.say(format("  event %u is not on a frame", off));
}

void copyFrom(Session& session, SessionWords& words) {
    const std::string viewer = words.take("a viewer");
    const bool rebuild = words.takeIf("rebuild");
    const EditModule source = session.viewerNamed(viewer)->getEditModule();
    const EditModifier modifier = session.editForChange();
    EditModule target = session.viewer()->getEditModule();
    require(Editor::apply(source, target, rebuild ? kEditRebuild : kEditOverlay, 0));
}

void strip(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const double at = session.takePlace(words);
    if (words.done()) {
        const Kv::Ptr<Cel> cel = session.edit()->get_edit_cel_p(channel);
        const Cookie cookie = cel->get_strip_cookie(at);
        const EditPtr source(convertCookie(cookie, 'E'));
        session.say(std::string("  ") + cookie.type() + "-strip of " +
                    (source ? '"' + toUtf8(source->getName()) + '"' : cookie.asString()) + " at " +
                    timeText(cel->get_strip_time(at)));
        return;
    }
    const Cookie material = require(findEditCookie(words.take("an edit or log")));
    const bool audio = session.edit()->getChanType(channel) == kChanAudio;
    const EditModifier modifier = session.editForChange();
    CelEventPair pair(modifier, channel, at);
    if (!pair.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "nothing lies there");
    pair.setStripCookie(convertCookie(material, audio ? 'S' : 'V', 1));
}

} // namespace

void addCutVerbs(VerbTable& verbs) {
    verbs.heading("Cutting (each is one step of undo)");
    verbs.add({"lay", "CHANNEL EDIT|black T LENGTH [from T] [speed N] [name N] [disabled] [freeze]",
               "lays material over what is there", lay});
    verbs.add(
        {"lift", "CHANNEL T T", "makes a range black",
         [](Session& session, SessionWords& words) { overRange(session, words, &Cel::lift); }});
    verbs.add(
        {"take-out", "CHANNEL T T", "takes a range out; what lies later moves earlier",
         [](Session& session, SessionWords& words) { overRange(session, words, &Cel::remove); }});
    verbs.add({"gap", "CHANNEL T LENGTH", "opens a gap; what lies later moves later", gap});
    verbs.add({"split", "CHANNEL T", "adds a cut", split});
    verbs.add({"trim", "CHANNEL T LENGTH", "moves the cut at a time", trim});
    verbs.add({"trim-cuts", "LENGTH [rejoin] [CHANNEL]",
               "moves the unjoined cuts of a channel (the first selected one that has any)",
               trimCuts});
    verbs.add({"slide", "CHANNEL LENGTH", "moves everything on a channel",
               [](Session& session, SessionWords& words) {
                   const IdStamp channel = session.takeChannel(words);
                   const double by = toSeconds(session.takeLength(words));
                   require(session.editForChange()->get_edit_cel_p(channel)->slide(by));
               }});
    verbs.add({"simplify", "CHANNEL join|quantise", "joins what runs on, or moves cuts to frames",
               simplify});
    verbs.add({"cuts", "CHANNEL", "lists the cut events of a channel", listCuts});
    verbs.add({"copy-from", "VIEWER [rebuild]",
               "lays the marked range of another viewer in at the current time", copyFrom});
    verbs.add({"flatten", "", "makes one layer of the selected video channels",
               [](Session& session, SessionWords&) {
                   const EditModifier modifier = session.editForChange();
                   require(flattenEdit(modifier, session.viewer()->getEditModule(), 3, 0));
               }});
    verbs.add({"strip", "CHANNEL T [EDIT]", "tells, or sets, the material under a segment", strip});
}

} // namespace cutroom::cli
