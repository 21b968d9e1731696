// Undo and redo over several runs of the program.
#include "tests/crash/CrashFixture.h"
#include "tests/crash/RandomWork.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

using HistoryTest = CrashFixture;

TEST_F(HistoryTest, everyStateComesBackInALaterRun) {
    std::vector<std::string> states;
    std::vector<std::string> descriptions{"the first"};
    for (int run = 0; run < 5; ++run) {
        begin();
        const EditPtr edit(edits_[0]);
        for (int i = 0; i < 7; ++i) {
            descriptions.push_back("step " + std::to_string(descriptions.size()));
            EditManager::instance().makeBackup(edit, descriptions.back());
            states.push_back(edit->canonicalContents());
            edit->setName(L"name " + std::to_wstring(states.size()));
            edit->addCue(Cue(static_cast<double>(states.size()), L"m"));
        }
        end();
    }
    begin();
    const EditPtr edit(edits_[0]);
    EditManager& manager = EditManager::instance();
    const std::string last = edit->canonicalContents();
    std::vector<std::string> found;
    for (const auto& step : manager.getHistory(edit))
        found.push_back(step.description);
    EXPECT_EQ(found, descriptions);
    for (auto state = states.rbegin(); state != states.rend(); ++state) {
        ASSERT_TRUE(manager.undo(edit));
        ASSERT_EQ(edit->canonicalContents(), *state);
    }
    end(); // with everything undone
    begin();
    const EditPtr again(edits_[0]);
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(EditManager::instance().redo(again));
        ASSERT_EQ(again->canonicalContents(), states[i]);
    }
    ASSERT_TRUE(EditManager::instance().redo(again));
    EXPECT_EQ(again->canonicalContents(), last);
    EXPECT_FALSE(EditManager::instance().canRedo(again));
}

TEST_F(HistoryTest, staysBoundedAndSoundOverManyRuns) {
    RandomWork work(3);
    std::size_t largest = 0;
    for (int run = 0; run < 12; ++run) {
        begin();
        const EditPtr edit(edits_[0]);
        for (int i = 0; i < 25; ++i)
            ASSERT_TRUE(work.change(edit).ok());
        largest = std::max(largest, EditManager::instance().getHistory(edit).size());
        end();
        begin();
        const EditPtr again(edits_[0]);
        EXPECT_EQ(stampOf(again), stampOf(edit)) << run;
        EXPECT_EQ(historyTrouble(again), "") << run;
        end();
    }
    EXPECT_EQ(largest, EditManager::kMaxSteps);
}

// Markers without any text are the smallest there are.
TEST_F(HistoryTest, aBareMarkerIsReadAgain) {
    begin();
    EditPtr edit(edits_[1]);
    edit->setCues(CueList());
    edit->addCue(Cue(2.0, L""));
    edit.reset();
    end();
    begin();
    Status why;
    const EditPtr again = EditManager::instance().open(edits_[1], &why);
    ASSERT_TRUE(again) << why.text();
    EXPECT_EQ(again->getCues().getNumCuePoints(), 1u);
}

} // namespace
