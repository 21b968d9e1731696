#include "platform/store/CelEventPair.h"
#include "tests/vob/VobFixture.h"
#include "vob/TrimObj.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobSelection : public VobFixture {
protected:
    // '1' for each selected channel.
    std::string selected() const {
        std::string text;
        for (int chan = 0; chan < edit_->getNumChans(); ++chan)
            text += vob_->getSelected(chan) ? '1' : '0';
        return text;
    }
    CelEventPair segmentAt(double seconds, int chan = 0) const { return {edit_, chan, seconds}; }

    EditPtr edit_ = makeEdit(10, 2, 2);
    Kv::Ptr<Vob> vob_ = open(edit_);
    RecorderClient client_{vob_.get(), calls_, "a"};
    const IdStamp channel_ = edit_->getId(0);
    const Kv::Ptr<Cel> cel_ = edit_->get_edit_cel_p(0);
};

struct ConstraintRow {
    const char* name;
    eLogType type;
    int channels;
    unsigned flags;
    bool selectable;
};

class VobConstraint : public VobFixture, public testing::WithParamInterface<ConstraintRow> {};

} // namespace

TEST_F(VobSelection, IsToldOnlyWhenItChanges) {
    ASSERT_EQ(selected(), "1111");
    vob_->setSelected(0, true);
    vob_->setSelected(kChanEnd, false);
    vob_->setSelected(99, false);
    EXPECT_THAT(calls_, IsEmpty());
    vob_->setSelected(1, false);
    EXPECT_EQ(selected(), "1011");
    vob_->setSelected(kChanAllSelected, false);
    EXPECT_EQ(selected(), "0000");
    vob_->setSelected(kChanAudio, kSubNormal, true);
    EXPECT_EQ(selected(), "0011");
    for (const int chan : {1, -1, 4}) // the last two are none
        vob_->setSelectedFrom(chan);
    EXPECT_EQ(selected(), "0111");
    vob_->setSelectedRaw(edit_->getId(0), true);
    const std::string told = "a: change 16 time 0", mutes = "a: edit 27 change 0";
    EXPECT_THAT(calls_, ElementsAre(told, told, mutes, mutes, told, mutes, mutes, told));
}

TEST_P(VobConstraint, KeepsLogChannelsWithoutMaterialUnselected) {
    const ConstraintRow& row = GetParam();
    const EditPtr edit = makeEdit(10, static_cast<unsigned char>(row.channels), 0);
    edit->setLogType(row.type);
    edit->get_edit_cel_p(0)->setFlags(row.flags);
    const auto vob = open(edit);
    const IdStamp channel = edit->getId(0);
    vob->setSelectedRaw(channel, false);
    RecorderClient client(vob.get(), calls_, "a");
    EXPECT_EQ(vob->canAlterTrackSelection(channel), row.selectable);
    vob->setSelected(0, true);
    EXPECT_EQ(vob->getSelected(0), row.selectable);
    EXPECT_EQ(calls_.size(), row.selectable ? 1u : 0u);
    vob->setSelectedRaw(channel, true); // may always be deselected
    EXPECT_TRUE(vob->canAlterTrackSelection(channel));
    EXPECT_FALSE(vob->canAlterTrackSelection(IdStamp(9, 9, 9)));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobConstraint,
    testing::Values(ConstraintRow{"source", kLogTypeSource, 2, 0, false},
                    ConstraintRow{"syncGhost", kLogTypeSyncGhost, 2, kCelLocked, false},
                    ConstraintRow{"subclip", kLogTypeSubclip, 2, 0, false},
                    ConstraintRow{"section", kLogTypeClipSection, 3, 0, false},
                    ConstraintRow{"sourceWithMaterial", kLogTypeSource, 2, kCelHasMaterial, true},
                    ConstraintRow{"oneChannel", kLogTypeSource, 1, 0, true},
                    ConstraintRow{"edit", kLogTypeEdit, 2, 0, true},
                    ConstraintRow{"printGhost", kLogTypePrintGhost, 2, 0, true}),
    [](const auto& row) { return std::string(row.param.name); });

// --- segments and cuts ---------------------------------------------------------------------------

TEST_F(VobSelection, SegmentsAreFoundAgainAfterCutsBeforeThem) {
    layClip(edit_, channel_, 4, 6);
    vob_->selectSegment(segmentAt(5));
    vob_->selectSegment(segmentAt(5));
    EXPECT_THAT(calls_, ElementsAre("a: change 262144 time 0"));
    {
        const EditModifier modifier(edit_, "cut");
        layClip(edit_, channel_, 1, 2, 8); // stands where the other stood, not told yet
        vob_->selectSegment(segmentAt(1.5));
        layClip(edit_, channel_, 0.5, 0.75, 9);
        vob_->toggleSegmentSelection(segmentAt(0.6));
    }
    for (const double seconds : {0.6, 1.5, 5.0})
        EXPECT_TRUE(vob_->isSegmentSelected(segmentAt(seconds))) << seconds;
    EXPECT_FALSE(vob_->isSegmentSelected(segmentAt(3)));
    calls_.clear();
    vob_->toggleSegmentSelection(segmentAt(5));
    EXPECT_THAT(calls_, ElementsAre("a: change 262144 time 0"));
    EXPECT_FALSE(vob_->isSegmentSelected(segmentAt(5)));
}

