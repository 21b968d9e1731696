#include "platform/embedded/EmbeddedHost.h"

#include "platform/host/DebugCommands.h"

#include <gmock/gmock.h>

#include <memory>
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
    const auto tell = [&](const char* what) { return [=, this] { story.push_back(what); }; };
    iDebugCommands& commands = Host::debugCommands();
    const Kv::Ptr<Guard> first = addDebugCommand("reinit", tell("first"));
    Kv::Ptr<Guard> once = addDebugCommand("once", [&] {
        once.reset();
        story.push_back("once");
    });
    {
        const auto later = addDebugCommand("reinit", tell("later"));
        EXPECT_THAT(commands.names(), ElementsAre("once", "reinit"));
        EXPECT_TRUE(commands.run("reinit"));
    }
    EXPECT_TRUE(commands.run("reinit") && commands.run("once"));
    for (const char* unknown : {"once", "rein", "z"})
        EXPECT_FALSE(commands.run(unknown)) << unknown;
    EXPECT_THAT(story, ElementsAre("later", "first", "once"));
}

TEST_F(ServicesTest, UserMessagesAreKeptAndPrinted) {
    std::vector<EmbeddedMessages::Shown> printed;
    showUserMessage(L"one");
    host.messages().setPrinter([&](const EmbeddedMessages::Shown& m) { printed.push_back(m); });
    showUserMessage(L"two", 5);
    const EmbeddedMessages::Shown one{L"one", 999999}, two{L"two", 5};
    EXPECT_THAT(host.messages().shown(), ElementsAre(one, two));
    EXPECT_THAT(printed, ElementsAre(two));
    for (std::size_t i = 0; i < EmbeddedMessages::kKept; ++i)
        showUserMessage(L"more");
    EXPECT_EQ(host.messages().shown().size(), EmbeddedMessages::kKept);
    EXPECT_EQ(host.messages().shown().front().text, L"more");
    const auto held = std::make_shared<int>();
    host.messages().setPrinter([&, own = held](const EmbeddedMessages::Shown&) {
        host.messages().setPrinter({});
        EXPECT_EQ(held.use_count(), 2) << "what it holds goes behind it";
    });
    showUserMessage(L"last");
}

TEST_F(ServicesTest, EveryNumberHasAnEnglishTextToldApartFromTheOthersOfItsList) {
    const std::vector<std::vector<ResId>> lists = {
        {11692, 11695, 11687, 11696, 11697, 11698, 11690, 11691, 11693, 12713},
        {12036, 12037, 12038},
        {10015, 10016, 10017, 10018, 10019, 10020, 10833},
        {10054, 10413, 11093, 11806, 11983, 13009},
    };
    for (const auto& list : lists) {
        std::set<LightweightString<wchar_t>> texts;
        for (const ResId id : list) {
            EXPECT_NE(resourceStrW(id).substr(0, 1), L"#") << id;
            texts.insert(resourceStrW(id));
        }
        EXPECT_EQ(texts.size(), list.size()) << list.front();
    }
    const auto subframe = resourceStr(kResSubframeError);
    EXPECT_NE(subframe.find("$NAME$"), std::string::npos);
    EXPECT_NE(subframe.find("$TIMECODE$"), std::string::npos);
    EXPECT_EQ(resourceStrW(10014), L"#10014");
}

TEST(SystemClockTest, RealTimePassesForTheLoop) {
    EmbeddedHost host;
    const double before = Host::clock().now();
    EXPECT_FALSE(host.loop().runUntil([] { return false; }, 0.02));
    EXPECT_GE(Host::clock().now(), before + 0.02);
}
