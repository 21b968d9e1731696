// The mix of an edit: reading, writing, what is told of it, and the selection of its channels.
#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "audio/MixSelections.h"
#include "platform/files/KvIniFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/AudIO.h"
#include "platform/store/EditModule.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// What is told of the mix: code and "A2", the number of a mix or "none"; "plain" without a code.
class AudioMixTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(CurrentProject::open(temp_ / "p", CurrentProject::Access::readWrite,
                                         CurrentProject::IfMissing::create)
                        .ok());
        edit_ = cutroom::test::makeEdit(1, 4);
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
        const auto& told = message.getObjectAs<EditModificationNotice>()->modifications();
        const std::size_t before = told_.size();
        for (const EditModification& one : told.details())
            if (one.kind == kModAudioMix && one.detail != 0)
                told_.push_back(std::to_string(one.detail) + " " + nameOf(one.track));
        if (told.includes(kModAudioMix) && told_.size() == before)
            told_.push_back("plain");
    }

    std::string nameOf(const IdStamp& track) const {
        if (edit_->isValidChan(track))
            return cutroom::toUtf8(edit_->getChanDisplayName(track));
        return track.valid() ? std::to_string(AudioMixWriter::getMixFromID(track)) : "none";
    }

    // A letter for each audio channel.
    std::string muted() const {
        std::string text;
        for (unsigned char i = 0; i < 4; ++i)
            text += AudioMixReader(edit_).getChannelMuteState(i) ? 'm' : '-';
        return text;
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

TEST_F(AudioMixTest, settersMakeTheMixTellOnceAndStaySilentWhenEqual) {
    using W = AudioMixWriter;
    using R = AudioMixReader;
    const struct {
        const char* told;
        void (*set)(W&);
        bool (*isSet)(const R&);
    } rows[] = {
        {"1 A3", [](W& w) { w.setChannelLevel(2, 0.5f); },
         [](const R& r) { return r.getChannelLevel(2) == 0.5f; }},
        {"2 A1", [](W& w) { w.setChannelPan(0, 0.0f); },
         [](const R& r) { return r.getChannelPan(0) == 0.0f; }},
        {"3 A2", [](W& w) { w.setChannelSoloState(1, true); },
         [](const R& r) { return r.getChannelSoloState(1) && r.anyChannelSolo(); }},
        {"4 A4", [](W& w) { w.setChannelMuteState(3, true); },
         [](const R& r) { return r.getChannelMuteState(3); }},
        {"5 A1", [](W& w) { w.setChannelRoutedToMix(0, -1, false); },
         [](const R& r) { return !r.getChannelRoutedToMix(0, -1); }},
        {"6 -1", [](W& w) { w.setMixLevel(-1, 0.0f); },
         [](const R& r) { return r.getMixLevel(-1) == 0.0f; }},
        {"7 124", [](W& w) { w.setMixSoloState(124, true); },
         [](const R& r) { return r.getMixSoloState(124) && r.anyMixSolo(); }},
        {"8 0", [](W& w) { w.setMixMuteState(0, true); },
         [](const R& r) { return r.getMixMuteState(0); }},
        {"9 3", [](W& w) { w.setMixRoutedToOutput(3, 7, true, true); },
         [](const R& r) {
             return r.getMixRoutedToOutput(3, 7, true) && !r.getMixRoutedToOutput(3, 7, false);
         }},
        {"4 none", [](W& w) { w.setChannelMuteState(255, true); },
         [](const R& r) { return r.getChannelMuteState(255); }},
        {"4 none", [](W& w) { w.setChannelMuteState(254, true); },
         [](const R& r) { return r.getChannelMuteState(254); }},
    };
    for (const auto& row : rows) {
        edit_ = cutroom::test::makeEdit(1, 4);
        told_.clear();
        for (int i = 0; i < 2; ++i) {
            AudioMixWriter writer(edit_, "test");
            row.set(writer);
            row.set(writer);
        }
        EXPECT_THAT(told_, ElementsAre(row.told));
        EXPECT_TRUE(row.isSet(AudioMixReader(edit_))) << row.told;
    }
}

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
    EXPECT_TRUE(AudioMixReader(edit_).getChannelMuteState(3));
    EXPECT_FALSE(AudioMixReader(edit_).getChannelMuteState(8));
    writer.loadFrom(cutroom::toWide(temp_ / "none.ini"));
    writer.release();
    EXPECT_THAT(told_, ElementsAre("plain", "plain")) << "told whatever the file held";
    AudioMixWriter nobody(EditPtr(), "test");
    nobody.setMixLevel(-1, 0.5f);
    nobody.loadFrom(file);
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
    EXPECT_EQ(AudioMixReader(edit_).getChannelLevel(0), 0.5f);
    writer.setMixLevel(-1, 0.0f);
    writer.setMixLevel(-1, -0.0f);
    EXPECT_TRUE(std::signbit(AudioMixReader(edit_).getMixLevel(-1))) << "another value to the bit";
}

// --- the selection of channels -------------------------------------------------------------------

TEST_F(AudioMixTest, mutesWhatIsNotSelected) {
    updateAudioMixFromSelections(EditModule());
    EditModule module(edit_);
    updateAudioMixFromSelections(module);
    EXPECT_FALSE(edit_->getAudioMix()) << "nothing to mute, no mix";
    const auto channels = edit_->getChans(kChanAudio);
    module.selectChan(channels[1], false);
    updateAudioMixFromSelections(module);
    updateAudioMixFromSelections(module);
    module.selectAll(false);
    module.selectChan(channels[1], true);
    updateAudioMixFromSelections(module);
    EXPECT_EQ(muted(), "m-mm");
    EXPECT_THAT(told_, ElementsAre("4 A2", "4 A1", "4 A2", "4 A3", "4 A4"));
    EXPECT_FALSE(EditManager::instance().canUndo(edit_));
}

TEST_F(AudioMixTest, selectsWhatIsNotMuted) {
    EditModule nothing;
    EXPECT_FALSE(selectTracksFromAudioMix(nothing));
    EditModule module(edit_);
    const auto channels = edit_->getChans();
    const auto isSelected = [&](const IdStamp& channel) { return module.isSelected(channel); };
    module.selectChan(channels[1], false);
    EXPECT_FALSE(selectTracksFromAudioMix(module)) << "no mix says nothing";
    EXPECT_FALSE(isSelected(channels[1]));
    AudioMixWriter(edit_, "test").setChannelMuteState(2, true);
    EXPECT_TRUE(selectTracksFromAudioMix(module));
    EXPECT_EQ(std::count_if(channels.begin(), channels.end(), isSelected), 4);
    EXPECT_FALSE(isSelected(channels[3]));
    EXPECT_FALSE(selectTracksFromAudioMix(module));
}

TEST_F(AudioMixTest, leavesEditsAloneThatMayNotBeWritten) {
    EditModule module(edit_);
    module.selectChan(edit_->getFirstChan(kChanAudio), false);
    PermissionsManager& permissions = PermissionsManager::instance();
    permissions.setCurrentUser("ann");
    ASSERT_TRUE(permissions.lock(edit_.getCookie()).ok());
    for (const auto& [readOnly, user, mutes] :
         {std::tuple(true, "ann", "----"), {false, "bob", "----"}, {false, "ann", "m---"}}) {
        edit_->setReadOnly(readOnly);
        permissions.setCurrentUser(user);
        updateAudioMixFromSelections(module);
        EXPECT_EQ(muted(), mutes);
    }
    permissions.setCurrentUser("");
}

} // namespace
