// Asset groups: their descriptions, their members, and who finds them.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/DocumentManager.h"
#include "tests/bins/DescribedFixture.h"
#include "tests/support/Edits.h"

#include <rapidcheck.h>

using namespace cutroom::test;
using cutroom::Status;
using cutroom::StatusCode;
using testing::ElementsAre;
using testing::HasSubstr;
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

// --- descriptions --------------------------------------------------------------------------------

TEST_F(AssetGroupTest, WritesItsKeysInOrderAndTheExternalIdOnlyWhenItHasOne) {
    for (const char* name : {"associations/user.AssetGroup", "associations/versions.AssetGroup"}) {
        Group group;
        ASSERT_TRUE(group.read(jsonOf(golden(name)))) << name;
        EXPECT_EQ(textOf(group), golden(name));
        EXPECT_TRUE(group.isDirty()); // read by hand, not from its file
    }
    const auto group = make(9, {kB, Cookie(), kDocument, kA}, Group::kVersionsGroup);
    EXPECT_THAT(textOf(*group), HasSubstr("\"Type\": \"Versions\""));
    EXPECT_THAT(textOf(*group), testing::Not(HasSubstr("ExtID")));
    EXPECT_THAT(group->getConstituents(), ElementsAre(kB, kDocument, kA));
}

TEST_F(AssetGroupTest, RefusesWhatIsNoDescription) {
    const auto with = [](const std::string& member) {
        return R"({"ID":"G0000000000001",)" + member + "}";
    };
    const std::pair<std::string, const char*> rows[] = {
        {"7", "no JSON object"},
        {"{}", "\"ID\" is missing"},
        {R"({"ID":"E0000000000001"})", "no group's cookie"},
        {with(R"("Type":7)"), "\"Type\" is neither"},
        {with(R"("Type":"user")"), "\"Type\" is neither"},
        {with(R"("Name":{})"), "\"Name\" is no text"},
        {with(R"("Created":1.5)"), "\"Created\" is no time"},
        {with(R"("Constituents":{})"), "\"Constituents\" is no list"},
        {with(R"("Constituents":["E0000000000001","E1"])"), "holds a text that is no cookie"},
        {with(R"("Constituents":["I"])"), "holds a text that is no cookie"},
    };
    Group group;
    for (const auto& [text, reason] : rows) {
        EXPECT_FALSE(group.read(jsonOf(text))) << text;
        EXPECT_THAT(group.take(*jsonOf(text), "x").text(), HasSubstr(reason)) << text;
    }
    EXPECT_TRUE(group.read(jsonOf(with(R"("Unknown":1)")))); // all but the cookie may be missing
    EXPECT_EQ(group.getType(), Group::kUserGroup);
}

TEST_F(AssetGroupTest, AnyGroupComesBackExactlyAndIsWrittenTheSameAgain) {
    const auto cookies = rc::gen::container<std::vector<Cookie>>(rc::gen::apply(
        [](char type, std::uint64_t id, std::uint8_t index) { return Cookie(type, id, index); },
        rc::gen::element('E', 'D', 'A', 'G', 'V'), rc::gen::arbitrary<std::uint64_t>(),
        rc::gen::arbitrary<std::uint8_t>()));
    const bool held = rc::check("groups", [&] {
        Group group(*rc::gen::container<std::wstring>(rc::gen::inRange<wchar_t>(0, 0xD800)),
                    *cookies, *rc::gen::element(Group::kUserGroup, Group::kVersionsGroup));
        group.setExternalID(*rc::gen::container<std::wstring>(rc::gen::inRange<wchar_t>(1, 99)));
        Group again;
        RC_ASSERT(again.read(jsonOf(textOf(group))));
        RC_ASSERT(again.getName() == group.getName());
        RC_ASSERT(again.getType() == group.getType());
        RC_ASSERT(again.getConstituents() == group.getConstituents());
        RC_ASSERT(again.getExternalID() == group.getExternalID());
        RC_ASSERT(textOf(again) == textOf(group));
    });
    EXPECT_TRUE(held);
}

// --- members -------------------------------------------------------------------------------------

