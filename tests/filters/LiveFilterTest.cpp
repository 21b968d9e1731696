// Filters follow the project, changed on one thread and on several.
#include "bins/DocumentManager.h"
#include "filters/FilterFollower.h"
#include "tests/filters/FilterProject.h"
#include "tests/support/Scale.h"
#include "vob/VobManager.h"

#include <future>
#include <map>
#include <random>
#include <set>
#include <thread>

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

class LiveFilterTest : public FilterProject {
protected:
    static projdb::Record tagged(std::uint64_t id, const char* tags) {
        projdb::Record made = record(id, projdb::kKindSequence, kLogTypeEdit);
        made.setField("tags", tags);
        return made;
    }
    static projdb::Record subClip(std::uint64_t id, const Cookie& parent) {
        projdb::Record made = record(id, projdb::kKindSubClip, kLogTypeSubclip);
        made.setField("parent", parent.asString());
        return made;
    }
    static void change(unsigned seed, int times);
    static std::multimap<std::wstring, std::set<Cookie>> contents();
};

// Each filter is looked at before each step, or at the end only: the answers are the same.
TEST_F(LiveFilterTest, FollowsEachChange) {
    const struct {
        const wchar_t* filter;
        std::function<void()> change;
        const char* content;
    } steps[] = {
        {L"Everything", [] { put(record(1, projdb::kKindClip)); }, "Everything: 1"},
        {L"Logs", [] { put(record(2, projdb::kKindSync)); }, "Clips: 1 | Synced clips: 2"},
        {L"Logs", [] { put(record(1, projdb::kKindPrint)); }, "Synced clips: 2 | Prints: 1"},
        {L"Images", [] { put(record(3, projdb::kKindClip | projdb::kKindImage)); }, "Images: 3"},
        {L"Everything", [] { put(record(4, projdb::kKindClip | projdb::kKindClipboard)); },
         "Everything: 1 2 3"},
        {L"Everything", [] { (void)projdb::remove(Cookie('E', 2)); }, "Everything: 1 3"},
        {L"Documents", [] { DocumentManager::instance().createDocument(L"/a.pdf", 'D'); },
         "Documents: D"},
        {L"Images", [] { DocumentManager::instance().createDocument(L"/a.PNG", 'A'); },
         "Images: 3 A"},
        {L"Images",
         [] { DocumentManager::instance().getDocuments()[0]->setLocations({L"/b.txt"}); },
         "Images: 3"},
        {L"Documents",
         [] {
             auto& documents = DocumentManager::instance();
             (void)documents.destroy(documents.getDocuments()[0]->getID(), "done with");
         },
         "Documents: D"},
        {L"night", [] { put(tagged(6, " night; rain,,night ")); }, "night: 6"},
        {L"rain", [] { put(tagged(7, "rain")); }, "rain: 6 7"},
        {L"night", [] { put(tagged(6, "rain")); }, "none"},
        {L"rain", [] { put(tagged(6, "")); }, "rain: 7"},
    };
    for (const bool looking : {true, false}) {
        for (const auto& step : steps) {
            if (looking)
                for (const auto& filter : filters().getAllFilters())
                    (void)filter->isEmpty();
            step.change();
            EXPECT_EQ(contentOf(step.filter), step.content) << looking;
        }
        for (std::uint64_t id = 1; id <= 7; ++id)
            (void)projdb::remove(Cookie('E', id));
        (void)DocumentManager::instance().destroy(
            DocumentManager::instance().getDocuments()[0]->getID(), "again");
        if (looking)
            reopen();
    }
}

TEST_F(LiveFilterTest, FindsTheFewThatHaveTags) {
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= 5000; ++id)
            put(tagged(id, id == 1 || id == 3001 ? "night" : ""));
        for (std::uint64_t id = 2; id <= 3000; ++id) // so many that the gaps are closed
            (void)projdb::remove(Cookie('E', id));
    }
    put(tagged(4000, "day"));
    EXPECT_EQ(contentOf(L"day") + ", " + contentOf(L"night"), "day: 4000, night: 1 3001");
    reopen();
    EXPECT_EQ(contentOf(L"day") + ", " + contentOf(L"night"), "day: 4000, night: 1 3001");
}

