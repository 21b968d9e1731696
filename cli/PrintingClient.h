// A client that prints what it is told, in the words of the session.
#pragma once

#include "vob/VobClient.h"
#include "vob/iImageViewClient.h"

#include <functional>
#include <string>

namespace cutroom::cli {

// The words for the kinds of change, joined by "+": "time+marks"; "nothing" for type 0.
std::string kindsText(unsigned type);
// The same for the changes of `edit`: "cuts added, cues, mix level of A1".
std::string kindsText(const EditModifications& changes, const EditPtr& edit);
// Seconds for a person: "12.5"; "none" for no time.
std::string timeText(double seconds);

using Printer = std::function<void(const std::string&)>;

// Prints "NAME: what" for each call. Owned by the session.
class PrintingClient : public VobClient {
public:
    // Unattached, so that it has its name when it is attached and others hear of it.
    PrintingClient(std::string name, eClientPriority priority, eClientManagementDetails details,
                   Printer printer);
    // Attached to a viewer of `edit`, made when there is none; joins it as "VobClient", since it
    // has no name of its own before it is whole.
    PrintingClient(std::string name, const Cookie& edit, eClientPriority priority,
                   eClientManagementDetails details, Printer printer);
    ~PrintingClient() override;

    const std::string& name() const noexcept { return name_; }
    // The clients that come and go with this one; not owned.
    void manage(VobClient* client) { managed_.push_back(client); }
    void forget(const VobClient* client);
    // Runs `reaction` once, the next time the client is told of a modification.
    void reactOnce(std::function<void()> reaction) { reaction_ = std::move(reaction); }

    void handleModifications(const EditModifications& editChanges,
                             const VobModification& change) override;
    void notifyClientAdded(VobClient* client) override;
    void notifyClientRemoved(VobClient* client) override;
    void notifyPlayStateChange(PlayStateNotifyType change) override;
    void notifyOtherEditAltered(const Cookie& edit, const EditModifications& changes) override;
    void handleConsoleFocus(bool hasFocus) override;
    void handleMessage(const LightweightString<char>& message) override;
    const char* idstring() const override { return name_.c_str(); }
    LightweightVector<VobClient*> getManagedClients() override { return managed_; }

private:
    void say(const std::string& what) const { printer_(name_ + ": " + what); }

    std::string name_;
    Printer printer_;
    LightweightVector<VobClient*> managed_;
    std::function<void()> reaction_;
};

// One that shows the picture, and may be the master.
class PrintingImageClient final : public PrintingClient, public iImageViewClient {
public:
    using PrintingClient::PrintingClient;
    bool isMaster() const override { return true; }
};

} // namespace cutroom::cli
