#include "platform/store/EditFile.h"
#include "StoreFixture.h"
#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/project/ProjDb.h"
#include "platform/store/CelCodec.h"

#include <functional>
#include <limits>
#include <tuple>

using namespace cutroom;
using cutroom::test::bytesOf;
using cutroom::test::putBytes;

namespace {

class EditFileTest : public cutroom::test::StoredFixture {
protected:
    // Something of everything that an edit holds.
    EditModifier full() {
        EditModifier edit = fresh();
        edit->setName(L"Full ✂");
        lay(edit, 2, 5, 1);
        CelSegment freeze;
        freeze.start = 6 * kFlicksPerSecond + 1;
        freeze.end = 7 * kFlicksPerSecond;
        freeze.material = Cookie('E', 4, 2);
        freeze.speed = -2.5;
        freeze.inGraph = IdStamp(1, 1, 1);
        freeze.outGraph = IdStamp(2, 2, 2);
        freeze.flags = kEventFreeze | kEventDisabled;
        freeze.detail = {L"n", L"/media/é", "{\"a\":1}", {L"one", L"", L"two"}};
        EXPECT_TRUE(video(edit)->overwrite(freeze).ok());
        ChannelEvent out = video(edit)->get_event(3);
        out.speed = 3;
        EXPECT_TRUE(video(edit)->setEvent(3, out).ok());
        EXPECT_TRUE(video(edit)->slide(0.25).ok());
        fillChannels(edit);
        fillRest(edit);
        EXPECT_EQ(edit->checkConsistency(), "");
        return edit;
    }

    // Gives a file of the closed project other bytes, and opens the project again.
    void plant(const std::string& file, const std::string& bytes) {
        ASSERT_TRUE(CurrentProject::close().ok());
        putBytes(file, bytes);
        ASSERT_TRUE(CurrentProject::open(folder()).ok());
    }
    // What was set can be read back from the file.
    void expectReadable(const std::vector<std::function<void(Edit&)>>& setters) {
        for (std::size_t i = 0; i < setters.size(); ++i) {
            SCOPED_TRACE(i);
            const EditModifier edit = fresh();
            setters[i](*edit);
            EXPECT_TRUE(manager().save(edit).ok());
            EXPECT_EQ(manager().checkFiles(edit.getCookie()).text(), "ok");
        }
    }
    static std::string flipped(std::string bytes, std::size_t bit) {
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
        return bytes;
    }

private:
    static void fillChannels(const EditPtr& edit) {
        const IdStamp audio = edit->getFirstChan(kChanAudio);
        const IdStamp levels = edit->addLevelsChan(audio);
        EXPECT_TRUE(edit->setLevelNodes(levels, {{5, 0.25F}, {10, 2.0F}}));
        const IdStamp titles = edit->addChan(kChanSubtitle);
        edit->setSubtitleFont(titles, {L"Serif", 0.1F, 0x102030, kFontBold});
        edit->setChanUserName(titles, L"Titles");
        edit->setChanMetadata(titles, "{}");
        edit->setSyncError(audio, -0.125);
        edit->get_edit_cel_p(audio)->setFlags(kCelHasMaterial);
        edit->groupChannels(edit->getChans(kChanAudio), true);
        Kv::Ptr<Aud::SimpleMixState> mix = Kv::makePtr<Aud::SimpleMixState>(std::size_t{2});
        mix->setInputMuteState(1, true);
        edit->setAudioMix(mix);
    }
    static void fillRest(const EditPtr& edit) {
        Cue range(TimeRange(1.0, 2.5), L"range");
        range.setDescription(L"why");
        range.setColour(0x00FF00);
        range.setCustomMetadata("k", L"v");
        edit->addCue(range);
        edit->addCue(Cue(0.5, L"point"));
        edit->addLabel({kLabelVideoTimecode, {2, 1}, {Kv::FrameRate(24000, 1001), false}, 86400});
        edit->setConfig("scene", "7");
        edit->setConfig("BACKUP_CURRENT", 1.5);
        edit->setVideoMetadata("{\"v\":1}");
        edit->setMediaLocations({L"/media/a", L"b"});
        edit->setEffectGraph(
            {IdStamp(1, 1, 1), "transition", L"Dissolve", {}, 12, 13, "{}", false});
        BITCEffect burntIn;
        burntIn.addLabel({});
        edit->setBITC(burntIn);
        edit->setLogType(kLogTypeSubclip);
        edit->set_original_material(9);
        edit->celCuesOn();
    }
};

TEST_F(EditFileTest, everythingComesBackAndIsWrittenTheSame) {
    EditModifier edit = full();
    const Cookie cookie = edit.getCookie();
    const std::string contents = edit->canonicalContents();
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string bytes = bytesOf(fileOf(cookie));
    edit.release();
    reopen();
    const EditPtr again(cookie);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->canonicalContents(), contents);
    EXPECT_EQ(again->getStoredCurrentTime(), 1.5);
    ASSERT_TRUE(manager().flushChanges(true).ok());
    EXPECT_EQ(bytesOf(fileOf(cookie)), bytes);
}