TEST_F(AssetGroupTest, ChangesOfMembersNameWhatCameAndWhatWent) {
    const auto group = make(1, {kA});
    CookieVec named;
    const auto naming = group->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
            named = message.getObjectAs<ContainerBase::Modifications>()->records()[0].getCookies();
        }),
        NotifyMsgTypeDictionary::kGeneralChange);
    listen(manager());
    EXPECT_FALSE(group->add(kA));
    EXPECT_FALSE(group->add(Cookie()));
    EXPECT_FALSE(group->remove({kB}));
    group->setConstituents({kA, Cookie()}); // the invalid one is left out
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_TRUE(group->add(kB));
    EXPECT_THAT(named, ElementsAre(kB));
    group->setConstituents({kC, kB, kC});
    EXPECT_THAT(named, ElementsAre(kC, kC, kA));
    EXPECT_TRUE(group->remove({kA, kC}));
    EXPECT_THAT(named, ElementsAre(kC, kC));
    EXPECT_THAT(group->getConstituents(), ElementsAre(kB));
    EXPECT_THAT(told_, ElementsAre("changed G1 256", "changed G1 768", "changed G1 512"));
}

TEST_F(AssetGroupTest, GroupsAreFoundByTheirMembersWhateverChanges) {
    const auto one = make(1, {kA, kB}), two = make(2, {kB}, Group::kVersionsGroup);
    EXPECT_THAT(manager().findGroupsContainingAsset(kB, true), ElementsAre(one, two));
    EXPECT_THAT(manager().findGroupsContainingAsset(kB, false), ElementsAre(two));
    EXPECT_THAT(manager().findGroupsContainingAsset(kB, Group::kUserGroup), ElementsAre(one));
    EXPECT_THAT(manager().findGroupsContainingAsset(kA, Group::kVersionsGroup), IsEmpty());
    EXPECT_THAT(manager().findGroupsContainingAsset(Cookie('E', 1, 2), true), IsEmpty());
    one->setConstituents({kC, kC});
    two->add(kC);
    EXPECT_THAT(manager().findGroupsContainingAsset(kB, true), ElementsAre(two));
    EXPECT_THAT(manager().findGroupsContainingAsset(kC, true), ElementsAre(one, two));
    EXPECT_TRUE(manager().removeGroup(two, "").ok());
    EXPECT_THAT(manager().findGroupsContainingAsset(kC, true), ElementsAre(one));
}

// --- the manager ---------------------------------------------------------------------------------

TEST_F(AssetGroupTest, CreatingRecordsACreationAndAddingTellsNothing) {
    listen(manager());
    const auto made = manager().createGroup(L"one", {kA});
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getID().type(), 'G');
    EXPECT_NE(made->getCreationTime(), 0u);
    EXPECT_THAT(told_, ElementsAre(testing::EndsWith(" 2")));

    const auto added = Kv::makePtr<Group>(L"two", std::vector<Cookie>{kB}, Group::kUserGroup);
    EXPECT_TRUE(manager().addGroup(added));
    EXPECT_FALSE(manager().addGroup(added));
    const auto same = Kv::makePtr<Group>();
    EXPECT_FALSE(manager().addGroup(same)); // no cookie
    same->setID(added->getID());
    EXPECT_FALSE(manager().addGroup(same));
    EXPECT_FALSE(manager().addGroup(nullptr));
    EXPECT_FALSE(manager().createGroup(L"", {}, Group::kUserGroup, Cookie('E', 1)));
    EXPECT_EQ(manager().getGroup(added->getID()), added);
    EXPECT_TRUE(manager().isManaged(added->getID()));
    EXPECT_FALSE(manager().getGroup(Cookie('G', 1)));
    EXPECT_EQ(manager().getGroups().size(), 2u);
    EXPECT_EQ(told_.size(), 1u);
    EXPECT_EQ(manager().removeGroup(same, "").code(), StatusCode::notFound);
    EXPECT_EQ(same->save().code(), StatusCode::wrongUsage); // would write over the other's file

    ASSERT_TRUE(manager().removeGroup(added, "").ok());
    EXPECT_TRUE(manager().addGroup(added)); // comes back
    EXPECT_EQ(manager().findGroupsContainingAsset(kB, true).size(), 1u);
    added->setName(L"again");
    ASSERT_TRUE(manager().flushChanges().ok());
    EXPECT_EQ(contentOf(file(added->getID().id())), textOf(*added));
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
        EXPECT_EQ(contentOf(file(1)), textOf(*again));
        ASSERT_TRUE(manager().removeGroup(again, "").ok());
    }
}

