// What every filter answers, and the filters that the user makes.
#include "bins/BinHandle.h"
#include "bins/DocumentManager.h"
#include "filters/DocumentFilter.h"
#include "filters/SubClipsFilter.h"
#include "platform/host/DebugCommands.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/MediaKind.h"
#include "tests/filters/FilterProject.h"

#include <rapidcheck.h>

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

TEST(FilterWords, HaveOneFormEach) {
    const struct {
        const char* text;
        int read;
    } rows[] = {{"always", 0}, {"optional", 1}, {"never", 2}, {"", 1}, {"Never", 1}, {"\xFF", 1}};
    for (const auto& row : rows)
        EXPECT_EQ(iProjectFilter::visibilityFromString(row.text), row.read) << row.text;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(iProjectFilter::visibilityToString(static_cast<iProjectFilter::eVisibility>(i)),
                  rows[i].text);
    EXPECT_EQ(iProjectFilter::visibilityToString(static_cast<iProjectFilter::eVisibility>(3)), "");
}

TEST(StillImages, AreKnownByTheirNames) {
    for (const char* image : {"/a/b.PNG", "file:///a%20b.jpeg", "x.0001.exr", "100%.tif"})
        EXPECT_TRUE(cutroom::isStillImage(image)) << image;
    for (const char* other : {"", "png", "/a.png/b", ".png", "a.mov", "x.%04d.exr", "x.##.dpx"})
        EXPECT_FALSE(cutroom::isStillImage(other)) << other;
}

TEST_F(ProjectFilterTest, CombinesBins) {
    EXPECT_EQ(getDisplayString(kSetUnion), resourceStrW(12036));
    EXPECT_EQ(getDisplayString(kSetIntersection), resourceStrW(12037));
    EXPECT_EQ(getDisplayString(kSetDifference), resourceStrW(12038));
    EXPECT_EQ(getDisplayString(static_cast<eSetOperation>(3)), L"");
    const struct {
        std::vector<CookieVec> bins;
        std::string results[3]; // of each operation
    } rows[] = {
        {{}, {"", "", ""}},
        {{{Cookie('E', 1), Cookie('E', 1)}}, {"1", "1", "1"}},
        {{{Cookie('E', 2), Cookie('E', 1)}, {Cookie('E', 1), Cookie('E', 3), Cookie('E', 3)}},
         {"2 1 3", "1", "2"}},
        {{{Cookie('E', 1)}, {}, {Cookie('E', 1)}}, {"1", "", ""}},
    };
    for (const auto& row : rows) {
        iMultiBinContainer::Bins bins;
        for (const CookieVec& assets : row.bins)
            bins.push_back(Kv::makePtr<BinData>(assets));
        for (int operation = 0; operation < 4; ++operation) {
            BinData result;
            result.setContents(combine(bins, static_cast<eSetOperation>(operation)));
            EXPECT_EQ(contentOf(result), operation < 3 ? row.results[operation] : "");
        }
    }
    const auto filter = filters().createFilter(
        {oneBin(L"a", {{Cookie('E', 1), 3.0}})[0], oneBin(L"b", {{Cookie('G', 2), 0.0}})[0]},
        L"Two");
    const auto made = filters().makeBin(filter, kSetDifference, L"Made");
    EXPECT_EQ(contentOf(*bins().getData(made->getID())), "1");
    EXPECT_EQ(made->getItem(0).time, 3.0);
}