TEST_F(VobSelection, SegmentsThatGoAreDroppedAndThatIsTold) {
    layClip(edit_, channel_, 4, 6);
    vob_->selectSegments({segmentAt(5), segmentAt(2), CelEventPair()});
    calls_.clear();
    ASSERT_TRUE(cel_->lift({4, 6}).ok());
    edit_->addModification(kModEventsRemoved, true);
    ASSERT_EQ(calls_.size(), 1u);
    EXPECT_THAT(calls_[0], testing::HasSubstr("change 262144"));
    EXPECT_FALSE(vob_->isSegmentSelected(segmentAt(5)));
    EXPECT_TRUE(vob_->anySelectedSegments()); // the black before
    vob_->clearSelectedSegments();
    vob_->clearSelectedSegments();
    EXPECT_EQ(calls_.size(), 2u);
    const EditPtr copy = makeEdit(10, 0, 0);
    copy->addChan(kChanVideo, kSubNormal, channel_);
    layClip(copy, channel_, 4, 6);
    vob_->selectSegment({copy, channel_, 5.0});
    EXPECT_FALSE(vob_->anySelectedSegments()) << "it is of another edit";
}

TEST_F(VobSelection, UnjoinedCutsSurviveARenumberingWithTheirFlags) {
    layClip(edit_, channel_, 4, 6);
    vob_->unjoinCut(channel_, cel_->find_ceh(4, 0), kCutConstrainIn);
    vob_->toggleCut(channel_, cel_->find_ceh(6, 0));
    vob_->unjoinCut(channel_, ce_handle());
    EXPECT_EQ(calls_, Calls(2, "a: change 8 time 0"));
    ASSERT_TRUE(TrimObj(*vob_).trimFrames(25, false, false).ok());
    edit_->addModification(kModEventsTrimmed, true);
    layClip(edit_, channel_, 1, 2, 8);
    edit_->addModification(kModEventsAdded, true);
    const UnjoinedCuts& cuts = vob_->findTrackSelections(channel_)->getUnjoinedCuts();
    ASSERT_EQ(cuts.size(), 2);
    EXPECT_EQ(cuts.getHandle(0).get_edit_time(), 5.0);
    EXPECT_EQ(cuts.getFlag(0), unsigned{kCutConstrainIn});
    EXPECT_TRUE(vob_->isTrimViewPossible());
    EXPECT_TRUE(TrimObj(*vob_).isPopped(channel_, 6));
    EXPECT_EQ(TrimObj(*vob_).getNearestCutTime(6.5), 7.0);
    vob_->rejoinCuts();
    EXPECT_FALSE(vob_->isTrimViewPossible());
}

TEST_F(VobSelection, CutsUnjoinedWithinAChangeJoinThoseFromBeforeIt) {
    layClip(edit_, channel_, 4, 6);
    vob_->unjoinCut(channel_, cel_->find_ceh(4, 0), kCutConstrainIn);
    vob_->unjoinCut(channel_, cel_->find_ceh(6, 0));
    {
        const EditModifier modifier(edit_, "cut");
        layClip(edit_, channel_, 1, 2, 8); // renumbers, not told yet
        vob_->unjoinCut(channel_, cel_->find_ceh(1, 0));
        vob_->toggleCut(channel_, cel_->find_ceh(6, 0));
    }
    const UnjoinedCuts& cuts = vob_->findTrackSelections(channel_)->getUnjoinedCuts();
    ASSERT_EQ(cuts.asString(), "2,6");
    EXPECT_EQ(cuts.getHandle(1).get_edit_time(), 4.0);
    EXPECT_EQ(cuts.getFlag(1), unsigned{kCutConstrainIn});
}

TEST_F(VobSelection, ATrimThatCannotBeDoneWhollyIsTakenBack) {
    TrimObj trim(*vob_);
    EXPECT_EQ(trim.trimFrames(1, true, true).message(), "no channel has unjoined cuts");
    layClip(edit_, channel_, 4, 5);
    layClip(edit_, channel_, 5, 6, 8);
    const auto before = cel_->copy();
    vob_->unjoinCut(channel_, cel_->find_ceh(4, 0));
    vob_->unjoinCut(channel_, cel_->find_ceh(6, 0));
    EXPECT_FALSE(trim.trimFrames(-1.5, true, true).ok()); // the second would pass the cut at 5
    EXPECT_EQ(trim.trimFrames(kNoTime, true, true).message(), "no such time");
    EXPECT_TRUE(cel_->sameContents(*before));
    EXPECT_EQ(vob_->getNumUnjoinedCuts(), 2u);
}

TEST_F(VobSelection, LevelNodesAreDeselectedByChangesOfTheirChannel) {
    const IdStamp levels = edit_->addLevelsChan(edit_->getId(2));
    ASSERT_TRUE(edit_->setLevelNodes(levels, {{cutroom::toFlicks(1), 0.5F}}));
    vob_->selectLevelNode(levels, 2, true); // no such node
    vob_->selectLevelNode(levels, 1, true);
    EXPECT_TRUE(vob_->isLevelNodeSelected(levels, 1));
    EXPECT_THAT(calls_, ElementsAre("a: change 131072 time 0"));
    vob_->informClients(EditModifications(kModName), VobModification(0));
    EXPECT_TRUE(vob_->anySelectedLevelNodes());
    vob_->informClients(EditModifications(kModLevelNodes), VobModification(0));
    EXPECT_FALSE(vob_->anySelectedLevelNodes());
    EXPECT_EQ(calls_.back(), "a: edit 6 change 131072");
    vob_->selectLevelNode(levels, 1, true);
    edit_->addModification(kModChannelsAdded, true); // told with the edit's change
    EXPECT_THAT(calls_.back(), testing::EndsWith("8 change 131072"));
    vob_->selectLevelNode(levels, 1, true);
    vob_->selectLevelNode(levels, 1, false);
    EXPECT_FALSE(vob_->anySelectedLevelNodes());
    EXPECT_EQ(calls_.back(), "a: change 131072 time 0");
}