TEST_F(AssetGroupTest, ChangedGroupsAreThereWhenTheProjectOpensAgain) {
    make(1, {kA})->setName(L"kept");
    make(2, {kB});
    ASSERT_TRUE(manager().flushChanges().ok());
    manager().getGroup(Cookie('G', 1))->add(kC);
    put(file(3), "{\"ID\": \"G0000000000003\", \"Constituents\": [7]}");
    reopen(); // flushes
    EXPECT_EQ(manager().getGroups().size(), 2u);
    EXPECT_EQ(manager().getGroup(Cookie('G', 1))->getName(), L"kept");
    EXPECT_EQ(manager().findGroupsContainingAsset(kC, true).size(), 1u);
    ASSERT_THAT(manager().getDamaged(), testing::SizeIs(1));
    EXPECT_THAT(manager().getDamaged()[0].text(), HasSubstr("G0000000000003.AssetGroup: \"Const"));
    EXPECT_TRUE(make(3, {}));
    ASSERT_TRUE(manager().flushChanges().ok());
    EXPECT_THAT(contentOf(file(3) + ".damaged"), HasSubstr("[7]"));
}

TEST_F(AssetGroupTest, DeletedAssetsLeaveAndVersionsWithoutAnyGo) {
    const auto edit = makeEdit(1, 0);
    const Cookie deleted = edit.getCookie();
    ASSERT_TRUE(EditManager::instance().addToProject(edit));
    const auto user = make(1, {deleted}), mixed = make(2, {deleted, kB}, Group::kVersionsGroup),
               versions = make(3, {deleted}, Group::kVersionsGroup);
    ASSERT_TRUE(manager().flushChanges().ok());
    listen(manager());
    ASSERT_TRUE(EditManager::instance().deleteEdits({deleted}, "tidy").ok());
    host_.loop().pump();
    EXPECT_THAT(told_, ElementsAre("changed G1 512 'tidy'", "changed G2 512 'tidy'",
                                   "changed G3 512 'tidy'", "destroyed G3 'tidy'"));
    EXPECT_THAT(user->getConstituents(), IsEmpty());
    EXPECT_THAT(mixed->getConstituents(), ElementsAre(kB));
    EXPECT_THAT(manager().getGroups(), ElementsAre(user, mixed));
    EXPECT_TRUE(cutroom::fileExists(file(3)));
    EXPECT_TRUE(manager().anyDirty());
    ASSERT_TRUE(manager().flushChanges().ok());
    EXPECT_FALSE(cutroom::fileExists(file(3)));
    EXPECT_EQ(versions->save().code(), StatusCode::wrongUsage);
    EXPECT_FALSE(manager().anyDirty());
}

TEST_F(AssetGroupTest, DestroyedDocumentsLeaveTheirGroups) {
    DocumentManager::instance().createDocument(kDocument).release();
    const auto user = make(1, {kDocument, kA});
    make(2, {kDocument}, Group::kVersionsGroup);
    DocumentManager::instance().getDocument(kDocument)->setName(L"changes nothing");
    EXPECT_EQ(user->getConstituents().size(), 2u);
    ASSERT_TRUE(DocumentManager::instance().destroy(kDocument, "gone").ok());
    EXPECT_THAT(user->getConstituents(), ElementsAre(kA));
    EXPECT_THAT(manager().getGroups(), ElementsAre(user));
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
            EXPECT_EQ(contentOf(file(1)), textOf(*one)) << at;
            EXPECT_EQ(contentOf(file(2)), textOf(*two)) << at;
            EXPECT_FALSE(cutroom::fileExists(file(next++))) << at;
        });
}

} // namespace
