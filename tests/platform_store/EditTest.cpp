#include "StoreFixture.h"
#include "platform/messaging/UIThreadCallback.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/EditModule.h"

#include <thread>

using namespace cutroom;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class EditTest : public cutroom::test::StoreFixture {
protected:
    // What notice 22 tells of, as the kinds in ascending order.
    void listen() {
        guard_ = manager().registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
                const auto* notice = message.getObjectAs<EditModificationNotice>();
                told_.push_back(notice->modifications().asString());
                details_ = notice->modifications().details();
                if (reading_)
                    std::thread([this] { reading_->getName(); }).join();
            }),
            kNoticeModifications);
    }

    std::vector<std::string> told_;
    std::vector<EditModification> details_;
    EditPtr reading_; // read on another thread by the listener
    Kv::Ptr<Guard> guard_;
};

TEST_F(EditTest, aNewEditHasItsChannelsInBlack) {
    const EditModifier edit = fresh();
    EXPECT_EQ(edit->getNumChans(), 3);
    EXPECT_EQ(edit->getNumChans(kChanAudio), 2);
    EXPECT_EQ(edit->getEndTime(), 10.0);
    EXPECT_EQ(edit->getSignificantEndTime(), 10.0) << "nothing has material";
    EXPECT_FALSE(edit->isEmpty());
    EXPECT_EQ(edit->getCelResolution(), 0.04);
    EXPECT_FALSE(manager().makeNewEdit(edit.getCookie(), 1, 1, 1, {})) << "taken";
    EXPECT_FALSE(manager().makeNewEdit(Cookie('G', 5), 1, 1, 1, {})) << "no edit";
    EXPECT_FALSE(manager().makeNewEdit(makeNewEditCookie(), 1, 1, kNoTime, {}));
}

TEST_F(EditTest, channelsStandByTypeAndAreFoundByIndex) {
    const EditModifier edit = fresh();
    const IdStamp late = edit->addChan(kChanVideo);
    const IdStamp audio = edit->getChans(kChanAudio)[1];
    EXPECT_EQ(edit->getIdx(late), 1);
    EXPECT_EQ(edit->getIndexWithinType(audio), 1);
    EXPECT_EQ(edit->getNextChan(edit->getFirstChan(kChanVideo), kChanVideo), late);
    EXPECT_FALSE(edit->getNextChan(late, kChanVideo).valid() || edit->getId(99).valid());
    EXPECT_EQ(edit->getIdx(IdStamp(9, 9, 9)), kChanEnd);
    EXPECT_FALSE(edit->addChan(kChanVideo, kSubNormal, late).valid()) << "there already";
    EXPECT_EQ(edit->getChanForStrip(convertCookie(edit.getCookie(), 'S', 2)), audio);
    EXPECT_FALSE(edit->getChanForStrip(convertCookie(edit.getCookie(), 'S', 3)).valid());
}

TEST_F(EditTest, channelsOfOtherEditsAnswerNothingAndTakeNothing) {
    const EditModifier edit = fresh();
    const IdStamp other(9, 9, 9), video = edit->getId(0);
    edit->setChanUserName(other, L"x");
    edit->setChanMetadata(other, "{}");
    edit->setSyncError(other, 1);
    edit->setSubtitleFont(other, {});
    EXPECT_TRUE(edit->getChanDisplayName(other).empty() && edit->getChanUserName(other).empty());
    EXPECT_TRUE(edit->getChanMetadata(other).empty() && !edit->get_edit_cel_p(other));
    EXPECT_EQ(edit->getIndexWithinType(other), kChanEnd);
    EXPECT_EQ(edit->getSyncError(other), 0);
    EXPECT_FALSE(edit->getNextChan(other, kChanAllTypes).valid() || edit->getId(3).valid());
    EXPECT_FALSE(edit->set_edit_cel_p(other, Cel()) || edit->removeChan(other, true));
    for (const IdStamp& none : {other, video}) // no audio
        EXPECT_FALSE(edit->getLevelsChan(none).valid() || edit->addLevelsChan(none).valid() ||
                     edit->getAudioChanForLevels(none).valid() || edit->setLevelNodes(none, {}));
    EXPECT_EQ(edit->getNumChans(), 3);
}

TEST_F(EditTest, levelsChannelsFollowTheirAudioChannel) {
    const EditModifier edit = fresh();
    EditModule module(edit);
    autoInitAudioLevelsTracks(module);
    autoInitAudioLevelsTracks(module);
    ASSERT_EQ(edit->getNumChans(kChanLevels), 2);
    const IdStamp audio = edit->getFirstChan(kChanAudio);
    const IdStamp levels = edit->getLevelsChan(audio);
    EXPECT_EQ(edit->getAudioChanForLevels(levels), audio);
    EXPECT_TRUE(edit->setLevelNodes(levels, {{200, 0.5F}, {100, 1.0F}}));
    for (const LevelNodes& bad : {LevelNodes{{100, 0.5F}, {100, 1.0F}}, {{100, -1.0F}}})
        EXPECT_FALSE(edit->setLevelNodes(levels, bad));
    EXPECT_EQ(edit->getLevelNodes(levels), (LevelNodes{{100, 1.0F}, {200, 0.5F}}));
    EXPECT_FALSE(edit->setLevelNodes(audio, {}));
    EXPECT_TRUE(edit->removeChan(audio, false));
    EXPECT_EQ(edit->getNumChans(kChanLevels), 1);
}

