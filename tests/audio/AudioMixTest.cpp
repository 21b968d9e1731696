// Reading and writing the mix of an edit, and what is told of it.
#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "platform/files/KvIniFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/AudIO.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using cutroom::test::makeEdit;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// An edit in a project of its own, and the mix changes told of it.
class AudioMixTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(CurrentProject::open(temp_ / "p", CurrentProject::Access::readWrite,
                                         CurrentProject::IfMissing::create)
                        .ok());
        edit_ = makeEdit(1, 4);
        guard_ = EditManager::instance().registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) { take(message); }),
            kNoticeModifications);
    }
    void TearDown() override {
        guard_.reset();
        edit_.reset();
        EXPECT_TRUE(EditManager::instance().handleProjectExit().ok());
        EXPECT_TRUE(CurrentProject::close().ok());
    }
    void take(const NotifyMsg& message) {
        const auto* const notice = message.getObjectAs<EditModificationNotice>();
        if (!notice || !notice->modifications().includes(kModAudioMix))
            return;
        bool coded = false;
        for (const EditModification& one : notice->modifications().details())
            if (one.kind == kModAudioMix && one.detail != 0) {
                told_.push_back(std::to_string(one.detail) + " " + one.track.asString());
                coded = true;
            }
        if (!coded)
            told_.push_back("plain");
    }
    std::string channelText(int index) const {
        return edit_->getChans(kChanAudio).at(static_cast<std::size_t>(index)).asString();
    }

    cutroom::test::TempFolder temp_;
    EditPtr edit_;
    Kv::Ptr<Guard> guard_;
    std::vector<std::string> told_;
};

TEST_F(AudioMixTest, readsDefaultsWithoutAMix) {
    for (const EditPtr& edit : {edit_, EditPtr()}) {
        const AudioMixReader reader(edit);
        EXPECT_FALSE(reader.valid());
        EXPECT_EQ(reader.getChannelLevel(0), 1.0f);
        EXPECT_EQ(reader.getChannelPan(3), 0.5f);
        EXPECT_FALSE(reader.getChannelMuteState(0) || reader.getChannelSoloState(0));
        EXPECT_TRUE(reader.getChannelRoutedToMix(3, -1));
        EXPECT_FALSE(reader.getChannelRoutedToMix(3, 0));
        EXPECT_EQ(reader.getMixLevel(-1), 1.0f);
        EXPECT_FALSE(reader.getMixMuteState(-1) || reader.getMixSoloState(0));
        EXPECT_TRUE(reader.getMixRoutedToOutput(-1, 5, true));
        EXPECT_FALSE(reader.getMixRoutedToOutput(0, 0, false));
        EXPECT_FALSE(reader.anyChannelSolo() || reader.anyMixSolo());
    }
    EXPECT_FALSE(edit_->getAudioMix()) << "reading makes none";
}

struct SetterCase {
    const char* name;
    unsigned code;
    int channel; // the channel named, or -1
    int mix;     // the mix named, when no channel is
    std::function<void(AudioMixWriter&)> set;
    std::function<bool(const AudioMixReader&)> isSet;
};

class MixSetters : public AudioMixTest, public testing::WithParamInterface<SetterCase> {};

TEST_P(MixSetters, makeTheMixTellOnceAndStaySilentWhenEqual) {
    const SetterCase& row = GetParam();
    const std::string id =
        row.channel >= 0
            ? channelText(row.channel)
            : AudioMixWriter::makeIDForMix(static_cast<signed char>(row.mix)).asString();
    {
        AudioMixWriter writer(edit_, "test");
        row.set(writer);
        row.set(writer);
    }
    EXPECT_THAT(told_, ElementsAre(std::to_string(row.code) + " " + id));
    EXPECT_TRUE(row.isSet(AudioMixReader(edit_)));
    AudioMixWriter again(edit_, "test");
    row.set(again);
    again.release();
    EXPECT_EQ(told_.size(), 1u);
}

using W = AudioMixWriter;
using R = AudioMixReader;
INSTANTIATE_TEST_SUITE_P(
    AudioMix, MixSetters,
    testing::Values(
        SetterCase{"level", 1, 2, 0, [](W& w) { w.setChannelLevel(2, 0.5f); },
                   [](const R& r) { return r.getChannelLevel(2) == 0.5f; }},
        SetterCase{"pan", 2, 0, 0, [](W& w) { w.setChannelPan(0, 0.0f); },
                   [](const R& r) { return r.getChannelPan(0) == 0.0f; }},
        SetterCase{"solo", 3, 1, 0, [](W& w) { w.setChannelSoloState(1, true); },
                   [](const R& r) { return r.getChannelSoloState(1) && r.anyChannelSolo(); }},
        SetterCase{"mute", 4, 3, 0, [](W& w) { w.setChannelMuteState(3, true); },
                   [](const R& r) { return r.getChannelMuteState(3); }},
        SetterCase{"routing", 5, 0, 0, [](W& w) { w.setChannelRoutedToMix(0, -1, false); },
                   [](const R& r) { return !r.getChannelRoutedToMix(0, -1); }},
        SetterCase{"mixLevel", 6, -1, -1, [](W& w) { w.setMixLevel(-1, -0.0f); },
                   [](const R& r) { return std::signbit(r.getMixLevel(-1)); }},
        SetterCase{"mixSolo", 7, -1, 124, [](W& w) { w.setMixSoloState(124, true); },
                   [](const R& r) { return r.getMixSoloState(124) && r.anyMixSolo(); }},
        SetterCase{"mixMute", 8, -1, 0, [](W& w) { w.setMixMuteState(0, true); },
                   [](const R& r) { return r.getMixMuteState(0); }},
        SetterCase{"mixRouting", 9, -1, 3, [](W& w) { w.setMixRoutedToOutput(3, 7, true, true); },
                   [](const R& r) {
                       return r.getMixRoutedToOutput(3, 7, true) &&
                              !r.getMixRoutedToOutput(3, 7, false);
                   }}),
    [](const auto& row) { return row.param.name; });

