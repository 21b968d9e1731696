#include "bins/BinData.h"
#include "bins/CachedCookieContainer.h"
#include "bins/ContainerModifier.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "tests/bins/ToldRecords.h"
#include "tests/support/Edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using cutroom::test::ToldRecords;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Cookie edit(std::uint64_t number) { return Cookie('E', number); }
Cookie document(std::uint64_t number) { return Cookie('D', number); }

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

// --- items ---------------------------------------------------------------------------------------

TEST_F(BinDataTest, ItemsBeginWithoutMarksAndPlace) {
    const BinItem none, item(edit(1), 2.5);
    EXPECT_FALSE(none.valid());
    EXPECT_EQ(none.time, 0);
    EXPECT_TRUE(item.valid() && item.getType() == 'E' && item.getAssetID() == edit(1));
    EXPECT_EQ(item.time, 2.5);
    EXPECT_TRUE(item.markIn == 1e99 && item.markOut == 1e99 && !item.hasMark());
    EXPECT_EQ(item.position, (XY<float>{-1, -1}));
    EXPECT_FALSE(item.tagged);
    EXPECT_NE(item.getID(), none.getID());
    const BinItem copy(item);
    EXPECT_EQ(copy.getID(), item.getID());
    for (double BinItem::*mark : {&BinItem::markIn, &BinItem::markOut}) {
        BinItem marked(item);
        marked.*mark = 0;
        EXPECT_TRUE(marked.hasMark());
        EXPECT_FALSE(marked.equals(item));
    }
}

TEST_F(BinDataTest, TheVobIdIsMadeWhenItIsFirstAskedFor) {
    BinItem item(edit(1), 0), other(edit(1), 0);
    EXPECT_EQ(item.getVobId(), "");
    const std::string id = item.vobId();
    EXPECT_FALSE(id.empty());
    EXPECT_EQ(item.vobId(), id);
    EXPECT_NE(other.vobId(), id);
    item.vobId("given");
    EXPECT_EQ(item.vobId(), "given");
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
    bin.add(shot.getCookie()); // one alone is not opened
    EXPECT_FALSE(bin.getItem(0).hasMark());
}

TEST_F(BinDataTest, ANewBinHasTheDefaults) {
    const BinData bin, other;
    EXPECT_TRUE(bin.valid() && bin.empty() && bin.isComplete() && !bin.getPermanent());
    EXPECT_EQ(bin.getID().type(), 'G');
    EXPECT_NE(bin.getID(), other.getID());
    EXPECT_EQ(bin.getViewType(), eGalleryViews::Image);
    EXPECT_EQ(bin.getTileSize(), Kv::ImageSize::getDefaultTileSize());
    EXPECT_EQ(bin.getVersion(), cutroom::kBinVersionCurrent);
    EXPECT_EQ(bin.getDimensions(), XY<int>());
    EXPECT_EQ(bin.getCaps(), 992u);
    EXPECT_TRUE(bin.getAutoPosition());
    EXPECT_EQ(bin.getTableColumns(), BinData::defaultTableColumns());
    BinData::setAutoPositionDefault(false);
    EXPECT_FALSE(BinData().getAutoPosition());
    EXPECT_EQ(BinData(L"Dailies").getName(), L"Dailies");
}

TEST_F(BinDataTest, ACopyIsABinOfItsOwn) {
    const Kv::Ptr<BinData> bin = binOf(2);
    bin->setName(L"Dailies");
    bin->setPermanent(true);
    BinData copy(*bin), other;
    EXPECT_NE(copy.getID(), bin->getID());
    EXPECT_EQ(copy.getName(), L"Dailies");
    EXPECT_EQ(copy.getModificationTime(), bin->getModificationTime());
    ToldRecords told(other);
    const Cookie id = other.getID();
    other = copy;
    EXPECT_EQ(other.getID(), id);
    EXPECT_EQ(show(other), "1 2");
    EXPECT_TRUE(other.getPermanent());
    EXPECT_THAT(told.take(), ElementsAre("32 768"));
    bin->clear();
    EXPECT_EQ(show(copy), "1 2");
    const Kv::Ptr<BinData> larger = binOf(30); // with a table of its items
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(larger->findIndex(edit(30)), 29);
    *larger = other;
    EXPECT_EQ(larger->findIndex(edit(30)), -1);
}