TEST_F(EditTest, theMixFollowsAudioChannelsThatGo) {
    const EditModifier edit = fresh();
    const auto mix = Kv::makePtr<Aud::SimpleMixState>(std::size_t{2});
    mix->setInputPan(1, 1.0F);
    edit->setAudioMix(mix);
    edit->removeChan(edit->getFirstChan(kChanAudio), false);
    EXPECT_EQ(edit->getAudioMix()->getInputPan(0), 1.0F);
    EXPECT_EQ(edit->getAudioMix()->numInputs(), 1u);
    EXPECT_EQ(mix->getInputPan(1), 1.0F) << "a mix is replaced, never changed in place";
}

TEST_F(EditTest, theOutermostModifierTellsTheUnionOnce) {
    listen();
    EditModifier edit = fresh();
    {
        EditModifier inner(edit);
        inner->setName(L"Renamed");
        lay(inner, 2, 12, 1);
    }
    EXPECT_THAT(told_, IsEmpty());
    edit->setName(L"Renamed");
    const IdStamp picture = edit->getFirstChan(kChanVideo);
    edit.release();
    EXPECT_THAT(told_, ElementsAre("1 3 22"));
    ASSERT_EQ(details_.size(), 1u);
    EXPECT_EQ(details_[0].kind, kModEventsAdded);
    EXPECT_EQ(details_[0].track, picture);
}

TEST_F(EditTest, changesAreToldAtOnceWhenAskedFor) {
    const EditPtr edit = fresh();
    listen();
    edit->setName(L"quiet");
    EXPECT_THAT(told_, IsEmpty());
    edit->addModification(kModMetadata, true);
    EXPECT_THAT(told_, ElementsAre("3 26"));
    edit->setName(L"quiet");
    edit->addModification(EditModifications(), true);
    EXPECT_THAT(told_, ElementsAre("3 26")) << "nothing has changed";
    edit->removeChan(edit->getFirstChan(kChanVideo), true);
    EXPECT_THAT(told_, ElementsAre("3 26", "9"));
}

TEST_F(EditTest, cueChangesNameTheCueAndItsOrigin) {
    listen();
    const EditPtr edit = fresh();
    Cue cue(3.0, L"here");
    EXPECT_TRUE(edit->addCue(cue, "gallery"));
    ASSERT_EQ(details_.size(), 1u);
    EXPECT_EQ(details_[0].cue, cue.getExtID());
    EXPECT_EQ(details_[0].origin, "gallery");
    EXPECT_EQ(details_[0].detail, unsigned{kCueAdded});
    EXPECT_FALSE(edit->addCue(cue)) << "known already";
    EXPECT_FALSE(edit->changeCue(cue)) << "the same";
    cue.setName(L"there");
    EXPECT_TRUE(edit->changeCue(cue));
    EXPECT_EQ(details_[0].detail, unsigned{kCueChanged});
    EXPECT_TRUE(edit->removeCue(cue.getExtID()));
    EXPECT_FALSE(edit->removeCue(cue.getExtID()));
}

TEST_F(EditTest, listenersRunWithoutTheEditsLock) {
    const EditPtr edit = fresh();
    reading_ = edit;
    listen();
    {
        const Edit::Lock lock(*edit);
        edit->setName(L"under lock");
        edit->addModification(kModGeneral, true);
        EXPECT_THAT(told_, IsEmpty()) << "not before the lock is left";
    }
    EXPECT_THAT(told_, ElementsAre("3 14"));
    reading_.reset();
}

TEST_F(EditTest, configurationTellsContentFromViewState) {
    const EditPtr edit = fresh();
    listen();
    edit->setConfig("BACKUP_CURRENT", 4.5);
    edit->setConfig("BACKUP_MARK1", 1e99);
    edit->addModification(EditModifications(), true);
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_EQ(edit->getStoredCurrentTime(), 4.5);
    EXPECT_EQ(edit->getStoredMark(Kv::MarkTypes::In), kNoTime);
    EXPECT_FALSE(edit->getStoredViewRegion());
    EXPECT_TRUE(edit->setConfig("scene", "12"));
    EXPECT_FALSE(edit->setConfig("scene", "12") || edit->removeConfig("take"));
    edit->addModification(EditModifications(), true);
    EXPECT_THAT(told_, ElementsAre("15"));
}

