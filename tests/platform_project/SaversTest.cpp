#include "platform/project/Savers.h"
#include "platform/host/ProcessLife.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using cutroom::Saver;
using cutroom::Savers;
using cutroom::Status;
using cutroom::StatusCode;
using testing::ElementsAre;

namespace {

TEST(SaversTest, AllAreAskedAndTheFirstFailureIsGiven) {
    std::vector<std::string> asked;
    const auto saver = [&](const std::string& name, Status outcome, bool dirty) {
        return Savers::add({name, [=] { return dirty; },
                            [&asked, name, outcome] {
                                asked.push_back(name);
                                return outcome;
                            }});
    };
    const Status failed(StatusCode::inputOutput, "/f", "no space");
    const Kv::Ptr<Guard> bins = saver("bins", failed, false);
    Kv::Ptr<Guard> gone = saver("gone", {}, true);
    const Kv::Ptr<Guard> groups = saver("groups", Status(StatusCode::damaged, "/g", "x"), false);
    EXPECT_TRUE(Savers::anyDirty());
    gone = {};
    EXPECT_FALSE(Savers::anyDirty());
    const Status saved = Savers::saveAll();
    EXPECT_THAT(asked, ElementsAre("bins", "groups"));
    EXPECT_EQ(saved.code(), StatusCode::inputOutput);
    EXPECT_EQ(saved.text(), "/f: bins: no space");
}

TEST(SaversTest, AGuardThatOutlivesItsLifeLeavesTheSaversOfTheNext) {
    const Saver dirty{"dirty", [] { return true; }, [] { return Status(); }};
    Kv::Ptr<Guard> before = Savers::add(dirty);
    cutroom::ProcessLife::end();
    const Kv::Ptr<Guard> now = Savers::add(dirty);
    before.reset();
    EXPECT_TRUE(Savers::anyDirty());
}

TEST(SaversTest, ListenersHearOfTheFirstChangeAndOfMany) {
    Savers::takeChanges();
    std::vector<int> heard;
    const Kv::Ptr<Guard> listener = Savers::addListener(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { heard.push_back(Savers::changes()); }));
    for (int i = 0; i < 30; ++i)
        Savers::noteChange();
    EXPECT_EQ(Savers::takeChanges(), 30);
    Savers::noteChange();
    EXPECT_THAT(heard, ElementsAre(1, Savers::kManyChanges, 1));
    EXPECT_FALSE(Savers::addListener({}));
}

TEST(SaversTest, AFailureAtTheExitIsGivenOnce) {
    Savers::noteFailure(Status(StatusCode::failed, "/a", "first"));
    Savers::noteFailure(Status(StatusCode::failed, "/b", "second"));
    EXPECT_EQ(Savers::takeFailure().file(), "/a");
    EXPECT_TRUE(Savers::takeFailure().ok());
}

} // namespace
