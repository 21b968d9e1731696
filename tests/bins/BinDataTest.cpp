#include "bins/BinData.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "tests/bins/ToldRecords.h"
#include "tests/support/Edits.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using cutroom::test::ToldRecords;
using testing::ElementsAre;

namespace {

Cookie edit(std::uint64_t number) { return Cookie('E', number); }
Cookie document(std::uint64_t number) { return Cookie('D', number); }
template <class... Numbers> CookieVec edits(Numbers... numbers) {
    return {Cookie('E', static_cast<std::uint64_t>(numbers))...};
}

// The numbers of the assets, tagged ones with a star: "1 2* 3".
std::string show(const BinData& bin) {
    std::string text;
    for (const BinItem& item : bin)
        text +=
            (text.empty() ? "" : " ") + std::to_string(item.asset.id()) + (item.tagged ? "*" : "");
    return text;
}

class BinDataTest : public testing::Test {
protected:
    // A bin of edits 1 to `count`, not dirty.
    Kv::Ptr<BinData> binOf(unsigned count) {
        CookieVec assets;
        for (unsigned i = 1; i <= count; ++i)
            assets.push_back(edit(i));
        return Kv::makePtr<BinData>(assets);
    }

    cutroom::EmbeddedHost host_;
};

TEST_F(BinDataTest, ItemsBeginWithoutMarksAndPlace) {
    const BinItem none, item(edit(1), 2.5);
    EXPECT_FALSE(none.valid());
    EXPECT_TRUE(item.valid() && item.getType() == 'E' && !item.hasMark() && !item.tagged);
    EXPECT_EQ(item.time, 2.5);
    EXPECT_EQ(item.position, (XY<float>{-1, -1}));
    EXPECT_NE(item.getID(), none.getID());
    EXPECT_EQ(BinItem(item).getID(), item.getID());
    for (double BinItem::*mark : {&BinItem::markIn, &BinItem::markOut}) {
        BinItem marked(item);
        EXPECT_EQ(std::exchange(marked.*mark, 0), 1e99);
        EXPECT_TRUE(marked.hasMark() && !marked.equals(item));
    }
    BinItem shown(edit(1), 0), other(edit(1), 0);
    EXPECT_EQ(shown.getVobId(), "");
    const std::string id = shown.vobId(); // made when it is first asked for
    EXPECT_TRUE(shown.vobId() == id && other.vobId() != id);
}

TEST_F(BinDataTest, AnItemOfAnEditTakesItsTimeAndMarks) {
    const EditPtr shot = cutroom::test::makeEdit(1, 0);
    shot->setConfig("BACKUP_CURRENT", 3.0);
    shot->setConfig("BACKUP_MARK2", 4.0);
    const BinItem item(shot);
    EXPECT_EQ(item.asset, shot.getCookie());
    EXPECT_EQ(item.time, 3.0);
    EXPECT_EQ(item.markIn, 1e99);
    EXPECT_EQ(item.markOut, 4.0);
    EXPECT_FALSE(BinItem(EditPtr()).valid());
    BinData bin;
    bin.add(CookieVec{edit(1), shot.getCookie()});
    EXPECT_EQ(bin.getItem(0).time, 0);
    EXPECT_EQ(bin.getItem(1).markOut, 4.0);
    bin.clear();
    bin.add(shot.getCookie()); // a single edit is not opened
    EXPECT_FALSE(bin.getItem(0).hasMark());
}

TEST_F(BinDataTest, ACopyIsABinOfItsOwn) {
    const Kv::Ptr<BinData> bin = binOf(2), larger = binOf(30);
    bin->setPermanent(true);
    const BinData copy(*bin);
    EXPECT_NE(copy.getID(), bin->getID());
    EXPECT_TRUE(copy.getPermanent() && copy.getModificationTime() != 0);
    for (int i = 0; i < 12; ++i) // until it has a table
        EXPECT_EQ(larger->findIndex(edit(30)), 29);
    const Cookie id = larger->getID();
    *larger = *bin;
    EXPECT_EQ(larger->getID(), id);
    EXPECT_EQ(larger->findIndex(edit(30)), -1);
    bin->clear();
    EXPECT_EQ(show(copy) + "|" + show(*larger), "1 2|1 2");
}

TEST_F(BinDataTest, LooksItemsUpByAssetAndIdentity) {
    const Kv::Ptr<BinData> bin = binOf(6);
    bin->add(document(7));
    bin->add(edit(5)); // once more
    const IdStamp last = bin->getItem(7).getID();
    EXPECT_EQ(bin->find(edit(5))->getID(), bin->getItem(4).getID());
    EXPECT_EQ(bin->find(edit(99)), bin->end());
    EXPECT_EQ(bin->findItem(last).asset, edit(5));
    EXPECT_FALSE(bin->findItem(document(5)).valid() || bin->getItem(8).valid());
    EXPECT_EQ(bin->numItems('D'), 1u);
    EXPECT_TRUE(bin->anyItems('D') && !bin->anyItems('G') && bin->anyItems());
    EXPECT_FALSE(bin->containsType(Cookie::kInvalidType)); // a letter like others
    EXPECT_TRUE(bin->contains(CookieVec{edit(1), document(7)}));
    EXPECT_FALSE(bin->contains(CookieVec{edit(1), document(8)}));
}

using B = BinData&;
struct ChangeRow {
    const char* name;
    std::function<void(B)> change;
    std::string after; // of edits 1, 2* and 3
    std::vector<std::string> told;
};

const ChangeRow kChanges[] = {
    {"addItem", [](B b) { b.add(BinItem(edit(1), 5)); }, "1 2* 3 1", {"256"}},
    {"addCookie", [](B b) { b.add(edit(2)); }, "1 2* 3 2", {"256"}},
    {"addCookies", [](B b) { b.add(edits(2, 9, 9)); }, "1 2 3 9", {"1024:2 256"}},
    {"addKnownCookies", [](B b) { b.add(edits(3)); }, "1 2 3", {"1024:2"}},
    {"addRefused",
     [](B b) { EXPECT_FALSE(b.add({AssetReference(Cookie('G', 3))})); },
     "1 2* 3",
     {}},
    {"addNoCookies", [](B b) { b.add(CookieVec()); }, "1 2* 3", {}},
    {"addBin", [](B b) { b.add(BinData(edits(3, 4, 1))); }, "2 3 4 1", {"1024:2 512:1,3 256"}},
    {"addItself", [](B b) { b.add(b); }, "1 2* 3", {"1024:2 512:1,2,3 256"}},
    {"addEmptyBin", [](B b) { b.add(BinData()); }, "1 2 3", {"1024:2"}},
    {"insert", [](B b) { b.insertBefore(edit(2), BinItem(edit(9), 0)); }, "1 9 2* 3", {"256"}},
    {"insertBeforeNone", [](B b) { b.insertBefore(edit(8), BinItem(edit(9), 0)); }, "1 2* 3", {}},
    {"setContents", [](B b) { b.setContents({BinItem(edit(7), 0)}); }, "7", {"768"}},
    {"setLogs", [](B b) { b.setLogs({}); }, "", {"768"}},
    {"remove", [](B b) { EXPECT_TRUE(b.remove(edit(2))); }, "1 3", {"512"}},
    {"removeItem", [](B b) { EXPECT_TRUE(b.remove(b.getItem(2).getID())); }, "1 2*", {"512"}},
    {"removeNone",
     [](B b) { EXPECT_FALSE(b.remove(edit(8)) || b.remove(IdStamp())); },
     "1 2* 3",
     {}},
    {"removeSeveral", [](B b) { b.remove(edits(3, 8, 1)); }, "2*", {"512"}},
    {"removeOneOfTwo", [](B b) { b.add(edit(1)), b.remove(edits(1)); }, "2* 3 1", {"256", "512"}},
    {"removeOthers", [](B b) { EXPECT_FALSE(b.remove(edits(8))); }, "1 2* 3", {}},
    {"clear", [](B b) { b.clear(), b.clear(); }, "", {"512"}},
    {"deletions",
     [](B b) { b.add(edit(1)), b.handleDeletions(edits(3, 1), "why"); },
     "2*",
     {"256", "512:1,3,1 'why'"}},
    {"deletionsElsewhere", [](B b) { b.handleDeletions(edits(8), "why"); }, "1 2* 3", {}},
    {"tagRange", [](B b) { EXPECT_TRUE(b.setTags(true, 0, 1)); }, "1* 2* 3", {"1024:1"}},
    {"tagToTheEnd", [](B b) { b.setTags(true, -5, 3); }, "1* 2* 3*", {"1024:1,3"}},
    {"tagNegativeEnd", [](B b) { b.setTags(true, 2, -1); }, "1 2* 3*", {"1024:3"}},
    {"tagAsBefore", [](B b) { EXPECT_FALSE(b.setTags(true, 1, 1)); }, "1 2* 3", {}},
    {"tagEmptyRange", [](B b) { b.setTags(true, 2, 1); }, "1 2* 3", {}},
    {"tagByIndex",
     [](B b) {
         b.setTags({{0, true}, {1, false}, {2, false}, {9, true}});
     },
     "1* 2 3",
     {"1024:1,2"}},
    {"invert", [](B b) { b.invertTags(); }, "1* 2 3*", {"1024:1,2,3"}},
    {"reset", [](B b) { b.resetSelections(), b.resetSelections(); }, "1 2 3", {"1024:2"}},
    {"setters",
     [](B b) {
         for (int round = 0; round < 2; ++round) {
             b.setViewType(eGalleryViews::Table);
             b.setTileSize(Kv::ImageSize::Presets::Large);
             b.setAutoPosition(false);
             b.setPermanent(true);
             b.setName(L"x");
         }
     },
     "1 2* 3",
     {"32", "32", "32", "64", "32"}},
};

TEST_F(BinDataTest, ChangesAreTold) {
    for (const ChangeRow& row : kChanges) {
        const Kv::Ptr<BinData> bin = binOf(3);
        bin->setTags(true, 1, 1);
        bin->setDirty(false);
        ToldRecords told(*bin);
        row.change(*bin);
        EXPECT_EQ(show(*bin), row.after) << row.name;
        EXPECT_EQ(told.texts, row.told) << row.name;
        bool counts = false; // more than tags
        for (const std::string& text : told.texts)
            counts |= text.rfind("1024", 0) != 0 || text.find(' ') != std::string::npos;
        EXPECT_EQ(bin->isDirty(), counts) << row.name;
    }
}

TEST_F(BinDataTest, ChangesOfAssetsConcernThoseItHoldsAndDoNotModifyIt) {
    const Kv::Ptr<BinData> bin = binOf(2);
    bin->add(document(3));
    bin->setDirty(false);
    ToldRecords told(*bin);
    bin->handleLogsModified({{edit(2), kModName}, {edit(9), kModCues}, {edit(1), kModCues}});
    bin->handleLogsModified({{edit(9), kModName}});
    bin->handleDocumentsModified({document(3), document(4)});
    bin->handleDocumentsModified({document(4)});
    EXPECT_THAT(told.texts, ElementsAre("128:2,1", "128:3"));
    EXPECT_FALSE(bin->isDirty());
}

TEST_F(BinDataTest, AcceptsEditsAndDocumentsAndBinsWhenTheUserLikesNesting) {
    const Kv::Ptr<BinData> bin = binOf(0);
    std::string accepted;
    for (const bool nested : {false, true}) {
        EditorPreferences::setPreference("Behaviour : Nested bins", nested);
        for (const char type : std::string("ADEGIMPSVX"))
            accepted += bin->canAccomodate(CookieType(type)) ? type : '.';
    }
    EXPECT_EQ(accepted, ".DE........DEG.M....");
    EXPECT_TRUE(bin->canAccomodate(kLogTypeSource) && bin->canAccomodate(edit(1)));
    EXPECT_TRUE(bin->canAccomodate(EditPtr(cutroom::test::makeEdit(1, 0))));
    EXPECT_TRUE(bin->canAccomodate(Cookie('G', 1)));
    EXPECT_FALSE(bin->canAccomodate(EditPtr()) || bin->canAccomodate(bin->getID()));
}

TEST(BinNesting, IsAllowedByTheInstallationWhateverTheUserLikes) {
    const cutroom::EmbeddedHost host;
    cutroom::Configuration::instance().set("nested_bins", "1");
    EXPECT_TRUE(BinData::allowNestedBins());
    cutroom::Configuration::instance().set("nested_bins", "0"); // it was read
    EXPECT_TRUE(BinData::allowNestedBins());
}

// Everything that moves items, beside a list that is searched from the start each time.
TEST_F(BinDataTest, FindsWhatAPlainListFinds) {
    std::mt19937 random(7);
    BinData bin;
    BinData::Items plain;
    const long steps = cutroom::test::rounds(20'000, 1'000'000);
    RecordProperty("steps", std::to_string(steps));
    for (long step = 0; step < steps; ++step) {
        const BinItem item(edit(random() % 60), 0);
        const auto at = std::find_if(plain.begin(), plain.end(),
                                     [&](const BinItem& one) { return one.asset == item.asset; });
        const bool held = at != plain.end();
        switch (random() % 10) {
        case 0:
            bin.add(item);
            plain.push_back(item);
            break;
        case 1:
            ASSERT_EQ(bin.remove(item.asset), held);
            if (held)
                plain.erase(at);
            break;
        case 2:
            ASSERT_EQ(bin.insertBefore(item.asset, item), held);
            if (held)
                plain.insert(at, item);
            break;
        case 3:
            bin.add(CookieVec{item.asset, item.asset});
            ASSERT_EQ(bin.numItems(), plain.size() + (held ? 0u : 1u));
            plain = std::as_const(bin).items();
            break;
        case 4:
            if (step % 200 == 0)
                bin.clear(), plain.clear();
            break;
        default:
            const auto place = held ? at - plain.begin() : -1;
            ASSERT_EQ(bin.findIndex(item.asset), place);
            ASSERT_EQ(bin.findIndex((held ? *at : item).getID()), place);
        }
        ASSERT_EQ(bin.numItems(), plain.size());
    }
}

} // namespace
