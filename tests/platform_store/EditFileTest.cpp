#include "platform/store/EditFile.h"
#include "StoreFixture.h"
#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/project/ProjDb.h"
#include "platform/store/CelCodec.h"
#include "tests/support/FaultyFiles.h"

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
    const EditModifier edit = full();
    const Cookie cookie = edit.getCookie();
    const std::string contents = edit->canonicalContents();
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string bytes = bytesOf(fileOf(cookie));
    const_cast<EditModifier&>(edit).release();
    reopen();
    const EditPtr again(cookie);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->canonicalContents(), contents);
    EXPECT_EQ(again->getStoredCurrentTime(), 1.5);
    EXPECT_FALSE(again->isDirty());
    EXPECT_EQ(again->checkConsistency(), "");
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

TEST_F(EditFileTest, historyWorksAcrossRuns) {
    EditModifier edit = full();
    const Cookie cookie = edit.getCookie();
    std::vector<std::string> states;
    for (int i = 0; i < 5; ++i) {
        manager().makeBackup(edit, "step");
        states.push_back(edit->canonicalContents());
        lay(edit, i, i + 1, 50 + static_cast<std::uint64_t>(i));
    }
    ASSERT_TRUE(manager().undo(edit));
    edit.release();
    reopen();
    const EditPtr again(cookie);
    EXPECT_EQ(manager().getHistory(again).size(), 5u);
    EXPECT_TRUE(manager().canRedo(again));
    for (int i = 3; i >= 0; --i) {
        ASSERT_TRUE(manager().undo(again));
        EXPECT_EQ(again->canonicalContents(), states[static_cast<std::size_t>(i)]);
    }
    EXPECT_FALSE(manager().undo(again));
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
    std::vector<std::string> states;
    for (int i = 0; i < 50; ++i) {
        manager().makeBackup(edit);
        states.push_back(edit->canonicalContents());
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
        std::string bad = *bytes;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << (bit % 8)));
        ByteReader in(bad);
        if (const auto storage = decodeDifference(in, chunks))
            EXPECT_EQ(CelAccess::make(Shared<CelStorage>(*storage), 0, 0)->checkConsistency(), "")
                << bit;
        else
            EXPECT_FALSE(in.ok()) << bit;
    }
}

TEST_F(EditFileTest, aHistoryOfAnotherStateIsLeftAlone) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    manager().makeBackup(edit);
    edit->setName(L"one");
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string old = bytesOf(fileOf(cookie, ".undo"));
    manager().makeBackup(edit);
    edit->setName(L"two");
    edit.release();
    reopen();
    putBytes(fileOf(cookie, ".undo"), old);
    const EditPtr again(cookie);
    EXPECT_EQ(again->getName(), L"two");
    EXPECT_TRUE(manager().getHistory(again).empty());
}

TEST_F(EditFileTest, everyTruncationAndBitFlipIsNamedAndNothingIsTouched) {
    const EditModifier edit = full();
    manager().makeBackup(edit);
    edit->setName(L"later");
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string file = fileOf(edit.getCookie());
    const std::string good = bytesOf(file);
    const std::string history = bytesOf(fileOf(edit.getCookie(), ".undo"));
    ASSERT_TRUE(EditFile::decode(good, file).ok());
    for (std::size_t size = 0; size < good.size(); size += 3) {
        const auto read = EditFile::decode(good.substr(0, size), file);
        ASSERT_FALSE(read.ok()) << size;
        ASSERT_EQ(read.status().file(), file);
    }
    for (std::size_t bit = 0; bit < 8 * good.size(); bit += 5) {
        std::string bad = good;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << (bit % 8)));
        ASSERT_FALSE(EditFile::decode(bad, file).ok()) << bit;
    }
    for (std::size_t size = 0; size < history.size(); size += 7)
        ASSERT_FALSE(EditFile::decodeHistory(history.substr(0, size), file, 1).ok()) << size;
}

// Behind a checksum that fits, every value is still checked.
TEST_F(EditFileTest, wrongValuesBehindAGoodChecksumAreRefusedOrSound) {
    const EditModifier edit = full();
    ASSERT_TRUE(manager().save(edit).ok());
    const std::string good = bytesOf(fileOf(edit.getCookie()));
    const auto view = CheckedFile::open(good, "edit", 1, "f");
    ASSERT_TRUE(view.ok());
    const std::string payload(view->payload);
    int refused = 0;
    for (std::size_t bit = 0; bit < 8 * payload.size(); ++bit) {
        std::string bad = payload;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << (bit % 8)));
        const auto read = EditFile::decode(CheckedFile::wrap("edit", 1, bad), "f");
        refused += !read.ok();
        if (read.ok())
            ASSERT_EQ(checkState(read->state), "") << bit;
        else
            ASSERT_EQ(read.status().code(), StatusCode::damaged);
    }
    EXPECT_GT(refused, static_cast<int>(payload.size()));
}

