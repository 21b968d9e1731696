// Modules: time, marks and selection on an edit.
#include "platform/store/EditModule.h"

#include "tests/support/Edits.h"

#include <gtest/gtest.h>

namespace {

using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;

class Module : public testing::Test {
protected:
    EditModifier edit_ = cutroom::test::makeEdit(2, 2);
    const IdStamp v1_ = edit_->getId(0), v2_ = edit_->getId(1);
    const IdStamp a2_ = edit_->getId(3);
};

TEST_F(Module, ChannelsThatTheEditGainsOrLosesAreUnselectedOrIgnored) {
    EditModule module(edit_);
    EXPECT_FALSE(module.isSelected(edit_->addChan(kChanVideo)));
    module.setMark(a2_, 3, In);
    edit_->removeChan(a2_, false);
    EXPECT_EQ(module.getNumSelectedChans(), 3);
    EXPECT_FALSE(module.isMarked() || module.selectChan(a2_, false));
}

TEST_F(Module, TimeIsExactOrAtTheStartOfItsFrame) {
    EditModule module(edit_);
    module.setCurrentTime(1.07);
    EXPECT_EQ(module.getCurrentTime(), 1.07);
    EXPECT_EQ(module.getCurrentTime(EditModule::kAccuracyFrame), 1.04);
    module.setCurrentTime(kNoTime);
    EXPECT_EQ(module.getCurrentTime(EditModule::kAccuracyFrame), kNoTime);
}

TEST_F(Module, SelectionsAndMarksAreTakenFromAnotherOne) {
    EditModule module(edit_);
    module.selectChan(v2_, false);
    module.setMark(v1_, 1, In);
    module.setMark(v2_, 4, Out);
    const EditModifier other = cutroom::test::makeEdit(3, 2);
    EditModule similar(other);
    similar.makeSimilarTrackSelections(module);
    EXPECT_EQ(similar.getSelectedMask(), 0b01101U);
    similar.makeSimilarMarks(module, 10);
    EXPECT_EQ(similar.getMark(other->getId(0), In), 11);
    EXPECT_EQ(similar.getMark(other->getId(0), Out), kNoTime);
    EXPECT_EQ(similar.getMarkedRegion(), TimeRange(11, 14));
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

TEST_F(Module, LevelsChannelsFollowTheirAudioChannels) {
    const IdStamp levels = edit_->addLevelsChan(a2_);
    EditModule module(edit_);
    module.setMark(a2_, 3, Out);
    module.initLevelsFromAudio();
    EXPECT_EQ(module.getMark(levels, Out), 3);
    EXPECT_TRUE(module.isSelected(levels)) << "which derived channels are not";
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
