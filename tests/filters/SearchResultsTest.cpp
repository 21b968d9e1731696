// The bins of past searches: kept, found again, followed and forgotten.
#include "filters/SearchResultsFilter.h"
#include "platform/project/Savers.h"
#include "platform/store/ChangedEdits.h"
#include "tests/filters/FilterProject.h"

#include <filesystem>
#include <fstream>

using testing::ElementsAre;
using testing::HasSubstr;
using Criteria = ProjectSearch::Criteria;

namespace {

class SearchResultsTest : public cutroom::test::FilterProject {
protected:
    SearchResultsTest() {
        putClip(1, "Tide at dawn");
        putClip(2, "Sand");
    }
    static void putClip(std::uint64_t id, const char* name) {
        projdb::Record clip = record(id, projdb::kKindClip);
        clip.setField("name", name);
        put(clip);
    }
    static Criteria tide() {
        Criteria criteria;
        criteria.quickSearch = "tide";
        return criteria;
    }
    static SearchResultsFilter& filter() {
        const auto found = filters().getFilterByName(L"Search results");
        return dynamic_cast<SearchResultsFilter&>(*found);
    }
    // "NAME: number of items" of each, with a star for a dynamic one.
    static std::vector<std::string> kept() {
        std::vector<std::string> lines;
        for (const Kv::Ptr<FilterBinData>& bin : filter().getResults())
            lines.push_back(cutroom::toUtf8(bin->getName()) + (bin->isDynamic() ? "*: " : ": ") +
                            std::to_string(bin->numItems()));
        return lines;
    }
    std::string path(const std::string& name) const {
        return cutroom::toUtf8(SearchResultsFilter::getFolder()) + "/" + name;
    }
};

// A disk on which capital letters count as small ones, for one file.
class CaseBlindFiles final : public cutroom::test::FaultyFiles {
public:
    using FaultyFiles::FaultyFiles;
    cutroom::Result<cutroom::FileInfo> stat(const std::string& path) override {
        const std::size_t mine = path.rfind("/MINE.criteria");
        return FaultyFiles::stat(mine == path.npos ? path
                                                   : path.substr(0, mine) + "/Mine.criteria");
    }
};

TEST_F(SearchResultsTest, noCriteriaReplaceThoseThatTheDiskCallsTheSame) {
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    ASSERT_TRUE(filter().saveCriteria(L"OURS", tide()).ok());
    CaseBlindFiles blind(files_);
    cutroom::iFileSystem* const before = cutroom::installFileSystem(&blind);
    const auto saved = filter().saveCriteria(L"MINE", Criteria());
    EXPECT_TRUE(filter().saveCriteria(L"OURS", Criteria()).ok());
    cutroom::installFileSystem(before);
    EXPECT_THAT(saved.status().message(), HasSubstr("the name of other criteria"));
    EXPECT_THAT(kept(), ElementsAre("Mine*: 1", "OURS*: 2"));
}

TEST_F(SearchResultsTest, keepsResultsAndSearchesAcrossSessions) {
    ASSERT_TRUE(filters().addSearch(tide()));
    ASSERT_TRUE(filter().add(tide(), true));
    ASSERT_TRUE(filter().add(tide(), true));
    const Kv::Ptr<BinData> plain = Kv::makePtr<BinData>(CookieVec{Cookie('E', 2)});
    plain->setName(L"By hand");
    const Kv::Ptr<BinData> copy = filters().addSearchResults(plain);
    EXPECT_NE(copy, plain);
    EXPECT_EQ(filter().add(copy), copy) << "it is here already";
    putClip(3, "High tide");
    EXPECT_THAT(kept(), ElementsAre("tide: 1", "tide*: 2", "tide 2*: 2", "By hand: 1"));
    reopen();
    EXPECT_THAT(kept(), ElementsAre("tide: 1", "tide*: 2", "tide 2*: 2", "By hand: 1"));
    putClip(4, "Tidal");
    putClip(1, "Dusk");
    EXPECT_THAT(kept(), ElementsAre("tide: 1", "tide*: 1", "tide 2*: 1", "By hand: 1"))
        << "what has been looked at follows the project";
}

TEST_F(SearchResultsTest, keepsResultsOfAnySize) {
    const Kv::Ptr<BinData> large = filters().addSearch(tide());
    large->setName(std::wstring(std::size_t{17} << 20, L'x')); // as many items would make it
    EXPECT_TRUE(large->save().ok());
    reopen();
    ASSERT_EQ(filter().getResults().size(), 1u);
    EXPECT_TRUE(filter().getResults()[0]->contains(Cookie('E', 1)));
}

TEST_F(SearchResultsTest, savesWhatIsChangedInKeptResults) {
    const Kv::Ptr<BinData> bin = filters().addSearch(tide());
    EXPECT_FALSE(filter().anyDirty());
    bin->add(Cookie('E', 2));
    EXPECT_TRUE(filter().anyDirty());
    EXPECT_TRUE(bin->save().ok());
    EXPECT_FALSE(filter().anyDirty());
    bin->remove(Cookie('E', 1));
    filter().setVisibility(iProjectFilter::kNever);
    reopen();
    EXPECT_EQ(filter().getVisibility(), iProjectFilter::kNever);
    EXPECT_THAT(kept(), ElementsAre("tide: 1"));
    EXPECT_TRUE(filter().getResults()[0]->contains(Cookie('E', 2)));
}

TEST_F(SearchResultsTest, whatIsHeldBeyondTheProjectChangesNoOther) {
    const auto before = filters().getFilterByName(L"Search results");
    const Kv::Ptr<BinData> bin = filters().addSearch(tide());
    EXPECT_TRUE(project_->close().ok());
    openProject();
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    bin->add(Cookie('E', 2));
    EXPECT_TRUE(cutroom::Savers::saveAll().ok());
    EXPECT_FALSE(dynamic_cast<SearchResultsFilter&>(*before).add(tide(), false));
    reopen();
    EXPECT_THAT(kept(), ElementsAre("tide: 1", "Mine*: 1"));
}

TEST_F(SearchResultsTest, tellsWhatComesAndGoes) {
    ASSERT_TRUE(filter().add(tide(), false));
    const Kv::Ptr<BinData> second = filter().add(tide(), true);
    EXPECT_TRUE(filter().remove(second));
    EXPECT_FALSE(filter().remove(second));
    const Kv::Ptr<BinData> third = filter().add(tide(), true);
    filter().remove(iMultiBinContainer::Bins{third, third, nullptr});
    filter().clear();
    filter().clear();
    EXPECT_THAT(toldFilters_, ElementsAre("384", "384", "640", "384", "640", "640"));
    EXPECT_FALSE(cutroom::fileExists(path("tide.criteria")));
    EXPECT_TRUE(cutroom::fileExists(path("tide.criteria.bak")));
    reopen();
    EXPECT_TRUE(filter().empty());
}

TEST_F(SearchResultsTest, followsEditsThatAreNotSavedYet) {
    EditManager& edits = EditManager::instance();
    EditModifier cut(newEdit(L"cut"));
    Criteria criteria;
    criteria.attributes = {{LogAttribute::scene, {{{"12A"}}, {}}}};
    const auto bin = filter().add(criteria, true);
    const auto log = [&] { cut->setConfig("scene", "12a"); };
    const auto name = [&] { cut->setName(L"new"); };
    const auto lay = [&] {
        cutroom::test::layPieces(cut, cut->getFirstChan(kChanVideo), {{L"shot", 25}});
    };
    const struct {
        std::function<void()> change; // none: undo
        std::vector<double> ends;
    } steps[] = {{log, {0}}, {lay, {1}}, {name, {1}}, {{}, {1}}, {{}, {0}}, {{}, {}}};
    for (const auto& step : steps) {
        if (step.change) {
            edits.makeBackup(cut);
            step.change();
            cut->addModification(EditModifications(), true);
        } else {
            EXPECT_TRUE(edits.undo(cut));
        }
        EXPECT_EQ(projdb::find(cut.getCookie())->name(), cutroom::toUtf8(cut->getName()));
        cutroom::ChangedEdits::enter();
        std::vector<double> ends;
        for (const BinItem& item : std::as_const(*bin))
            ends.push_back(item.markOut);
        EXPECT_EQ(ends, step.ends);
    }
}

TEST_F(SearchResultsTest, aUsersFilterKeepsASearchAsItWas) {
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    ASSERT_TRUE(filters().createFilter(filter().getResults(), L"Yours"));
    Criteria other;
    other.quickSearch = "sand";
    ASSERT_TRUE(filter().saveCriteria(L"Mine", other).ok());
    putClip(3, "Ebb tide");
    EXPECT_EQ(contentOf(L"Yours") + ", " + contentOf(L"Search results"), "Mine: 1 3, Mine: 2");
    reopen();
    EXPECT_EQ(contentOf(L"Yours") + ", " + contentOf(L"Search results"), "Mine: 1 3, Mine: 2");
    toldFilters_.clear();
    putClip(1, "Dusk");
    EXPECT_THAT(toldFilters_, ElementsAre("bin 512"));
}

TEST_F(SearchResultsTest, followsTheCriteriaFilesOfOthers) {
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    std::ofstream(path("Night.criteria")) << R"({"QuickSearch": "sand"})";
    std::ofstream(path("Broken.criteria")) << R"({"QuickSearch": )";
    std::ofstream(path("Two\nlines.criteria")) << "{}";
    std::filesystem::remove(path("Mine.criteria"));
    filter().update();
    EXPECT_THAT(kept(), ElementsAre("Night*: 1"));
    ASSERT_EQ(filter().getDamaged().size(), 2u);
    EXPECT_THAT(filter().getDamaged()[0].text(), HasSubstr("Broken.criteria"));
    EXPECT_THAT(filter().getDamaged()[1].text(), HasSubstr("control character"));
    std::filesystem::remove(path("Two\nlines.criteria"));
    filter().update();
    EXPECT_EQ(filter().getDamaged().size(), 1u) << "what is gone is no damage";
    ASSERT_TRUE(filter().saveCriteria(L"Broken", tide()).ok());
    EXPECT_TRUE(cutroom::fileExists(path("Broken.criteria.damaged")));
    std::ofstream(path("Night.criteria")) << R"({"QuickSearch": "nothing of the kind"})";
    filter().update();
    EXPECT_THAT(kept(), ElementsAre("Night*: 0", "Broken*: 1"));
}

TEST_F(SearchResultsTest, mendsAListByAnotherHandAndKeepsADamagedOne) {
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    filter().getBins()[0]->setName(L"Called otherwise");
    ASSERT_TRUE(filter().saveCriteria(L"Mine", tide()).ok());
    EXPECT_FALSE(cutroom::fileExists(path("Called otherwise.criteria")));
    const std::string list = path("Search.filter");
    end();
    std::ofstream(list, std::ios::trunc)
        << R"({"Bins": [{"Name": "Plain", "Items": [{"Cookie": ")" << Cookie('E', 1).asString()
        << R"("}]}, {"Type": "Search", "Dynamic": true, "Criteria": {}, "Name": "../up", "ID": ")"
        << SearchBin::fixedID(L"Mine").asString() << R"("}]})";
    open();
    EXPECT_THAT(kept(), ElementsAre("Plain: 1", "Mine*: 1"));
    filter().clear();
    EXPECT_TRUE(filter().empty());
    EXPECT_FALSE(cutroom::fileExists(path("Mine.criteria")));
    end();
    std::ofstream(list, std::ios::trunc) << R"({"Bins": [{"Type": "Search", "Dynamic": true}]})";
    open();
    EXPECT_TRUE(filter().empty());
    ASSERT_EQ(filter().getDamaged().size(), 1u);
    EXPECT_THAT(filter().getDamaged()[0].text(), HasSubstr("Dynamic: there are no criteria"));
    ASSERT_TRUE(filter().add(tide(), false));
    EXPECT_TRUE(cutroom::fileExists(list + ".damaged"));
}

TEST_F(SearchResultsTest, keepsTheStateWhenItCannotSave) {
    ASSERT_TRUE(filter().add(tide(), true));
    const auto before = kept();
    files_.arm(0, cutroom::test::FaultyFiles::Span::allForEver);
    EXPECT_FALSE(filter().add(tide(), false));
    EXPECT_FALSE(filter().add(tide(), true));
    EXPECT_FALSE(filter().remove(filter().getBins()[0]));
    EXPECT_FALSE(log_.lines.empty());
    files_.disarm();
    EXPECT_EQ(kept(), before);
}

TEST_F(SearchResultsTest, keepsResultsUntilTheCloseWhereNothingMayBeWritten) {
    reopen(CurrentProject::Access::readOnly);
    ASSERT_TRUE(filter().add(tide(), false));
    ASSERT_TRUE(filter().add(tide(), true));
    EXPECT_THAT(kept(), ElementsAre("tide: 1", "tide*: 1"));
    EXPECT_FALSE(filter().saveCriteria(L"x", tide()).ok());
    EXPECT_FALSE(cutroom::fileExists(path("Search.filter")));
}

} // namespace
