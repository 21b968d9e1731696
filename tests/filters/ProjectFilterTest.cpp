// What every filter answers, and the filters that the user makes.
#include "bins/BinHandle.h"
#include "bins/CachedCookieContainer.h"
#include "platform/host/DebugCommands.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/MediaKind.h"
#include "tests/filters/FilterProject.h"

#include <cmath>

using namespace cutroom::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr char kReInit[] = "ProjectFilterManager reInit() test";

class ProjectFilterTest : public FilterProject {
protected:
    static Kv::Ptr<UserFilter> asUser(const Kv::Ptr<iProjectFilter>& filter) {
        return Kv::Ptr<UserFilter>(dynamic_cast<UserFilter*>(filter.get()));
    }
    void putFile(const Cookie& id, const std::string& text) {
        ASSERT_TRUE(cutroom::makeFolders(cutroom::folderOf(filterFile(id))).ok());
        ASSERT_TRUE(cutroom::writeFile(filterFile(id), text).ok());
    }
};

TEST(StillImages, AreKnownByTheirNames) {
    for (const char* image : {"/a/b.PNG", "file:///a%20b.jpeg", "x.0001.exr", "100%.tif"})
        EXPECT_TRUE(cutroom::isStillImage(image)) << image;
    for (const char* other : {"", "png", "/a.png/b", ".png", "a.mov", "x.%04d.exr", "x.##.dpx"})
        EXPECT_FALSE(cutroom::isStillImage(other)) << other;
}

TEST_F(ProjectFilterTest, CombinesBins) {
    const struct {
        std::vector<CookieVec> bins;
        const char* results[4]; // of each operation
    } rows[] = {
        {{}, {"", "", "", ""}},
        {{{Cookie('E', 1), Cookie('E', 1)}}, {"1", "1", "1", ""}},
        {{{Cookie('E', 2), Cookie('E', 1)}, {Cookie('E', 1), Cookie('E', 3), Cookie('E', 3)}},
         {"2 1 3", "1", "2", ""}},
        {{{Cookie('E', 1)}, {}, {Cookie('E', 1)}}, {"1", "", "", ""}},
    };
    for (const auto& row : rows) {
        iMultiBinContainer::Bins bins;
        for (const CookieVec& assets : row.bins)
            bins.push_back(Kv::makePtr<BinData>(assets));
        for (int operation = 0; operation < 4; ++operation) {
            BinData result;
            result.setContents(combine(bins, static_cast<eSetOperation>(operation)));
            EXPECT_EQ(contentOf(result), row.results[operation]);
        }
    }
    EXPECT_TRUE(combine({nullptr}, kSetUnion).empty());
    EXPECT_EQ(getDisplayString(static_cast<eSetOperation>(3)), L"");
}

TEST_F(ProjectFilterTest, LogsAreShownAndGroupedAsThereAreSome) {
    const auto logs = filters().getFilterByName(L"Logs");
    EXPECT_EQ(logs->getVisibility(), iProjectFilter::kOptional);
    put(record(1, projdb::kKindClip));
    EXPECT_EQ(logs->getResultsType(), iProjectFilter::kFlatResults);
    put(record(2, projdb::kKindSubClip));
    EXPECT_EQ(logs->getResultsType(), iProjectFilter::kGroupedResults);
}

TEST_F(ProjectFilterTest, VisibilityIsAPreferenceByName) {
    const auto everything = filters().getFilterByName(L"Everything");
    EditorPreferences::setPreference("Everything : visiblity", 2);
    EXPECT_EQ(everything->getVisibility(), iProjectFilter::kNever);
    EditorPreferences::setPreference("Everything : visiblity", 0);
    EXPECT_EQ(everything->getVisibility(), iProjectFilter::kNever) << "read once";
    everything->setVisibility(iProjectFilter::kOptional);
    EXPECT_EQ(EditorPreferences::getPreference("Everything : visiblity", 7), 1);
    EditorPreferences::setPreference("Images : visiblity", 9); // no visibility
    EXPECT_EQ(filters().getFilterByName(L"Images")->getVisibility(), iProjectFilter::kOptional);
}

