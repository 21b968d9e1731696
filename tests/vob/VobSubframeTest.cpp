#include "platform/prefs/Configuration.h"
#include "platform/project/CurrentProject.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kNote[] = "Note: Subframe edit automatically repaired.\n";
constexpr double kOff = 0.013;

class VobSubframe : public VobFixture {
protected:
    // V1 is cut at 2 and 4 seconds, both off the frame by some milliseconds.
    VobSubframe() : edit_(makeEdit(10, 1, 2)) {
        layClip(edit_, edit_->getId(0), 2 + kOff, 4 + kOff);
    }
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
    Kv::Ptr<Vob> vob_;
};

struct Row {
    const char* name;
    int check, fix, silent;
    bool repaired, reported, logged;
};

class VobSubframeConfiguration : public VobSubframe, public testing::WithParamInterface<Row> {};

} // namespace

TEST_P(VobSubframeConfiguration, SaysWhatIsCheckedRepairedAndShown) {
    const Row& row = GetParam();
    auto& configuration = cutroom::Configuration::instance();
    if (row.check >= 0)
        configuration.set("check_quantise", std::to_string(row.check));
    configuration.set("auto_fix_subframe_errors", std::to_string(row.fix));
    configuration.set("disable_subframe_warnings", std::to_string(row.silent));
    view();
    configuration.set("disable_subframe_warnings", std::to_string(1 - row.silent)); // too late
    vob_->checkQuantisation();
    const double left = row.repaired ? 0 : kOff;
    EXPECT_THAT(cuts(), ElementsAre(0, 2 + left, 4 + left));
    EXPECT_EQ(shown().size(), row.reported ? 1u : 0u);
    EXPECT_EQ(noted(), row.logged);
    configuration.set("check_quantise", std::to_string(row.check == 0)); // too late, too
    configuration.set("auto_fix_subframe_errors", std::to_string(1 - row.fix));
    vob_->checkQuantisation(); // again, when nothing is left to repair
    EXPECT_THAT(cuts(), ElementsAre(0, 2 + left, 4 + left));
    EXPECT_EQ(shown().size(), row.reported ? (row.repaired ? 1u : 2u) : 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, VobSubframeConfiguration,
                         testing::Values(Row{"byDefault", -1, 1, 0, true, true, true},
                                         Row{"unchecked", 0, 1, 0, false, false, false},
                                         Row{"reportedOnly", 1, 0, 0, false, true, false},
                                         Row{"inSilence", 1, 1, 1, true, false, true},
                                         Row{"neither", 1, 0, 1, false, false, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobSubframe, ReportsEachChannelByGroupAndPlace) {
    layClip(edit_, edit_->getId(2), 3 + kOff, 5);
    const IdStamp derived = edit_->addChan(kChanVideo, kSubDerived);
    layClip(edit_, derived, 1, 2);
    layClip(edit_, derived, 2 + kOff, 3);
    layClip(edit_, edit_->addChan(kChanSubtitle), 2 + kOff, 3); // neither picture nor sound
    edit_->groupChannels({edit_->getId(2), edit_->getId(3)}, true);
    edit_->setChanUserName(edit_->getId(0), L"$TIMECODE$");
    // The material runs on over this cut, which goes when all are on frames.
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
    const auto cel = edit_->get_edit_cel_p(0);
    cel->clear();
    for (const auto& [from, to] : {std::pair(0.0, 10 + kOff), std::pair(kOff, 10.0)}) {
        layClip(edit_, edit_->getId(0), from, to);
        view();
        vob_->checkQuantisation();
        EXPECT_THAT(shown(), IsEmpty());
        EXPECT_THAT(cuts(), ElementsAre(from));
        cel->clear();
    }
}

TEST_F(VobSubframe, ShowsTimecodeAsTheProjectCounts) {
    TempFolder folder;
    ASSERT_TRUE(CurrentProject::open(folder.path() + "/p", CurrentProject::Access::readWrite,
                                     CurrentProject::IfMissing::create)
                    .ok());
    ProjectDefaults defaults = CurrentProject::getDefaults();
    defaults.frameRate = {30000, 1001};
    defaults.dropFrame = true;
    ASSERT_TRUE(CurrentProject::setDefaults(defaults).ok());
    edit_->setFrameRate(defaults.frameRate);
    edit_->get_edit_cel_p(0)->clear();
    layClip(edit_, edit_->getId(0), 0, 70.001);
    layClip(edit_, edit_->getId(0), 70.001, 80.08);
    view();
    vob_->checkQuantisation();
    EXPECT_THAT(shown(), Contains(testing::HasSubstr("V1 has a cut off the frame boundary at "
                                                     "00:01:09;29")));
    vob_.reset();
    edit_.reset();
    EXPECT_TRUE(CurrentProject::close().ok());
}

// --- operations performed through the Vob --------------------------------------------------------

TEST_F(VobSubframe, OperationsAreCheckedAndToldWithTheirRepair) {
    edit_->get_edit_cel_p(0)->clear();
    layClip(edit_, edit_->getId(0), 0, 10);
    view();
    vob_->checkQuantisation();
    edit_->addModification(kModEventsAdded, true);
    RecorderClient client(vob_.get(), calls_, "a");
    const auto layOff = [&](const EditModifier& edit) {
        layClip(edit, edit->getId(0), 2 + kOff, 4, 9);
        return cutroom::Status();
    };
    EXPECT_TRUE(vob_->performEdit(layOff, "lay").ok());
    EXPECT_THAT(cuts(), ElementsAre(0, 2, 4));
    EXPECT_EQ(shown().size(), 1u);
    EXPECT_TRUE(noted());
    EXPECT_THAT(calls_, ElementsAre("a: edit 1 7 change 0"));
}

TEST_F(VobSubframe, OperationsThatFailOrMayNotBeAreNotChecked) {
    view();
    const auto fails = [](const EditModifier&) {
        return cutroom::Status(cutroom::StatusCode::failed, "it", "fails");
    };
    EXPECT_EQ(vob_->performEdit(fails).message(), "fails");
    vob_->setStatus(0);
    int calls = 0;
    const auto counts = [&](const EditModifier&) {
        ++calls;
        return cutroom::Status();
    };
    EXPECT_FALSE(vob_->performEdit(counts).ok());
    vob_->setStatus(Vob::kStatusRecord);
    edit_->setReadOnly(true);
    EXPECT_FALSE(vob_->performEdit(counts).ok());
    EXPECT_FALSE(openNothing()->performEdit(counts).ok());
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_THAT(cuts(), Contains(2 + kOff));
}
