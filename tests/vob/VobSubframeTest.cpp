#include "platform/prefs/Configuration.h"
#include "platform/project/CurrentProject.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr char kNote[] = "Note: Subframe edit automatically repaired.\n";
constexpr double kOff = 0.013;

class VobSubframe : public VobFixture {
protected:
    // V1 is cut at 2 and 4 seconds, both off the frame by some milliseconds.
    VobSubframe() : edit_(makeEdit(10, 1, 2)) { layClip(edit_, video_, 2 + kOff, 4 + kOff); }
    void view() {
        vob_ = open(edit_);
        vob_->setStatus(Vob::kStatusRecord);
    }
    std::vector<double> cuts(int chan = 0) const {
        std::vector<double> times;
        const auto cel = edit_->get_edit_cel_p(chan);
        for (std::uint32_t i = 0; i < cel->numSegments(); ++i)
            times.push_back(cutroom::toSeconds(cel->getSegment(i).start));
        return times;
    }
    std::vector<std::string> shown() {
        std::vector<std::string> texts;
        for (const auto& message : host_.messages().shown()) {
            EXPECT_EQ(message.display, 999999);
            texts.push_back(cutroom::toUtf8(message.text));
        }
        return texts;
    }
    bool noted() const { return std::count(log_.lines.begin(), log_.lines.end(), kNote) == 1; }

    EditPtr edit_;
    const IdStamp video_ = edit_->getId(0);
    Kv::Ptr<Vob> vob_;
};

struct Row {
    const char* name;
    const char *check, *fix, *silent; // "": not configured
    bool repaired, reported, logged;
};

class VobSubframeConfiguration : public VobSubframe, public testing::WithParamInterface<Row> {};

} // namespace

TEST_P(VobSubframeConfiguration, SaysWhatIsCheckedRepairedAndShown) {
    const Row& row = GetParam();
    const std::pair<const char*, std::string> values[] = {
        {"check_quantise", row.check},
        {"auto_fix_subframe_errors", row.fix},
        {"disable_subframe_warnings", row.silent}};
    auto& configuration = cutroom::Configuration::instance();
    for (const auto& [key, value] : values)
        if (!value.empty())
            configuration.set(key, value);
    view();
    configuration.set("disable_subframe_warnings", *row.silent == '1' ? "0" : "1"); // too late
    vob_->checkQuantisation();
    const double left = row.repaired ? 0 : kOff;
    EXPECT_THAT(cuts(), ElementsAre(0, 2 + left, 4 + left));
    EXPECT_THAT(shown(), SizeIs(row.reported ? 1 : 0));
    EXPECT_EQ(noted(), row.logged);
    for (const auto& [key, value] : values)
        configuration.set(key, value == "0" ? "1" : "0"); // all too late
    vob_->checkQuantisation();                            // when what was repaired is so
    EXPECT_THAT(cuts(), ElementsAre(0, 2 + left, 4 + left));
    EXPECT_THAT(shown(), SizeIs(row.reported ? (row.repaired ? 1 : 2) : 0));
}

INSTANTIATE_TEST_SUITE_P(Rows, VobSubframeConfiguration,
                         testing::Values(Row{"byDefault", "", "", "", true, true, true},
                                         Row{"unchecked", "0", "1", "0", false, false, false},
                                         Row{"reportedOnly", "1", "0", "0", false, true, false},
                                         Row{"inSilence", "1", "1", "1", true, false, true},
                                         Row{"neither", "1", "0", "1", false, false, false}),
                         [](const auto& row) { return row.param.name; });

TEST_F(VobSubframe, ReportsEachChannelByGroupAndPlace) {
    layClip(edit_, edit_->getId(2), 3 + kOff, 5);
    const IdStamp derived = edit_->addChan(kChanVideo, kSubDerived);
    const IdStamp subtitles = edit_->addChan(kChanSubtitle); // neither picture nor sound
    for (const IdStamp& channel : {derived, subtitles}) {
        layClip(edit_, channel, 1, 2);
        layClip(edit_, channel, 2 + kOff, 3);
    }
    edit_->groupChannels({edit_->getId(2), edit_->getId(3)}, true);
    edit_->setChanUserName(video_, L"$TIMECODE$");
    // The same material continues over this cut, so it is removed when all points are on frames.
    ASSERT_TRUE(edit_->get_edit_cel_p(0)->split(cutroom::toFlicks(3 + kOff)).ok());
    view();
    vob_->checkQuantisation();
    EXPECT_THAT(shown(), ElementsAre("$TIMECODE$ has a cut off the frame boundary at 00:00:02:00\n"
                                     "V2 has a cut off the frame boundary at 00:00:02:00\n"
                                     "A1, A2 has a cut off the frame boundary at 00:00:03:00"));
    EXPECT_THAT(cuts(0), ElementsAre(0, 2, 4));
    EXPECT_THAT(cuts(1), Contains(2 + kOff)); // the derived one stays as it is
    EXPECT_THAT(cuts(3), ElementsAre(0, 3, 5));
}

TEST_F(VobSubframe, TakesTheFirstAndTheLastPointAsTheyAre) {
    for (const auto& [from, to] : {std::pair(0.0, 10 + kOff), std::pair(kOff, 10.0)}) {
        edit_->get_edit_cel_p(0)->clear();
        layClip(edit_, video_, from, to);
        view();
        vob_->checkQuantisation();
        EXPECT_THAT(shown(), IsEmpty());
        EXPECT_THAT(cuts(), ElementsAre(from));
    }
}

TEST_F(VobSubframe, ShowsTimecodeAsTheProjectCounts) {
    const TempFolder folder;
    ASSERT_TRUE(CurrentProject::open(folder / "p", CurrentProject::Access::readWrite,
                                     CurrentProject::IfMissing::create));
    ProjectDefaults defaults = CurrentProject::getDefaults();
    defaults.frameRate = {30000, 1001};
    defaults.dropFrame = true;
    ASSERT_TRUE(CurrentProject::setDefaults(defaults));
    edit_->setFrameRate(defaults.frameRate);
    edit_->get_edit_cel_p(0)->clear();
    layClip(edit_, video_, 0, 70.001);
    layClip(edit_, video_, 70.001, 80.08);
    view();
    vob_->checkQuantisation();
    EXPECT_THAT(shown(), ElementsAre(testing::HasSubstr("V1 has a cut off the frame boundary at "
                                                        "00:01:09;29")));
    vob_.reset();
    edit_.reset();
    EXPECT_TRUE(CurrentProject::close());
}

TEST_F(VobSubframe, OperationsThatFailOrMayNotBeAreNotChecked) {
    view();
    int calls = 0;
    const auto fails = [&](const EditModifier&) {
        ++calls;
        return cutroom::Status(cutroom::StatusCode::failed, "it", "fails");
    };
    EXPECT_EQ(vob_->performEdit(fails).message(), "fails");
    vob_->setStatus(0);
    EXPECT_FALSE(vob_->performEdit(fails));
    vob_->setStatus(Vob::kStatusRecord);
    edit_->setReadOnly(true);
    EXPECT_FALSE(vob_->performEdit(fails));
    EXPECT_FALSE(openNothing()->performEdit(fails));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_THAT(cuts(), Contains(2 + kOff));
}
