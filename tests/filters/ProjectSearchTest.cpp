// Searches of a project, against the rules and against a plain look at every record.
#include "filters/ProjectSearch.h"
#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "tests/bins/BinProject.h"
#include "tests/support/Scale.h"

#include <fstream>
#include <random>

using cutroom::eItemPresence;
using projdb::eMatchMethod;
using testing::ElementsAre;
using testing::IsEmpty;
using Criteria = ProjectSearch::Criteria;

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

TEST(CompareStrings, letsTheFirstOccurrenceAloneDecideOnWords) {
    const auto words = [](const wchar_t* text, const wchar_t* pattern) {
        return ProjectSearch::compareStrings(LightweightString<wchar_t>(text), pattern, true,
                                             false);
    };
    EXPECT_FALSE(words(L"concat cat", L"cat"));
    EXPECT_TRUE(words(L"cat.", L"cat"));
    EXPECT_TRUE(words(L"the CAT", L"cat"));
    EXPECT_TRUE(words(L"ΟΔΌΣ, ÜBER", L"über"));
    EXPECT_FALSE(ProjectSearch::compareStrings(LightweightString<char>("CAT"), "cat", false, true));
}

TEST_F(ProjectSearchTest, fillsABinWithExtents) {
    projdb::Record backwards = clip(1, "Tide");
    std::swap(backwards.start, backwards.end);
    put(backwards);
    put(clip(2, "Sand"));
    const Kv::Ptr<BinData> bin = ProjectSearch::instance().perform(quick("TID"));
    EXPECT_EQ(bin->getName(), L"TID");
    ASSERT_EQ(bin->numItems(), 1u);
    EXPECT_EQ(bin->getItem(0).markIn, 10);
    EXPECT_EQ(bin->getItem(0).markOut, 20);
    EXPECT_FALSE(BinManager::instance().isManaged(bin->getID()));
}

struct ConditionRow {
    const char* name;
    void (*ask)(Criteria&);
    std::vector<std::uint64_t> expected;
};
// A clip with picture and media, one without anything, a sequence with a medium.
class Conditions : public ProjectSearchTest, public testing::WithParamInterface<ConditionRow> {};

TEST_P(Conditions, decide) {
    const std::string media = folder_ / "there.mov";
    std::ofstream(media) << "x";
    projdb::Record full = clip(1, "full");
    full.videoTracks = 1;
    full.audioTracks = 2;
    full.mediaLocations = {media, "/mnt/raid/gone.mov"};
    put(full);
    put(clip(2, "bare"));
    projdb::Record sequence = clip(3, "sequence");
    sequence.kinds = projdb::kKindSequence;
    sequence.mediaLocations = {"/mnt/raid/gone.mov"};
    put(sequence);
    Criteria criteria;
    GetParam().ask(criteria);
    EXPECT_THAT(found(criteria), testing::ElementsAreArray(GetParam().expected));
}

using Presence = eItemPresence;
const ConditionRow kConditions[] = {
    {"nothing", [](Criteria&) {}, {1, 2, 3}},
    {"video", [](Criteria& c) { c.clipVTracks = Presence::present; }, {1, 3}},
    {"noVideo", [](Criteria& c) { c.clipVTracks = Presence::absent; }, {2, 3}},
    {"audio", [](Criteria& c) { c.clipATracks = Presence::present; }, {1, 3}},
    {"noAudio", [](Criteria& c) { c.clipATracks = Presence::absent; }, {2, 3}},
    {"media", [](Criteria& c) { c.clipMedia = Presence::present; }, {1, 3}},
    {"noMedia", [](Criteria& c) { c.clipMedia = Presence::absent; }, {2, 3}},
    {"drive", [](Criteria& c) { c.mediaLocation = DriveID::of("/mnt/raid/x"); }, {1, 3}},
    {"mediaOffDrive",
     [](Criteria& c) {
         c.mediaLocation = DriveID::of("/mnt/raid/x");
         c.clipMedia = Presence::absent;
     },
     {1, 3}},
    {"noSuchDrive", [](Criteria& c) { c.mediaLocation = DriveID::of("/mnt/other/x"); }, {}},
    {"justAfterTheEnd", [](Criteria& c) { c.requiredTime = 20.0000009; }, {1, 2, 3}},
    {"afterTheEnd", [](Criteria& c) { c.requiredTime = 20.000002; }, {}},
    {"justBeforeTheStart", [](Criteria& c) { c.requiredTime = 9.9999991; }, {1, 2, 3}},
    {"kinds", [](Criteria& c) { c.kinds = projdb::kKindSequence; }, {3}},
};
INSTANTIATE_TEST_SUITE_P(ProjectSearch, Conditions, testing::ValuesIn(kConditions),
                         [](const auto& row) { return row.param.name; });

