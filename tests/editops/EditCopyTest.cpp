#include "editops/EditCopy.h"

#include "CopyFixture.h"
#include "editops/CopyKinds.h"
#include "editops/RangeCopy.h"
#include "editops/SequenceMaking.h"
#include "platform/embedded/FixedIds.h"
#include "platform/files/Files.h"
#include "tests/support/FaultyFiles.h"

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class EditCopy : public CopyFixture {};

// How each makes a whole copy, named.
using Copying = EditModifier (*)(const EditPtr&);
const std::map<std::string, Copying> kWholeCopies = {
    {"copyEdit",
     [](const EditPtr& edit) {
         EditModule all(edit);
         all.selectAll();
         return copyEdit(all, L"(again)", false);
     }},
    {"copySequenceEdit", [](const EditPtr& edit) { return copySequenceEdit(edit, L"(again)"); }},
    {"makeSequenceFromSource",
     [](const EditPtr& edit) { return makeSequenceFromSource(EditModule(edit), L"(again)"); }},
    {"edcopy_basic_copy", [](const EditPtr& edit) { return edcopy_basic_copy(edit.getCookie()); }},
};

TEST_F(EditCopy, aWholeCopyIsAnEditOfItsOwnWithEverythingInIt) {
    const EditModifier reel = makeReel();
    reel->setReadOnly(true);
    reel->setConfig("CLIPBOARD", 1);
    reel->setConfig("scene", "12");
    reel->setSyncError(reel->getId(3), 0.25);
    reel->groupChannels(reel->getChans(kChanAudio), true);
    const auto mix = Kv::makePtr<Aud::SimpleMixState>(std::size_t{2});
    mix->setInputPan(1, 0.75F);
    reel->setAudioMix(mix);
    for (const auto& [name, make] : kWholeCopies) {
        SCOPED_TRACE(name);
        const EditModifier copy = make(reel);
        ASSERT_TRUE(copy);
        EXPECT_EQ(contents(copy), "axrstL");
        for (int i = 0; i < copy->getNumChans(); ++i)
            EXPECT_TRUE(copy->get_edit_cel_p(i)->sameContents(*reel->get_edit_cel_p(i))) << i;
        EXPECT_EQ(copy->getName(), name == "edcopy_basic_copy" ? L"Reel" : L"Reel (again)");
        EXPECT_EQ(copy->getLogType(), kLogTypeEdit);
        EXPECT_EQ(copy->getSyncError(copy->getId(3)), 0.25);
        EXPECT_EQ(copy->openObjectInternal()->getGroupContents(0), copy->getChans(kChanAudio));
        EXPECT_EQ(*copy->getAudioMix(), *mix);
        EXPECT_FALSE(copy->isReadOnly());
        EXPECT_EQ(config(copy, "scene"), "12");
        EXPECT_EQ(config(copy, "CLIPBOARD"), "(none)");
        EXPECT_EQ(copy->getTimecode(1), "10:00:01:00");
        EXPECT_FALSE(manager().canUndo(copy));
    }
    reel->setLogType(kLogTypeSource);
    const EditModifier plain = kWholeCopies.at("copySequenceEdit")(reel),
                       source = kWholeCopies.at("makeSequenceFromSource")(reel);
    EXPECT_EQ(plain->getSyncError(plain->getId(3)), 0.25);
    EXPECT_EQ(source->getSyncError(source->getId(3)), 0) << "of edits only";
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(EditCopy, keepsTheChannelsThatAreSelected) {
    const struct {
        const char* selected; // of V1 V2 D A1 A2 L1; "": as a module begins
        const char* copied;
        const char* fromSource; // by makeSequenceFromSource
        const char* ranged;     // by copyRange
    } rows[] = {
        {"", "axrstL", "axrstL", "axrstL"},
        {"111111", "axrstL", "axrstL", "axrstL"},
        {"110110", "axrstL", "axrstL", "axrstL"},
        {"000000", "", "", ""},
        {"100000", "a", "a", "a"},
        {"110000", "axr", "axr", "axr"},
        {"000100", "sL", "sL", "sL"},
        {"000011", "t", "t", "t"},
        {"001000", "r", "r", "r"},
        // as many as the source has pictures and sounds: levels are none of the five
        {"011111", "xrstL", "xrstL", "axrstL"},
    };
    const EditModifier reel = makeReel();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.selected);
        EditModule module = EditModule(EditPtr(reel));
        for (int i = 0; row.selected[i] != 0; ++i)
            module.selectChan(reel->getId(i), row.selected[i] == '1');
        EXPECT_EQ(contents(copyEdit(module, {}, false)), row.copied);
        EXPECT_EQ(contents(makeSequenceFromSource(module, {})), row.fromSource);
        EXPECT_EQ(contents(copyRange(module, kLogTypeEdit, false)), row.ranged);
        EXPECT_EQ(contents(copyRange(module, kLogTypeEdit, true)), row.copied);
    }
}