TEST_F(ProjectFilterTest, OfTheSystemAnswerAsTheirKindDoes) {
    const struct {
        const wchar_t* name;
        int results, visibility, creator;
    } rows[] = {{L"Everything", 0, 0, 0}, {L"Logs", 0, 1, 0},           {L"Recent logs", 1, 0, 0},
                {L"Sub-clips", 0, 0, 0},  {L"Constituents", 0, 0, 0},   {L"Documents", 0, 1, 0},
                {L"Images", 0, 1, 0},     {L"Search results", 2, 1, 0}, {L"Mine", 0, 0, 1}};
    ASSERT_TRUE(filters().createFilter({}, L"Mine"));
    const auto all = filters().getAllFilters();
    ASSERT_EQ(all.size(), std::size(rows));
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i]->getName(), rows[i].name);
        EXPECT_EQ(all[i]->getResultsType(), rows[i].results) << i;
        EXPECT_EQ(all[i]->getVisibility(), rows[i].visibility) << i;
        EXPECT_EQ(all[i]->getCreator(), rows[i].creator) << i;
        EXPECT_FALSE(all[i]->getDescription().empty());
        EXPECT_TRUE(all[i]->isEmpty());
    }
    const auto documents = filters().findFilterResponsibleFor(DocumentFilter::getBinID());
    ASSERT_EQ(documents, all[5]);
    EXPECT_EQ(documents->getResults()[0]->getTypeID(), "Documents");
    SubClipsFilter subClips;
    for (const int edits : {1, 2}) {
        subClips.setEdits({static_cast<std::size_t>(edits), Cookie('E', 5)});
        EXPECT_EQ(subClips.getResultsType(), edits - 1);
    }
    put(record(1, projdb::kKindClip));
    put(record(2, projdb::kKindSubClip));
    EXPECT_EQ(filters().getFilterByName(L"Logs")->getResultsType(), 1);
}

TEST_F(ProjectFilterTest, VisibilityIsAPreferenceByName) {
    const auto everything = filters().getFilterByName(L"Everything");
    EditorPreferences::setPreference("Everything : visiblity", 2);
    EXPECT_EQ(everything->getVisibility(), iProjectFilter::kNever);
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
    EXPECT_FALSE(filters().renameFilter(filter, L""));
    EXPECT_TRUE(filters().renameFilter(filter, L"Dailies"));
    EXPECT_EQ(toldFilters_.back(), "160 Dailies");
    EXPECT_EQ(EditorPreferences::getPreference("Dailies : visiblity", 7), 1);

    filter.reset();
    reopenWithFilters();
    const auto again = filters().getFilter(id);
    EXPECT_EQ(contentOf(L"Dailies"), "Best \u00c4: 1 1");
    EXPECT_EQ(again->getVisibility(), iProjectFilter::kOptional);
    EXPECT_EQ(again->getBins()[0]->getItem(0).markIn, 1.25);
    EXPECT_EQ(filters().findFilterResponsibleFor(Cookie('G', 7)), again);
    EXPECT_EQ(BinHandle(Cookie('G', 7)).getBin(), again->getBins()[0]);
    again->clear();
    EXPECT_THAT(file(filterFile(id)), HasSubstr("\"Bins\": []"));
    EXPECT_TRUE(filters().destroyFilter(again));
    EXPECT_FALSE(filters().destroyFilter(again));
    EXPECT_FALSE(filters().destroyFilter(filters().getFilterByName(L"Images")));
    EXPECT_THAT(toldFilters_, ElementsAre("896 Dailies", "640"));
    EXPECT_FALSE(cutroom::fileExists(filterFile(id)));
}

TEST_F(ProjectFilterTest, FailsWhereNothingCanBeWritten) {
    EXPECT_FALSE(filters().createFilter({nullptr}, L"Null"));
    const auto kept = asUser(filters().createFilter(oneBin(L"a", {}), L"Kept"));
    files_.arm(0, FaultyFiles::Span::allForEver);
    EXPECT_FALSE(filters().createFilter({}, L"Full disk"));
    files_.arm(0, FaultyFiles::Span::allForEver);
    EXPECT_FALSE(filters().updateFilter(kept, {}));
    files_.arm(0, FaultyFiles::Span::allForEver);
    EXPECT_FALSE(filters().renameFilter(kept, L"Other"));
    files_.arm(0, FaultyFiles::Span::allForEver);
    kept->clear();
    EXPECT_EQ(kept->peekResults().size(), 1u);
    EXPECT_THAT(toldFilters_, ElementsAre("130 Kept"));
    files_.disarm();
    EXPECT_TRUE(filters().saveAll().ok());
    filterGuard_.reset();
    end();
    open(CurrentProject::Access::readOnly);
    EXPECT_FALSE(filters().createFilter({}, L"Read only"));
    EXPECT_TRUE(filters().getFilterByName(L"Kept"));
}