// --- against a plain look at every record --------------------------------------------------------

class Dice {
public:
    unsigned operator()(unsigned sides) { return static_cast<unsigned>(engine_() % sides); }
    std::string word() {
        static const std::vector<std::string> words = {"cat",     "concat", "Ébène", "ÉBÈNE",
                                                       "ΣΊΣΥΦΟΣ", "дом",    "İzmir", "ß",
                                                       "東京",    "A001",   "9",     "10"};
        static const std::vector<std::string> between = {" ", ", ", "_", "", "«", "—", "\t"};
        std::string text = words[(*this)(12)];
        for (unsigned more = (*this)(3); more > 0; --more)
            text += between[(*this)(7)] + words[(*this)(12)];
        return text;
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
        record.start = (*this)(20);
        record.end = (*this)(20);
        record.videoTracks = (*this)(2);
        record.audioTracks = (*this)(3);
        for (const char* const field : {"scene", "take", "notes"})
            if ((*this)(2))
                record.setField(field, word());
        if ((*this)(2))
            record.mediaLocations = {"/mnt/" + std::string(1, static_cast<char>('a' + (*this)(2))) +
                                     "/" + word()};
        record.markerTypes = (*this)(8);
        if ((*this)(2))
            record.markerTexts = {word()};
        return record;
    }
    Criteria criteria() {
        Criteria criteria;
        criteria.kinds = (*this)(32) | ((*this)(2) ? unsigned{projdb::kKindImage} : 0u);
        criteria.options = (*this)(8);
        if ((*this)(2))
            criteria.quickSearch = word();
        for (const LogAttribute::eType type :
             {LogAttribute::name, LogAttribute::scene, LogAttribute::take, LogAttribute::tracks})
            if ((*this)(3) == 0)
                criteria.attributes.push_back({type, patterns()});
        if ((*this)(4) == 0)
            criteria.markers = patterns();
        criteria.markerTypesWanted = (*this)(3) ? 0u : (*this)(8);
        criteria.markerTypesUnwanted = (*this)(3) ? 0u : (*this)(8);
        if ((*this)(4) == 0)
            criteria.requiredTime = (*this)(20);
        if ((*this)(6) == 0)
            criteria.mediaLocation = DriveID::of("/mnt/a/x");
        criteria.clipVTracks = (*this)(4) ? Presence::any : static_cast<Presence>((*this)(3));
        criteria.clipATracks = (*this)(2) ? Presence::any : static_cast<Presence>((*this)(3));
        criteria.clipMedia = (*this)(4) ? Presence::any : static_cast<Presence>((*this)(3));
        return criteria;
    }

private:
    std::mt19937 engine_{20};
};

bool plainlyMatches(const projdb::Record& record, const Criteria& criteria) {
    const bool shot = (record.kinds & projdb::kKindsShot) != 0;
    const auto as = [&](bool there, Presence asked) {
        return !shot || asked == Presence::any || there == (asked == Presence::present);
    };
    bool text = projdb::matchRecord(record, criteria);
    if (criteria.isQuickSearch()) {
        std::vector<std::string> texts = record.mediaLocations;
        for (const auto& [id, value] : record.attributes)
            texts.push_back(value);
        text = std::any_of(texts.begin(), texts.end(), [&](const std::string& one) {
            return ProjectSearch::compareStrings(cutroom::toWide(one),
                                                 cutroom::toWide(criteria.quickSearch),
                                                 criteria.has(Criteria::kWholeWords), false);
        });
    }
    const bool onDrive = criteria.mediaLocation.empty() ||
                         (!record.mediaLocations.empty() &&
                          DriveID::of(record.mediaLocations[0]) == criteria.mediaLocation);
    const auto allowed = [&](unsigned kind, bool allow) { return allow || !(record.kinds & kind); };
    return text && (record.kinds & criteria.kinds & 0x1F) != 0 && onDrive &&
           allowed(projdb::kKindImage, criteria.wants(projdb::kKindImage)) &&
           allowed(projdb::kKindClipboard, criteria.has(Criteria::kAllowClipboard)) &&
           as(record.videoTracks > 0, criteria.clipVTracks) &&
           as(record.audioTracks > 0, criteria.clipATracks) && as(false, criteria.clipMedia) &&
           (!criteria.hasRequiredTime() ||
            (criteria.requiredTime >= std::min(record.start, record.end) &&
             criteria.requiredTime <= std::max(record.start, record.end)));
}

