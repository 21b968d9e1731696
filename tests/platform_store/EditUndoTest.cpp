#include "StoreFixture.h"

#include <functional>
#include <random>

using namespace cutroom;

namespace {

#ifdef CUTROOM_SANITIZED
constexpr int kSteps = 800;
#else
constexpr int kSteps = 10000;
#endif

class EditUndoTest : public cutroom::test::StoreFixture {
protected:
    // One random change of anything that an edit holds.
    void change(const EditPtr& edit, std::mt19937& random) {
        const auto number = [&](std::size_t below) { return static_cast<int>(random() % below); };
        const auto channels = edit->getChans();
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(number(channels.size()));
        const Flicks at = (number(100) - 10) * 1000;
        const Flicks length = (number(20) + 1) * 1000;
        const TimeRange range(toSeconds(at), toSeconds(at + length));
        CelSegment segment;
        segment.start = at;
        segment.end = at + length;
        segment.material = Cookie('E', static_cast<std::uint64_t>(number(5)));
        segment.detail.name = std::to_wstring(number(30));
        const std::wstring& name = segment.detail.name;
        const IdStamp graph(1, 2, static_cast<std::uint32_t>(number(4)));
        const std::function<void()> changes[] = {
            [&] { EXPECT_TRUE(cel->overwrite(segment).ok()); },
            [&] { EXPECT_TRUE(cel->lift(range).ok()); },
            [&] { EXPECT_TRUE(cel->remove(range).ok()); },
            [&] { EXPECT_TRUE(cel->insertGap(at, length).ok()); },
            [&] { EXPECT_TRUE(cel->slide(toSeconds(at / 10)).ok()); },
            [&] { EXPECT_TRUE(cel->overwriteFrom(*video(edit), at, at + length, 0).ok()); },
            [&] { edit->setName(name); },
            [&] { edit->addCue(Cue(toSeconds(at), name)); },
            [&] { edit->setCues(CueList()); },
            [&] { edit->setConfig("scene", number(9)); },
            [&] { edit->setConfig("BACKUP_CURRENT", number(9)); },
            [&] {
                channels.size() < 9 ? (void)edit->addChan(kChanAudio)
                                    : (void)edit->removeChan(channels.back(), false);
            },
            [&] { edit->setAudioMix(Kv::makePtr<Aud::SimpleMixState>(std::size_t(number(3)))); },
            [&] {
                edit->groupChannels({channels.front(), channels.back()}, number(2) == 0);
            },
            [&] {
                edit->setEffectGraph({graph, "effect", name, {}, at, at, {}, false});
            },
            [&] { edit->setVideoMetadata(std::to_string(number(20))); },
        };
        changes[number(std::size(changes))]();
        if (cel->numSegments() > 60)
            cel->clear();
    }
};

TEST_F(EditUndoTest, undoAllAndRedoAllRestoreEveryState) {
    const EditPtr edit = fresh();
    std::mt19937 random(7);
    std::vector<std::string> states;
    for (int step = 0; step < kSteps; ++step) {
        if (states.size() == EditManager::kMaxSteps) {
            for (auto state = states.rbegin(); state != states.rend(); ++state) {
                ASSERT_TRUE(manager().undo(edit));
                ASSERT_EQ(edit->canonicalContents(), *state);
            }
            ASSERT_FALSE(manager().undo(edit));
            for (std::size_t i = 1; i < states.size(); ++i) {
                ASSERT_TRUE(manager().redo(edit));
                ASSERT_EQ(edit->canonicalContents(), states[i]);
            }
            ASSERT_TRUE(manager().redo(edit));
            ASSERT_FALSE(manager().canRedo(edit));
            states.clear();
            while (manager().undo(edit)) {
            }
        }
        manager().makeBackup(edit, "step");
        states.push_back(edit->canonicalContents());
        const std::uint64_t before = edit->changeCount();
        while (edit->changeCount() == before)
            change(edit, random);
        ASSERT_EQ(edit->checkConsistency(), "") << "step " << step;
    }
}

TEST_F(EditUndoTest, viewStateStaysOutside) {
    const EditPtr edit = fresh();
    manager().makeBackup(edit);
    const std::string kept[] = {"BACKUP_CURRENT", "stripv_zoom", "SHOW_CEL_CUES"};
    for (const std::string& key : kept)
        edit->setConfig(key, 7);
    edit->setConfig("scene", "4");
    EXPECT_TRUE(manager().undo(edit));
    for (const std::string& key : kept)
        EXPECT_EQ(edit->getConfig(key), "7");
    EXPECT_FALSE(edit->getConfig("scene"));
}

TEST_F(EditUndoTest, listsStayTheSameObjectsAndHandlesEnd) {
    const EditPtr edit = fresh();
    const IdStamp first = edit->getId(0);
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(first);
    manager().makeBackup(edit);
    lay(edit, 1, 2, 3);
    const IdStamp added = edit->addChan(kChanVideo);
    const Kv::Ptr<Cel> addedCel = edit->get_edit_cel_p(added);
    const ce_handle handle(*cel, 1);
    ASSERT_TRUE(manager().undo(edit));
    EXPECT_EQ(edit->get_edit_cel_p(first), cel);
    EXPECT_EQ(cel->numSegments(), 1u);
    EXPECT_FALSE(handle.valid());
    EXPECT_FALSE(edit->isValidChan(added));
    const std::uint64_t changes = edit->changeCount();
    addedCel->setFlags(3);
    EXPECT_EQ(edit->changeCount(), changes) << "the list that went is no part of the edit";
}

TEST_F(EditUndoTest, aStepTakenBackLeavesTheHistoryAsItWas) {
    const EditPtr edit = fresh();
    const auto steps = [&] {
        std::string text;
        for (const auto& step : manager().getHistory(edit))
            text += step.description + (step.undone ? " undone " : " ");
        return text;
    };
    const auto stepAndBack = [&] {
        manager().makeBackup(edit, "refused");
        manager().dropBackup(edit);
        manager().dropBackup(edit); // once a step
        return steps();
    };
    EXPECT_EQ(stepAndBack(), "");
    for (std::size_t i = 0; i < EditManager::kMaxSteps; ++i) {
        manager().makeBackup(edit, std::to_string(i));
        edit->setName(std::to_wstring(i));
    }
    const std::string full = steps();
    EXPECT_EQ(stepAndBack(), full) << "the oldest step is there again";
    manager().makeBackup(edit, "changed");
    edit->setName(L"b");
    manager().dropBackup(edit);
    ASSERT_TRUE(manager().undo(edit));
    const std::string undone = steps();
    EXPECT_EQ(stepAndBack(), undone) << "what could be redone is there again";
    EXPECT_TRUE(manager().redo(edit));
    EXPECT_EQ(edit->getName(), L"b");
    manager().makeBackup(edit, "before");
    const std::string named = steps();
    EXPECT_EQ(stepAndBack(), named) << "a step that was only given another name has its own";
}

TEST_F(EditUndoTest, aNewStepEndsWhatCouldBeRedone) {
    const EditPtr edit = fresh();
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        manager().makeBackup(edit, toUtf8(name));
        edit->setName(name);
    }
    ASSERT_TRUE(manager().undo(edit) && manager().undo(edit));
    manager().makeBackup(edit, "d");
    manager().makeBackup(edit, "e"); // nothing has changed: the same step
    EXPECT_FALSE(manager().canRedo(edit));
    std::string steps;
    for (const auto& step : manager().getHistory(edit))
        steps += step.description + (step.undone ? " undone " : " ");
    EXPECT_EQ(steps, "a e ");
}

} // namespace
