// Verbs for the values that monitors publish, and for components that follow the play machine.
#include "cli/Assets.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/EditManager.h"

namespace cutroom::cli {

namespace {

std::string takeNewName(Session& session, SessionWords& words) {
    const std::string name = words.take("a name");
    if (session.monitors().has(name))
        refuse(StatusCode::wrongUsage, name, "a monitor of this name is there");
    return name;
}

VobMonitor& takeMonitor(Session& session, SessionWords& words) {
    const std::string& name = words.take("a monitor");
    if (VobMonitor* const monitor = session.monitors().monitor(name))
        return *monitor;
    if (session.monitors().audio(name))
        refuse(StatusCode::notFound, name, "it has followed no play machine yet");
    refuse(StatusCode::notFound, name, "no monitor of this name");
}

void monitorVob(Session& session, SessionWords& words) {
    const std::string name = takeNewName(session, words);
    SessionMonitors& monitors = session.monitors();
    if (words.takeIf("unattached"))
        monitors.add(name, nullptr, session.printer());
    else if (words.takeIf("copy-of"))
        monitors.addCopy(name, takeMonitor(session, words), session.printer());
    else if (words.takeIf("moved-from"))
        monitors.addMoved(name, takeMonitor(session, words), session.printer());
    else if (words.takeIf("in"))
        monitors.add(name, session.viewerNamed(words.take("a viewer")).get(), session.printer());
    else
        monitors.add(name, session.viewer().get(), session.printer());
}

void attach(Session& session, SessionWords& words) {
    VobMonitor& monitor = takeMonitor(session, words);
    const Kv::Ptr<Vob> vob = session.viewerNamed(words.take("a viewer"));
    monitor.attachTo(vob.get());
    if (monitor.getVob() != vob.get())
        session.say("  stays with " + session.nameOf(monitor.getVob()));
}

void tellPublished(Session& session, SessionWords& words) {
    VobMonitor& monitor = takeMonitor(session, words);
    const Cookie view = monitor.getViewCookieServer();
    const EditModifications changes = monitor.getEditModificationServer();
    const unsigned kinds = monitor.getVobModificationServer();
    session.say("  of " + session.nameOf(monitor.getVob()));
    session.say("  time " + timeText(monitor.getTimeServer()));
    session.say("  view " + (view.valid() ? '"' + assetName(view) + '"' : "none"));
    session.say("  edit changes " +
                (changes.empty() ? "none" : kindsText(changes, monitor.getEdit())));
    session.say("  change " + (kinds == 0 ? "none" : kindsText(kinds)));
    session.say(monitor.getMixerBypassServer() ? "  mixer bypass on" : "  mixer bypass off");
}

void tellAudio(Session& session, SessionWords& words) {
    const std::string& name = words.take("a component");
    const AudioChangeMonitor* const component = session.monitors().audio(name);
    if (!component)
        refuse(StatusCode::notFound, name, "no audio component of this name");
    session.say("  follows " + session.nameOf(component->getVob()) + ", time " +
                timeText(component->getCurrentTime()));
}

void bypass(Session& session, SessionWords& words) {
    const bool on = words.takeOnOff("on or off");
    if (words.done())
        EditManager::instance().getMixerBypassServer() = on;
    else
        takeMonitor(session, words).getMixerBypassServer() = on;
}

void drop(Session& session, SessionWords& words) {
    const std::string name = words.take("a monitor");
    if (!session.monitors().has(name))
        refuse(StatusCode::notFound, name, "no monitor of this name");
    session.monitors().remove(name);
}

} // namespace

void addMonitorVerbs(VerbTable& verbs) {
    verbs.heading("Published values");
    verbs.add({"monitor-vob", "NAME [unattached | in VIEWER | copy-of|moved-from MONITOR]",
               "publishes what happens to a viewer as values, and prints them", monitorVob});
    verbs.add({"attach-monitor", "MONITOR VIEWER",
               "attaches a monitor that follows no viewer, and publishes the time there", attach});
    verbs.add({"published?", "MONITOR", "tells the values as they stand", tellPublished});
    verbs.add({"monitor-audio", "NAME",
               "a component that follows the play machine, and prints what it is told",
               [](Session& session, SessionWords& words) {
                   const std::string name = takeNewName(session, words);
                   session.monitors().addAudio(name, session.printer());
               }});
    verbs.add({"follows?", "NAME", "tells which viewer an audio component follows, and its time",
               tellAudio});
    verbs.add({"mixer-bypass", "on|off [MONITOR]",
               "bypasses the mixer for all, or for who follows one monitor", bypass});
    verbs.add({"drop-monitor", "NAME", "ends a monitor or an audio component", drop});
}

} // namespace cutroom::cli
