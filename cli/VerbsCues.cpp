// Verbs that make logs and edits of cues, pair channels, and synchronise shots.
#include "cli/Names.h"
#include "cli/Session.h"
#include "cli/SyncWords.h"
#include "editops/CopyLog.h"
#include "editops/CueEdit.h"
#include "editops/CueLogs.h"
#include "editops/CueRegions.h"
#include "editops/SyncUp.h"
#include "editops/TrackGroups.h"
#include "editops/basics/StereoPairs.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

namespace cutroom::cli {

namespace {

// --- cues and groups -----------------------------------------------------------------------------

void sayMade(Session& session, const Cookie& cookie) {
    const EditPtr edit(cookie);
    session.say("  made \"" + toUtf8(edit->getName()) + "\", " +
                timeText(edit->getEndTime() - edit->getStartTime()));
}

// The cues whose numbers follow; all when none do.
std::vector<Cue> takeCues(Session& session, SessionWords& words) {
    const CueList list = session.edit()->getCues();
    const auto count = static_cast<long long>(list.getNumCuePoints());
    std::vector<Cue> cues;
    if (count == 0 && !words.done())
        refuse(StatusCode::notFound, words.take("a number"), "the edit has no cues");
    while (!words.done())
        cues.push_back(list.getCuePoint(
            static_cast<std::size_t>(words.takeInt("the number of a cue", 1, count) - 1)));
    return cues.empty() ? list.cues() : cues;
}

void regions(Session& session, SessionWords&) {
    for (const NamedRegion& region : getRegionsFromCues(session.edit()))
        session.say("  " + timeText(region.range.getStart()) + " to " +
                    timeText(region.range.getEnd()) + " \"" + toUtf8(region.name) + '"');
}

void cueLogs(Session& session, SessionWords& words) {
    const auto type = words.takeChoice<eLogType>("a type", {{"subclip", kLogTypeSubclip},
                                                            {"edit", kLogTypeEdit},
                                                            {"sync", kLogTypeSyncGhost},
                                                            {"print", kLogTypePrintGhost}});
    const CookieVec made =
        words.done() ? makeLogsUsingCuePoints(type, session.viewer()->getEditModule())
                     : makeLogsUsingCuePoints(type, session.edit(), takeCues(session, words));
    for (const Cookie& log : made)
        sayMade(session, log);
    if (made.empty())
        session.say("  nothing made");
}

void cueEdit(Session& session, SessionWords& words) {
    const bool import = words.takeIf("import");
    const std::vector<Cue> cues = takeCues(session, words);
    const EditPtr source = import ? EditPtr(session.editForChange()) : session.edit();
    const EditModifier made = makeEditFromCues(source, cues, !import);
    if (!made)
        refuse(StatusCode::failed, "cue-edit", "no edit could be made");
    sayMade(session, made.getCookie());
}

void stereoPairs(Session& session, SessionWords& words) {
    std::vector<IdStamp> channels;
    while (!words.done())
        channels.push_back(session.takeChannel(words));
    makeStereoPairs(session.editForChange(), channels);
}

void autoPairs(Session& session, SessionWords& words) {
    if (!words.done())
        setAutoGroupEditAudioTracks(words.takeOnOff("on or off"));
    session.say(getAutoGroupEditAudioTracks() ? "  on" : "  off");
}

void groupsFrom(Session& session, SessionWords& words) {
    const EditPtr from = session.viewerNamed(words.take("a viewer"))->getEditModule().getEdit();
    recreateTrackGroups(from, session.editForChange());
}

// --- sync-up -------------------------------------------------------------------------------------

constexpr char kRuleWords[] = "[from-config] [start picture|common|union|sound] "
                              "[end picture|common|union|sound] [part T T] [sound-offset N] "
                              "[ignore-dates] [no-ghost] [picture-label LABEL] "
                              "[sound-label LABEL]";

void takeRule(const std::string& word, SessionWords& words, synchup_params& params) {
    if (word == "start" || word == "end") {
        const auto& rule = words.takeOneOf("a rule", {"picture", "common", "union", "sound"});
        (word == "start" ? params.startRule : params.endRule) = syncRule(rule);
    } else if (word == "part") {
        params.part = true;
        params.partStart = words.takeNumber("a start");
        params.partEnd = words.takeNumber("an end");
    } else if (word == "sound-offset") {
        params.soundOffset =
            static_cast<std::int32_t>(words.takeInt("frames", -1'000'000, 1'000'000));
    } else if (word == "ignore-dates") {
        params.dateCheckOff = true;
    } else if (word == "no-ghost") {
        params.makeGhost = false;
    } else {
        const UserLabelSpec label = require(parseLabelSpec(words.take("a label")));
        (word == "picture-label" ? params.pictureLabel : params.soundLabel) = label;
    }
}

// The rules that end a line; from the configuration of the current edit where that is asked for.
synchup_params takeRules(Session& session, SessionWords& words) {
    synchup_params params;
    if (words.takeAnywhere("from-config")) {
        const EditPtr edit = session.edit();
        const Edit::Lock hold(*edit);
        params = synchup_params(edit->config());
    }
    while (!words.done())
        takeRule(words.takeOneOf("a rule", {"start", "end", "part", "sound-offset", "ignore-dates",
                                            "no-ghost", "picture-label", "sound-label"}),
                 words, params);
    return params;
}

struct LabelledWord {
    Cookie shot;
    EditChanType type = kChanVideo;
};

LabelledWord takeShot(SessionWords& words) {
    const Cookie shot = require(findEditCookie(words.take("a shot")));
    const bool audio = words.takeOneOf("a type of channel", {"video", "audio"}) == "audio";
    return {shot, audio ? kChanAudio : kChanVideo};
}

// What came of it, or the message that was left.
void sayOutcome(Session& session, const Cookie& made) {
    if (made.valid())
        sayMade(session, made);
    else
        session.say(std::string("  nothing made: ") + edcopy_get_log());
}

void syncOffset(Session& session, SessionWords& words) {
    const LabelledWord first = takeShot(words), second = takeShot(words);
    const double offset = synchup_get_CELtime_offset(first.shot, first.type, second.shot,
                                                     second.type, takeRules(session, words));
    session.say(offset == kNoTime ? std::string("  none: ") + edcopy_get_log()
                                  : "  " + timeText(offset));
}

void syncLabel(Session& session, SessionWords& words) {
    const LabelledWord first = takeShot(words), second = takeShot(words);
    const bool general = words.takeAnywhere("general");
    const auto sync = general ? synchup_general_cookies_by_label : synchup_cookies_by_label;
    sayOutcome(session,
               sync(first.shot, first.type, second.shot, second.type, takeRules(session, words)));
}

void syncTime(Session& session, SessionWords& words) {
    const Cookie first = require(findEditCookie(words.take("a shot")));
    const Cookie second = require(findEditCookie(words.take("a shot")));
    const double t1 = words.takeNumber("seconds of the first");
    const double t2 = words.takeNumber("seconds of the second");
    const bool general = words.takeAnywhere("general");
    const auto sync = general ? synchup_general_cookies_by_time : synchup_cookies_by_time;
    sayOutcome(session, sync(first, second, t1, t2, takeRules(session, words)));
}

void syncBuild(Session& session, SessionWords& words) {
    const Cookie first = require(findEditCookie(words.take("a shot")));
    const Cookie second = require(findEditCookie(words.take("a shot")));
    const double offset = words.takeNumber("an offset");
    const bool all = words.takeAnywhere("all-channels");
    sayOutcome(session,
               synchup_general_build_edit(first, second, offset, takeRules(session, words), all));
}

} // namespace

void addCueVerbs(VerbTable& verbs) {
    // Kept for as long as there are verbs.
    static const std::string byLabel =
        join({"EDIT video|audio EDIT video|audio [general]", kRuleWords}, " ");
    static const std::string byTime = join({"EDIT EDIT T T [general]", kRuleWords}, " ");
    static const std::string offset = join({"EDIT video|audio EDIT video|audio", kRuleWords}, " ");
    static const std::string build = join({"EDIT EDIT OFFSET [all-channels]", kRuleWords}, " ");

    verbs.heading("Logs and edits of cues, groups");
    verbs.add({"regions", "", "lists the regions that the cues mark", regions});
    verbs.add({"cue-logs", "subclip|edit|sync|print [N] ...",
               "makes a log of each region, or of the cues named", cueLogs});
    verbs.add({"cue-edit", "[import] [N] ...",
               "makes one edit of the regions; import marks the source imported", cueEdit});
    verbs.add(
        {"stereo-pairs", "[CHANNEL] ...", "pairs audio channels, all or those named", stereoPairs});
    verbs.add({"auto-pairs", "[on|off]", "tells, or sets, whether new edits get stereo pairs",
               autoPairs});
    verbs.add(
        {"groups-from", "VIEWER", "takes over the groups of another viewer's edit", groupsFrom});
    verbs.heading("Sync-up (the first shot is the sound, the second the picture)");
    verbs.add({"sync-offset", offset.c_str(), "tells the offset that the labels give", syncOffset});
    verbs.add({"sync-label", byLabel.c_str(), "joins two shots by their labels", syncLabel});
    verbs.add(
        {"sync-time", byTime.c_str(), "joins two shots where two of their times meet", syncTime});
    verbs.add({"sync-build", build.c_str(), "joins two shots by an offset", syncBuild});
}

} // namespace cutroom::cli