TEST_F(ProjectSearchTest, findsWhatAPlainLookFinds) {
    Dice dice;
    std::map<std::uint64_t, projdb::Record> records;
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= 150; ++id)
            put(records[id] = dice.record(id));
    }
    std::size_t all = 0;
    for (long round = 0; round < cutroom::test::rounds(1000, 20000); ++round) {
        const Criteria criteria = dice.criteria();
        const std::uint64_t changed = 1 + dice(150);
        if (round % 10 == 0)
            put(records[changed] = dice.record(changed));
        std::vector<std::uint64_t> expected;
        for (const auto& [id, record] : records)
            if (plainlyMatches(record, criteria))
                expected.push_back(id);
        ASSERT_EQ(found(criteria), expected)
            << round << cutroom::toUtf8(ProjectSearch::makeName(criteria, true));
        all += expected.size();
        const auto text = criteria.asText();
        const auto back = Criteria::from(**JSON::Element::parse(*text, "t"), "t");
        ASSERT_TRUE(back.ok()) << back.status().text();
        ASSERT_TRUE(*back == criteria) << *text;
        std::vector<projdb::AttributeValuePair> pairs;
        criteria.saveTo(pairs);
        Criteria restored;
        restored.restoreFrom(pairs);
        ASSERT_TRUE(restored == criteria) << *text;
    }
    EXPECT_GT(all, 1000u);
}

TEST_F(ProjectSearchTest, tellsTheFirstFindsSoonAndStopsWhenAsked) {
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 1; id <= 5000; ++id)
            put(clip(id, "tide " + std::to_string(id)));
    }
    std::vector<std::size_t> counts;
    double share = 0;
    const auto watch = [&](const ProjectSearch::Progress& state) {
        EXPECT_GE(state.share, share);
        share = state.share;
        counts.push_back(state.found);
        return true;
    };
    EXPECT_EQ(ProjectSearch::instance().perform(quick("tide"), watch)->numItems(), 5000u);
    EXPECT_GT(counts.size(), 1u);
    EXPECT_LT(counts.front(), 5000u);
    EXPECT_EQ(counts.back(), 5000u);
    EXPECT_EQ(share, 1);
    EXPECT_FALSE(
        ProjectSearch::instance().perform(quick("tide"), [](const auto&) { return false; }));
    // Media are asked for some at a time, and what goes meanwhile is not found.
    Criteria noMedia;
    noMedia.clipMedia = Presence::absent;
    std::vector<std::size_t> told;
    const Kv::Ptr<BinData> left =
        ProjectSearch::instance().perform(noMedia, [&](const auto& state) {
            const ProjDbModificationCoalescer batch;
            for (std::uint64_t id = 1; id <= 3000 && told.empty(); ++id)
                EXPECT_TRUE(projdb::remove(Cookie('E', id)).ok());
            told.push_back(state.found);
            return true;
        });
    EXPECT_EQ(left->numItems(), 2000u);
    EXPECT_EQ(told.front(), 256u);
    for (std::uint64_t id = 1; id <= 3000; ++id)
        put(clip(id, "tide"));
    // What changes while it is looked for is found as it is at the end.
    Criteria noEbb;
    noEbb.attributes = {{LogAttribute::name, {{{"ebb", eMatchMethod::doesNotContain}}, {}}}};
    BinData::Items items;
    ASSERT_TRUE(ProjectSearch::instance().find(noEbb, items, [](const auto& state) {
        if (state.share < 0.5) {
            EXPECT_TRUE(projdb::put(clip(4000, "ebb")).ok());
        }
        return true;
    }));
    EXPECT_EQ(items.size(), 4999u);
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

constexpr char kWhole[] = R"({
    "Types": {
        "Sequences": false,
        "Clips": true,
        "ClipSections": false,
        "SubClips": false,
        "Prints": false,
        "Syncs": true
    },
    "Criteria": [
        {
            "ID": "name",
            "Patterns": [
                {
                    "Text": "dawn",
                    "Match": "StartsWith"
                },
                {
                    "Text": "dusk",
                    "Match": "WholeWord"
                }
            ],
            "Operators": [
                {
                    "Type": "AndNot"
                }
            ]
        },
        {
            "ID": "Markers",
            "Patterns": [
                {
                    "Text": "gull",
                    "Match": "Contains"
                }
            ]
        },
        {
            "ID": "MarkerTypes",
            "wanted": 3,
            "unwanted": 4294967295
        }
    ],
    "QuickSearch": "tide",
    "WholeWords": true,
    "AllowClipboard": false,
    "AllowEmpty": true,
    "IncludeImages": false,
    "MediaLocation": "/mnt/raid",
    "RequiredTime": 0.1,
    "ClipVTracks": "Present",
    "ClipMedia": "Absent"
}
)";

