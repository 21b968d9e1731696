#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobRegion : public VobFixture {
protected:
    EditPtr edit_ = makeEdit(10, 1, 0);
    Kv::Ptr<Vob> vob_ = open(edit_);
    RecorderClient client_{vob_.get(), calls_, "a"};
    const IdStamp channel_ = edit_->getId(0);
};

struct RegionRow {
    const char* name;
    double start, end; // of the edit
    TimeRange wanted;
    TimeRange shown;
};

class VobRegionFit : public VobFixture, public testing::WithParamInterface<RegionRow> {};

} // namespace

TEST_P(VobRegionFit, MovesCutsAndWidens) {
    const RegionRow& row = GetParam();
    const EditPtr edit = makeEdit(row.end - row.start, 1, 0);
    ASSERT_TRUE(edit->get_edit_cel_p(0)->slide(row.start).ok());
    const auto vob = open(edit);
    vob->setViewRegion(row.wanted, false);
    EXPECT_DOUBLE_EQ(vob->getViewRegion().getStart(), row.shown.getStart());
    EXPECT_DOUBLE_EQ(vob->getViewRegion().getEnd(), row.shown.getEnd());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobRegionFit,
    testing::Values(RegionRow{"inside", 0, 10, {2, 4}, {2, 4}},
                    RegionRow{"endsAfter", 0, 10, {8, 12}, {6, 10}},
                    RegionRow{"beyondTheEnd", 0, 10, {20, 23}, {7, 10}},
                    RegionRow{"startsBefore", 5, 15, {3, 6}, {5, 8}},
                    RegionRow{"wholeBefore", 5, 15, {0, 2}, {5, 7}},
                    RegionRow{"tooWide", 5, 15, {0, 40}, {5, 15}},
                    RegionRow{"nearEnoughStays", 0, 10, {2, 10}, {2, 10}},
                    RegionRow{"narrowAtZero", 0, 10, {0, 0.01}, {0, 0.08}},
                    RegionRow{"narrowAtStartIsAnAbsoluteEnd", 5, 15, {5, 5.01}, {0.08, 5}},
                    RegionRow{"narrowAtEnd", 0, 10, {9.99, 10}, {9.92, 10}},
                    RegionRow{"narrowInside", 0, 10, {4.01, 4.02}, {3.96, 4.04}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobRegion, IsToldWhenItChangesAndKeptInTheEdit) {
    vob_->setViewRegion({2, 4}, true);
    vob_->setViewRegion({2, 4}, true);
    EXPECT_EQ(open(edit_)->getViewRegion(), TimeRange(0, 2)); // its width, around time 0
    vob_->setViewRegion({3, 4}, false);
    EXPECT_THAT(calls_, ElementsAre("a: change 65536 time 0"));
    EXPECT_EQ(edit_->getConfig("stripv_zoom"), "1");
    vob_->setViewRegion({0, 10}, false);
    EXPECT_EQ(edit_->getConfig("stripv_zoom"), "0");
    layClip(edit_, channel_, 12, 14);
    vob_->informClients(kVobViewRegion); // the extents follow whoever tells it
    EXPECT_EQ(vob_->getEditExtents(), TimeRange(0, 14));
}

TEST_F(VobRegion, FollowsTheExtentsOnlyWhenItCoveredThem) {
    const auto part = open(edit_);
    part->setViewRegion({1, 3}, false);
    layClip(edit_, channel_, 12, 14);
    for (const auto& vob : {vob_, part})
        vob->resetEditExtents();
    EXPECT_EQ(vob_->getViewRegion(), TimeRange(0, 14));
    EXPECT_EQ(part->getViewRegion(), TimeRange(1, 3));
    EXPECT_EQ(part->getEditExtents(), TimeRange(0, 14));
}

TEST_F(VobRegion, AChangeOfLengthMovesExtentsAndRegionAndIsTold) {
    layClip(edit_, channel_, 12, 14);
    edit_->addModification(kModEventsAdded, true);
    EXPECT_EQ(vob_->getViewRegion(), TimeRange(0, 14));
    EXPECT_THAT(calls_, ElementsAre("a: change 65536 time 0", "a: edit 1 22 change 0"));
    EXPECT_THAT(log_.lines, testing::Contains("Edit extents: 0.0 to 14.0\n"));
}

TEST_F(VobRegion, FollowsANewStartAndGeneralChangesOfSpecialEdits) {
    const auto follows = [&](EditModificationType kind, eLogType type) {
        edit_->setLogType(type);
        log_.lines.clear();
        vob_->preNotifyClients(EditModifications(kind), 0);
        return !log_.lines.empty();
    };
    EXPECT_FALSE(follows(kModGeneral, kLogTypeEdit));
    EXPECT_TRUE(follows(kModGeneral, kLogTypeSpecial));
    EXPECT_TRUE(follows(kModStartTime, kLogTypeEdit));
}

TEST_F(VobRegion, BeyondAShorterEditIsMovedBackWithTheChange) {
    vob_->setViewRegion({8, 10}, false);
    ASSERT_TRUE(edit_->get_edit_cel_p(0)->remove({0, 5}).ok());
    edit_->addModification(kModEventsRemoved, true);
    EXPECT_EQ(vob_->getViewRegion(), TimeRange(3, 5));
    EXPECT_THAT(calls_, ElementsAre("a: edit 2 22 change 65536"));
}

TEST_F(VobRegion, DurationIsThatOfTheEditOrOfTheSelectedChannels) {
    const EditPtr edit = makeEdit(20, 1, 1);
    layClip(edit, edit->getId(0), 2, 6);
    layClip(edit, edit->getId(1), 4, 9);
    const auto vob = open(edit);
    EXPECT_DOUBLE_EQ(vob->getTotalDuration(), 7);
    VobManager::setTotalDurationBySelection(true);
    vob->setSelectedRaw(edit->getId(0), false);
    EXPECT_DOUBLE_EQ(vob->getTotalDuration(), 5);
    vob->setSelectedRaw(edit->getId(1), false);
    EXPECT_EQ(vob->getTotalDuration(), 0.0);
    EXPECT_EQ(vob_->getTotalDuration(), 10.0); // all of it is black
    VobManager::setTotalDurationBySelection(false);
    EXPECT_THAT(log_.lines, testing::Not(testing::Contains(testing::HasSubstr("negative"))));
}
