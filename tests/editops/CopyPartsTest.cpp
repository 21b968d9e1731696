// Kinds of copies, names, the last message, sequences from clips, parents.
#include "CopyFixture.h"
#include "bins/AssetAssociationGroupManager.h"
#include "editops/AssetParent.h"
#include "editops/CopyKinds.h"
#include "editops/CopyLog.h"
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
    const struct {
        const char* kind;
        void (*make)(EditModifier&);
        const char *channels, *name;
        bool keepsLabels;
    } rows[] = {
        {"4", edcopy_make_clipsection, "axrstL", "Reel", false},
        {"2", [](auto& e) { edcopy_make_print_ghost(e, L"(p)"); }, "axrstL", "Reel (p)", false},
        {"3", [](auto& e) { edcopy_make_subclip(e, L""); }, "axstL", "Reel", false},
        {"1", [](auto& e) { edcopy_make_sync_ghost(e, L"N", true); }, "axstL", "N", true},
        {"1", [](auto& e) { edcopy_make_sync_ghost(e, L"N", false); }, "axstL", "N", false},
    };
    for (const auto& row : rows) {
        EditModifier none, reel = makeReel();
        row.make(none);
        EXPECT_FALSE(none);
        reel->set_original_material(3);
        reel->setConfig("CACHE_1", "x");
        row.make(reel);
        EXPECT_EQ(config(reel, "IS_DUPE"), row.kind);
        EXPECT_EQ(config(reel, "CACHE_1"), "(none)") << row.kind;
        EXPECT_EQ(reel->get_original_material(), 3) << row.kind;
        EXPECT_EQ(contents(reel), row.channels) << row.kind;
        EXPECT_EQ(toUtf8(reel->getName()), row.name) << row.kind;
        EXPECT_EQ(keepsLabels(reel), row.keepsLabels) << row.kind;
    }
}

TEST_F(CopyParts, aSequenceTakesTheMarkedPartOfAClipAsItStandsInTheProject) {
    enum { kPresent, kImported, kChanged };
    for (const auto state : {kPresent, kImported, kChanged}) {
        SCOPED_TRACE(state);
        const EditModifier clip = makeClip();
        clip->setImported(state == kImported);
        if (state != kChanged)
            clip->addChan(kChanVideo, kSubStereoRight);
        EditModule module = marked(clip, 1, 3);
        module.selectChans(kChanAudio, kSubAll, false);
        EditModifier present;
        if (state == kChanged) { // another edit of that cookie meanwhile
            ASSERT_TRUE(manager().discard({clip.getCookie()}).ok());
            present = manager().makeNewEdit(clip.getCookie(), 1, 1, 0, {25, 1});
            layPieces(present, present->getId(0), {{L"now", 100, 7}});
        }
        const EditModifier sequence = makeSequenceFromClip(module);
        ASSERT_TRUE(sequence);
        EXPECT_EQ(sequence->getLogType(), kLogTypeEdit);
        EXPECT_EQ(sequence->getNumChans(kChanVideo, kSubNormal), 1);
        EXPECT_EQ(sequence->getNumChans(), state == kChanged ? 1 : 2);
        EXPECT_EQ(sequence->getEndTime(), 2);
        EXPECT_EQ(sequence->get_edit_cel_p(0)->get_strip_cookie(0),
                  state == kChanged ? materialOf(L"now") : strip(clip, 'V', 1));
        EXPECT_EQ(projdb::isPresent(clip.getCookie()), state != kImported);
    }
    const EditModifier gone = makeClip();
    ASSERT_TRUE(manager().deleteEdits({gone.getCookie()}, "").ok());
    const auto before = holdings();
    for (const EditPtr& clip : {EditPtr(), EditPtr(gone)})
        EXPECT_FALSE(makeSequenceFromClip(whole(clip)));
    EXPECT_FALSE(makeSequenceFromClip(marked(makeClip(), 0, 1e98)));
    EXPECT_EQ(holdings().first, before.first + 1) << "only the clip itself is new";
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(CopyParts, aSequenceFromASourceKeepsWhatIsNeitherPictureNorSound) {
    const EditModifier reel = makeReel();
    reel->addChan(kChanSubtitle);
    EditModule picture{EditPtr(reel)};
    picture.selectAll(false);
    picture.selectChan(reel->getId(0), true);
    EXPECT_EQ(contents(makeSequenceFromSource(picture, {})), "a-");
}

TEST_F(CopyParts, anEditJoinsTheGroupsOfItsParentWhichAreSaved) {
    const Cookie parent = makeReel().getCookie();
    EditModifier first = makeReel(), second = makeReel(), none;
    for (EditModifier* child : {&first, &none, &second})
        setAssetParent(*child, parent);
    setAssetParent(first, Cookie('G', 1));
    setAssetParent(first, Cookie());
    const auto groups = AssetAssociationGroupManager::instance().getGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_THAT(groups[0]->getConstituents(),
                ElementsAre(parent, first.getCookie(), second.getCookie()));
    EXPECT_FALSE(groups[0]->isDirty());
    EXPECT_EQ(config(first, "parent"), parent.asString());
}

} // namespace
