// Searches of a project, against the rules and against a plain look at every record.
#include "filters/ProjectSearch.h"
#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "tests/bins/BinProject.h"
#include "tests/support/Scale.h"

#include <cmath>
#include <fstream>
#include <random>

using projdb::eMatchMethod;
using testing::ElementsAre;
using Criteria = ProjectSearch::Criteria;
using Presence = cutroom::eItemPresence;

namespace {

projdb::Record clip(std::uint64_t id, const std::string& name) {
    projdb::Record record;
    record.cookie = Cookie('E', id);
    record.kinds = projdb::kKindClip;
    record.logType = kLogTypeSource;
    record.start = 10;
    record.end = 20;
    record.setField("name", name);
    return record;
}

Criteria quick(const char* text, unsigned options = 0) {
    Criteria criteria;
    criteria.quickSearch = text;
    criteria.options = options;
    return criteria;
}

cutroom::Result<Criteria> read(const std::string& text) {
    return Criteria::from(**JSON::Element::parse(text, "t"), "night.criteria");
}

class ProjectSearchTest : public cutroom::test::BinProject {
protected:
    static void put(const projdb::Record& record) { ASSERT_TRUE(projdb::put(record).ok()); }
    static std::vector<std::uint64_t> found(const Criteria& criteria) {
        std::vector<std::uint64_t> ids;
        const Kv::Ptr<BinData> bin = ProjectSearch::instance().perform(criteria);
        for (const BinItem& item : *bin)
            ids.push_back(item.asset.id());
        return ids;
    }
};

// A clip with picture and media, one without anything, a sequence with a medium.
TEST_F(ProjectSearchTest, asksShotsForTracksAndMediaAndAllForTime) {
    const std::string media = folder_ / "there.mov";
    std::ofstream(media) << "x";
    projdb::Record full = clip(1, "full");
    full.videoTracks = 1;
    full.audioTracks = 2;
    full.mediaLocations = {media, "/mnt/raid/gone.mov"};
    projdb::Record sequence = clip(3, "sequence");
    sequence.kinds = projdb::kKindSequence;
    std::swap(sequence.start, sequence.end);
    sequence.mediaLocations = {"/mnt/raid/gone.mov"};
    for (const auto& record : {full, clip(2, "bare"), sequence})
        put(record);
    const struct {
        void (*ask)(Criteria&);
        std::vector<std::uint64_t> expected;
    } rows[] = {
        {[](Criteria&) {}, {1, 2, 3}},
        {[](Criteria& c) { c.clipVTracks = Presence::present; }, {1, 3}},
        {[](Criteria& c) { c.clipVTracks = Presence::absent; }, {2, 3}},
        {[](Criteria& c) { c.clipATracks = Presence::present; }, {1, 3}},
        {[](Criteria& c) { c.clipATracks = Presence::absent; }, {2, 3}},
        {[](Criteria& c) { c.clipMedia = Presence::present; }, {1, 3}},
        {[](Criteria& c) { c.clipMedia = Presence::absent; }, {2, 3}},
        {[](Criteria& c) { c.mediaLocation = DriveID::of("/mnt/raid/x"); }, {1, 3}},
        {[](Criteria& c) {
             c.mediaLocation = DriveID::of("/mnt/raid/x");
             c.clipMedia = Presence::absent; // there is the other place's
         },
         {1, 3}},
        {[](Criteria& c) { c.mediaLocation = DriveID::of("/mnt/other/x"); }, {}},
        {[](Criteria& c) { c.requiredTime = 20.0000009; }, {1, 2, 3}},
        {[](Criteria& c) { c.requiredTime = 20.000002; }, {}},
        {[](Criteria& c) { c.requiredTime = 9.9999991; }, {1, 2, 3}},
        {[](Criteria& c) { c.kinds = projdb::kKindSequence; }, {3}},
    };
    for (const auto& row : rows) {
        Criteria criteria;
        row.ask(criteria);
        EXPECT_EQ(found(criteria), row.expected)
            << cutroom::toUtf8(ProjectSearch::makeName(criteria, true));
    }
}

// Records and criteria of few words, so that much is found.
class Dice {
public:
    unsigned operator()(unsigned sides) { return static_cast<unsigned>(engine_() % sides); }
    std::string word() {
        static const std::vector<std::string> words = {
            "cat",       "concat, cat", "Ébène\tcat", "ÉBÈNE—9", "ΣΊΣΥΦΟΣ", "«дом»",
            "İzmir cat", "ß_ß",         "東京",       "A001",    "9",       "10"};
        return words[(*this)(12)];
    }
    projdb::PatternList patterns() {
        projdb::PatternList list;
        do {
            if (!list.empty())
                list.operators.push_back(static_cast<projdb::eLogicalOperator>((*this)(3)));
            list.patterns.push_back({word(), static_cast<eMatchMethod>((*this)(9))});
        } while ((*this)(3) == 0);
        return list;
    }
    projdb::Record record(std::uint64_t id) {
        projdb::Record record = clip(id, word());
        record.kinds = 1u << (*this)(5) | ((*this)(8) ? 0u : unsigned{projdb::kKindClipboard}) |
                       ((*this)(8) ? 0u : unsigned{projdb::kKindImage});
        for (const char* const field : {"scene", "take", "notes"})
            record.setField(field, (*this)(2) ? word() : "");
        if ((*this)(2))
            record.mediaLocations = {"/mnt/" + std::to_string((*this)(2)) + "/" + word()};
        record.markerTypes = (*this)(8);
        if ((*this)(2))
            record.markerTexts = {word()};
        return record;
    }
    Criteria criteria() {
        Criteria criteria;
        criteria.kinds = (*this)(32) | ((*this)(2) ? unsigned{projdb::kKindImage} : 0u);
        criteria.options = (*this)(8);
        criteria.quickSearch = (*this)(2) ? word() : "";
        for (const LogAttribute::eType type :
             {LogAttribute::name, LogAttribute::scene, LogAttribute::take, LogAttribute::tracks})
            if ((*this)(3) == 0)
                criteria.attributes.push_back({type, patterns()});
        if ((*this)(4) == 0)
            criteria.markers = patterns();
        criteria.markerTypesWanted = (*this)(3) ? 0u : (*this)(8);
        criteria.markerTypesUnwanted = (*this)(3) ? 0u : (*this)(8);
        criteria.requiredTime = (*this)(4) ? kNoTime : 5 + (*this)(20);
        criteria.mediaLocation = (*this)(6) ? DriveID() : DriveID::of("/mnt/1/x");
        criteria.clipMedia = (*this)(3) ? Presence::any : static_cast<Presence>((*this)(3));
        return criteria;
    }

private:
    std::mt19937 engine_{20};
};

TEST_F(ProjectSearchTest, findsWhatALookAtEachRecordFinds) {
    Dice dice;
    constexpr std::uint64_t kRecords = 150;
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= kRecords; ++id)
            put(dice.record(id));
    }
    std::size_t all = 0;
    for (long round = 0; round < cutroom::test::rounds(1000, 20000); ++round) {
        const Criteria criteria = dice.criteria();
        if (round % 10 == 0)
            put(dice.record(1 + dice(kRecords)));
        std::vector<std::uint64_t> expected;
        for (std::uint64_t id = 1; id <= kRecords; ++id)
            if (ProjectSearch::instance().findItem(Cookie('E', id), criteria))
                expected.push_back(id);
        ASSERT_EQ(found(criteria), expected) << round << *criteria.asText();
        all += expected.size();
        ASSERT_TRUE(*read(*criteria.asText()) == criteria) << *criteria.asText();
        std::vector<projdb::AttributeValuePair> pairs;
        criteria.saveTo(pairs);
        Criteria restored;
        restored.restoreFrom(pairs);
        ASSERT_TRUE(restored == criteria) << *criteria.asText();
    }
    EXPECT_GT(all, 1000u);
}