TEST_F(EditTest, settingWhatIsThereIsNoChange) {
    const EditPtr edit = fresh();
    const auto sounds = edit->getChans(kChanAudio);
    const IdStamp levels = edit->addLevelsChan(sounds[0]);
    const IdStamp titles = edit->addChan(kChanSubtitle);
    BITCEffect burntIn;
    burntIn.addLabel({});
    const std::function<void()> setters[] = {
        [&] { edit->setName(L"n"); },
        [&] { edit->setLogType(kLogTypeSubclip); },
        [&] { edit->setFrameRate(24); },
        [&] { edit->set_original_material(9); },
        [&] { edit->setVideoMetadata("{}"); },
        [&] { edit->setMediaLocations({L"/a"}); },
        [&] { edit->setChanUserName(titles, L"u"); },
        [&] { edit->setSyncError(sounds[0], 0.5); },
        [&] {
            edit->setLevelNodes(levels, {{5, 0.25F}});
        },
        [&] {
            edit->setSubtitleFont(titles, {L"Serif", 0.1F, 0x102030, kFontBold});
        },
        [&] { edit->groupChannels(sounds, true); },
        [&] { edit->groupChannels(sounds, false); },
        [&] { edit->setAudioMix(Kv::makePtr<Aud::SimpleMixState>(std::size_t{2})); },
        [&] { edit->setAudioMix({}); },
        [&] {
            edit->addLabel({kLabelInk, {4, 3}, {Kv::FrameRate(24), false}, 7});
        },
        [&] {
            edit->setEffectGraph({IdStamp(1, 1, 1), "effect", L"e", {}, 0, 0, {}, false});
        },
        [&] { edit->setBITC(burntIn); },
        [&] { edit->celCuesOn(); },
        [&] { video(edit)->setStripCookie(0, Cookie('V', 8)); },
    };
    for (const auto& set : setters) {
        SCOPED_TRACE(&set - setters);
        const std::uint64_t before = edit->changeCount();
        set();
        const std::uint64_t after = edit->changeCount();
        EXPECT_GT(after, before);
        set();
        EXPECT_EQ(edit->changeCount(), after);
    }
}

TEST_F(EditTest, labelsGoThroughTheConfigurationUnchanged) {
    const EditPtr edit = fresh();
    const EditLabel picture(kLabelVideoTimecode, {2, 1}, {Kv::FrameRate(30000, 1001), true},
                            107892);
    const EditLabel ink(kLabelInk, {4, -3}, {Kv::FrameRate(24), false}, -7);
    edit->addLabel(picture);
    edit->addLabel(ink);
    edit->write_labels_to_config();
    edit->remove_all_labels();
    EXPECT_FALSE(edit->getVideoTimecodeLabel().is_valid());
    edit->rebuildCachedLabels();
    EXPECT_EQ(edit->getLabel(kLabelVideoTimecode, {2, 1}), picture);
    EXPECT_EQ(edit->getLabel(kLabelInk, {4, -3}), ink);
    EXPECT_EQ(edit->getTimecode(0), "01:00:00;00");
}

TEST_F(EditTest, namesTakeSuffixesOnce) {
    const EditPtr edit = fresh();
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"Scene", L"Scene"},   {L"(copy)", L"Scene (copy)"},        {L"(copy)", L"Scene (copy)"},
        {L"", L"Scene (copy)"}, {L"(flat)", L"Scene (copy) (flat)"}, {L"(", L"("},
    };
    for (const auto& [given, expected] : rows) {
        edit_modify_name(edit, given);
        EXPECT_EQ(edit->getName(), expected);
    }
    const EditModifier other = fresh();
    other->setName(L"Edit 1");
    EXPECT_EQ(generateNewEditName(), L"Edit 2");
}

TEST_F(EditTest, pairsOfPointsCarryMaterial) {
    const EditPtr edit = fresh();
    lay(edit, 2, 4, 5);
    EXPECT_EQ(edit->getSignificantStartTime(), 2.0);
    EXPECT_EQ(edit->getSignificantEndTime(), 4.0);
    EXPECT_EQ(edit->getStartStripTime(), 0.0);
    CelEventPair pair(edit, 0, 3.0);
    EXPECT_EQ(pair.first().get_edit_time() + pair.second().get_edit_time(), 2.0 + 4.0);
    pair.setStripCookie(Cookie('V', 8));
    EXPECT_EQ(video(edit)->get_strip_cookie(2.5), Cookie('V', 8));
    EXPECT_FALSE(CelEventPair(edit, 0, 10.0).valid() || CelEventPair(edit, 9, 1.0).valid());
    EXPECT_FALSE(CelEventPair(EditPtr(), 0, 1.0).valid());
}

TEST_F(EditTest, handlesAndListsOutliveTheirEdit) {
    EditPtr edit = fresh();
    const Kv::Ptr<Cel> cel = video(edit);
    const ce_handle handle(*cel, 0);
    const Cookie cookie = edit.getCookie();
    edit.reset();
    EXPECT_TRUE(manager().isOpen(cookie)) << "not saved, so it stays";
    EXPECT_TRUE(handle.valid());
    EXPECT_TRUE(manager().deleteEdits({cookie}, "test").ok());
    EXPECT_FALSE(manager().isOpen(cookie));
    EXPECT_TRUE(cel->lift({0, 1}).ok()) << "a list of its own now";
    EXPECT_FALSE(handle.valid());
}

} // namespace