TEST_F(ProjectFilterTest, OfTheUserAreToldSavedAndReadAgain) {
    put(record(1, projdb::kKindClip));
    BinItem item(Cookie('E', 1), 1.5);
    item.markIn = 1.25;
    auto filter = asUser(filters().createFilter(oneBin(L"Best \u00c4", {item}), L"Rushes"));
    const Cookie id = filter->getID();
    filter->peekResults()[0]->setID(Cookie('G', 7));
    EXPECT_TRUE(filters().setVisibility(filter, iProjectFilter::kNever));
    EXPECT_EQ(file(filterFile(id)),
              file(std::string(CUTROOM_TEST_DATA) + "/filters/rushes.filter"));
    const FilterBins two = {filter->peekResults()[0], oneBin(L"More", {})[0]};
    EXPECT_TRUE(filters().updateFilter(filter, two));
    EXPECT_THAT(toldFilters_, ElementsAre("130 Rushes", "160 Rushes", "896 Rushes"));
    EXPECT_EQ(filter->getResultsType(), iProjectFilter::kGroupedResults);
    EXPECT_FALSE(filters().anyDirty());
    two[0]->add(Cookie('E', 1));
    EXPECT_TRUE(filters().anyDirty());
    EXPECT_TRUE(two[0]->save().ok());
    EXPECT_FALSE(filters().anyDirty());
    filters().setVisibility(filter, iProjectFilter::kOptional);
    EXPECT_THAT(file(filterFile(id)), testing::Not(HasSubstr("Visibility")));
    EXPECT_TRUE(filters().renameFilter(filter, L"Dailies"));
    EXPECT_EQ(toldFilters_.back(), "160 Dailies");
    EXPECT_EQ(EditorPreferences::getPreference("Dailies : visiblity", 7), 1);

    filter.reset();
    reopen();
    const auto again = filters().getFilter(id);
    EXPECT_EQ(contentOf(L"Dailies"), "Best \u00c4: 1 1");
    EXPECT_EQ(again->getVisibility(), iProjectFilter::kOptional);
    EXPECT_EQ(again->getBins()[0]->getItem(0).markIn, 1.25);
    EXPECT_EQ(BinHandle(Cookie('G', 7)).getBin(), again->getBins()[0]);
    EXPECT_TRUE(BinData().import(Cookie('G', 7)));
    CachedCookieContainer dropped;
    dropped.add(Cookie('D', 9));
    EXPECT_TRUE(dropped.import(Cookie('G', 7)));
    EXPECT_EQ(contentOf(L"Dailies"), "Best \u00c4: 1 1 D");
    again->clear();
    EXPECT_THAT(file(filterFile(id)), HasSubstr("\"Bins\": []"));
    EXPECT_TRUE(filters().destroyFilter(again));
    EXPECT_FALSE(filters().destroyFilter(again) || filters().updateFilter(asUser(again), two) ||
                 filters().renameFilter(asUser(again), L"Gone"));
    EXPECT_THAT(toldFilters_, ElementsAre("bin 256", "896 Dailies", "640"));
    EXPECT_FALSE(cutroom::fileExists(filterFile(id)));
}

TEST_F(ProjectFilterTest, AreAsBeforeWhereNothingCanBeWritten) {
    EXPECT_FALSE(filters().createFilter({nullptr}, L"Null"));
    const auto kept = asUser(filters().createFilter(oneBin(L"a", {}), L"Kept"));
    const std::function<bool()> changes[] = {
        [] { return static_cast<bool>(filters().createFilter({}, L"Other")); },
        [&] { return filters().updateFilter(kept, {}); },
        [&] { return filters().renameFilter(kept, L"Other"); },
        [&] { return filters().setVisibility(kept, iProjectFilter::kNever); },
        [&] { return kept->clear(), kept->peekResults().empty(); }};
    for (const auto& change : changes) {
        files_.arm(0, FaultyFiles::Span::allForEver);
        EXPECT_FALSE(change());
        EXPECT_EQ(kept->getName(), L"Kept");
        EXPECT_EQ(kept->getVisibility(), iProjectFilter::kAlways);
        EXPECT_EQ(EditorPreferences::getPreference("Kept : visiblity", 7), 0);
        EXPECT_EQ(EditorPreferences::getPreference("Other : visiblity", 7), 7);
    }
    EXPECT_THAT(toldFilters_, ElementsAre("130 Kept"));
    kept->setVisibility(iProjectFilter::kNever);
    kept->setVisibility(iProjectFilter::kOptional);
    EXPECT_FALSE(filters().updateFilter(kept, {}));
    EXPECT_TRUE(kept->isDirty()) << "what came before is still to be saved";
    files_.disarm();
    EXPECT_TRUE(filters().saveAll().ok());
    reopen(CurrentProject::Access::readOnly);
    EXPECT_FALSE(filters().createFilter({}, L"Read only"));
    EXPECT_TRUE(filters().getFilterByName(L"Kept"));
    EXPECT_TRUE(project_->close().ok());
    EXPECT_THAT(filters().getAllFilters(), IsEmpty());
}

