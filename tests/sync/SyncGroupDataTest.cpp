// A sync group is a bin of kind 'M': made, kept and read back by the bin manager.
#include "sync/SyncGroupData.h"
#include "tests/bins/BinProject.h"

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;

namespace {

class SyncGroupDataTest : public BinProject {};

TEST_F(SyncGroupDataTest, itIsReadBackAsItWas) {
    const Cookie one = newEdit(L"one"), two = newEdit(L"two");
    Kv::Ptr<SyncGroupData> group = SyncGroupData::make(L"Scene 1");
    const Cookie id = group->getID();
    EXPECT_TRUE(bins().getSummary(id).isSynced());
    EXPECT_FALSE(group->canAccomodate('D') || group->canAccomodate('G'));
    group->add(CookieVec{one, two});
    group->takePlaces({{two, 2.5, 1, kNoTime}, {Cookie('E', 99), 1}}, false);
    group->storeRelationships({{one, 0}, {two, -0.1}});
    ASSERT_TRUE(bins().saveAll().ok());
    EXPECT_FALSE(group->isDirty());
    group->takePlaces({{two, 2.5, 1, kNoTime}}, false);
    EXPECT_FALSE(group->isDirty()); // nothing differs
    group.reset();
    reopen();
    group = SyncGroupData::open(id);
    ASSERT_TRUE(group && group->valid());
    EXPECT_THAT(group->clips(), ElementsAre(one, two));
    EXPECT_EQ(group->getItem(1).time, 2.5);
    EXPECT_EQ(group->getItem(1).markIn, 1);
    EXPECT_THAT(group->relationships(), ElementsAre(std::pair(one, 0.0), std::pair(two, -0.1)));
    EXPECT_FALSE(SyncGroupData::open(newBin(L"a bin")->getID()));
}

TEST(Relationships, areReadAsFarAsTheyAreSound) {
    const std::string a = Cookie('E', 1).asString(), b = Cookie('E', 2).asString();
    const std::string good = a + "=0|" + b + "=0.001";
    const std::pair<std::string, std::string> rows[] = {{good, good},
                                                        {"|" + good + "|", good},
                                                        {good + "|" + a + "=7", good},
                                                        {a, ""},
                                                        {a + "=", ""},
                                                        {a + "=nan|" + b + "=1", b + "=1"},
                                                        {a + "=1e99", ""},
                                                        {"../x=1|I=2|=3", ""}};
    for (const auto& [text, read] : rows)
        EXPECT_EQ(relationshipsText(readRelationships(text)), read) << text;
}

} // namespace