TEST_F(EditFileTest, sectionsOfLaterVersionsAreKept) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    edit.release();
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const std::string bytes = bytesOf(fileOf(cookie));
    const auto whole = CheckedFile::open(bytes, "edit", 1, "f");
    ByteWriter payload;
    payload.raw(whole->payload);
    payload.raw("NEWS");
    payload.text("from the future");
    ASSERT_TRUE(CurrentProject::close().ok());
    putBytes(fileOf(cookie), CheckedFile::wrap("edit", 1, payload.bytes()));
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    {
        const EditPtr again(cookie);
        again->setName(L"touched");
    }
    ASSERT_TRUE(manager().flushChanges(false).ok());
    EXPECT_NE(bytesOf(fileOf(cookie)).find("from the future"), std::string::npos);
}

TEST_F(EditFileTest, damagedFilesStayUntilAWriterMovesThem) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    edit.release();
    ASSERT_TRUE(CurrentProject::close().ok());
    putBytes(fileOf(cookie), "no edit");
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    Status why;
    EXPECT_FALSE(manager().open(cookie, &why));
    EXPECT_EQ(why.code(), StatusCode::damaged);
    EXPECT_EQ(why.file(), fileOf(cookie));
    EXPECT_FALSE(manager().makeNewEdit(cookie, 1, 0, 1, {})) << "never written over";
    EXPECT_EQ(bytesOf(fileOf(cookie)), "no edit");
    const auto moved = manager().setDamagedAside(cookie);
    ASSERT_TRUE(moved.ok());
    EXPECT_EQ(bytesOf(*moved), "no edit");
    EXPECT_FALSE(manager().setDamagedAside(cookie).ok());
}

TEST_F(EditFileTest, theVersionBeforeTakesTheLostOnesPlace) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    edit->setName(L"before");
    edit.release();
    ASSERT_TRUE(CurrentProject::close().ok());
    const std::string sound = bytesOf(fileOf(cookie));
    putBytes(fileOf(cookie), "no edit");
    putBytes(fileOf(cookie) + ".bak", "no edit either");
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EXPECT_EQ(manager().checkFiles(cookie).code(), StatusCode::damaged);
    EXPECT_EQ(manager().restoreBackup(cookie).code(), StatusCode::wrongUsage) << "a file is there";
    ASSERT_TRUE(manager().setDamagedAside(cookie).ok());
    EXPECT_EQ(manager().restoreBackup(cookie).code(), StatusCode::damaged);
    EXPECT_FALSE(cutroom::fileExists(fileOf(cookie)));
    putBytes(fileOf(cookie) + ".bak", sound);
    ASSERT_TRUE(manager().restoreBackup(cookie).ok());
    EXPECT_TRUE(manager().checkFiles(cookie).ok());
    ASSERT_TRUE(manager().open(cookie));
    EXPECT_EQ(manager().open(cookie)->getName(), L"before");
}

TEST_F(EditFileTest, aDamagedHistoryIsMovedAsideBeforeANewOneIsWritten) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    manager().makeBackup(edit);
    edit->setName(L"x");
    edit.release();
    ASSERT_TRUE(CurrentProject::close().ok());
    putBytes(fileOf(cookie, ".undo"), "no history");
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EditPtr again(cookie);
    EXPECT_FALSE(manager().undo(again));
    EXPECT_EQ(log_.lines.size(), 1u);
    EXPECT_EQ(bytesOf(fileOf(cookie, ".undo")), "no history");
    manager().makeBackup(again);
    again->setName(L"y");
    ASSERT_TRUE(manager().save(again).ok());
    EXPECT_EQ(bytesOf(fileOf(cookie, ".undo.damaged")), "no history");
    EXPECT_NE(bytesOf(fileOf(cookie, ".undo")), "no history");
}

TEST_F(EditFileTest, everyFailingOperationLeavesOldOrNewAndARetrySucceeds) {
    EditModifier edit = fresh();
    EditModifier other = fresh();
    ASSERT_TRUE(manager().flushChanges(false).ok());
    test::FaultyFiles faulty(systemFiles());
    for (const auto span : {test::FaultyFiles::Span::once, test::FaultyFiles::Span::sameForEver}) {
        const long stride = span == test::FaultyFiles::Span::once ? 1 : 5;
        for (long at = 0;; at += stride) {
            manager().makeBackup(edit);
            edit->setName(L"name " + std::to_wstring(at));
            other->setName(L"other " + std::to_wstring(at));
            iFileSystem* const before = installFileSystem(&faulty);
            faulty.arm(at, span);
            const Status status = manager().flushChanges(false);
            faulty.disarm();
            installFileSystem(before);
            EXPECT_EQ(edit->isDirty(), !status.ok()) << at;
            const Status retried = manager().flushChanges(false);
            ASSERT_TRUE(retried.ok()) << at << ": " << retried.text();
            for (const EditModifier* saved : {&edit, &other}) {
                const std::string file = fileOf(saved->getCookie());
                const auto read = EditFile::decode(bytesOf(file), file);
                ASSERT_TRUE(read.ok()) << at;
                EXPECT_EQ(read->state.name, (*saved)->getName()) << at;
            }
            if (!faulty.struck())
                break;
            ASSERT_LT(at, 500);
        }
    }
}

} // namespace