// The smallest stored forms: counts are checked against them.
TEST_F(EditFileTest, thingsWithoutTextsComeBack) {
    const EditModifier edit = fresh();
    for (std::uint32_t i = 1; i <= 20; ++i) {
        Cue bare(i, {});
        bare.setExtID(IdStamp(0, 0, i));
        edit->addCue(bare);
        edit->setEffectGraph({IdStamp(0, 0, i), {}, {}, {}, 0, 0, {}, false});
        edit->addLabel({kLabelInk, {0, static_cast<int>(i)}, {Kv::FrameRate(25), false}, 0});
    }
    BITCEffect burntIn;
    burntIn.addLabel({});
    edit->setBITC(burntIn);
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string file = fileOf(edit.getCookie());
    const auto read = EditFile::decode(bytesOf(file), file);
    ASSERT_TRUE(read.ok()) << read.status().text();
    EXPECT_EQ(canonicalText(read->state), edit->canonicalContents());
}

TEST_F(EditFileTest, textThatIsNoUtf8IsWrittenAsFarAsItIs) {
    const std::string bad = "Caf\xE9";
    expectReadable({
        [&](Edit& edit) { edit.setConfig(bad, bad); },
        [&](Edit& edit) { edit.setVideoMetadata(bad), edit.setAudioMetadata(bad); },
        [&](Edit& edit) { edit.setImportedMetadata(bad), edit.setSequencePlaybackFormat(bad); },
        [&](Edit& edit) { edit.setChanMetadata(edit.getId(0), bad); },
        [&](Edit& edit) {
            edit.setEffectGraph({{}, bad, L"", {}, 0, 0, bad, false});
        },
        [&](Edit& edit) {
            Cue cue(1, L"");
            cue.setCustomMetadata(bad, L"v");
            cue.setImportedMetadata(bad);
            edit.addCue(cue);
        },
        [&](Edit& edit) {
            CelSegment segment;
            segment.end = kFlicksPerSecond;
            segment.detail.metadata = bad;
            EXPECT_TRUE(edit.get_edit_cel_p(0)->overwrite(segment).ok());
        },
    });
    EditModifier edit = fresh();
    edit->setVideoReelId(bad);
    const Cookie cookie = edit.getCookie();
    ASSERT_TRUE(manager().save(edit).ok());
    edit.release();
    reopen();
    EXPECT_EQ(EditPtr(cookie)->getVideoReelId(), "Caf\uFFFD");
}

TEST_F(EditFileTest, valuesThatNoFileCanHoldAreRefused) {
    const auto burnIn = [](Edit& edit, eLabelType type, float x) {
        BITCLabel label;
        label.type = type;
        label.x = x;
        BITCEffect burntIn;
        burntIn.addLabel(label);
        edit.setBITC(burntIn);
    };
    expectReadable({
        [](Edit& edit) { EXPECT_FALSE(edit.addChan(EditChanType{3}).valid()); },
        [](Edit& edit) { EXPECT_FALSE(edit.addChan(kChanVideo, EditChanSubType{}).valid()); },
        [](Edit& edit) {
            edit.setEffectGraph({{}, "", L"", {}, INT64_MAX, 0, "", false});
        },
        [](Edit& edit) {
            edit.addLabel({eLabelType{12}, {2, 1}, {Kv::FrameRate(25), false}, 0});
        },
        [](Edit& edit) {
            edit.setSyncError(IdStamp(9, 9, 9), 1);
            edit.setSyncError(edit.getId(0), kNoTime);
            EXPECT_EQ(edit.getSyncError(edit.getId(0)), 0);
        },
        [&](Edit& edit) { burnIn(edit, kLabelNone, 0); },
        [&](Edit& edit) { burnIn(edit, kLabelInk, std::numeric_limits<float>::infinity()); },
        [](Edit& edit) {
            CueList far;
            far.addCuePoint(Cue(1, L"far"));
            far.slide(1e12);
            edit.setCues(far);
            EXPECT_EQ(edit.getCues().getNumCuePoints(), 0u);
        },
        [](Edit& edit) { // a copy is another marker
            CueList twice;
            twice.addCuePoint(Cue(1, L"one"));
            twice.addCuePoint(twice.getCuePoint(0));
            edit.setCues(twice);
            EXPECT_EQ(edit.getCues().getNumCuePoints(), 2u);
        },
    });
}

