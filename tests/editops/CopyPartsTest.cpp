// Kinds of copies, names, the last message, sequences from clips, parents.
#include "CopyFixture.h"
#include "bins/AssetAssociationGroupManager.h"
#include "editops/AssetParent.h"
#include "editops/CopyKinds.h"
#include "editops/CopyLog.h"
#include "editops/EditCopy.h"
#include "editops/SequenceMaking.h"
#include "platform/project/ProjDb.h"

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class CopyParts : public CopyFixture {};

TEST_F(CopyParts, theLastMessageStaysUntilTheNextAndIsBounded) {
    setCopyLog("%s %d", "shot", 7);
    EXPECT_STREQ(edcopy_get_log(), "shot 7");
    setCopyLog("%s", std::string(5000, 'x').c_str());
    EXPECT_EQ(edcopy_get_log(), std::string(1023, 'x'));
}

TEST_F(CopyParts, eachKindIsMarkedInPlace) {
    struct Row {
        const char* kind;
        void (*make)(EditModifier&);
        const char* channels;
        const char* name;
        bool keepsLabels = false;
    };
    const Row rows[] = {
        {"4", [](EditModifier& e) { edcopy_make_clipsection(e); }, "axrstL", "Reel"},
        {"2", [](EditModifier& e) { edcopy_make_print_ghost(e, L"(p)"); }, "axrstL", "Reel (p)"},
        {"3", [](EditModifier& e) { edcopy_make_subclip(e, L""); }, "axstL", "Reel"},
        {"1", [](EditModifier& e) { edcopy_make_sync_ghost(e, L"N", true); }, "axstL", "N", true},
        {"1", [](EditModifier& e) { edcopy_make_sync_ghost(e, L"N", false); }, "axstL", "N"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.kind);
        EditModifier none;
        row.make(none);
        EXPECT_FALSE(none);
        EditModifier reel = makeReel();
        reel->set_original_material(3);
        reel->setConfig("CACHE_1", "x");
        row.make(reel);
        EXPECT_EQ(config(reel, "IS_DUPE"), row.kind);
        EXPECT_EQ(config(reel, "CACHE_1"), "(none)");
        EXPECT_EQ(reel->get_original_material(), 3);
        EXPECT_EQ(contents(reel), row.channels);
        EXPECT_EQ(toUtf8(reel->getName()), row.name);
        EXPECT_EQ(keepsLabels(reel), row.keepsLabels);
    }
}

TEST_F(CopyParts, aSequenceTakesTheMarkedPartOfAClip) {
    for (const bool imported : {false, true}) {
        const EditModifier clip = makeClip();
        clip->setImported(imported);
        EditModule module = marked(clip, 1, 3);
        module.selectChans(kChanAudio, kSubAll, false);
        const EditModifier sequence = makeSequenceFromClip(module);
        ASSERT_TRUE(sequence);
        EXPECT_EQ(sequence->getName(), L"Clip (Sequence)");
        EXPECT_EQ(sequence->getLogType(), kLogTypeEdit);
        EXPECT_EQ(sequence->getNumChans(), 1);
        EXPECT_EQ(sequence->getEndTime(), 2);
        EXPECT_EQ(sequence->get_edit_cel_p(0)->get_strip_cookie(0), strip(clip, 'V', 1));
        EXPECT_EQ(sequence->get_edit_cel_p(0)->get_strip_time(0), 1);
        EXPECT_EQ(projdb::isPresent(clip.getCookie()), !imported);
    }
    const auto before = holdings();
    EXPECT_FALSE(makeSequenceFromClip(EditModule()));
    EXPECT_FALSE(makeSequenceFromClip(marked(makeClip(), 0, 1e98)));
    EXPECT_EQ(holdings().first, before.first + 1) << "only the clip itself is new";
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(CopyParts, aSequenceHasAsManyChannelsAsTheClipSelects) {
    const EditModifier clip = makeClip();
    clip->addChan(kChanVideo, kSubStereoRight);
    const EditModifier sequence = makeSequenceFromClip(whole(clip));
    ASSERT_TRUE(sequence);
    EXPECT_EQ(sequence->getNumChans(kChanVideo), 2);
    EXPECT_EQ(sequence->getNumChans(kChanVideo, kSubStereoRight), 1);
}

TEST_F(CopyParts, aSequenceShowsTheClipAsItStandsInTheProject) {
    const EditModifier clip = makeClip();
    EditModule module = marked(clip, 1, 3);
    module.selectChans(kChanAudio, kSubAll, false);
    ASSERT_TRUE(manager().discard({clip.getCookie()}).ok());
    const EditModifier present = manager().makeNewEdit(clip.getCookie(), 1, 1, 0, {25, 1});
    layPieces(present, present->getId(0), {{L"now", 100, 7}});
    const EditModifier sequence = makeSequenceFromClip(module);
    ASSERT_TRUE(sequence);
    EXPECT_EQ(sequence->getNumChans(), 1);
    EXPECT_EQ(sequence->getEndTime(), 2);
    EXPECT_EQ(sequence->get_edit_cel_p(0)->get_strip_cookie(0), materialOf(L"now"));
}

TEST_F(CopyParts, syncErrorsOfASourceComeFromEditsOnly) {
    for (const bool edit : {true, false}) {
        const EditModifier source = edit ? makeReel() : makeClip();
        source->setSyncError(source->getId(0), 0.5);
        const EditModifier copy = makeSequenceFromSource(EditModule(EditPtr(source)), L"(s)");
        ASSERT_TRUE(copy);
        const EditModifier plain = copySequenceEdit(source, L"");
        EXPECT_EQ(copy->getSyncError(copy->getId(0)), edit ? 0.5 : 0.0);
        EXPECT_EQ(plain->getSyncError(plain->getId(0)), 0.5);
        for (const EditModifier& made : {copy, plain}) {
            EXPECT_EQ(made->getLogType(), kLogTypeEdit);
            EXPECT_EQ(made->get_original_material(), 0);
        }
    }
}

TEST_F(CopyParts, anEditJoinsTheGroupsOfItsParent) {
    auto& groups = AssetAssociationGroupManager::instance();
    const Cookie parent = makeReel().getCookie();
    EditModifier first = makeReel();
    setAssetParent(first, parent);
    EXPECT_EQ(config(first, "parent"), parent.asString());
    ASSERT_EQ(groups.getGroups().size(), 1u);
    const auto made = groups.getGroups()[0];
    EXPECT_EQ(made->getName(), L"Related assets");
    EXPECT_THAT(made->getConstituents(), ElementsAre(parent, first.getCookie()));

    const auto versions =
        groups.createGroup(L"Versions", {parent}, AssetAssociationGroup::kVersionsGroup);
    EditModifier second = makeReel();
    setAssetParent(second, parent);
    EXPECT_THAT(made->getConstituents(),
                ElementsAre(parent, first.getCookie(), second.getCookie()));
    EXPECT_THAT(versions->getConstituents(), ElementsAre(parent, second.getCookie()));
    EXPECT_FALSE(made->isDirty() || versions->isDirty());
    EXPECT_EQ(groups.getGroups().size(), 2u);

    EditModifier log = makeClip();
    setAssetParent(log, parent);
    EXPECT_EQ(config(log, "parent"), parent.asString());
    EditModifier orphan = makeReel();
    setAssetParent(orphan, Cookie('G', 1));
    setAssetParent(orphan, Cookie());
    EXPECT_EQ(config(orphan, "parent"), "(none)");
    EditModifier none;
    setAssetParent(none, parent);
    EXPECT_EQ(groups.getGroups().size(), 2u);
}

} // namespace
