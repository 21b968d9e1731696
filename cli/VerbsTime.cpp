// Verbs that move and play time.
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/host/PlayServer.h"
#include "platform/host/TransitStatus.h"

#include <memory>

namespace cutroom::cli {

namespace {

void moveTime(Session& session, SessionWords& words) {
    const bool quiet = words.takeIf("quiet");
    const double seconds = session.takePlace(words);
    if (quiet)
        session.viewer()->storeCurrentTime(seconds);
    else
        session.viewer()->setCurrentTime(seconds);
}

void tellTime(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    session.say("time " + timeText(vob->getCurrentTime()) + ", monitor " +
                timeText(vob->getMonitorTime()) + ", original " + timeText(vob->getOriginalTime()) +
                ", length " + timeText(vob->getTotalDuration()));
}

void play(Session& session, SessionWords& words) {
    const double speed = words.done() ? 1.0 : words.takeNumber("a speed");
    VobManager& manager = VobManager::instance();
    if (!manager.getPlayMachine())
        manager.setPlayMachine(session.viewer().get(), false);
    if (!session.host().transport().play(speed))
        refuse(StatusCode::failed, "play", "nothing can be played at this speed");
}

// "2s", "2.5" or "500ms".
double takeDuration(SessionWords& words) {
    const std::string& word = words.take("a time");
    const bool milliseconds = word.ends_with("ms");
    std::string_view digits = word;
    digits.remove_suffix(milliseconds ? 2 : (word.ends_with('s') ? 1 : 0));
    const auto seconds = parseDouble(digits);
    if (!seconds || !(*seconds >= 0) || *seconds > 86'400)
        refuse(StatusCode::wrongUsage, word, "not a time to wait: 2s, 500ms");
    return milliseconds ? *seconds / 1000 : *seconds;
}

void transit(Session& session, SessionWords&) {
    const auto& manager = TransitStatus::manager();
    session.say(format("transit status %d, speed ", manager.getStatus()) +
                timeText(manager.getCurrentSpeed()));
}

void preview(Session& session, SessionWords& words) {
    const bool on = words.takeOnOff("on or off");
    session.viewer()->setPreviewing(on, words.takeIf("remember"));
}

void monitor(Session& session, SessionWords& words) {
    session.viewer()->setMonitorPoint(
        words.takeChoice<Vob::eMonitorPoint>("a point", {{"current", Vob::kMonitorCurrent},
                                                         {"in", Vob::kMonitorMarkIn},
                                                         {"out", Vob::kMonitorMarkOut}}));
}

void trimView(Session& session, SessionWords& words) {
    const auto type = words.takeChoice<Vob::eTrimViewType>(
        "a type",
        {{"off", Vob::kTrimViewOff}, {"split", Vob::kTrimViewSplit}, {"full", Vob::kTrimViewFull}});
    if (words.takeIf("default"))
        Vob::setDefaultTrimViewType(type);
    else
        session.viewer()->setTrimViewType(type);
}

void tellTrimView(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    session.say(format("trim view %d, ", vob->getTrimViewType()) +
                (vob->isTrimViewPossible() ? "possible" : "not possible"));
}

// A machine on which the viewer is played: says what it is asked to do.
class SessionMachine final : public AVMachine {
public:
    explicit SessionMachine(Printer printer) : printer_(std::move(printer)) {}
    void locate(double time) override { printer_("machine: at " + timeText(time)); }
    void play(double time, double speed) override {
        printer_("machine: plays from " + timeText(time) + " at " + timeText(speed));
    }
    void stop(double time) override { printer_("machine: stops at " + timeText(time)); }

private:
    const Printer printer_;
};

void device(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = session.viewer();
    if (words.takeOnOff("on or off"))
        vob->setDevice(&session.machine(std::make_unique<SessionMachine>(session.printer())));
    else
        vob->setDevice(nullptr);
}

} // namespace

void addTimeVerbs(VerbTable& verbs) {
    verbs.heading("Time and playing");
    verbs.add({"time", "[quiet] T", "moves the time; T is 12.5, 300f, 01:00:10:00, now, start, end",
               moveTime});
    verbs.add({"time?", "", "tells current, monitor and original time and the length", tellTime});
    verbs.add({"play", "[SPEED]", "plays the play machine (the viewer, when there is none)", play});
    verbs.add({"stop", "", "stops playing",
               [](Session& session, SessionWords&) { session.host().transport().stop(); }});
    verbs.add({"wait", "TIME", "lets the loop run for a time: 2s, 500ms",
               [](Session& session, SessionWords& words) {
                   session.host().loop().runFor(takeDuration(words));
               }});
    verbs.add({"transit?", "", "tells what the transport does", transit});
    verbs.add({"preview", "on|off [remember]", "previewing; remember: with the time it began at",
               preview});
    verbs.add({"transient", "on|off", "whether time changes are passing ones",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setTransientTimeChange(words.takeOnOff("on or off"));
               }});
    verbs.add({"monitor", "current|in|out", "which time the monitor shows", monitor});
    verbs.add({"trimming", "on|off", "whether the viewer is trimming",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setTrimming(words.takeOnOff("on or off"));
               }});
    verbs.add({"trim-view", "off|split|full [default]",
               "how trimming is shown; default: in viewers opened from now on", trimView});
    verbs.add(
        {"trim-view?", "", "tells how trimming is shown, and whether it can be", tellTrimView});
    verbs.add({"preview-track", "CHANNEL", "the channel that is previewed",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setPreviewTrackID(session.takeChannel(words));
               }});
    verbs.add({"previews", "N", "the number of video previews",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setNumVideoPreviews(
                       static_cast<unsigned char>(words.takeInt("a number", 0, 255)));
               }});
    verbs.add({"time-flags", "BITS",
               "the time change flags (64: by a synchroniser, 128: suspends it)",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setTimeChangeFlags(
                       static_cast<unsigned>(words.takeInt("bits", 0, 255)));
               }});
    verbs.add(
        {"device", "on|off", "a machine that plays the viewer and says what it is asked", device});
    verbs.add({"trace-tab-stops", "on|off", "whether the log tells of each change of the tab stops",
               [](Session& session, SessionWords& words) {
                   session.viewer()->getConsoleTabStopsServer().setDebugMode(
                       words.takeOnOff("on or off"));
               }});
    verbs.add({"tab-stops", "N", "where stepping from event to event stops, as bits",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setConsoleTabStops(
                       static_cast<unsigned>(words.takeInt("bits", 0, 255)));
               }});
}

} // namespace cutroom::cli