TEST_F(EditFileTest, stepsAreStoredAsWhatTheyChange) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    std::vector<CelSegment> many(5000);
    for (std::size_t i = 0; i < many.size(); ++i) {
        many[i].start = static_cast<Flicks>(i) * 1000;
        many[i].end = many[i].start + 1000;
        many[i].material = Cookie('E', i + 1);
        many[i].detail.name = std::to_wstring(i % 100);
    }
    ASSERT_TRUE(video(edit)->setSegments(many).ok());
    for (std::uint32_t i = 0; i < 500; ++i) {
        edit->addCue(Cue(i, L"a marker"));
        edit->setEffectGraph({IdStamp(1, 0, i), {}, {}, {}, 0, 0, {}, false});
    }
    std::vector<std::string> states;
    for (int i = 0; i < 50; ++i) {
        manager().makeBackup(edit);
        states.push_back(edit->canonicalContents());
        edit->addCue(Cue(7 * i, L"another"));
        edit->setEffectGraph(
            {IdStamp(0, 0, static_cast<std::uint32_t>(50 - i)), {}, {}, {}, 0, 0, {}, false});
        many[0].start = (i * 97'000) % 4'000'000 + 500;
        many[0].end = many[0].start + 700;
        many[0].detail.name = L"new " + std::to_wstring(i);
        ASSERT_TRUE(i % 2 ? video(edit)->insertGap(many[0].start, 333).ok()
                          : video(edit)->overwrite(many[0]).ok());
    }
    ASSERT_TRUE(manager().save(edit).ok());
    const auto one = std::filesystem::file_size(fileOf(cookie));
    EXPECT_LT(std::filesystem::file_size(fileOf(cookie, ".undo")), 2 * one);
    edit.release();
    reopen();
    const EditPtr again(cookie);
    for (auto state = states.rbegin(); state != states.rend(); ++state) {
        ASSERT_TRUE(manager().undo(again));
        ASSERT_TRUE(again->canonicalContents() == *state);
    }
}

// Flipped bits in a difference either show or leave a list that is sound.
TEST_F(EditFileTest, wrongDifferencesAreRefusedOrSound) {
    CelStorage base;
    std::vector<ChannelEvent> events;
    for (Flicks i = 0; i < 6; ++i)
        append(events, blackPair(10 * i, 10 * i + 10));
    base.splice(0, 0, std::move(events));
    CelStorage changed = base.copyWithRoom(2);
    changed.replaceRange(25, 33, {blackPair(25, 33)[0], blackPair(25, 33)[1]});
    const std::vector<Shared<CelStorage>> chunks{Shared<CelStorage>(base.copyWithRoom(0))};
    const auto bytes = encodeDifference(base, 0, changed);
    ASSERT_TRUE(bytes);
    ByteReader good(*bytes);
    const auto read = decodeDifference(good, chunks);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->events, changed.events);
    for (std::size_t bit = 0; bit < 8 * bytes->size(); ++bit) {
        const std::string bad = flipped(*bytes, bit);
        ByteReader in(bad);
        if (const auto storage = decodeDifference(in, chunks))
            EXPECT_EQ(CelAccess::make(Shared<CelStorage>(*storage), 0, 0)->checkConsistency(), "")
                << bit;
        else
            EXPECT_FALSE(in.ok()) << bit;
    }
}

TEST_F(EditFileTest, aStepIsStoredByTheNameItHasLast) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    for (const char* name : {"given up", "rename"}) { // with no change between
        manager().makeBackup(edit, name);
        ASSERT_TRUE(manager().flushChanges(true).ok());
    }
    edit.release();
    reopen();
    const auto history = manager().getHistory(EditPtr(cookie));
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0].description, "rename");
}