TEST_F(LiveFilterTest, TellsOfTagsAndOfBinsThatAreLookedAt) {
    (void)contentOf(L"Everything"); // does not read the tags
    EXPECT_EQ(toldFilters_.size(), 0u);
    put(tagged(2, "dusk"));
    EXPECT_THAT(toldFilters_, ElementsAre("bin 256"));
    (void)filters().getAllFilters();
    toldFilters_.clear();
    put(tagged(1, "night"));
    put(tagged(1, "day"));
    EXPECT_THAT(toldFilters_, ElementsAre("bin 256", "130 night", "640 130 day"));
}

TEST_F(LiveFilterTest, AUsersFilterTakesACopyOfWhatATagPresents) {
    put(tagged(1, "night"));
    const auto night = filters().getFilterByName(L"night");
    EXPECT_EQ(night->getDescription(), L"Everything tagged \"night\"");
    night->clear(); // which is the project's to say
    const FilterBins shown = night->getResults();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_FALSE(shown[0]->canAccomodate(Cookie('E', 9)));
    const auto mine = filters().createFilter(shown, L"mine", iProjectFilter::kAlways);
    put(tagged(2, "night"));
    EXPECT_EQ(contentOf(L"night") + ", " + contentOf(L"mine"), "night: 1 2, night: 1");
    EXPECT_TRUE(mine->getResults()[0]->canAccomodate(Cookie('E', 9)));
    EXPECT_FALSE(filters().destroyFilter(night)) << "it is none of the user's";
    EXPECT_TRUE(filters().destroyFilter(mine));
}

// Holds what is in `there` when it is looked at; calls back once, when it has looked.
struct SlowBin final : FilterBinData {
    SlowBin(CookieVec held, std::function<void()> act)
        : there(std::move(held)), meanwhile(std::move(act)) {}
    bool isDynamic() const override { return true; }
    Items gather() const override {
        const CookieVec seen = there;
        std::exchange(meanwhile, [] {})();
        Items items;
        for (const Cookie& one : seen)
            items.emplace_back(one, 0.0);
        return items;
    }
    std::optional<BinItem> itemOf(const Cookie& asset) const override {
        const bool isThere = std::find(there.begin(), there.end(), asset) != there.end();
        return isThere ? std::optional(BinItem(asset, 0.0)) : std::nullopt;
    }
    CookieVec there;
    mutable std::function<void()> meanwhile;
};

TEST_F(LiveFilterTest, WhatHappensWhileABinIsFilledIsNotMissed) {
    const Cookie one('E', 1), two('E', 2);
    Kv::Ptr<SlowBin> bin;
    const std::function<void()> happens[] = {[&] {
                                                 bin->assetsChanged({one, two});
                                             },
                                             [&] { bin->handleDeletions({one}, ""); },
                                             [&] { bin->refresh(); }};
    const char* const contents[] = {"2", "", "2"};
    for (std::size_t i = 0; i < std::size(happens); ++i) {
        bin = Kv::makePtr<SlowBin>(CookieVec{one}, [&] {
            bin->there = i == 1 ? CookieVec() : CookieVec{two};
            happens[i]();
        });
        bin->fill();
        EXPECT_EQ(contentOf(*bin), contents[i]) << i;
    }
}

TEST_F(LiveFilterTest, WhoLooksWaitsForWhatIsBeingApplied) {
    std::atomic<bool> applied{false};
    std::promise<bool> sawItApplied;
    auto saw = sawItApplied.get_future();
    std::thread other;
    cutroom::FilterFollower follower(
        [&](const CookieVec&) {
            other = std::thread([&] {
                follower.catchUp();
                sawItApplied.set_value(applied);
            });
            (void)saw.wait_for(std::chrono::milliseconds(50)); // times out: it waits for us
            applied = true;
        },
        [] {});
    put(record(1, projdb::kKindClip));
    EXPECT_TRUE(saw.get());
    other.join();
}

