// Undo and redo over several runs of the program, with more steps than a history keeps.
#include "tests/crash/CrashFixture.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

using HistoryTest = CrashFixture;

TEST_F(HistoryTest, everyStateThatIsKeptComesBackInALaterRun) {
    constexpr std::size_t kRuns = 12, kSteps = 10;
    std::vector<std::string> states;
    std::vector<std::string> descriptions{"first"};
    for (std::size_t run = 0; run < kRuns; ++run) {
        begin();
        const EditPtr edit(edits_[0]);
        for (std::size_t i = 0; i < kSteps; ++i) {
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
    states.push_back(edit->canonicalContents());
    std::vector<std::string> found;
    for (const auto& step : manager.getHistory(edit))
        found.push_back(step.description);
    const auto kept = static_cast<std::ptrdiff_t>(EditManager::kMaxSteps);
    EXPECT_EQ(found, std::vector<std::string>(descriptions.end() - kept, descriptions.end()));
    for (auto state = states.rbegin() + 1; state != states.rbegin() + 1 + kept; ++state) {
        ASSERT_TRUE(manager.undo(edit));
        ASSERT_EQ(edit->canonicalContents(), *state);
    }
    EXPECT_FALSE(manager.canUndo(edit));
    end(); // with everything undone
    begin();
    const EditPtr again(edits_[0]);
    for (auto state = states.end() - kept; state != states.end(); ++state) {
        ASSERT_TRUE(EditManager::instance().redo(again));
        ASSERT_EQ(again->canonicalContents(), *state);
    }
    EXPECT_FALSE(EditManager::instance().canRedo(again));
}

} // namespace
