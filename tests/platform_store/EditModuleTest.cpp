// Modules: time, marks and selection on an edit.
#include "platform/store/EditModule.h"

#include "tests/support/Edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;

class Module : public testing::Test {
protected:
    EditModifier edit_ = cutroom::test::makeEdit(2, 2);
    const IdStamp v1_ = edit_->getId(0), v2_ = edit_->getId(1);
    const IdStamp a1_ = edit_->getId(2), a2_ = edit_->getId(3);
};

TEST_F(Module, AFreshOneSelectsAllButDerivedChannelsAndHasNoMarks) {
    const IdStamp derived = edit_->addChan(kChanVideo, kSubDerived);
    const EditModule module(edit_);
    EXPECT_FALSE(module.isSelected(derived));
    EXPECT_EQ(module.getNumSelectedChans(), 4);
    EXPECT_FALSE(module.isMarked());
    EXPECT_EQ(module.getMarkedRegion(), TimeRange(edit_->getStartTime(), edit_->getEndTime()));
}

TEST_F(Module, ChannelsThatTheEditGainsOrLosesAreUnselectedOrIgnored) {
    EditModule module(edit_);
    EXPECT_FALSE(module.isSelected(edit_->addChan(kChanVideo)));
    module.setMark(a2_, 3, In);
    edit_->removeChan(a2_, false);
    EXPECT_EQ(module.getNumSelectedChans(), 3);
    EXPECT_FALSE(module.isMarked() || module.selectChan(a2_, true));
}

TEST_F(Module, TimeIsExactOrAtTheStartOfItsFrame) {
    EditModule module(edit_);
    module.setCurrentTime(1.05);
    EXPECT_EQ(module.getCurrentTime(), 1.05);
    EXPECT_EQ(module.getCurrentTime(EditModule::kAccuracyFrame), 1.04);
    module.setCurrentTime(kNoTime);
    EXPECT_EQ(module.getCurrentTime(EditModule::kAccuracyFrame), kNoTime);
}

TEST_F(Module, SelectionFollowsTypesMasksAndOtherModules) {
    EditModule module(edit_);
    module.selectAll(false);
    module.selectChans(kChanAudio, kSubAll, true);
    EXPECT_THAT(module.getSelectedChans(), ElementsAre(a1_, a2_));
    EXPECT_EQ(module.getSelectedMask(), 0b1100U);
    module.setSelectedMask(0b0101);
    EXPECT_THAT(module.getSelectedChans(), ElementsAre(v1_, a1_));
    EXPECT_EQ(module.firstSelectedChannel(kChanAudio), a1_);
    const EditModifier other = cutroom::test::makeEdit(3, 2);
    EditModule similar(other);
    similar.makeSimilarTrackSelections(module);
    EXPECT_EQ(similar.getSelectedMask(), 0b00101U);
}

TEST_F(Module, PlainMarksNeverStandInTheWrongOrderButAdvancedOnesMay) {
    for (const bool advanced : {false, true}) {
        EditModule module(edit_);
        module.markAllAt(2, Out, advanced);
        module.markAllAt(5, In, advanced);
        EXPECT_EQ(module.getMark(v1_, In), 5);
        EXPECT_EQ(module.getMark(v1_, Out), advanced ? 2 : kNoTime);
        EXPECT_EQ(module.getMarkedRegion().getStart(), advanced ? 2 : edit_->getEndTime());
        module.markAllAt(5, Out, advanced);
        EXPECT_EQ(module.getMarkedRegion(), TimeRange(5, 5));
    }
}

TEST_F(Module, TheRegionGoesBySelectedMarksFirst) {
    EditModule module(edit_);
    module.setMark(v1_, 1, In);
    module.setMark(v2_, 2, In);
    module.setMark(v2_, 4, Out);
    module.selectChan(v1_, false);
    EXPECT_EQ(module.getMarkedRegion(), TimeRange(2, 4));
    module.selectAll(false);
    EXPECT_EQ(module.getMark(In), 1);
    EditModule moved(edit_);
    moved.makeSimilarMarks(module, 10);
    EXPECT_EQ(moved.getMark(v2_, Out), 14);
    EXPECT_EQ(moved.getMark(a1_, In), kNoTime);
    module.clearMarks();
    EXPECT_FALSE(module.isMarked());
}

TEST_F(Module, LevelsChannelsFollowTheirAudioChannels) {
    const IdStamp levels = edit_->addLevelsChan(a2_);
    EditModule module(edit_);
    module.setMark(a2_, 3, In);
    module.selectChan(levels, false);
    module.initLevelsFromAudio();
    EXPECT_EQ(module.getMark(levels, In), 3);
    EXPECT_TRUE(module.isSelected(levels));
}

TEST(ModuleWithoutEdit, AnswersEmpty) {
    EditModule module;
    module.setMark(IdStamp(1, 0, 0), 1, In);
    module.markAllAt(1, Out, true);
    module.selectAll();
    EXPECT_FALSE(module.valid() || module.isMarked() || module.selectChan(IdStamp(1, 0, 0), true));
    EXPECT_TRUE(module.getSelectedChans().empty());
    EXPECT_EQ(module, EditModule());
}

} // namespace
