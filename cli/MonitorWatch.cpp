#include "cli/MonitorWatch.h"

#include "cli/Assets.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <algorithm>
#include <utility>

namespace cutroom::cli {

namespace {

const char* onOff(bool on) { return on ? "on" : "off"; }

} // namespace

PrintingListener::PrintingListener(VobMonitor& monitor, std::string name, Printer printer)
    : monitor_(monitor), name_(std::move(name)), printer_(std::move(printer)) {
    time_.registerWith(&monitor.getTimeServer());
    viewCookie_.registerWith(&monitor.getViewCookieServer());
    editChanges_.registerWith(&monitor.getEditModificationServer());
    vobChange_.registerWith(&monitor.getVobModificationServer());
    mixerBypass_.registerWith(&monitor.getMixerBypassServer());
}

void PrintingListener::notifyValChanged(const ValObserverBase& observer) {
    std::string what;
    if (&observer == &time_)
        what = "time is " + timeText(time_.getValue());
    else if (&observer == &viewCookie_)
        what = "view is \"" + assetName(viewCookie_.getValue()) + '"';
    else if (&observer == &editChanges_)
        what = "edit changes are " + kindsText(editChanges_.getValue(), monitor_.getEdit());
    else if (&observer == &vobChange_)
        what = "change is " + kindsText(vobChange_.getValue());
    else
        what = std::string("mixer bypass is ") + onOff(mixerBypass_.getValue());
    printer_(name_ + ": " + what);
}

// --- an audio component --------------------------------------------------------------------------

PrintingAudio::PrintingAudio(std::string name, Printer printer)
    : name_(std::move(name)), printer_(std::move(printer)) {
    processFocusChange();
}

void PrintingAudio::handleEditChange(EditPtr edit, double time, bool attached) {
    if (edit)
        say((attached ? "attached to \"" : "shown \"") + toUtf8(edit->getName()) + "\" at " +
            timeText(time));
    else
        say("nothing to hear");
}
void PrintingAudio::handleEditMods(const EditModifications& changes, double time) {
    const Vob* const vob = getVob();
    say("edit changes " + kindsText(changes, vob ? vob->getEdit() : EditPtr()) + " at " +
        timeText(time));
}
void PrintingAudio::handleTimeChanges(double time) { say("time at " + timeText(time)); }
void PrintingAudio::handleAudioGearingChanges() { say("speed changed"); }
void PrintingAudio::handleAudioMixerChanges() { say("mixer changed"); }
void PrintingAudio::handleVobModification(unsigned type) { say(kindsText(type)); }

// --- by name -------------------------------------------------------------------------------------

class SessionMonitors::Monitor final : public VobMonitor {
public:
    template <class From>
    Monitor(SessionMonitors& owner, From&& from)
        : VobMonitor(std::forward<From>(from)), owner_(owner) {}
    ~Monitor() override { owner_.forget(*this); }

private:
    SessionMonitors& owner_;
};

SessionMonitors::SessionMonitors() = default;

SessionMonitors::~SessionMonitors() { clear(); }

bool SessionMonitors::has(const std::string& name) const {
    return monitors_.contains(name) || audio_.contains(name);
}

VobMonitor* SessionMonitors::monitor(const std::string& name) const {
    if (const AudioChangeMonitor* const component = audio(name))
        return component->getMonitor();
    const auto found = monitors_.find(name);
    return found == monitors_.end() ? nullptr : found->second.monitor.get();
}

AudioChangeMonitor* SessionMonitors::audio(const std::string& name) const {
    const auto found = audio_.find(name);
    return found == audio_.end() ? nullptr : found->second.get();
}

void SessionMonitors::keep(const std::string& name, std::unique_ptr<Monitor> monitor,
                           const Printer& printer) {
    auto listener = std::make_unique<PrintingListener>(*monitor, name, printer);
    monitors_[name] = {std::move(monitor), std::move(listener)};
}

void SessionMonitors::add(const std::string& name, Vob* vob, const Printer& printer) {
    keep(name, std::make_unique<Monitor>(*this, vob), printer);
}

void SessionMonitors::addCopy(const std::string& name, const VobMonitor& of,
                              const Printer& printer) {
    keep(name, std::make_unique<Monitor>(*this, of), printer);
}

void SessionMonitors::addMoved(const std::string& name, VobMonitor& from, const Printer& printer) {
    keep(name, std::make_unique<Monitor>(*this, std::move(from)), printer);
}

void SessionMonitors::addAudio(const std::string& name, const Printer& printer) {
    audio_[name] = std::make_unique<PrintingAudio>(name, printer);
}

// Taken out of the maps before they are destroyed: destroying one may close a viewer, and a client
// that is told of that may ask for monitors.
void SessionMonitors::remove(const std::string& name) {
    const auto component = audio_.extract(name);
    const auto monitor = monitors_.extract(name);
}

void SessionMonitors::clear() {
    while (!audio_.empty())
        remove(audio_.begin()->first);
    while (!monitors_.empty())
        remove(monitors_.begin()->first);
}

void SessionMonitors::forget(const Monitor& monitor) {
    const auto found = std::find_if(monitors_.begin(), monitors_.end(), [&](const auto& entry) {
        return entry.second.monitor.get() == &monitor;
    });
    if (found == monitors_.end())
        return;
    static_cast<void>(found->second.monitor.release());
    monitors_.erase(found);
}

} // namespace cutroom::cli