TEST_F(BinDataTest, LooksItemsUpByAssetAndIdentity) {
    const Kv::Ptr<BinData> bin = binOf(30); // long enough for a table
    bin->add(document(7));
    bin->add(edit(5)); // once more
    const IdStamp fifth = bin->getItem(4).getID(), last = bin->getItem(31).getID();
    for (int round = 0; round < 12; ++round) {
        EXPECT_EQ(bin->findIndex(edit(5)), 4);
        EXPECT_EQ(bin->findIndex(last), 31);
        EXPECT_EQ(bin->findIndex(edit(99)), -1);
        EXPECT_EQ(bin->findIndex(IdStamp(1, 2, 3)), -1);
    }
    EXPECT_EQ(bin->find(edit(5))->getID(), fifth);
    EXPECT_EQ(bin->find(edit(99)), bin->end());
    EXPECT_EQ(bin->findItem(last).asset, edit(5));
    EXPECT_FALSE(bin->findItem(document(5)).valid());
    EXPECT_FALSE(bin->getItem(32).valid());
    EXPECT_EQ(bin->numItems(), 32u);
    EXPECT_EQ(bin->numItems('D'), 1u);
    EXPECT_TRUE(bin->anyItems('D') && !bin->anyItems('G') && bin->anyItems());
    EXPECT_FALSE(bin->containsType(Cookie::kInvalidType)); // a letter like others
    EXPECT_TRUE(bin->contains(CookieVec{edit(1), document(7)}));
    EXPECT_FALSE(bin->contains(CookieVec{edit(1), document(8)}));
    bin->items()[4].asset = edit(99);
    EXPECT_EQ(bin->findIndex(edit(99)), 4);
    EXPECT_EQ(bin->findIndex(edit(5)), 31);
}

// --- what is told --------------------------------------------------------------------------------

struct ChangeRow {
    const char* name;
    std::function<void(BinData&)> change;
    std::string after; // of edits 1, 2* and 3
    std::vector<std::string> told;
};
class BinChanges : public BinDataTest, public testing::WithParamInterface<ChangeRow> {};

TEST_P(BinChanges, AreTold) {
    const Kv::Ptr<BinData> bin = binOf(3);
    bin->setTags(true, 1, 1);
    bin->setDirty(false);
    ToldRecords told(*bin);
    GetParam().change(*bin);
    EXPECT_EQ(show(*bin), GetParam().after);
    EXPECT_EQ(told.texts, GetParam().told);
    bool counts = false; // more than tags
    for (const std::string& text : told.texts)
        counts |= text.rfind("1024", 0) != 0 || text.find(' ') != std::string::npos;
    EXPECT_EQ(bin->isDirty(), counts);
}

