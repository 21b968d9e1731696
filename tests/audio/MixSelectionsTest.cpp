// The selection of channels and the mutes of the mix.
#include "audio/MixSelections.h"
#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/EditModule.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class MixSelectionsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(CurrentProject::open(temp_ / "p", CurrentProject::Access::readWrite,
                                         CurrentProject::IfMissing::create)
                        .ok());
        edit_ = cutroom::test::makeEdit(1, 3);
        channels_ = edit_->getChans(kChanAudio);
        module_ = EditModule(edit_);
    }
    void TearDown() override {
        PermissionsManager::instance().setCurrentUser("");
        module_ = EditModule();
        edit_.reset();
        EXPECT_TRUE(EditManager::instance().handleProjectExit().ok());
        EXPECT_TRUE(CurrentProject::close().ok());
    }
    // One letter for each audio channel.
    std::string muted() const {
        std::string text;
        for (unsigned char i = 0; i < 3; ++i)
            text += AudioMixReader(edit_).getChannelMuteState(i) ? 'm' : '-';
        return text;
    }
    std::string selected() const {
        std::string text;
        for (const IdStamp& channel : channels_)
            text += module_.isSelected(channel) ? 's' : '-';
        return text;
    }

    cutroom::test::TempFolder temp_;
    EditPtr edit_;
    std::vector<IdStamp> channels_;
    EditModule module_;
};

TEST_F(MixSelectionsTest, mutesWhatIsNotSelected) {
    updateAudioMixFromSelections(module_);
    EXPECT_FALSE(edit_->getAudioMix()) << "nothing to mute, no mix";
    module_.selectChan(channels_[1], false);
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(muted(), "-m-");
    const std::uint64_t changes = edit_->changeCount();
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(edit_->changeCount(), changes) << "written only when different";
    module_.selectAll(false);
    module_.selectChan(channels_[1], true);
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(muted(), "m-m");
    EXPECT_FALSE(EditManager::instance().canUndo(edit_));
}

TEST_F(MixSelectionsTest, selectsWhatIsNotMuted) {
    module_.selectChan(channels_[0], false);
    EXPECT_FALSE(selectTracksFromAudioMix(module_)) << "no mix says nothing";
    EXPECT_EQ(selected(), "-ss");
    AudioMixWriter(edit_, "test").setChannelMuteState(2, true);
    EXPECT_TRUE(selectTracksFromAudioMix(module_));
    EXPECT_EQ(selected(), "ss-");
    EXPECT_FALSE(selectTracksFromAudioMix(module_));
    EXPECT_TRUE(module_.isSelected(edit_->getChans(kChanVideo)[0])) << "pictures stay";
}

TEST_F(MixSelectionsTest, leavesEditsAloneThatMayNotBeWritten) {
    module_.selectChan(channels_[0], false);
    edit_->setReadOnly(true);
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(muted(), "---");
    edit_->setReadOnly(false);
    PermissionsManager& permissions = PermissionsManager::instance();
    permissions.setCurrentUser("ann");
    ASSERT_TRUE(permissions.lock(edit_.getCookie()).ok());
    permissions.setCurrentUser("bob");
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(muted(), "---");
    permissions.setCurrentUser("ann");
    updateAudioMixFromSelections(module_);
    EXPECT_EQ(muted(), "m--");
}

TEST_F(MixSelectionsTest, toleratesNoEdit) {
    EditModule nothing;
    updateAudioMixFromSelections(nothing);
    EXPECT_FALSE(selectTracksFromAudioMix(nothing));
}

} // namespace
