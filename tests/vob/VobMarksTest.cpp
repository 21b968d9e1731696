#include "platform/prefs/EditorPreferences.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using cutroom::toFlicks;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobMarks : public VobFixture {
protected:
    double in(int chan) const { return vob_->getEditModule().getMark(edit_->getId(chan), In); }
    double out(int chan) const { return vob_->getEditModule().getMark(edit_->getId(chan), Out); }
    // In and out of every channel.
    std::vector<double> marks() const {
        std::vector<double> all;
        for (int chan = 0; chan < edit_->getNumChans(); ++chan) {
            all.push_back(in(chan));
            all.push_back(out(chan));
        }
        return all;
    }

    EditPtr edit_ = makeEdit(10, 1, 2);
    Kv::Ptr<Vob> vob_ = open(edit_);
    RecorderClient client_{vob_.get(), calls_, "a"};
};

constexpr double no = kNoTime;

} // namespace

TEST_F(VobMarks, GoToOneChannelAllOrTheSelectedOnes) {
    for (const int chan : {-1, 3, kChanEnd, 70000}) // none of the edit's
        vob_->setMarkTime(chan, 5, In);
    vob_->setMarkTime(IdStamp(9, 9, 9), 5, In);
    vob_->setMarkTime(0, std::numeric_limits<double>::infinity(), In);
    vob_->setMarkTime(IdStamp(), std::numeric_limits<double>::infinity(), In);
    vob_->setMarkTime(edit_->getId(1), 5, In);
    EXPECT_THAT(marks(), ElementsAre(no, no, 5, no, no, no));
    vob_->setMarkTime(IdStamp(), 6, Out);
    EXPECT_THAT(marks(), ElementsAre(no, 6, 5, 6, no, 6));
    vob_->setSelectedRaw(edit_->getId(0), false);
    vob_->setMarkTime(kChanAllSelected, 2, In);
    EXPECT_THAT(marks(), ElementsAre(no, 6, 2, 6, 2, 6));
    vob_->setMarkTime(edit_->getId(0), {3, 4});
    EXPECT_THAT(marks(), ElementsAre(3, 4, 2, 6, 2, 6));
    vob_->storeMarkTime(edit_->getId(2), {1, 5});
    EXPECT_THAT(marks(), ElementsAre(3, 4, 2, 6, 1, 5));
    EXPECT_THAT(calls_, ElementsAre("a: change 4 time 0 mark 5", "a: change 4 time 0 mark 6",
                                    "a: change 4 time 0 mark 2", "a: change 4 time 0 mark 3"));
}

class VobMarksCross : public VobMarks, public testing::WithParamInterface<bool> {};

TEST_P(VobMarksCross, OnlyWhenTheyAreAdvanced) {
    const bool advanced = GetParam();
    EditorPreferences::setPreference("Behaviour : Advanced marks", advanced);
    vob_->setMarkTime(IdStamp(), 4, Out);
    EditorPreferences::setPreference("Behaviour : Advanced marks", !advanced); // was read once
    vob_->setMarkTime(IdStamp(), 5, In);
    EXPECT_EQ(in(0), 5.0);
    EXPECT_EQ(out(0), advanced ? 4.0 : no);
}

INSTANTIATE_TEST_SUITE_P(Both, VobMarksCross, testing::Bool());

TEST_F(VobMarks, OfAudioAreMirroredOnTheLevelsThatAreBound) {
    const IdStamp audio = edit_->getId(1);
    const IdStamp levels = edit_->addLevelsChan(audio);
    vob_->setMarkTime(audio, 3, In);
    EXPECT_EQ(vob_->getEditModule().getMark(levels, In), 3.0);
    EditModule module = vob_->getEditModule();
    module.setMark(levels, 9, In);
    vob_->setEditModule(module, false);
    EXPECT_EQ(vob_->getEditModule().getMark(levels, In), 3.0);
    vob_->setSelectedFrom(2); // the other audio channel
    EXPECT_FALSE(vob_->getSelected(levels));
    vob_->setLevelsBoundToAudio(false);
    vob_->setMarkTime(audio, 4, In);
    EXPECT_EQ(vob_->getEditModule().getMark(levels, In), 3.0);
}

TEST_F(VobMarks, InvalidatingConcernsSelectedChannelsAndIsAlwaysTold) {
    vob_->storeMarkTime(IdStamp(), 1, In);
    vob_->storeMarkTime(IdStamp(), 2, Out);
    vob_->setSelectedRaw(edit_->getId(0), false);
    vob_->invalidateMark(0); // not selected
    EXPECT_THAT(marks(), ElementsAre(1, 2, 1, 2, 1, 2));
    vob_->invalidateMark(2);
    EXPECT_THAT(marks(), ElementsAre(1, 2, 1, 2, no, no));
    vob_->invalidateMark(kChanAllSelected);
    EXPECT_THAT(marks(), ElementsAre(1, 2, no, no, no, no));
    for (const IdStamp& channel : edit_->getChans())
        vob_->setSelectedRaw(channel, false);
    vob_->invalidateMark(kChanAllSelected);
    EXPECT_THAT(calls_, testing::Each("a: change 4 time 0"));
    EXPECT_EQ(calls_.size(), 4u);
}

