#include "platform/embedded/EmbeddedHost.h"

#include "platform/base/Cookie.h"
#include "platform/host/DebugCommands.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

using namespace cutroom;
using testing::ElementsAre;

namespace {

class ServicesTest : public testing::Test {
protected:
    EmbeddedHost host{EmbeddedHost::repeatable()};
    std::vector<std::string> story;
};

class Viewer final : public ConsoleEventHandler {
public:
    Viewer(std::string name, std::vector<std::string>& story)
        : name_(std::move(name)), story_(story) {}
    void handleConsoleFocus() override {
        story_.push_back(name_ + (hasConsoleFocus() ? "+" : "-"));
        if (onTold)
            onTold();
    }
    std::function<void()> onTold;

private:
    std::string name_;
    std::vector<std::string>& story_;
};

} // namespace

TEST_F(ServicesTest, OfTwoViewersTheOneThatLosesTheFocusIsToldFirst) {
    Viewer a("a", story);
    Viewer b("b", story);
    setConsoleFocus(&a);
    setConsoleFocus(&a);
    setConsoleFocus(&b);
    setConsoleFocus(nullptr);
    EXPECT_THAT(story, ElementsAre("a+", "a-", "b+", "b-"));
}

TEST_F(ServicesTest, AFocusMovedOnInsideTheNoticeStaysWhereItWent) {
    Viewer a("a", story);
    Viewer b("b", story);
    Viewer c("c", story);
    setConsoleFocus(&a);
    a.onTold = [&] { setConsoleFocus(&c); };
    setConsoleFocus(&b);
    EXPECT_EQ(getConsoleFocus(), &c);
    EXPECT_THAT(story, ElementsAre("a+", "a-", "b-", "c+"));
}

TEST_F(ServicesTest, AViewerThatGoesGivesTheFocusUpAndACopyNeverHeldIt) {
    {
        Viewer a("a", story);
        setConsoleFocus(&a);
        const Viewer copy(a);
        EXPECT_FALSE(copy.hasConsoleFocus());
    }
    EXPECT_EQ(getConsoleFocus(), nullptr);
    EXPECT_THAT(story, ElementsAre("a+"));
}

TEST_F(ServicesTest, DebugCommandsRunByNameWhileRegistered) {
    Kv::Ptr<Guard> first = addDebugCommand("reinit", [&] { story.push_back("first"); });
    Kv::Ptr<Guard> once;
    once = addDebugCommand("once", [&] {
        once.reset();
        story.push_back("once");
    });
    {
        const auto later = addDebugCommand("reinit", [&] { story.push_back("later"); });
        EXPECT_THAT(Host::debugCommands().names(), ElementsAre("once", "reinit"));
        EXPECT_TRUE(Host::debugCommands().run("reinit"));
    }
    EXPECT_TRUE(Host::debugCommands().run("reinit"));
    EXPECT_TRUE(Host::debugCommands().run("once"));
    EXPECT_FALSE(Host::debugCommands().run("once"));
    EXPECT_FALSE(Host::debugCommands().run("rein"));
    EXPECT_FALSE(Host::debugCommands().run("z"));
    EXPECT_THAT(story, ElementsAre("later", "first", "once"));
}

TEST_F(ServicesTest, UserMessagesAreKeptAndPrinted) {
    std::vector<EmbeddedMessages::Shown> printed;
    showUserMessage(L"one");
    host.messages().setPrinter([&](const EmbeddedMessages::Shown& m) { printed.push_back(m); });
    showUserMessage(L"two", 5);
    const EmbeddedMessages::Shown one{L"one", 999999};
    const EmbeddedMessages::Shown two{L"two", 5};
    EXPECT_THAT(host.messages().shown(), ElementsAre(one, two));
    EXPECT_THAT(printed, ElementsAre(two));
    for (std::size_t i = 0; i < EmbeddedMessages::kKept; ++i)
        showUserMessage(L"more");
    EXPECT_EQ(host.messages().shown().size(), EmbeddedMessages::kKept);
    EXPECT_EQ(host.messages().shown().front().text, L"more");
}

TEST_F(ServicesTest, RedrawIsHeldBackUntilTheOutermostDeferralEnds) {
    {
        const Glib::UpdateDeferrer outer;
        { const Glib::UpdateDeferrer inner; }
        EXPECT_TRUE(host.redraw().deferred());
    }
    EXPECT_FALSE(host.redraw().deferred());
}

TEST_F(ServicesTest, EveryNumberHasItsEnglishText) {
    const ResId asked[] = {10015, 10016, 10017, 10018, 10019, 10020, 10054, 10413, 10833,
                           11093, 11687, 11690, 11691, 11692, 11693, 11695, 11696, 11697,
                           11698, 11806, 11983, 12036, 12037, 12038, 12713, 13009};
    for (const ResId id : asked)
        EXPECT_NE(resourceStrW(id).substr(0, 1), L"#") << id;
    const auto subframe = resourceStr(kResSubframeError);
    EXPECT_NE(subframe.find("$NAME$"), std::string::npos);
    EXPECT_NE(subframe.find("$TIMECODE$"), std::string::npos);
    EXPECT_EQ(resourceStrW(10014), L"#10014");
}

TEST_F(ServicesTest, DisplayTextsOfOneListAreToldApart) {
    const std::vector<std::vector<ResId>> lists = {
        {11692, 11695, 11687, 11696, 11697, 11698, 11690, 11691, 11693, 12713},
        {12036, 12037, 12038},
        {10015, 10016, 10017, 10018, 10019, 10020, 10833},
    };
    for (const auto& list : lists) {
        std::set<LightweightString<wchar_t>> texts;
        for (const ResId id : list)
            texts.insert(resourceStrW(id));
        EXPECT_EQ(texts.size(), list.size()) << list.front();
    }
}

TEST(FixedIdsTest, EveryRunGivesTheSameIds) {
    const auto firstCookies = [] {
        const EmbeddedHost host(EmbeddedHost::repeatable());
        return std::vector<Cookie>{Cookie::make('E'), Cookie::make('E')};
    };
    const auto run = firstCookies();
    EXPECT_EQ(run, firstCookies());
    EXPECT_NE(run[0], run[1]);
}

TEST(SystemClockTest, RealTimePassesForTheLoop) {
    EmbeddedHost host;
    const double before = Host::clock().now();
    EXPECT_FALSE(host.loop().runUntil([] { return false; }, 0.02));
    EXPECT_GE(Host::clock().now(), before + 0.02);
    EXPECT_EQ(host.manualClock().now(), 0.0);
}
