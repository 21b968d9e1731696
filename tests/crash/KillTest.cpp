// Processes killed at random moments of their work: what they acknowledged is there, nothing is
// torn, and the next one opens the project without a question.
#include "bins/BinManager.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/EditManager.h"
#include "tests/crash/Writer.h"
#include "tests/support/LogLines.h"
#include "tests/support/Scale.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace cutroom;
using namespace cutroom::test;
using std::chrono::microseconds;
using testing::IsEmpty;

namespace {

// Of each kind of work. A process under a sanitizer takes long to start, and finds nothing more
// here.
#ifdef CUTROOM_SANITIZED
constexpr long kMoments = 15;
#else
constexpr long kMoments = 50;
#endif

using Access = CurrentProject::Access;
using IfMissing = CurrentProject::IfMissing;

class KillTest : public testing::TestWithParam<const char*> {
protected:
    KillTest() {
        EmbeddedHost host;
        EmbeddedProject project(host);
        const Status opened = project.open(folder_, Access::readWrite, IfMissing::create);
        EXPECT_TRUE(opened.ok()) << opened.text();
        importTimelines();
        BinManager::instance().newBin();
        EXPECT_TRUE(BinManager::instance().saveAll().ok());
        acknowledged_ = stateOfProject();
        const Status closed = project.close();
        EXPECT_TRUE(closed.ok()) << closed.text();
    }

    // Lets a process work and kills it: at any moment from its start on, or a little after some
    // line of its, which is in the midst of a save.
    void killOne(unsigned seed) {
        WriterProcess writer(GetParam(), folder_, seed);
        if (random_() % 8 == 0)
            writer.read(1000, microseconds(random_() % 60'000));
        else
            writer.read(1 + random_() % 6, std::chrono::seconds(20));
        writer.read(1000, microseconds(random_() % 4'000));
        writer.kill();
        tried_.clear();
        for (const std::string& line : writer.lines()) {
            EXPECT_FALSE(line.starts_with("failed")) << line;
            if (line.starts_with("try "))
                tried_ = stateOf(line.substr(4));
            if (line != "done")
                continue;
            acknowledged_ = tried_;
            tried_.clear();
            ++acknowledgements_;
        }
    }

    // The next process: `turn` tells whose steps of history are gone through.
    void openNext(unsigned turn) {
        EmbeddedHost host;
        EmbeddedProject project(host);
        const Status opened = project.open(folder_, Access::readWrite, IfMissing::fail);
        ASSERT_TRUE(opened.ok()) << opened.text();
        EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
        EXPECT_THAT(litterAmong(filesBelow(folder_)), IsEmpty());
        EXPECT_EQ(databaseTrouble(), "");
        EXPECT_EQ(summaryTrouble(), "");
        const ProjectState found = stateOfProject();
        cutOff_ += !tried_.empty();
        if (tried_.empty() || found != tried_) {
            ASSERT_EQ(found, acknowledged_) << differences(found, acknowledged_) << "or, tried:\n"
                                            << differences(found, tried_);
        }
        acknowledged_ = found;
        const CookieVec edits = EditManager::instance().getAllEdits();
        const Cookie& edit = edits[turn % edits.size()];
        EXPECT_EQ(historyTrouble(EditPtr(edit)), "") << edit.asString();
        const Status closed = project.close();
        EXPECT_TRUE(closed.ok()) << closed.text();
    }

    TempFolder temp_;
    const std::string folder_ = temp_ / "film";
    LogLines log_;
    std::mt19937 random_{20};
    ProjectState acknowledged_; // the last state that is known to be saved
    ProjectState tried_;        // the one whose saving was cut off, or empty
    long acknowledgements_ = 0;
    long cutOff_ = 0; // kills in the midst of a save
};

INSTANTIATE_TEST_SUITE_P(Work, KillTest, testing::Values("edits", "bins", "documents", "groups"),
                         [](const auto& test) { return test.param; });

TEST_P(KillTest, whatWasAcknowledgedIsThereAndNothingIsTorn) {
    const long moments = rounds(kMoments, 2'500);
    RecordProperty("kills", std::to_string(moments));
    for (long i = 0; i < moments && !HasFatalFailure() && !HasNonfatalFailure(); ++i) {
        SCOPED_TRACE(i);
        killOne(static_cast<unsigned>(i));
        openNext(static_cast<unsigned>(i));
    }
    EXPECT_GT(acknowledgements_, moments / 2);
    EXPECT_GT(cutOff_, moments / 10);
    for (const std::string& line : log_.lines)
        ADD_FAILURE() << line;
}

} // namespace
