#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

const IdStamp kA(1, 0, 0);
const IdStamp kB(2, 0, 0);

VobModification record(unsigned type, double mark, std::initializer_list<IdStamp> tracks) {
    VobModification made(type);
    made.setMarkTime(mark);
    for (const IdStamp& track : tracks)
        made.addModifiedTrack(track);
    return made;
}

} // namespace

TEST(VobModification, FromTextSaysNothingAtTimeZero) {
    const VobModification read(LightweightString<char>("2 1.5 0.0.1"));
    EXPECT_FALSE(read.valid());
    EXPECT_EQ(read.getTime(), 0.0);
    EXPECT_EQ(read.getMarkTime(), 0.0);
    EXPECT_EQ(VobModification(6).getTime(), kNoTime);
    EXPECT_EQ(VobModification(6).asString(), "");
}

TEST(VobModification, MergeKeepsTheFirstMarkTimeAndAllTracks) {
    VobModification first = record(kVobTime, kNoTime, {kA});
    first.merge(record(kVobMarks, 5, {kB, kA}));
    first.merge(record(kVobMarks, 7, {}));
    first.merge(record(0, 9, {kB}));
    EXPECT_EQ(first.getType(), 6u);
    EXPECT_EQ(first.getMarkTime(), 5.0);
    EXPECT_THAT(first.getModifiedTracks(), ElementsAre(kA, kB, kA));
    EXPECT_TRUE(first.affectsTrack(kB));
    EXPECT_FALSE(first.affectsTrack(IdStamp()));
}

using VobModificationTypes = VobFixture;

TEST_F(VobModificationTypes, TypesOfTracksAreThoseTheEditHas) {
    const EditPtr edit = makeEdit(1, 1, 1);
    const VobModification change =
        record(kVobMarks, kNoTime, {edit->getId(0), edit->getId(1), IdStamp(9, 9, 9)});
    EXPECT_EQ(change.getModifiedTrackTypes(edit), unsigned{kChanVideo | kChanAudio});
    EXPECT_EQ(change.getModifiedTrackTypes(EditPtr()), 0u);
    EXPECT_EQ(VobModification(2).getModifiedTrackTypes(edit), 0u);
}
