// Asset groups: their members, who finds them, and their files.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/DocumentManager.h"
#include "tests/bins/DescribedFixture.h"
#include "tests/bins/ToldRecords.h"
#include "tests/support/Edits.h"

using namespace cutroom::test;
using cutroom::Status;
using cutroom::StatusCode;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Group = AssetAssociationGroup;

const Cookie kA('E', 1), kB('E', 2), kC('E', 3), kDocument('D', 1);

class AssetGroupTest : public DescribedFixture {
protected:
    static AssetAssociationGroupManager& manager() {
        return AssetAssociationGroupManager::instance();
    }
    static Kv::Ptr<Group> make(std::uint64_t id, const std::vector<Cookie>& members,
                               Group::eType type = Group::kUserGroup) {
        return manager().createGroup(L"group", members, type, Cookie('G', id));
    }
    std::string file(std::uint64_t id) const {
        return path("associations/" + Cookie('G', id).asString() + ".AssetGroup");
    }
};

TEST_F(AssetGroupTest, ChangesOfMembersNameWhatCameAndWhatWent) {
    const auto group = make(1, {kA, Cookie()}); // the invalid one is left out
    ToldRecords own(*group);
    listen(manager());
    EXPECT_FALSE(group->add(kA));
    EXPECT_FALSE(group->add(Cookie()));
    EXPECT_FALSE(group->remove({kB}));
    group->setConstituents({kA, Cookie()});
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_TRUE(group->add(kB));
    group->setConstituents({kC, kB, kC});
    EXPECT_TRUE(group->remove({kA, kC}));
    EXPECT_THAT(group->getConstituents(), ElementsAre(kB));
    EXPECT_THAT(own.take(), ElementsAre("256:2", "768:3,3,1", "512:3,3"));
    EXPECT_THAT(told_, ElementsAre("changed G1 256", "changed G1 768", "changed G1 512"));
}

// --- the manager ---------------------------------------------------------------------------------

TEST_F(AssetGroupTest, CreatingRecordsACreationAndAddingTellsNothing) {
    listen(manager());
    const auto made = manager().createGroup(L"one", {kA});
    ASSERT_TRUE(made);
    EXPECT_NE(made->getCreationTime(), 0u);
    EXPECT_THAT(told_, ElementsAre(testing::EndsWith(" 2")));

    const auto added = Kv::makePtr<Group>(L"two", std::vector<Cookie>{kB}, Group::kUserGroup);
    const auto same = Kv::makePtr<Group>();
    EXPECT_TRUE(manager().addGroup(added));
    EXPECT_FALSE(manager().addGroup(added));
    EXPECT_FALSE(manager().addGroup(same)); // no cookie
    same->setID(added->getID());
    EXPECT_FALSE(manager().addGroup(same));
    EXPECT_FALSE(manager().addGroup(nullptr));
    EXPECT_FALSE(manager().createGroup(L"", {}, Group::kUserGroup, Cookie('E', 1)));
    EXPECT_EQ(manager().getGroup(added->getID()), added);
    EXPECT_FALSE(manager().getGroup(Cookie('G', 1)));
    EXPECT_EQ(told_.size(), 1u);
    EXPECT_EQ(manager().removeGroup(same, "").code(), StatusCode::notFound);
    EXPECT_EQ(same->save().code(), StatusCode::wrongUsage); // it would overwrite the other's file

    ASSERT_TRUE(manager().removeGroup(added, "").ok());
    EXPECT_TRUE(manager().addGroup(added)); // comes back
    EXPECT_THAT(manager().findGroupsContainingAsset(kB, true), ElementsAre(added));
}

TEST_F(AssetGroupTest, AGroupThatComesBackBeforeTheFlushKeepsItsFile) {
    for (const bool flush : {false, true}) {
        make(1, {kA}, Group::kVersionsGroup);
        ASSERT_TRUE(manager().flushChanges().ok());
        manager().handleLogsDeletion({kA}, "");
        ASSERT_FALSE(manager().isManaged(Cookie('G', 1)));
        const auto again = make(1, {kB});
        ASSERT_TRUE((flush ? manager().flushChanges() : again->save()).ok());
        ASSERT_TRUE(manager().flushChanges().ok());
        EXPECT_EQ(bytesOf(file(1)), textOf(*again));
        ASSERT_TRUE(manager().removeGroup(again, "").ok());
    }
}

TEST_F(AssetGroupTest, ChangedGroupsAreThereWhenTheProjectOpensAgain) {
    make(1, {kA});
    ASSERT_TRUE(manager().flushChanges().ok());
    manager().getGroup(Cookie('G', 1))->add(kC);
    reopen(); // flushes
    EXPECT_THAT(manager().findGroupsContainingAsset(kC, true),
                ElementsAre(manager().getGroup(Cookie('G', 1))));
}

TEST_F(AssetGroupTest, DeletedAssetsLeaveAndVersionsWithoutAnyGo) {
    const EditPtr edit = EditManager::instance().addToProject(makeEdit(1, 0));
    const Cookie deleted = edit.getCookie();
    const auto user = make(1, {deleted}), versions = make(3, {deleted}, Group::kVersionsGroup);
    ASSERT_TRUE(manager().flushChanges().ok());
    listen(manager());
    ASSERT_TRUE(EditManager::instance().deleteEdits({deleted}, "tidy").ok());
    host_.loop().pump();
    EXPECT_THAT(told_, ElementsAre("changed G1 512 'tidy'", "changed G3 512 'tidy'",
                                   "destroyed G3 'tidy'"));
    EXPECT_THAT(manager().getGroups(), ElementsAre(user));
    EXPECT_TRUE(cutroom::fileExists(file(3)));
    ASSERT_TRUE(manager().flushChanges().ok());
    EXPECT_FALSE(cutroom::fileExists(file(3)));
    EXPECT_EQ(versions->save().code(), StatusCode::wrongUsage);
    EXPECT_FALSE(manager().anyDirty());
}

TEST_F(AssetGroupTest, DestroyedDocumentsLeaveTheirGroups) {
    DocumentManager::instance().createDocument(kDocument).release();
    const auto user = make(1, {kDocument, kA});
    DocumentManager::instance().getDocument(kDocument)->setName(L"changes nothing");
    EXPECT_EQ(user->getConstituents().size(), 2u);
    ASSERT_TRUE(DocumentManager::instance().destroy(kDocument, "gone").ok());
    EXPECT_THAT(user->getConstituents(), ElementsAre(kA));
}

TEST_F(AssetGroupTest, EachFailingOperationOfAFlushLeavesAllOldOrAllNew) {
    const auto one = make(1, {}), two = make(2, {});
    std::uint64_t next = 10;
    failEach(
        [&](long) {
            make(next, {kA}, Group::kVersionsGroup);
            ASSERT_TRUE(manager().flushChanges().ok());
            manager().handleLogsDeletion({kA}, ""); // the file of this one goes with the flush
            one->add(Cookie('E', next));
            two->add(Cookie('E', next));
        },
        [&] { return manager().flushChanges(); },
        [&](long at, const Status& status) {
            EXPECT_EQ(one->isDirty(), !status.ok()) << at;
            EXPECT_EQ(manager().anyDirty(), !status.ok()) << at;
            ASSERT_TRUE(manager().flushChanges().ok()) << at;
            EXPECT_EQ(bytesOf(file(1)), textOf(*one)) << at;
            EXPECT_EQ(bytesOf(file(2)), textOf(*two)) << at;
            EXPECT_FALSE(cutroom::fileExists(file(next++))) << at;
        });
}

} // namespace