TEST_F(ProjectSearchTest, tellsSomeFindsAtATimeAndFindsWhatMatchesAtTheEnd) {
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= 5000; ++id)
            put(clip(id, "tide"));
    }
    std::vector<std::size_t> told;
    double share = 0;
    const auto watch = [&](const ProjectSearch::Progress& state) {
        EXPECT_GE(state.share, share);
        share = state.share;
        told.push_back(state.found);
        return true;
    };
    BinData::Items items;
    ASSERT_TRUE(ProjectSearch::instance().find(quick("tide"), items, watch));
    EXPECT_LT(told.front(), 5000u);
    EXPECT_EQ(told.back(), 5000u);
    EXPECT_EQ(share, 1);
    // The search looks for media, a few at a time, while records are removed and changed.
    Criteria noMedia;
    noMedia.clipMedia = Presence::absent;
    noMedia.attributes = {{LogAttribute::name, {{{"ebb", eMatchMethod::doesNotContain}}, {}}}};
    told.clear();
    share = 0;
    ASSERT_TRUE(ProjectSearch::instance().find(noMedia, items, [&](const auto& state) {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= 3000 && told.empty(); ++id)
            EXPECT_TRUE(projdb::remove(Cookie('E', id)).ok());
        put(clip(4000, "ebb"));
        return watch(state);
    }));
    EXPECT_EQ(told.front(), 256u);
    EXPECT_EQ(items.size(), 1999u);
    EXPECT_EQ(items.front().asset, Cookie('E', 3001));
}