TEST_F(ProjectFilterTest, AreNotWrittenSoThatTheyCouldNotBeReadAgain) {
    BinItem odd(Cookie('G', 5), std::nan(""));
    odd.markIn = odd.markOut = HUGE_VAL;
    const FilterBins bins = oneBin(L"odd", {BinItem(), odd});
    EXPECT_TRUE(filters().createFilter(bins, L"Odd"));
    const auto again = asUser(filters().createFilter(bins, L"Of the same"));
    const FilterBins copies = again->peekResults();
    EXPECT_NE(copies[0]->getID(), bins[0]->getID()) << "each is in one file";
    EXPECT_TRUE(filters().updateFilter(again, copies));
    EXPECT_EQ(again->peekResults(), copies) << "those are its own";
    const FilterBins one = oneBin(L"one", {});
    EXPECT_FALSE(filters().createFilter({one[0], one[0]}, L"Twice"));
    FilterBins many;
    while (many.size() <= 10'000)
        many.push_back(Kv::makePtr<FilterBinData>());
    EXPECT_FALSE(filters().createFilter(many, L"Many"));
    many.pop_back();
    EXPECT_TRUE(filters().createFilter(many, L"As many as can be"));
    reopen();
    EXPECT_EQ(contentOf(L"Odd"), "odd: G");
    const BinItem read = filters().getFilterByName(L"Odd")->getBins()[0]->getItem(0);
    EXPECT_TRUE(read.time == 0 && !read.hasMark());
    EXPECT_THAT(filters().getDamaged(), IsEmpty());
}

TEST_F(ProjectFilterTest, ReInitFollowsTheFolder) {
    const auto gone = filters().createFilter({}, L"Gone");
    const auto stays = filters().createFilter({}, L"Stays");
    toldFilters_.clear();
    const auto reInit = [&] { EXPECT_TRUE(host_->debugCommands().run(kReInit)); };
    reInit();
    EXPECT_THAT(toldFilters_, IsEmpty());
    ASSERT_TRUE(cutroom::removeFile(filterFile(gone->getID())).ok());
    putFile(Cookie('F', 9), R"({"Name": "New", "Visibility": "Never"})");
    reInit();
    EXPECT_THAT(toldFilters_, ElementsAre("640 130 New"));
    const auto all = filters().getAllFilters();
    EXPECT_EQ(all[all.size() - 2], stays);
    EXPECT_EQ(all.back()->getName(), L"New");
    EXPECT_EQ(all.back()->getVisibility(), iProjectFilter::kOptional) << "an unknown word";
    EXPECT_EQ(iProjectFilter::visibilityToString(static_cast<iProjectFilter::eVisibility>(3)), "");
}

TEST_F(ProjectFilterTest, RefusesDamagedFilesWithTheirPlace) {
    const std::pair<std::string, const char*> rows[] = {
        {"[]", "is no filter"},
        {R"({"Name": "x", "Bins": [{}, {"Type": "Else"}]})", "Bins[1]: Type: \"Else\""},
        {R"({"Bins": [{"ID": "G0000000000001"}, {"ID": "G0000000000001"}]})", "Bins[1]: another"},
        {R"({"Bins": [{"Items": [{"Cookie": "G0000000000001", "Time": 1e999}]}]})", "overflow"},
        {R"({"Bins": [{"Items": 1}]})", "Bins[0]: Items: a list is expected"},
        {R"({"Bins": [{"Items": [7]}]})", "Items[0]: an object is expected"},
        {R"({"Bins": [{"Items": [{"Cookie": "x"}]}]})", "Items[0]: Cookie: \"x\" is no cookie"},
        {R"({"Bins": [{"Items": [{"Cookie": "G0000000000001", "MarkIn": "x"}]}]})",
         "MarkIn: a num"},
        {R"({"Bins": )" + std::string(100, '['), "64"},
        {"{", ":1: "},
    };
    std::uint64_t id = 0;
    for (const auto& [text, reason] : rows) {
        putFile(Cookie('F', ++id), text);
        log_.lines.clear();
        filters().reInit();
        EXPECT_THAT(log_.lines,
                    ElementsAre(testing::AllOf(HasSubstr(".filter"), HasSubstr(reason))));
        const auto filter = filters().getFilter(Cookie('F', id));
        ASSERT_TRUE(filter) << text;
        EXPECT_TRUE(filter->getName().empty() && filter->getResults().empty());
        EXPECT_EQ(filter->getVisibility(), iProjectFilter::kAlways) << "the default of its kind";
    }
    EXPECT_EQ(filters().getDamaged().size(), std::size(rows));
    EXPECT_FALSE(filters().anyDirty()) << "damaged files stay as they are";
    const std::string path = filterFile(Cookie('F', 1));
    EXPECT_TRUE(filters().updateFilter(asUser(filters().getFilter(Cookie('F', 1))), {}));
    EXPECT_EQ(file(path + ".damaged"), "[]");
}

} // namespace