TEST(CriteriaJson, hasFixedKeysInFixedOrder) {
    Criteria criteria = quick("tide", Criteria::kWholeWords | Criteria::kAllowEmpty);
    criteria.kinds = projdb::kKindClip | projdb::kKindSync;
    criteria.attributes = {
        {LogAttribute::name,
         {{{"dawn", eMatchMethod::startsWith}, {"dusk", eMatchMethod::wholeWord}},
          {projdb::eLogicalOperator::andNot}}}};
    criteria.markers = {{{"gull", eMatchMethod::contains}}, {}};
    criteria.markerTypesWanted = 3;
    criteria.markerTypesUnwanted = 0xFFFFFFFF;
    criteria.mediaLocation = DriveID::of("/mnt/raid/x");
    criteria.requiredTime = 0.1;
    criteria.clipVTracks = Presence::present;
    criteria.clipMedia = Presence::absent;
    EXPECT_EQ(*criteria.asText(), kWhole);
    EXPECT_TRUE(*Criteria::from(**JSON::Element::parse(kWhole, "t"), "t") == criteria);
    criteria.requiredTime = 1e300; // no single-precision value holds it
    EXPECT_EQ(criteria.asText()->find("RequiredTime"), std::string::npos);
}

TEST(CriteriaJson, keepsTheFirstPatternWhenOperatorsDoNotFit) {
    const auto read =
        Criteria::from(**JSON::Element::parse(R"({"Criteria": [{"ID": "name", "Patterns": [
            {"Text": "a", "Match": "Equals"}, {"Text": "b", "Match": "Contains"}]}]})",
                                              "t"),
                       "t");
    ASSERT_TRUE(read.ok());
    EXPECT_THAT(read->attributes[0].patterns.patterns,
                ElementsAre(projdb::Pattern{"a", eMatchMethod::equals}));
    EXPECT_EQ(read->kinds, Criteria().kinds) << "without Types every kind";
}

TEST(CriteriaJson, namesThePlaceOfWhatIsWrong) {
    const std::pair<const char*, const char*> rows[] = {
        {R"([])", "criteria are an object"},
        {R"({"Types": []})", "Types: is no object"},
        {R"({"Types": {"Clips": 1}})", "Types.Clips: is neither true nor false"},
        {R"({"Criteria": {}})", "Criteria: is no array"},
        {R"({"Criteria": [7]})", "Criteria[0]: is no object"},
        {R"({"Criteria": [{"ID": ""}]})", "Criteria[0].ID: names no attribute"},
        {R"({"Criteria": [{"ID": "name", "Patterns": [{"Text": "x", "Match": "like"}]}]})",
         "Criteria[0].Patterns[0].Match: is no way of matching"},
        {R"({"Criteria": [{"ID": "MarkerTypes", "wanted": 4294967296}]})",
         "Criteria[0].wanted: is no mask of 32 bits"},
        {R"({"QuickSearch": 1})", "QuickSearch: is no text"},
        {R"({"RequiredTime": 1e99})", "RequiredTime: is out of range"},
        {R"({"ClipATracks": "perhaps"})", "ClipATracks: is none of Any, Present, Absent"},
    };
    for (const auto& [text, reason] : rows) {
        const auto read = Criteria::from(**JSON::Element::parse(text, "t"), "night.criteria");
        ASSERT_FALSE(read.ok()) << text;
        EXPECT_EQ(read.status().text(), "night.criteria: " + std::string(reason));
    }
}

TEST_F(ProjectSearchTest, describesCriteriaInWords) {
    Criteria criteria;
    EXPECT_EQ(ProjectSearch::makeName(criteria, true), L"Everything");
    EXPECT_THAT(ProjectSearch::getDescription(criteria), IsEmpty());
    criteria.kinds = projdb::kKindClip | projdb::kKindImage;
    criteria.attributes = {{LogAttribute::reel,
                            {{{"A0", eMatchMethod::startsWith}, {"B0", eMatchMethod::startsWith}},
                             {projdb::eLogicalOperator::orElse}}}};
    criteria.clipMedia = Presence::absent;
    EXPECT_EQ(ProjectSearch::makeName(criteria, false), L"A0, B0");
    EXPECT_EQ(ProjectSearch::makeName(criteria, true),
              L"Kinds Clips, Reel starts with \"A0\" or starts with \"B0\", Media absent");
}

} // namespace