const BinData& otherBin() {
    static BinData& bin = *new BinData(CookieVec{edit(3), edit(4), edit(1)});
    return bin;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BinChanges,
    testing::Values(
        ChangeRow{"addItem", [](BinData& b) { b.add(BinItem(edit(1), 5)); }, "1 2* 3 1", {"256"}},
        ChangeRow{"addCookie", [](BinData& b) { b.add(edit(2)); }, "1 2* 3 2", {"256"}},
        ChangeRow{"addCookies",
                  [](BinData& b) {
                      b.add(CookieVec{edit(2), edit(9), edit(9)});
                  },
                  "1 2 3 9",
                  {"1024:2 256"}},
        ChangeRow{
            "addKnownCookies", [](BinData& b) { b.add(CookieVec{edit(3)}); }, "1 2 3", {"1024:2"}},
        ChangeRow{"addNoCookies", [](BinData& b) { b.add(CookieVec()); }, "1 2* 3", {}},
        ChangeRow{
            "addBin", [](BinData& b) { b.add(otherBin()); }, "2 3 4 1", {"1024:2 512:1,3 256"}},
        ChangeRow{"addItself", [](BinData& b) { b.add(b); }, "1 2* 3", {"1024:2 512:1,2,3 256"}},
        ChangeRow{"addEmptyBin", [](BinData& b) { b.add(BinData()); }, "1 2 3", {"1024:2"}},
        ChangeRow{"insert",
                  [](BinData& b) { EXPECT_TRUE(b.insertBefore(edit(2), BinItem(edit(9), 0))); },
                  "1 9 2* 3",
                  {"256"}},
        ChangeRow{"insertBeforeNone",
                  [](BinData& b) { EXPECT_FALSE(b.insertBefore(edit(8), BinItem(edit(9), 0))); },
                  "1 2* 3",
                  {}},
        ChangeRow{
            "setContents", [](BinData& b) { b.setContents({BinItem(edit(7), 0)}); }, "7", {"768"}},
        ChangeRow{"setLogs", [](BinData& b) { b.setLogs({}); }, "", {"768"}},
        ChangeRow{"remove", [](BinData& b) { EXPECT_TRUE(b.remove(edit(2))); }, "1 3", {"512"}},
        ChangeRow{"removeByIdentity",
                  [](BinData& b) { EXPECT_TRUE(b.remove(b.getItem(2).getID())); },
                  "1 2*",
                  {"512"}},
        ChangeRow{"removeNone",
                  [](BinData& b) { EXPECT_FALSE(b.remove(edit(8)) || b.remove(IdStamp())); },
                  "1 2* 3",
                  {}},
        ChangeRow{"removeSeveral",
                  [](BinData& b) {
                      EXPECT_TRUE(b.remove(CookieVec{edit(3), edit(8), edit(1)}));
                  },
                  "2*",
                  {"512"}},
        ChangeRow{"removeNoneOfSeveral",
                  [](BinData& b) { EXPECT_FALSE(b.remove(CookieVec{edit(8)})); },
                  "1 2* 3",
                  {}},
        ChangeRow{"clear", [](BinData& b) { b.clear(), b.clear(); }, "", {"512"}},
        ChangeRow{"deletions",
                  [](BinData& b) {
                      b.add(edit(1));
                      b.handleDeletions({edit(8)}, "why");
                      b.handleDeletions({edit(3), edit(1)}, "why");
                  },
                  "2*",
                  {"256", "512:1,3,1 'why'"}}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Tags, BinChanges,
    testing::Values(
        ChangeRow{
            "range", [](BinData& b) { EXPECT_TRUE(b.setTags(true, 0, 1)); }, "1* 2* 3", {"1024:1"}},
        ChangeRow{"toTheEnd", [](BinData& b) { b.setTags(true, -5, 3); }, "1* 2* 3*", {"1024:1,3"}},
        ChangeRow{"negativeEnd", [](BinData& b) { b.setTags(true, 2, -1); }, "1 2* 3*", {"1024:3"}},
        ChangeRow{
            "asBefore", [](BinData& b) { EXPECT_FALSE(b.setTags(true, 1, 1)); }, "1 2* 3", {}},
        ChangeRow{
            "emptyRange", [](BinData& b) { EXPECT_FALSE(b.setTags(true, 2, 1)); }, "1 2* 3", {}},
        ChangeRow{"byIndex",
                  [](BinData& b) {
                      EXPECT_TRUE(b.setTags({{0, true}, {1, false}, {2, false}, {9, true}}));
                  },
                  "1* 2 3",
                  {"1024:1,2"}},
        ChangeRow{"invert", [](BinData& b) { b.invertTags(); }, "1* 2 3*", {"1024:1,2,3"}},
        ChangeRow{"reset",
                  [](BinData& b) { b.resetSelections(), b.resetSelections(); },
                  "1 2 3",
                  {"1024:2"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(BinDataTest, SettersTellOnceAndNothingWhenNothingChanges) {
    const Kv::Ptr<BinData> bin = binOf(1);
    ToldRecords told(*bin);
    for (int round = 0; round < 2; ++round) {
        bin->setViewType(eGalleryViews::Table);
        bin->setTileSize(Kv::ImageSize::Presets::Large);
        bin->setAutoPosition(false);
        bin->setPermanent(true);
        bin->setName(L"x");
    }
    EXPECT_THAT(told.take(), ElementsAre("32", "32", "32", "64", "32"));
    EXPECT_EQ(bin->getViewType(), eGalleryViews::Table);
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::Presets::Large);
    bin->setDirty(false);
    bin->setDimensions({640, 480}); // told to nobody, saved nevertheless
    EXPECT_THAT(told.take(), IsEmpty());
    EXPECT_TRUE(bin->isDirty());
    bin->setDefaultTableColumns({LogAttribute::scene});
    EXPECT_THAT(bin->getTableColumns(), ElementsAre(LogAttribute(LogAttribute::scene)));
    bin->setDefaultTableColumns({});
    EXPECT_EQ(bin->getTableColumns().size(), 7u);
}

TEST_F(BinDataTest, ABatchIsToldOnce) {
    const Kv::Ptr<BinData> bin = binOf(3);
    ToldRecords told(*bin);
    {
        const ContainerModifier<BinData> batch(bin, "drag");
        bin->remove(edit(1));
        bin->add(CookieVec{edit(8)});
        bin->invertTags();
    }
    EXPECT_THAT(told.texts, ElementsAre("512 256 1024:2,3,8 'drag'"));
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

TEST_F(BinDataTest, TaggedItemsAreFoundAndTakenOut) {
    const Kv::Ptr<BinData> bin = binOf(3);
    bin->add(document(4));
    bin->setTags(true, 2, 3);
    EXPECT_TRUE(bin->isTagged(edit(3)) && bin->isTagged(3u) && !bin->isTagged(edit(1)));
    EXPECT_TRUE(bin->isTagged(bin->getItem(2).getID()) && !bin->isTagged(9u));
    EXPECT_EQ(bin->getNumTagged(), 2u);
    EXPECT_EQ(bin->getNumTagged('D'), 1u);
    EXPECT_TRUE(bin->anyTagged('E') && !bin->anyTagged('G'));
    const Kv::Ptr<BinData> selected = bin->getSelectedItems();
    EXPECT_EQ(show(*selected), "3* 4*");
    EXPECT_NE(selected->getID(), bin->getID());
    EXPECT_FALSE(selected->isDirty());
}

// --- what it accepts -----------------------------------------------------------------------------

TEST_F(BinDataTest, AcceptsEditsAndDocumentsAndBinsWhenTheUserLikesNesting) {
    const Kv::Ptr<BinData> bin = binOf(0);
    for (const char type : {'D', 'E'})
        EXPECT_TRUE(bin->canAccomodate(CookieType(type)));
    for (const char type : {'A', 'G', 'I', 'M', 'P', 'S', 'V', 'X'})
        EXPECT_FALSE(bin->canAccomodate(CookieType(type))) << type;
    EXPECT_TRUE(bin->canAccomodate(kLogTypeSource) && bin->canAccomodate(edit(1)));
    EXPECT_TRUE(bin->canAccomodate(EditPtr(cutroom::test::makeEdit(1, 0))));
    EXPECT_FALSE(bin->canAccomodate(EditPtr()) || bin->canAccomodate(Cookie('G', 1)));
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    EXPECT_TRUE(bin->canAccomodate(CookieType('G')) && bin->canAccomodate(CookieType('M')));
    EXPECT_TRUE(bin->canAccomodate(Cookie('G', 1)));
    EXPECT_FALSE(bin->canAccomodate(bin->getID()));
}

TEST(BinNesting, IsAllowedByTheInstallationWhateverTheUserLikes) {
    const cutroom::EmbeddedHost host;
    cutroom::Configuration::instance().set("nested_bins", "1");
    EXPECT_TRUE(BinData::allowNestedBins());
    cutroom::Configuration::instance().set("nested_bins", "0"); // it was read
    EXPECT_TRUE(BinData::allowNestedBins());
}

TEST_F(BinDataTest, IsAContainerOfCookies) {
    const Kv::Ptr<BinData> bin = binOf(1);
    bin->setName(L"Dailies");
    iCookieContainer& container = *bin;
    const TimeRange part(1.0, 2.0);
    EXPECT_TRUE(container.add({AssetReference(edit(1), part), AssetReference(edit(2), part),
                               AssetReference(edit(2)), AssetReference(Cookie('G', 3))}));
    EXPECT_FALSE(container.add({AssetReference(edit(2)), AssetReference(Cookie('G', 3))}));
    const CachedCookieContainer cached(container);
    bin->clear();
    EXPECT_EQ(cached.getName(), L"Dailies");
    EXPECT_THAT(cached.getCookies(),
                ElementsAre(AssetReference(edit(1)), AssetReference(edit(2), part)));
    EXPECT_EQ(container.getContainerID(), bin->getID());
    EXPECT_TRUE(cached.containsType('E') && !container.containsType('E'));
}

// --- against a plain list ------------------------------------------------------------------------

// Everything that moves items, beside a list that is searched from the start each time.
TEST_F(BinDataTest, FindsWhatAPlainListFinds) {
    std::mt19937 random(7);
    const auto below = [&](unsigned end) { return random() % end; };
    BinData bin;
    std::vector<std::pair<Cookie, IdStamp>> plain;
    const auto first = [&](const Cookie& asset) {
        return std::find_if(plain.begin(), plain.end(),
                            [&](const auto& one) { return one.first == asset; });
    };
    const auto takeOver = [&] {
        plain.clear();
        for (const BinItem& item : std::as_const(bin))
            plain.emplace_back(item.asset, item.getID());
    };
    for (int step = 0; step < 20000; ++step) {
        const Cookie asset = edit(below(60));
        const BinItem item(asset, 0);
        const auto at = first(asset);
        switch (below(10)) {
        case 0:
            bin.add(item);
            plain.emplace_back(asset, item.getID());
            break;
        case 1:
            ASSERT_EQ(bin.remove(asset), at != plain.end());
            if (at != plain.end())
                plain.erase(at);
            break;
        case 2:
            ASSERT_EQ(bin.insertBefore(asset, item), at != plain.end());
            if (at != plain.end())
                plain.insert(at, {asset, item.getID()});
            break;
        case 3: {
            const std::size_t held = plain.size();
            bin.add(CookieVec{asset, edit(below(60)), asset});
            takeOver();
            ASSERT_LE(plain.size(), held + 2);
            break;
        }
        case 4:
            if (below(200) == 0)
                bin.clear(), plain.clear();
            break;
        default:
            ASSERT_EQ(bin.findIndex(asset), at == plain.end() ? -1 : at - plain.begin());
            if (at != plain.end()) {
                ASSERT_EQ(bin.findIndex(at->second), at - plain.begin());
            }
        }
        ASSERT_EQ(bin.numItems(), plain.size());
    }
}

} // namespace