TEST_F(ProjectSearchTest, asksAnOpenEditForKindAndTracksAndItsRecordForTheRest) {
    const EditPtr edit = cutroom::test::makeEdit(1, 0, Kv::FrameRate(25), L"Tide");
    const auto satisfies = [&](const Criteria& criteria) {
        return ProjectSearch::instance().satisfiesCriteria(edit, criteria);
    };
    Criteria sequences;
    sequences.kinds = projdb::kKindSequence;
    EXPECT_TRUE(satisfies(sequences)) << "without a record";
    EXPECT_FALSE(satisfies(quick("tide"))) << "it has no record yet";
    ASSERT_TRUE(EditManager::instance().save({edit}).ok());
    EXPECT_TRUE(satisfies(quick("tide")));
    EXPECT_FALSE(satisfies(quick("ebb")));
    projdb::Record still = *projdb::find(edit->getCookie());
    still.kinds |= projdb::kKindImage;
    put(still);
    EXPECT_FALSE(satisfies(sequences)) << "images are not asked for";
    sequences.kinds = projdb::kKindClip;
    EXPECT_FALSE(satisfies(sequences));
    EXPECT_FALSE(ProjectSearch::instance().satisfiesCriteria(EditPtr(), Criteria()));
}

// --- the form in files ---------------------------------------------------------------------------

TEST_F(ProjectSearchTest, callsNoAttributeWhatItCallsMarkers) {
    for (const char* const id : {"Markers", "MarkerTypes"})
        EXPECT_FALSE(CurrentProject::addCustomAttribute(id, L"x", DBFieldTypes::text).ok());
}

// A time beyond single precision becomes its greatest value, which no asset has either.
TEST(CriteriaJson, keepsTimesBeyondAll) {
    const std::pair<double, double> times[] = {
        {1e300, 3.4028235e38}, {-1e300, -3.4028235e38}, {std::nan(""), 3.4028235e38}};
    for (const auto& [time, kept] : times) {
        Criteria criteria;
        criteria.requiredTime = time;
        EXPECT_EQ(read(*criteria.asText())->requiredTime, kept);
    }
}

TEST(CriteriaJson, keepsWhatAsksForNoAttribute) {
    Criteria criteria;
    criteria.attributes.push_back({LogAttribute(), {{{"x"}}, {}}});
    EXPECT_EQ(read(*criteria.asText())->attributes.size(), 1u);
    EXPECT_FALSE(read(R"({"Criteria": [{"Patterns": []}]})"));
}

} // namespace