TEST_F(ProjectFilterTest, ReInitFollowsTheFolder) {
    const auto gone = filters().createFilter({}, L"Gone");
    const auto stays = filters().createFilter({}, L"Stays");
    toldFilters_.clear();
    const auto reInit = [&] { EXPECT_TRUE(host_->debugCommands().run(kReInit)); };
    reInit();
    EXPECT_THAT(toldFilters_, IsEmpty());
    ASSERT_TRUE(cutroom::removeFile(filterFile(gone->getID())).ok());
    putFile(Cookie('F', 9), R"({"Name": "New", "Bins": []})");
    reInit();
    EXPECT_THAT(toldFilters_, ElementsAre("640 130 New"));
    const auto all = filters().getAllFilters();
    EXPECT_EQ(all[all.size() - 2], stays);
    EXPECT_EQ(all.back()->getName(), L"New");
    EXPECT_EQ(all.back()->getVisibility(), iProjectFilter::kOptional);
}

TEST_F(ProjectFilterTest, RefusesDamagedFilesWithTheirPlace) {
    const std::string deep(100, '[');
    const struct {
        std::string text;
        const char* reason;
    } rows[] = {
        {"[]", "is no filter"},
        {R"({"Name": 1})", "Name: a text"},
        {R"({"Visibility": []})", "Visibility: a text"},
        {R"({"Bins": {}})", "Bins: a list"},
        {R"({"Bins": [7]})", "Bins[0]: is no bin"},
        {R"({"Bins": [{}, {"Type": "Else"}]})", "Bins[1]: Type: \"Else\""},
        {R"({"Bins": [{"ID": "E0000000000001"}]})", "Bins[0]: ID"},
        {R"({"Bins": [{"ID": "G0000000000001"}, {"ID": "G0000000000001"}]})", "Bins[1]: another"},
        {R"({"Bins": [{"Items": 1}]})", "Bins[0]: Items: a list"},
        {R"({"Bins": [{"Items": [{"Cookie": "../x"}]}]})", "Bins[0]: Items[0]: Cookie: \"../x\""},
        {R"({"Bins": [{"Items": [{"Cookie": "G0000000000001", "Time": 1e999}]}]})", "overflow"},
        {R"({"Bins": [{"Items": [{"Cookie": "G0000000000001", "MarkIn": "1"}]}]})", "MarkIn"},
        {R"({"Bins": )" + deep, "64"},
        {"{", ":1: "},
    };
    std::uint64_t id = 0;
    for (const auto& row : rows) {
        putFile(Cookie('F', ++id), row.text);
        log_.lines.clear();
        filters().reInit();
        EXPECT_THAT(log_.lines,
                    ElementsAre(testing::AllOf(HasSubstr(".filter"), HasSubstr(row.reason))));
        const auto filter = filters().getFilter(Cookie('F', id));
        ASSERT_TRUE(filter) << row.text;
        EXPECT_TRUE(filter->getName().empty() && filter->getResults().empty());
        EXPECT_EQ(filter->getVisibility(), iProjectFilter::kAlways) << "the default of its kind";
    }
    EXPECT_EQ(filters().getDamaged().size(), std::size(rows));
    EXPECT_FALSE(filters().anyDirty()) << "damaged files stay as they are";
    const std::string path = filterFile(Cookie('F', 1));
    EXPECT_TRUE(filters().updateFilter(asUser(filters().getFilter(Cookie('F', 1))), {}));
    EXPECT_EQ(file(path + ".damaged"), "[]");
}

TEST_F(ProjectFilterTest, BinsSurviveTheirFile) {
    rc::check([] {
        auto bin = Kv::makePtr<FilterBinData>(*rc::gen::string<std::wstring>());
        const auto times = *rc::gen::arbitrary<std::vector<std::pair<double, double>>>();
        std::uint64_t id = 0;
        for (const auto& [time, mark] : times) {
            BinItem item(Cookie(*rc::gen::element('G', 'M'), ++id), time);
            item.markOut = mark;
            bin->add(item);
        }
        const auto write = [](const FilterBinData& from) {
            JSON::Builder out;
            out.beginObject();
            from.write(out);
            out.endObject();
            return out.take();
        };
        const std::string text = write(*bin);
        const auto read = filters().createFilterBinData(**JSON::Element::parse(text, "bin"));
        RC_ASSERT(static_cast<bool>(read));
        RC_ASSERT(write(*read) == text);
    });
}

} // namespace