TEST_F(AudioMixTest, makesNoMixForValuesThatAreEqualOrRefused) {
    for (const bool hasMix : {false, true}) {
        if (hasMix)
            Aud::IO::initialiseAudioMix(EditModifier(edit_));
        told_.clear();
        const std::uint64_t changes = edit_->changeCount();
        AudioMixWriter writer(edit_, "test");
        writer.setChannelLevel(0, std::numeric_limits<float>::quiet_NaN());
        writer.setChannelPan(0, 2.0f);
        writer.setMixMuteState(-2, true);
        writer.setMixRoutedToOutput(-1, -1, false, false);
        writer.setChannelLevel(3, 1.0f);
        writer.setChannelRoutedToMix(0, -1, true);
        writer.setMixRoutedToOutput(-1, 0, true, true);
        writer.release();
        EXPECT_THAT(told_, IsEmpty());
        EXPECT_EQ(edit_->changeCount(), changes);
        EXPECT_EQ(AudioMixReader(edit_).valid(), hasMix);
    }
}

TEST_F(AudioMixTest, toleratesNoEditAndUnknownChannels) {
    AudioMixWriter nobody(EditPtr(), "test");
    nobody.setChannelLevel(0, 0.5f);
    nobody.setMixLevel(-1, 0.5f);
    nobody.loadFrom(KvIniFile());
    AudioMixWriter writer(edit_, "test");
    for (const int channel : {4, 254, 255})
        writer.setChannelMuteState(static_cast<unsigned char>(channel), true);
    writer.release();
    EXPECT_THAT(told_, ElementsAre("4 0.0.0", "4 0.0.0", "4 0.0.0")) << "no channel is named";
}

TEST(AudioMixWriter, namesMixesByID) {
    EXPECT_EQ(AudioMixWriter::makeIDForMix(-1), IdStamp(2, 2, 2));
    for (int mix = -1; mix <= 124; ++mix)
        EXPECT_EQ(AudioMixWriter::getMixFromID(
                      AudioMixWriter::makeIDForMix(static_cast<signed char>(mix))),
                  mix);
}

TEST_F(AudioMixTest, loadsWhatAFileHasForIt) {
    KvIniFile file(temp_ / "mix.ini");
    ASSERT_TRUE(
        file.parse("[Mix]\nVersion=1\nInputs=9\n[Input 3]\nMute=1\n[Input 8]\nMute=1\n", "mix.ini")
            .ok());
    ASSERT_TRUE(file.save());
    AudioMixWriter writer(edit_, "test");
    writer.loadFrom(cutroom::toWide(temp_ / "mix.ini"));
    writer.release();
    EXPECT_TRUE(AudioMixReader(edit_).getChannelMuteState(3));
    EXPECT_FALSE(AudioMixReader(edit_).getChannelMuteState(8));
    EXPECT_THAT(told_, ElementsAre("plain"));
    AudioMixWriter missing(edit_, "test");
    missing.loadFrom(cutroom::toWide(temp_ / "none.ini"));
    missing.release();
    EXPECT_THAT(told_, ElementsAre("plain", "plain")) << "told whatever the file held";
}

TEST_F(AudioMixTest, writesToTheMixThatAnUndoPutInPlace) {
    AudioMixWriter writer(edit_, "test");
    writer.setChannelLevel(0, 0.5f);
    EditManager::instance().makeBackup(edit_, "level");
    writer.setChannelLevel(0, 0.25f);
    ASSERT_TRUE(EditManager::instance().undo(edit_));
    EXPECT_EQ(AudioMixReader(edit_).getChannelLevel(0), 0.5f);
    writer.setChannelPan(0, 1.0f);
    EXPECT_EQ(AudioMixReader(edit_).getChannelPan(0), 1.0f);
}

TEST_F(AudioMixTest, appliesConfigurationFilesOnRequestOnly) {
    KvIniFile file;
    ASSERT_TRUE(file.parse("[Mix]\nVersion=1\nInputs=1\n[Input 0]\nPan=0\n", "mix.ini").ok());
    EXPECT_FALSE(Aud::IO::applyConfigurationInformationToEdit(edit_, file, false));
    EXPECT_FALSE(edit_->getAudioMix());
    EXPECT_TRUE(Aud::IO::applyConfigurationInformationToEdit(edit_, file, true));
    EXPECT_EQ(AudioMixReader(edit_).getChannelPan(0), 0.0f);
    EXPECT_FALSE(Aud::IO::applyConfigurationInformationToEdit(EditPtr(), file, true));
}

TEST_F(AudioMixTest, findsTheProjectsDefaultConfiguration) {
    EXPECT_EQ(Aud::IO::getProjectDefaultMixConfigFilenameForEdits(edit_.getCookie()), L"");
    ProjectDefaults defaults = CurrentProject::getDefaults();
    defaults.mixConfiguration = "stage.ini";
    ASSERT_TRUE(CurrentProject::setDefaults(defaults).ok());
    EXPECT_EQ(Aud::IO::getProjectDefaultMixConfigFilenameForEdits(edit_.getCookie()),
              cutroom::toWide(temp_ / "p/stage.ini"));
}

} // namespace
