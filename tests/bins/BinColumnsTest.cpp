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
    Kv::Ptr<Document> document;
    {
        const auto made = DocumentManager::instance().createDocument(L"/papers/Script.pdf", 'D');
        document = made.getContainer();
        document->setName(L"Script");
    }
    const Kv::Ptr<BinData> within = newBin(L"Within");
    within->setExternalID(L"ext");
    const BinData bin(CookieVec{document->getID(), within->getID(), Cookie('E', 9), Cookie()});
    EXPECT_EQ(bin.getAttribute(0, A::name), L"Script");
    EXPECT_EQ(bin.openDocument(0), document);
    const auto other = DocumentManager::instance().createDocument(L"/papers/Plan.pdf", 'A');
    EXPECT_EQ(BinData(CookieVec{other->getID()}).openDocument(0), other.getContainer());
    EXPECT_EQ(bin.getAttribute(1, A::name), L"Within");
    EXPECT_EQ(bin.getAttribute(1, A::externalID), L"ext");
    EXPECT_EQ(bin.getAttribute(1, A::cookie), within->getID().asWString());
    EXPECT_FALSE(bin.getAttribute(1, A::modified).empty());
    EXPECT_EQ(bin.getAttribute(2, A::name), L"");
    EXPECT_EQ(bin.getAttribute(3, A::name), L"");
}

// --- order ---------------------------------------------------------------------------------------

struct SortRow {
    const char* name;
    A::eType attribute;
    std::vector<const char*> values; // of assets 0, 1, 2 …
    std::vector<unsigned> ascending, descending;
};
class BinSorting : public BinProject, public testing::WithParamInterface<SortRow> {};

TEST_P(BinSorting, PutsTiesInTheOrderInWhichTheyWere) {
    const SortRow& row = GetParam();
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
        std::vector<unsigned> order;
        for (unsigned i = 0; i < assets.size(); ++i)
            order.push_back(static_cast<unsigned>(
                std::find(assets.begin(), assets.end(), bin.getItem(i).asset) - assets.begin()));
        EXPECT_EQ(order, ascending ? row.ascending : row.descending);
        EXPECT_EQ(bin.findIndex(assets[0]),
                  std::find(order.begin(), order.end(), 0u) - order.begin());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BinSorting,
    testing::Values(
        SortRow{"leadingNumber",
                A::take,
                {"10", "9b", "9a", "x", ""},
                {3, 4, 1, 2, 0},
                {0, 1, 2, 3, 4}},
        SortRow{"text", A::scene, {"b", "a", "C", "a"}, {1, 3, 0, 2}, {2, 0, 1, 3}},
        SortRow{"sameButForCase", A::scene, {"a", "A"}, {1, 0}, {0, 1}},
        SortRow{
            "numbersBeforeText", A::scene, {"12A", "100", "-1.5", "9"}, {2, 3, 1, 0}, {0, 1, 3, 2}},
        SortRow{"hardlyNumbers", A::notes, {"1.2.3", "1-2", "-"}, {2, 1, 0}, {0, 1, 2}}),
    [](const auto& row) { return std::string(row.param.name); });

// --- bins in bins
// ----------------------------------------------------------------------------------

class BinNestingTest : public BinProject {
protected:
    BinNestingTest() { EditorPreferences::setPreference("Behaviour : Nested bins", true); }
};

TEST_F(BinNestingTest, FindsWhatLiesDeepAndRefusesCircles) {
    const Kv::Ptr<BinData> outer = newBin(L"outer"), middle = newBin(L"middle"),
                           inner = newBin(L"inner");
    outer->add(middle->getID());
    middle->add(inner->getID());
    inner->add(Cookie('E', 1));
    EXPECT_FALSE(outer->contains(Cookie('E', 1)));
    EXPECT_TRUE(outer->contains(Cookie('E', 1), true));
    EXPECT_TRUE(outer->contains(CookieVec{Cookie('E', 1), inner->getID()}, true));
    EXPECT_FALSE(outer->contains(CookieVec{Cookie('E', 1), Cookie('E', 2)}, true));
    EXPECT_FALSE(inner->canAccomodate(outer->getID()));
    EXPECT_FALSE(inner->canAccomodate(inner->getID()));
    EXPECT_TRUE(outer->canAccomodate(inner->getID()));
    inner->add(outer->getID()); // who adds does not ask
    EXPECT_FALSE(inner->contains(Cookie('E', 2), true));
}

TEST_F(BinNestingTest, ImportsWhatItAcceptsAndDoesNotHoldYet) {
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
    EXPECT_FALSE(to->anyTagged());
    EXPECT_FALSE(to->import(from->getID()));
    EXPECT_FALSE(to->import(to->getID()) || to->import(Cookie('E', 1)));
}

// --- handles -------------------------------------------------------------------------------------

TEST(BinHandleText, ReadsBack) {
    const Cookie bin('G', 1), group('M', 2);
    const struct {
        BinHandle handle;
        std::string text;
    } rows[] = {
        {BinHandle(), "I"},
        {BinHandle(bin), bin.asString()},
        {BinHandle(bin, group), bin.asString() + "|" + group.asString()},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.handle.asString(), row.text);
        EXPECT_EQ(BinHandle(row.handle.asString()), row.handle);
        EXPECT_EQ(BinHandle(row.handle.asWString()), row.handle);
    }
    BinHandle handle(bin, group);
    EXPECT_TRUE(handle.valid() && handle.isGrouped());
    handle.initFromString(std::string("nonsense|" + group.asString() + "|" + bin.asString()));
    EXPECT_FALSE(handle.valid() || handle.isGrouped());
    EXPECT_EQ(BinHandle::asString({BinHandle(bin), BinHandle(bin, group)}),
              rows[1].text + "," + rows[2].text);
}

TEST(BinHandleOrder, IsByGroupThenByBin) {
    const Cookie a('G', 1), b('G', 2), x('M', 1), y('M', 2);
    const std::vector<BinHandle> order = {BinHandle(a), BinHandle(b), BinHandle(b, x),
                                          BinHandle(a, y), BinHandle(b, y)};
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = 0; j < order.size(); ++j)
            EXPECT_EQ(order[i] < order[j], i < j) << i << " " << j;
}

TEST_F(BinColumnsTest, AHandleFindsTheManagedBinElseTheResultsOfAFilter) {
    const Kv::Ptr<BinData> bin = newBin(L"x"), group = bins().newBin(Cookie('M', 5));
    const BinHandle handle(bin->getID(), group->getID());
    EXPECT_EQ(handle.getBin(), bin);
    EXPECT_EQ(handle.getGroup(), group);
    EXPECT_EQ(handle->getName(), L"x");
    EXPECT_FALSE(BinHandle(bin).getGroup());
    EXPECT_EQ(BinHandle(bin).getID(), bin->getID());
    const BinHandle results(Cookie('G', 77));
    EXPECT_FALSE(results.getBin());
    static Kv::Ptr<BinData> found;
    found = Kv::makePtr<BinData>();
    const auto before = cutroom::installFilterResultsResolver(
        [](const Cookie& id) { return id == Cookie('G', 77) ? found : nullptr; });
    EXPECT_EQ(results.getBin(), found);
    EXPECT_FALSE(BinHandle(Cookie('G', 78)).getBin() || BinHandle().getBin());
    BinHandle renamed(handle);
    renamed.initFromString(results.asString());
    EXPECT_EQ(renamed.getBin(), found);
    cutroom::installFilterResultsResolver(before);
    found.reset();
}

} // namespace
