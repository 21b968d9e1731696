// What a monitor publishes of a viewed edit, and how it comes and goes.
#include "vob/VobMonitor.h"
#include "tests/vob/VobFixture.h"

#include <memory>
#include <utility>

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

class VobMonitorTest : public VobFixture {
protected:
    VobMonitorTest() {
        listen<double>(monitor_->getTimeServer(), [](double v) { return cutroom::toText(v); });
        listen<Cookie>(monitor_->getViewCookieServer(), [](const Cookie&) { return "view"; });
        listen<EditModifications>(monitor_->getEditModificationServer(),
                                  [](const auto& v) { return "edit " + v.asString(); });
        listen<unsigned>(monitor_->getVobModificationServer(),
                         [](unsigned v) { return "vob " + std::to_string(v); });
    }
    template <class T, class Text> void listen(ValServer<T>& server, const Text& text) {
        guards_.push_back(server.registerNotification(
            makeCallback<NotifierEvent<T>>([this, text](const NotifierEvent<T>& event) {
                calls_.push_back(text(event.getValue()));
                if (const auto act = std::exchange(onValue_, nullptr))
                    act();
            }),
            ValServerBase::valChangedMsgType));
    }
    Calls told() { return std::exchange(calls_, {}); }

    VobManager& manager_ = VobManager::instance();
    Calls viewerCalls_;
    Kv::Ptr<Vob> vob_ = open(makeEdit());
    RecorderClient viewer_{vob_.get(), viewerCalls_, "viewer"};
    std::unique_ptr<VobMonitor> monitor_ = std::make_unique<VobMonitor>(vob_.get());
    std::function<void()> onValue_;
    std::vector<Kv::Ptr<Guard>> guards_;
};

// The Vob stands at 4 seconds, the change names 3, the monitor holds 0.
TEST_F(VobMonitorTest, publishesEachKindAsTheValueThatItIs) {
    const struct {
        unsigned kinds;
        bool isTransient, isPlayMachine, changesEdit;
        Calls told;
        double time;
    } rows[] = {
        {0, false, true, false, {}, 0},
        {0, false, true, true, {"edit 4"}, 0},
        {kVobTime, false, false, false, {"3"}, 3},
        {kVobTime | kVobEditReplaced | kVobViewEdits, false, true, true, {"edit 4", "3"}, 3},
        {kVobTime, true, true, false, {"vob 2"}, 0},
        {kVobMarks | kVobSelection, false, true, false, {"vob 20"}, 0},
        {kVobEditReplaced | kVobMarks, false, true, false, {"view"}, 4},
        {kVobEditReplaced | kVobMarks, false, false, false, {}, 0},
        {kVobViewEdits | kVobEditReplaced | kVobMarks, false, true, false, {"view"}, 0},
    };
    vob_->storeCurrentTime(4);
    for (const auto& row : rows) {
        monitor_->getTimeServer().getDataRef() = 0;
        manager_.setPlayMachineRaw(row.isPlayMachine ? vob_.get() : nullptr);
        vob_->setTransientTimeChange(row.isTransient);
        VobModification change(row.kinds);
        change.setTime(3);
        monitor_->handleModifications(
            row.changesEdit ? EditModifications(kModCues) : EditModifications(), change);
        EXPECT_EQ(told(), row.told) << row.kinds;
        EXPECT_EQ(monitor_->getTimeServer().getValue(), row.time) << row.kinds;
    }
}

TEST_F(VobMonitorTest, takesTheValuesOfItsVobWithoutTellingThem) {
    const Kv::Ptr<Vob> other = open(makeEdit());
    other->storeCurrentTime(5);
    manager_.moveToVob(monitor_.get(), other);
    EXPECT_EQ(monitor_->getTimeServer().getValue(), 5);
    EXPECT_EQ(monitor_->getViewCookieServer().getValue(), other->getCookie());
    EXPECT_EQ(told(), Calls());
}

TEST_F(VobMonitorTest, publishesNothingMoreOnceAListenerHasMovedOrDestroyedIt) {
    const Kv::Ptr<Vob> other = open(makeEdit());
    for (const auto& act : std::vector<std::function<void()>>{
             [&] { manager_.moveToVob(monitor_.get(), other); },
             [&] { manager_.closeInternal(monitor_.get()); }, [&] { monitor_.reset(); }}) {
        manager_.moveToVob(monitor_.get(), vob_);
        onValue_ = act;
        vob_->informClients(EditModifications(kModCues), VobModification(kVobMarks));
        EXPECT_THAT(told(), ElementsAre("edit 4"));
    }
}

} // namespace
