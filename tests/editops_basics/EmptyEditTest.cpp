#include "editops/basics/EmptyEdit.h"
#include "editops/basics/StereoPairs.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/files/KvIniFile.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/AudIO.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using cutroom::test::LogLines;
using cutroom::test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class EmptyEdit : public testing::Test {
protected:
    EmptyEdit() : host_(EmbeddedHost::repeatable()) {}

    static EditModifier make(unsigned char audio = 4) {
        return createEmptyEdit(Cookie(), L"", 1, audio, 1, Kv::FrameRate(25, 1));
    }
    // The pairs, as indices within the audio channels: "01 23".
    static std::string groups(const EditPtr& edit) {
        const auto list = edit->openObjectInternal();
        std::string text;
        for (std::size_t i = 0; i < list->size(); ++i) {
            text += text.empty() ? "" : " ";
            for (const IdStamp& channel : list->getGroupContents(i))
                text += std::to_string(edit->getIndexWithinType(channel));
        }
        return text;
    }

    // A project whose new edits take their mix from that file.
    void openProject(const char* mix) {
        ASSERT_TRUE(CurrentProject::open(folder_ / "p", CurrentProject::Access::readWrite,
                                         CurrentProject::IfMissing::create));
        ProjectDefaults defaults = CurrentProject::getDefaults();
        defaults.mixConfiguration = mix;
        ASSERT_TRUE(CurrentProject::setDefaults(defaults));
    }

    TempFolder folder_;
    LogLines log_;
    EmbeddedHost host_;
};

} // namespace

TEST_F(EmptyEdit, TakesTheCookieGivenOnce) {
    const Cookie cookie('E', 77);
    const EditModifier named = createEmptyEdit(cookie, L"Reel", 2, 3, 1, {30, 1});
    EXPECT_EQ(named.getCookie(), cookie);
    EXPECT_EQ(named->getFrameRate(), Kv::FrameRate(30, 1));
    EXPECT_FALSE(createEmptyEdit(cookie, L"", 1, 1, 1, {}));
    EXPECT_FALSE(createEmptyEdit(Cookie('G', 1), L"", 1, 1, 1, {}));
    EXPECT_THAT(log_.lines, IsEmpty()); // no project, no mix to be missed
}

TEST_F(EmptyEdit, ThePairsFollowTheConfigurationUntilThePreferenceIsSet) {
    Configuration::instance().set("auto_stereo_pairs", "0");
    EXPECT_FALSE(getAutoGroupEditAudioTracks());
    setAutoGroupEditAudioTracks(true);
    EXPECT_TRUE(EditorPreferences::getPreference("New edit stereo pairs", false));
    EXPECT_TRUE(getAutoGroupEditAudioTracks());
}

TEST_F(EmptyEdit, TakesTheProjectsMixAndPansItsPairs) {
    openProject("mix.ini");
    KvIniFile file(folder_ / "p/mix.ini");
    Aud::SimpleMixState wanted(8);
    wanted.setInputLevel(1, 0.25F);
    wanted.writeConfigurationInformation(file);
    ASSERT_TRUE(file.save());
    const auto mix = make(2)->getAudioMix();
    EXPECT_EQ(mix->numInputs(), 2u);
    EXPECT_EQ(mix->getInputLevel(1), 0.25F);
    EXPECT_EQ(mix->getInputPan(1), 1.0F);
    EXPECT_THAT(log_.lines, IsEmpty());
    EXPECT_TRUE(CurrentProject::close());
}

TEST_F(EmptyEdit, AMissingMixConfigurationIsLoggedAndLeavesTheDefaults) {
    openProject("gone.ini");
    EXPECT_TRUE(make()->getAudioMix()->valid());
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("gone.ini")));
    EXPECT_TRUE(CurrentProject::close());
}

TEST_F(EmptyEdit, PairsGoInTheOrderGivenAndTellTheirKinds) {
    setAutoGroupEditAudioTracks(false);
    EditModifier edit = make(4);
    edit->setAudioMix({}); // not valid: no panning
    const auto audio = edit->getChans(kChanAudio);
    const EditPtr plain = edit;
    edit.release();
    std::vector<std::string> told;
    const auto guard = EditManager::instance().registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& m) {
            told.push_back(m.getObjectAs<EditModificationNotice>()->modifications().asString());
        }),
        kNoticeModifications);
    makeStereoPairs(plain, {audio[3], audio[0], audio[2]});
    EXPECT_EQ(groups(plain), "30");
    EXPECT_FALSE(plain->getAudioMix() && plain->getAudioMix()->valid());
    makeStereoPairs(EditPtr(), {});
    EXPECT_THAT(told, ElementsAre("5 27", "5"));
    const IdStamp none(9, 9, 9);
    makeStereoPairs(plain, {audio[3], audio[3], none, audio[0]});
    plain->groupChannels({audio[0], none}, true);
    EXPECT_EQ(groups(plain), "30") << "these are no pairs";
}

TEST_F(EmptyEdit, TheNumberOfPairedChannelsIsABytes) {
    setAutoGroupEditAudioTracks(false);
    const EditModifier edit = make(255);
    std::vector<IdStamp> ids = edit->getChans(kChanAudio);
    ids.push_back(edit->addChan(kChanAudio)); // 256: none
    makeStereoPairs(edit, ids);
    EXPECT_EQ(groups(edit), "");
    ids.push_back(edit->addChan(kChanAudio));
    ids.push_back(edit->addChan(kChanAudio)); // 258: two
    makeStereoPairs(edit, ids);
    EXPECT_EQ(groups(edit), "01");
}
