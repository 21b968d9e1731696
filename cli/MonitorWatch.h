// What a session has of monitors: monitors of viewers and audio components that print what they
// publish and are told.
#pragma once

#include "cli/PrintingClient.h"
#include "platform/messaging/ValClient.h"
#include "vob/AudioChangeMonitor.h"
#include "vob/VobMonitor.h"

#include <map>
#include <memory>
#include <string>

namespace cutroom::cli {

// Prints "NAME: WHAT is VALUE" for each value that a monitor publishes. The monitor outlives it.
class PrintingListener final : public ValObserverClient {
public:
    PrintingListener(VobMonitor& monitor, std::string name, Printer printer);

private:
    void notifyValChanged(const ValObserverBase& observer) override;

    const VobMonitor& monitor_;
    const std::string name_;
    const Printer printer_;
    ValClient<double> time_{this};
    ValClient<Cookie> viewCookie_{this};
    ValClient<EditModifications> editChanges_{this};
    ValClient<unsigned> vobChange_{this};
    ValClient<bool> mixerBypass_{this};
};

// A component that follows the play machine and prints what its handlers are told.
class PrintingAudio final : public AudioChangeMonitor {
public:
    PrintingAudio(std::string name, Printer printer);

    void handleEditChange(EditPtr edit, double time, bool attached) override;
    void handleEditMods(const EditModifications& changes, double time) override;
    void handleTimeChanges(double time) override;
    void handleAudioGearingChanges() override;
    void handleAudioMixerChanges() override;
    void handleVobModification(unsigned type) override;

private:
    void say(const std::string& what) const { printer_(name_ + ": " + what); }

    const std::string name_;
    const Printer printer_;
};

// By name; the names of monitors and components are apart from those of clients. User-interface
// thread.
class SessionMonitors {
public:
    SessionMonitors();
    ~SessionMonitors();
    SessionMonitors(const SessionMonitors&) = delete;
    SessionMonitors& operator=(const SessionMonitors&) = delete;

    bool has(const std::string& name) const;
    // Null when there is none of this name. A component has a monitor only once there was a play
    // machine.
    VobMonitor* monitor(const std::string& name) const;
    AudioChangeMonitor* audio(const std::string& name) const;

    // A monitor of `vob`, if any, or one made of another.
    void add(const std::string& name, Vob* vob, const Printer& printer);
    void addCopy(const std::string& name, const VobMonitor& of, const Printer& printer);
    void addMoved(const std::string& name, VobMonitor& from, const Printer& printer);
    void addAudio(const std::string& name, const Printer& printer);
    void remove(const std::string& name);
    void clear();

private:
    class Monitor;
    struct Published {
        std::unique_ptr<Monitor> monitor; // goes with the clients of its Vob, too
        std::unique_ptr<PrintingListener> listener;
    };
    void keep(const std::string& name, std::unique_ptr<Monitor> monitor, const Printer& printer);
    void forget(const Monitor& monitor);

    std::map<std::string, Published> monitors_;
    std::map<std::string, std::unique_ptr<PrintingAudio>> audio_;
};

} // namespace cutroom::cli
