// A client that notes every call, in order, in a list that several can share.
#pragma once

#include "vob/VobClient.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace cutroom::test {

using Calls = std::vector<std::string>;

// "name: what", for instance "a: change 6 time 2.5 mark 1", "a: edit 1 22 change 8", "a: added b".
// `onChange` runs after a change was noted.
class RecorderClient : public VobClient {
public:
    RecorderClient(Vob* vob, Calls& calls, std::string name, int priority = 0,
                   eClientManagementDetails details = kClientUnmanaged)
        : VobClient(vob, static_cast<eClientPriority>(priority), details), calls_(&calls),
          name_(std::move(name)) {}

    std::function<void(const VobModification&)> onChange;
    std::function<void()> onOther;

    const std::string& name() const { return name_; }
    const char* idstring() const override { return name_.c_str(); }
    void handleModifications(const EditModifications& edit,
                             const VobModification& change) override {
        std::string text;
        if (!edit.empty())
            text += "edit " + edit.asString() + " ";
        text += "change " + std::to_string(change.getType());
        if (change.getTime() != kNoTime)
            text += " time " + toText(change.getTime());
        if (change.getMarkTime() != kNoTime)
            text += " mark " + toText(change.getMarkTime());
        note(text);
        if (const auto act = onChange) // outlives the client, which it may destroy
            act(change);
    }
    void notifyClientAdded(VobClient* client) override { noteOf("added", client); }
    void notifyClientRemoved(VobClient* client) override { noteOf("removed", client); }
    void notifyPlayStateChange(PlayStateNotifyType change) override {
        note("play state " + std::to_string(change));
    }
    void notifyOtherEditAltered(const Cookie& edit, const EditModifications& changes) override {
        note("other " + edit.asString() + " " + changes.asString());
        if (const auto act = onOther)
            act();
    }
    void handleConsoleFocus(bool hasFocus) override { note(hasFocus ? "focus" : "no focus"); }
    void handleMessage(const LightweightString<char>& message) override {
        note("message " + message);
    }
    void debug() override { note("debug"); }

private:
    void note(const std::string& what) { calls_->push_back(name_ + ": " + what); }
    void noteOf(const std::string& what, VobClient* client) {
        note(what + " " + client->idstring());
    }

    Calls* calls_;
    std::string name_;
};

} // namespace cutroom::test
