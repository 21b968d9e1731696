// What an audio component is told of the play machine.
#include "vob/AudioChangeMonitor.h"
#include "platform/project/CurrentProject.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"

#include <functional>
#include <memory>
#include <utility>

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Component final : public AudioChangeMonitor {
public:
    explicit Component(Calls& calls) : calls_(calls) { processFocusChange(); }
    std::function<void()> onCall;

    void handleEditChange(EditPtr edit, double time, bool attached) override {
        note((attached ? "edit " : "same ") + edit.getCookie().asString() + at(time));
    }
    void handleEditMods(const EditModifications& changes, double time) override {
        note("mods " + changes.asString() + at(time));
    }
    void handleTimeChanges(double time) override { note("time" + at(time)); }
    void handleAudioMixerChanges() override { note("mixer"); }
    void handleVobModification(unsigned type) override { note("vob " + std::to_string(type)); }

private:
    static std::string at(double time) {
        return time == kNoTime ? " nowhere" : " at " + cutroom::toText(time);
    }
    void note(const std::string& what) {
        calls_.push_back(what);
        if (const auto act = std::exchange(onCall, nullptr))
            act();
    }

    Calls& calls_;
};

class AudioChangeMonitorTest : public VobFixture {
protected:
    AudioChangeMonitorTest() {
        b_->storeCurrentTime(2);
        manager_.setPlayMachine(a_.get(), false);
        component_ = std::make_unique<Component>(calls_);
    }
    Calls told() { return std::exchange(calls_, {}); }
    static std::string edit(const Kv::Ptr<Vob>& vob) {
        return "edit " + vob->getCookie().asString();
    }
    void bypass(bool on) { EditManager::instance().getMixerBypassServer() = on; }

    const std::string nothing_ = "edit " + Cookie().asString() + " nowhere";
    VobManager& manager_ = VobManager::instance();
    Kv::Ptr<Vob> a_ = open(makeEdit()), b_ = open(makeEdit());
    Calls others_;
    RecorderClient clientA_{a_.get(), others_, "a"}, clientB_{b_.get(), others_, "b"};
    std::unique_ptr<Component> component_;
};

TEST_F(AudioChangeMonitorTest, isToldOfEachValueOfThePlayMachine) {
    manager_.setPlayMachineRaw(a_.get());
    EXPECT_THAT(told(), ElementsAre("time at 0", edit(a_) + " at 0")) << "once";
    a_->setCurrentTime(3);
    a_->setTransientTimeChange(true);
    a_->setCurrentTime(4);
    a_->setTransientTimeChange(false);
    EXPECT_THAT(told(), ElementsAre("time at 3", "vob 2"));
    a_->informClients(EditModifications(kModAudioMix), VobModification(kVobMarks));
    EXPECT_THAT(told(), ElementsAre("mods 27 at 3", "vob 4"));
    const EditPtr other = makeEdit();
    other->setConfig("BACKUP_CURRENT", "6"); // taken over without a telling
    a_->setEdit(other, false);
    EXPECT_THAT(told(), ElementsAre("same " + other.getCookie().asString() + " at 6"));
    b_->setCurrentTime(1);
    EXPECT_THAT(told(), IsEmpty()) << "not the play machine";
}

TEST_F(AudioChangeMonitorTest, followsThePlayMachineAgainAfterPlayingAndInAnotherProject) {
    const TempFolder temp;
    ASSERT_TRUE(host_.transport().play());
    for (const auto& act : std::vector<std::function<void()>>{
             [&] { host_.transport().stop(); },
             [&] {
                 ASSERT_TRUE(CurrentProject::open(temp / "p", CurrentProject::Access::readWrite,
                                                  CurrentProject::IfMissing::create)
                                 .ok());
             }}) {
        manager_.closeInternal(component_->getMonitor());
        told();
        act();
        EXPECT_THAT(told(), ElementsAre("time at 0", edit(a_) + " at 0"));
    }
    manager_.closeInternal(&clientA_);
    manager_.closeInternal(&clientB_);
    EXPECT_TRUE(CurrentProject::close().ok());
    EXPECT_THAT(told(), ElementsAre(nothing_));
    EXPECT_EQ(component_->getVob(), nullptr);
}

TEST_F(AudioChangeMonitorTest, outlivesItsMonitorAndLeavesAVobThatNobodyElseShowsClosed) {
    told();
    ASSERT_FALSE(manager_.destroyManagedClients(a_)) << "an unmanaged client stays";
    EXPECT_EQ(component_->getMonitor(), nullptr);
    EXPECT_EQ(component_->getCurrentTime(), kNoTime);
    bypass(true);
    EXPECT_THAT(told(), ElementsAre("mixer", "time at 0", edit(a_) + " at 0"));
    manager_.closeInternal(&clientA_);
    bypass(true);
    EXPECT_THAT(told(), ElementsAre("mixer", nothing_));
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(b_));
}

TEST_F(AudioChangeMonitorTest, mayBeDestroyedOrMovedByItsOwnHandlers) {
    component_->onCall = [&] { manager_.setPlayMachine(a_.get(), false); };
    manager_.setPlayMachine(b_.get(), false);
    EXPECT_EQ(component_->getVob(), manager_.getPlayMachine().get());
    for (const auto& act : std::vector<std::function<void()>>{
             [&] { bypass(true); }, [&] { a_->setCurrentTime(a_->getCurrentTime() + 1); },
             [&] { manager_.setPlayMachineRaw(nullptr); }}) {
        manager_.setPlayMachineRaw(a_.get());
        component_ = std::make_unique<Component>(calls_);
        component_->onCall = [&] { component_.reset(); };
        told();
        act();
        EXPECT_EQ(told().size(), 1u);
        EXPECT_EQ(a_->getNumClients(kClientManaged), 0u);
    }
}

} // namespace