TEST_F(LiveFilterTest, FollowsTheEditsThatAreWorkedOn) {
    const Cookie cut = newEdit(L"cut"), clip = newEdit(L"clip");
    auto& vobs = VobManager::instance();
    const auto source = vobs.createVob(clip), recorder = vobs.createVob(cut);
    vobs.setSourceMachine(source.get(), 0);
    vobs.setRecordMachine(recorder.get(), 0);
    put(subClip(1, clip));
    put(subClip(2, cut));
    const std::uint64_t shot = materialOf(L"shot").id();
    put(record(shot, projdb::kKindClip));
    EXPECT_EQ(contentOf(L"Sub-clips"), "cut: 2 | clip: 1");
    const auto subClips = filters().getFilterByName(L"Sub-clips");
    EXPECT_EQ(subClips->getResultsType(), iProjectFilter::kGroupedResults);
    put(subClip(1, cut));
    EXPECT_EQ(contentOf(L"Sub-clips"), "cut: 2 1");

    EXPECT_EQ(contentOf(L"Constituents"), "");
    EditModifier edit(cut);
    layPieces(edit, edit->getFirstChan(kChanVideo), {{L"shot", 25}});
    edit->addModification(kModEventsAdded, true);
    EXPECT_EQ(contentOf(L"Constituents"), "Constituents: " + std::to_string(shot));
    toldFilters_.clear();
    vobs.closeVob(recorder, true);
    EXPECT_EQ(subClips->getResultsType(), iProjectFilter::kFlatResults);
    EXPECT_EQ(contentOf(L"Constituents"), "");
    EXPECT_THAT(toldFilters_, ElementsAre("896 Sub-clips Constituents"));
}

TEST_F(LiveFilterTest, LogsGrowTooOldToBeRecent) {
    const std::uint32_t now = cutroom::idSource().secondsNow();
    constexpr std::uint32_t kDay = 86400;
    std::uint64_t id = 0;
    for (const std::uint32_t age : {8 * kDay, 0u, kDay - 5, kDay, 31 * kDay}) {
        projdb::Record log = record(++id, projdb::kKindClip);
        log.created = now - age;
        put(log);
    }
    EXPECT_EQ(contentOf(L"Recent logs"), "Last day: 3 2 | Last 7 days: 4 3 2 | "
                                         "Last 30 days: 1 4 3 2");
    const Cookie lastDay = cutroom::fixedFilterBinID("last day");
    cutroom::FixedIds tomorrow(0, now + kDay);
    cutroom::iIdSource* const today = cutroom::installIdSource(&tomorrow);
    EXPECT_EQ(contentOf(*filters().getFilterResults(lastDay)), "");
    cutroom::installIdSource(today);
}

void LiveFilterTest::change(unsigned seed, int times) {
    std::mt19937 random(seed);
    for (int i = 0; i < times; ++i) {
        const std::uint64_t id = 1 + random() % 40;
        const char* const tags[] = {"", "a", "b", "a,c"};
        projdb::Record made = subClip(id, Cookie('E', 1 + random() % 3));
        made.kinds = 1u << random() % 5;
        made.setField("tags", tags[random() % 4]);
        if (random() % 4 != 0)
            put(made);
        else
            (void)projdb::remove(made.cookie); // perhaps of none
        if (random() % 50 == 0)
            DocumentManager::instance().createDocument(L"/a.png", 'D');
    }
}

// What each bin holds; tags may have come in another order.
std::multimap<std::wstring, std::set<Cookie>> LiveFilterTest::contents() {
    std::multimap<std::wstring, std::set<Cookie>> all;
    for (const auto& filter : filters().getAllFilters())
        for (const auto& bin : filter->getResults()) {
            std::set<Cookie>& assets = all.emplace(bin->getName(), std::set<Cookie>())->second;
            for (const AssetReference& one : bin->getCookies())
                assets.insert(one.cookie);
        }
    return all;
}

// Four threads change the project and look at filters while the list is set up again and again; in
// the end every bin holds what one that is made afresh does.
TEST_F(LiveFilterTest, StaysRightWhileThreadsChangeTheProject) {
    filesForThreads();
    const auto subClips = filters().getFilterByName(L"Sub-clips");
    const auto vob = VobManager::instance().createVob(newEdit());
    VobManager::instance().setRecordMachine(vob.get(), 0);
    ASSERT_EQ(subClips->getBins().size(), 1u);
    std::atomic<int> running{4};
    std::vector<std::thread> threads;
    filterGuard_.reset(); // its recorder is for one thread
    for (unsigned i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds(10, 100); ++round) {
                change(i * 1000 + static_cast<unsigned>(round), 20);
                for (const auto& filter : filters().getAllFilters())
                    (void)filter->isEmpty();
            }
            --running;
        });
    while (running > 0) {
        const auto made = filters().createFilter({}, L"made");
        filters().reInit();
        EXPECT_TRUE(filters().destroyFilter(made));
        host_->loop().pump();
    }
    for (std::thread& thread : threads)
        thread.join();
    host_->loop().pump();
    const auto followed = contents();
    filters().handleProjectExit(); // all filters are made afresh
    filters().handleProjectEntry();
    EXPECT_EQ(followed, contents());
}

} // namespace
