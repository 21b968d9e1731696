#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinHandle.h"
#include "bins/DocumentManager.h"
#include "platform/prefs/EditorPreferences.h"
#include "tests/bins/BinProject.h"
#include "tests/bins/ToldRecords.h"

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

using A = LogAttribute;

class BinColumnsTest : public BinProject {
protected:
    // An edit of 50 frames that begins at one hour, saved.
    static Cookie newShot(const std::wstring& name) {
        const EditPtr shot = makeEdit(1, 2, {25, 1}, name);
        layPieces(shot, shot->getChans(kChanVideo).front(), {{L"a", 50}});
        setStartTimecode(shot, "01:00:00:00");
        shot->setConfig("scene", std::string("12A"));
        shot->setMediaLocations({L"/m/a.mov", L"/m/b.mov"});
        Cue cue;
        cue.setTime(1);
        shot->addCue(cue);
        EditManager::instance().addToProject(shot);
        EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
        return shot.getCookie();
    }
    static std::wstring text(const BinData& bin, A attribute) {
        return bin.getAttribute(0, attribute);
    }
};

TEST_F(BinColumnsTest, ShowWhatIsKnownOfALogOpenOrNot) {
    const Cookie shot = newShot(L"Rushes");
    const Kv::Ptr<BinData> bin = newBin(L"x");
    bin->add(CookieVec{shot});
    bin->begin()->markOut = 1.5;
    const std::vector<std::pair<A::eType, const wchar_t*>> rows = {
        {A::name, L"Rushes"},
        {A::type, L"2"},
        {A::duration, L"2"},
        {A::timecode, L"01:00:00:00"},
        {A::endTimecode, L"01:00:02:00"},
        {A::tracks, L"3"},
        {A::frameRate, L"25"},
        {A::markIn, L""},
        {A::markOut, L"01:00:01:12"},
        {A::numMarkers, L"1"},
        {A::scene, L"12A"},
        {A::take, L""},
        {A::mediaLocation, L"/m/a.mov; /m/b.mov"},
    };
    for (const bool open : {false, true}) {
        const EditPtr held = open ? EditPtr(shot) : EditPtr();
        ASSERT_EQ(EditManager::instance().isOpen(shot), open);
        for (const auto& [attribute, expected] : rows)
            EXPECT_EQ(text(*bin, attribute), expected) << attribute << " " << open;
        EXPECT_EQ(text(*bin, A::cookie), shot.asWString());
        EXPECT_FALSE(text(*bin, A::created).empty() || text(*bin, A::modified).empty());
    }
    EXPECT_EQ(bin->getAttribute(1, A::name), L"");
    EXPECT_EQ(bin->openEdit(0).getCookie(), shot);
    EXPECT_FALSE(bin->openEdit(1) || bin->openDocument(0));
}

TEST_F(BinColumnsTest, ShowAttributesOfTheProject) {
    const auto weather =
        CurrentProject::addCustomAttribute("weather", L"Weather", DBFieldTypes::text);
    ASSERT_TRUE(weather.ok());
    const Cookie shot = newShot(L"x");
    EditPtr(shot)->setConfig("weather", std::string("r\u00E4in"));
    const BinData bin(CookieVec{shot});
    EXPECT_EQ(text(bin, *weather), L"r\u00E4in"); // unsaved, so it is still open
    EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
    EXPECT_FALSE(EditManager::instance().isOpen(shot));
    EXPECT_EQ(text(bin, *weather), L"r\u00E4in");
}

TEST_F(BinColumnsTest, ShowDocumentsAndBins) {
    const auto script = DocumentManager::instance().createDocument(L"/papers/Script.pdf", 'D');
    const auto plan = DocumentManager::instance().createDocument(L"/papers/Plan.pdf", 'A');
    const Kv::Ptr<BinData> within = newBin(L"Within");
    within->setExternalID(L"ext");
    script->setName(L"Script");
    const BinData bin(
        CookieVec{script->getID(), plan->getID(), within->getID(), Cookie('E', 9), Cookie()});
    EXPECT_EQ(bin.getAttribute(0, A::name), L"Script");
    EXPECT_EQ(bin.openDocument(0), script.getContainer());
    EXPECT_EQ(bin.openDocument(1), plan.getContainer());
    EXPECT_EQ(bin.getAttribute(2, A::name) + bin.getAttribute(2, A::externalID), L"Withinext");
    EXPECT_EQ(bin.getAttribute(2, A::cookie), within->getID().asWString());
    EXPECT_FALSE(bin.getAttribute(2, A::modified).empty());
    EXPECT_EQ(bin.getAttribute(3, A::name) + bin.getAttribute(4, A::name), L"");
}