TEST_F(VobMarks, TimeIsThatOfTheFirstSelectedMarkedChannel) {
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), no);
    EXPECT_FALSE(vob_->isMarkValid(kChanAllSelected));
    vob_->storeMarkTime(2, 3, In);
    EXPECT_TRUE(vob_->isMarkValid(kChanAllSelected));
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), 3.0);
    vob_->storeMarkTime(0, 1, In);
    vob_->storeMarkTime(1, 8, Out);
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), 1.0);
    vob_->setSelectedRaw(edit_->getId(0), false);
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), no); // channel 1 is marked, but not in
    vob_->setSelectedRaw(edit_->getId(1), false);
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), 3.0);
    vob_->setSelectedRaw(edit_->getId(2), false);
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), 1.0); // channel 0
    EXPECT_EQ(vob_->getMarkTime(1), no);
    EXPECT_TRUE(vob_->isMarkValid(1));
    EXPECT_FALSE(vob_->isMarkValid(kChanEnd));
    EXPECT_FALSE(vob_->marksAligned(false));
}

// --- aligning ------------------------------------------------------------------------------------

// Video and both audio channels hold clips [2, 4) and [4, 6); the video's cuts at 2 and 4 are
// unjoined, so it is popped at 3.
class VobAlign : public VobMarks {
protected:
    VobAlign() {
        for (const IdStamp& channel : edit_->getChans()) {
            layClip(edit_, channel, 2, 4);
            layClip(edit_, channel, 4, 6, 8);
        }
        pop(edit_->getId(0));
        vob_->storeMarkTime(IdStamp(), 3, In);
        vob_->storeMarkTime(IdStamp(), 3.4, Out);
        calls_.clear();
    }
    void pop(const IdStamp& channel) {
        const auto cel = edit_->get_edit_cel_p(channel);
        vob_->unjoinCut(channel, cel->find_ceh(2, 0));
        vob_->unjoinCut(channel, cel->find_ceh(4, 0));
    }
};

TEST_F(VobAlign, LeavesEverythingWhenNoneOrAllArePopped) {
    pop(edit_->getId(1));
    pop(edit_->getId(2));
    calls_.clear();
    vob_->alignMarks(In);
    vob_->rejoinCuts();
    calls_.clear();
    vob_->alignMarks(In);
    EXPECT_THAT(calls_, IsEmpty());
    EXPECT_EQ(edit_->get_edit_cel_p(edit_->getId(0))->getSegment(1).start, toFlicks(2));
    EXPECT_FALSE(EditManager::instance().canUndo(edit_));
}

TEST_F(VobAlign, StopsWhenWhoIsToldOfTheTrimShowsAnotherEdit) {
    const EditPtr other = makeEdit();
    client_.onChange = [&](const VobModification&) {
        if (vob_->getEdit() != other)
            vob_->setEdit(other, false);
    };
    vob_->alignMarks(In);
    EXPECT_EQ(vob_->getEdit(), other);
    EXPECT_FALSE(vob_->isMarkValid());
    EXPECT_THAT(calls_.back(), testing::HasSubstr("change 32"));
}

struct AlignRow {
    const char* name;
    double in, out;
    Kv::MarkTypes::MarkType type;
    double newIn, newOut, newStart; // of the popped clip
};
class VobAlignTo : public VobAlign, public testing::WithParamInterface<AlignRow> {};

TEST_P(VobAlignTo, TrimsThePoppedChannelToTheOtherMark) {
    const AlignRow& row = GetParam();
    vob_->storeMarkTime(kChanAllSelected, row.in, In);
    vob_->storeMarkTime(kChanAllSelected, row.out, Out);
    vob_->alignMarks(row.type);
    EXPECT_EQ(edit_->get_edit_cel_p(0)->getSegment(1).start, toFlicks(row.newStart));
    EXPECT_EQ(edit_->get_edit_cel_p(1)->getSegment(1).start, toFlicks(2));
    for (int chan = 0; chan < edit_->getNumChans(); ++chan)
        EXPECT_EQ(std::pair(in(chan), out(chan)), std::pair(row.newIn, row.newOut)) << chan;
    EXPECT_EQ(vob_->getNumUnjoinedCuts(), 0u);
    EXPECT_TRUE(EditManager::instance().canUndo(edit_));
    ASSERT_FALSE(calls_.empty());
    EXPECT_THAT(calls_.back(), testing::HasSubstr("change 12"));
}

INSTANTIATE_TEST_SUITE_P(Rows, VobAlignTo,
                         testing::Values(AlignRow{"inIsKept", 3, 3.4, In, no, 3.4, 2.4},
                                         AlignRow{"outIsKept", 2.8, 3, Out, 2.8, no, 1.8},
                                         AlignRow{"outLiesFirstAndIsKept", 4.9, 3, In, 4.9, no,
                                                  3.9}),
                         [](const auto& row) { return std::string(row.param.name); });