TEST_F(EditFileTest, aHistoryOfAnotherStateIsLeftAlone) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    std::string old;
    for (const wchar_t* name : {L"one", L"two"}) {
        old = bytesOf(fileOf(cookie, ".undo"));
        manager().makeBackup(edit);
        edit->setName(name);
        ASSERT_TRUE(manager().save(edit).ok());
    }
    edit.release();
    plant(fileOf(cookie, ".undo"), old);
    const EditPtr again(cookie);
    EXPECT_EQ(again->getName(), L"two");
    EXPECT_TRUE(manager().getHistory(again).empty());
}

// Every value is checked even when the checksum is right.
TEST_F(EditFileTest, wrongValuesBehindAGoodChecksumAreRefusedOrSound) {
    const EditModifier edit = full();
    for (int i = 0; i < 2; ++i) {
        manager().makeBackup(edit);
        edit->addCue(Cue(i, L"new"));
    }
    ASSERT_TRUE(manager().save(edit).ok());
    for (const auto& [extension, kind, version] :
         {std::tuple{".edit", "edit", 1u}, {".undo", "edit-undo", 2u}}) {
        const std::string good = bytesOf(fileOf(edit.getCookie(), extension));
        const auto view = CheckedFile::open(good, kind, version, "f");
        ASSERT_TRUE(view.ok());
        const std::string payload(view->payload);
        std::size_t refused = 0;
        const auto expectRefusedOrSound = [&, kind = kind, version = version](const auto& bad) {
            const std::string file = CheckedFile::wrap(kind, version, bad);
            const auto read = EditFile::decode(file, "f");
            const auto history = EditFile::decodeHistory(file, "f", 0);
            const Status& status = version == 1 ? read.status() : history.status();
            refused += !status.ok();
            ASSERT_TRUE(status.ok() || status.code() == StatusCode::damaged);
            ASSERT_TRUE(!read.ok() || checkState(read->state).empty());
        };
        for (std::size_t size = 0; size < payload.size(); ++size)
            expectRefusedOrSound(payload.substr(0, size));
        for (std::size_t bit = 0; bit < 8 * payload.size(); ++bit) {
            SCOPED_TRACE(bit);
            expectRefusedOrSound(flipped(payload, bit));
        }
        EXPECT_GT(refused, 2 * payload.size());
    }
}

TEST_F(EditFileTest, sectionsOfLaterVersionsAreKept) {
    const Cookie cookie = fresh().getCookie();
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const std::string bytes = bytesOf(fileOf(cookie));
    ByteWriter payload;
    payload.raw(CheckedFile::open(bytes, "edit", 1, "f")->payload);
    payload.raw("NEWS");
    payload.text("from the future");
    plant(fileOf(cookie), CheckedFile::wrap("edit", 1, payload.bytes()));
    EditPtr(cookie)->setName(L"touched");
    ASSERT_TRUE(manager().flushChanges(false).ok());
    EXPECT_NE(bytesOf(fileOf(cookie)).find("from the future"), std::string::npos);
}

TEST_F(EditFileTest, theVersionBeforeTakesTheLostOnesPlace) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    edit->setName(L"before");
    edit.release();
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const std::string sound = bytesOf(fileOf(cookie));
    putBytes(fileOf(cookie) + ".bak", "no edit either");
    plant(fileOf(cookie), "no edit");
    EXPECT_EQ(manager().checkFiles(cookie).code(), StatusCode::damaged);
    EXPECT_EQ(manager().restoreBackup(cookie).code(), StatusCode::wrongUsage) << "a file is there";
    ASSERT_TRUE(manager().setDamagedAside(cookie).ok());
    EXPECT_FALSE(manager().setDamagedAside(cookie).ok()) << "none is there any more";
    EXPECT_EQ(manager().restoreBackup(cookie).code(), StatusCode::damaged);
    EXPECT_FALSE(cutroom::fileExists(fileOf(cookie)));
    putBytes(fileOf(cookie) + ".bak", sound);
    ASSERT_TRUE(manager().restoreBackup(cookie).ok());
    EXPECT_TRUE(manager().checkFiles(cookie).ok());
    EXPECT_EQ(EditPtr(cookie)->getName(), L"before");
}

} // namespace