TEST_F(BinColumnsTest, PutInOrderKeepTiesAsTheyWere) {
    const struct {
        A::eType attribute;
        std::vector<const char*> values; // of assets 0, 1, 2 ...
        std::vector<int> ascending, descending;
    } rows[] = {
        {A::take, {"10", "9b", "9a", "x", ""}, {3, 4, 1, 2, 0}, {0, 1, 2, 3, 4}},
        {A::scene, {"b", "a", "C", "a"}, {1, 3, 0, 2}, {2, 0, 1, 3}},
        {A::scene, {"a", "A"}, {1, 0}, {0, 1}}, // the same except for case
        {A::scene, {"12A", "100", "-1.5", "9"}, {2, 3, 1, 0}, {0, 1, 3, 2}},
        {A::notes, {"1.2.3", "1-2", "-"}, {2, 1, 0}, {0, 1, 2}}, // hardly numbers
    };
    for (const auto& row : rows) {
        CookieVec assets;
        std::vector<EditPtr> held;
        for (const char* value : row.values) {
            held.push_back(makeEdit(1, 0));
            held.back()->setConfig(A(row.attribute).getID(), std::string(value));
            assets.push_back(held.back().getCookie());
        }
        for (const bool ascending : {true, false}) {
            BinData bin(assets);
            ToldRecords told(bin);
            bin.sort(row.attribute, ascending);
            EXPECT_THAT(told.texts, ElementsAre("2048"));
            int place = 0;
            for (const int asset : ascending ? row.ascending : row.descending)
                EXPECT_EQ(bin.findIndex(assets[static_cast<std::size_t>(asset)]), place++)
                    << row.values[0] << ascending;
        }
    }
}

// --- bins in bins --------------------------------------------------------------------------------

TEST_F(BinColumnsTest, NestedBinsAreSearchedAndCirclesRefused) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Kv::Ptr<BinData> outer = newBin(L"outer"), middle = newBin(L"middle"),
                           inner = newBin(L"inner");
    const Cookie held('E', 1), absent('E', 2);
    outer->add(middle->getID());
    middle->add(inner->getID());
    inner->add(held);
    EXPECT_TRUE(outer->contains(held, true) && !outer->contains(held));
    EXPECT_TRUE(outer->contains(CookieVec{held, inner->getID()}, true));
    EXPECT_FALSE(outer->contains(CookieVec{held, absent}, true));
    EXPECT_FALSE(inner->canAccomodate(outer->getID()));
    EXPECT_TRUE(outer->canAccomodate(inner->getID()));
    inner->add(outer->getID()); // `add` itself does not check
    EXPECT_FALSE(inner->contains(absent, true));
}

TEST_F(BinColumnsTest, WhatIsAcceptedAndNotHeldYetIsImported) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Kv::Ptr<BinData> from = newBin(L"from"), to = newBin(L"to");
    from->add(BinItem(Cookie('E', 1), 4.0));
    from->add(Cookie('A', 2));
    from->add(Cookie('E', 3));
    from->add(to->getID());
    from->setTags(true);
    to->add(Cookie('E', 3));
    to->setTags(true);
    EXPECT_TRUE(to->import(from->getID()));
    EXPECT_EQ(to->numItems(), 2u);
    EXPECT_EQ(to->getItem(1).time, 4.0);
    EXPECT_FALSE(to->anyTagged() || to->import(from->getID()));
    EXPECT_FALSE(to->import(to->getID()) || to->import(Cookie('E', 1)));
    const auto group = AssetAssociationGroupManager::instance().createGroup(
        L"group", {Cookie('E', 4), Cookie('A', 5), Cookie('E', 1)});
    EXPECT_TRUE(to->import(group->getID()));
    EXPECT_EQ(to->numItems(), 3u);
    EXPECT_EQ(to->getItem(2).asset, Cookie('E', 4));
}

// --- handles -------------------------------------------------------------------------------------

TEST(BinHandleText, ReadsBack) {
    const Cookie bin('G', 1), group('M', 2);
    for (const BinHandle& handle : {BinHandle(), BinHandle(bin), BinHandle(bin, group)}) {
        EXPECT_EQ(BinHandle(handle.asString()), handle);
        EXPECT_EQ(BinHandle(handle.asWString()), handle);
    }
    const BinHandle odd("nonsense|" + group.asString() + "|" + bin.asString());
    EXPECT_FALSE(odd.valid() || odd.isGrouped());
}

TEST(BinHandleOrder, IsByGroupThenByBin) {
    const Cookie a('G', 1), b('G', 2), x('M', 1), y('M', 2);
    const std::vector<BinHandle> order = {BinHandle(a), BinHandle(b), BinHandle(b, x),
                                          BinHandle(a, y), BinHandle(b, y)};
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = 0; j < order.size(); ++j)
            EXPECT_EQ(order[i] < order[j], i < j) << i << " " << j;
}

TEST_F(BinColumnsTest, AHandleFindsItsBinAndItsGroup) {
    const Kv::Ptr<BinData> bin = newBin(L"x"), group = bins().newBin(Cookie('M', 5));
    BinHandle handle(bin->getID(), group->getID());
    EXPECT_EQ(handle.getBin(), bin);
    EXPECT_EQ(handle.getGroup(), group);
    EXPECT_EQ(handle->getName(), L"x");
    EXPECT_FALSE(BinHandle(bin).getGroup() || BinHandle().getBin());
    handle.initFromString(group->getID().asString()); // drops what it held before
    EXPECT_EQ(handle.getBin(), group);
}

} // namespace