TEST_F(EditCopy, whatIsMaterialIsCopiedAsAFile) {
    const struct {
        eLogType type;
        int material;
        bool strips, asFile, ownStrips;
    } rows[] = {{kLogTypeSource, 1, false, true, false},
                {kLogTypeSource, 1, true, true, true},
                {kLogTypeFileCopy, 0, true, true, false},
                {kLogTypeSource, 0, true, false, false},
                {kLogTypeSubclip, 7, true, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " " << row.material);
        const EditModifier clip = makeClip(row.type, row.material);
        clip->setConfig("anything", "else");
        clip->setReadOnly(true);
        manager().makeBackup(clip, "a step of the clip's own");
        FixedIds later(1'000'000, 1'800'000'000);
        iIdSource* const ids = installIdSource(&later);
        const EditModifier copy = copyEdit(EditModule(EditPtr(clip)), L"", row.strips);
        installIdSource(ids);
        ASSERT_TRUE(copy);
        EXPECT_FALSE(copy->isReadOnly());
        EXPECT_EQ(copy->getCreationTime(), 1'800'000'000u);
        EXPECT_EQ(copy->getLogType(), row.asFile ? row.type : kLogTypeEdit);
        EXPECT_EQ(copy->get_original_material(), row.asFile ? row.material : 0);
        EXPECT_EQ(config(copy, "anything"), row.asFile ? "else" : "(none)");
        const EditPtr plays = row.ownStrips ? EditPtr(copy) : EditPtr(clip);
        EXPECT_EQ(copy->get_edit_cel_p(0)->get_strip_cookie(0), strip(plays, 'V', 1));
        EXPECT_EQ(copy->get_edit_cel_p(1)->get_strip_cookie(0), strip(plays, 'S', 1));
        EXPECT_FALSE(manager().canUndo(copy));
    }
}

TEST_F(EditCopy, aFlatOneIsNeitherMaterialNorRenderedAndLeavesTheSourceAlone) {
    const EditModifier reel = makeReel(), clip = makeClip();
    for (const EditModifier& source : {reel, clip}) {
        source->setConfig("CACHE_x", "1");
        source->setConfig("CLIPBOARD", "1");
        const std::string before = source->canonicalContents(), name = toUtf8(source->getName());
        const EditModifier flat = flatten(EditModule(EditPtr(source)));
        ASSERT_TRUE(flat);
        EXPECT_EQ(toUtf8(flat->getName()), name + " (Flattened)");
        EXPECT_EQ(flat->get_original_material(), 0);
        EXPECT_EQ(config(flat, "IS_DUPE"), "0");
        EXPECT_EQ(config(flat, "CACHE_x"), "(none)");
        EXPECT_EQ(config(edcopy_basic_copy(source.getCookie()), "CLIPBOARD"), "(none)");
        EXPECT_EQ(source->canonicalContents(), before);
    }
    EXPECT_EQ(flatten(whole(clip))->get_edit_cel_p(0)->get_strip_cookie(0),
              strip(EditPtr(clip), 'V', 1));
    EXPECT_EQ(contents(flatten(whole(reel))), "arstL");
    EditModule lower = whole(reel);
    lower.selectChan(reel->getId(1), false);
    EXPECT_EQ(contents(flatten(lower)), "axrstL") << "one selected layer is flat already";
    EXPECT_FALSE(flatten(EditModule()));
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(EditCopy, isToldOnceItIsThere) {
    const EditModifier reel = makeReel();
    std::vector<Cookie> told;
    const auto guard =
        manager().registerNotification(makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
                                           const auto* const notice =
                                               message.getObjectAs<EditModificationNotice>();
                                           if (notice->modifications().includes(kModMetadata))
                                               told.push_back(notice->edit());
                                       }),
                                       kNoticeModifications);
    for (const auto& [name, make] : kWholeCopies) {
        const EditModifier copy = make(reel);
        EXPECT_THAT(told, ElementsAre(copy.getCookie())) << name << " while it is open for writing";
        told.clear();
    }
    EditModifier part = copyRange(marked(reel, 1, 2), kLogTypeEdit, false);
    const Cookie made = part.getCookie();
    EXPECT_THAT(told, IsEmpty());
    part.release();
    EXPECT_THAT(told, ElementsAre(made));
}

TEST_F(EditCopy, failureIsLoggedAndLeavesNothing) {
    EditModifier clip = makeClip(), reel = makeReel(); // deleted while they are held
    ASSERT_TRUE(manager().deleteEdits({clip.getCookie(), reel.getCookie()}, "").ok());
    EXPECT_FALSE(flatten(whole(reel)) || copyRange(whole(reel), kLogTypeEdit, true) ||
                 copyRange(whole(reel), kLogTypeSubclip, false));
    EXPECT_THAT(log_.lines, IsEmpty());
    for (const EditPtr& gone : {EditPtr(clip), EditPtr(reel), EditPtr()})
        for (const auto& [name, make] : kWholeCopies)
            EXPECT_FALSE(make(gone)) << name;
    EXPECT_THAT(log_.lines, testing::Each("copyEdit() : Unable to open source edit\n"));
    EXPECT_EQ(log_.lines.size(), 12u);

    clip = makeClip();
    const Cookie cookie = clip.getCookie();
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const auto before = holdings();
    FaultyFiles faulty(systemFiles());
    iFileSystem* const files = installFileSystem(&faulty);
    for (long at = 0;; ++at) {
        SCOPED_TRACE(at);
        log_.lines.clear();
        faulty.arm(at, FaultyFiles::Span::once);
        const bool copied = static_cast<bool>(edcopy_basic_copy(cookie));
        faulty.disarm();
        if (!faulty.struck())
            break;
        EXPECT_FALSE(copied);
        EXPECT_THAT(log_.lines, ElementsAre("copyEdit() : failed to open copy"));
        ASSERT_TRUE(manager().flushChanges(false).ok());
        EXPECT_EQ(holdings(), before);
    }
    installFileSystem(files);
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const auto after = holdings();

    clip.release();
    ASSERT_TRUE(project_.close().ok());
    ASSERT_TRUE(open(CurrentProject::Access::readOnly).ok());
    EXPECT_FALSE(edcopy_basic_copy(cookie)) << "no file is written into a project being read";
    EXPECT_EQ(holdings().second, after.second);
}

} // namespace
