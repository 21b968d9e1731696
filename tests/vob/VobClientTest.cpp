#include "bins/Glob.h"
#include "platform/host/StringTable.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobClientTest : public VobFixture {};

// What an installed importer was given.
LightweightVector<AssetReference> imported;
bool takeImported(const LightweightVector<AssetReference>& assets, const Cookie& bin) {
    imported = assets;
    return bin == Cookie('G', 1);
}

class Panel : public Glob, public VobClient {};

} // namespace

TEST_F(VobClientTest, UnattachedItAnswersEmpty) {
    const VobClient client;
    EXPECT_EQ(client.getVob(), nullptr);
    EXPECT_FALSE(client.getCookie().valid());
    EXPECT_FALSE(client.getEdit());
    EXPECT_FALSE(client.getEditModule().valid());
    EXPECT_EQ(client.getGroup(), "");
    EXPECT_THAT(client.getCookies(), IsEmpty());
    EXPECT_FALSE(client.getAssetReference().cookie.valid());
    EXPECT_EQ(client.getLogType(), kLogTypeNone);
    EXPECT_EQ(client.getName(), resourceStrW(kResNoEdit));
    EXPECT_EQ(client.getTypeName(), L"");
    EXPECT_FALSE(client.containsType('E'));
}

TEST_F(VobClientTest, AttachesAtItsMakingAndLeavesAtItsEnd) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    const VobClient stays(vob.get(), kClientPriorityLowest, kClientUnmanaged);
    {
        const VobClient byCookie(edit.getCookie(), nullptr, kClientPriorityViewer, kClientManaged);
        EXPECT_EQ(byCookie.getVob(), vob.get());
        EXPECT_NE(byCookie.uid(), stays.uid());
        EXPECT_EQ(byCookie.getGroup(), vob->getGroupId());
        EXPECT_EQ(vob->getClientPtr(0), &byCookie); // by its priority
        EXPECT_EQ(vob->getNumClients(kClientManaged), 1u);
    }
    EXPECT_EQ(vob->getNumClients(), 1u);
    const VobClient nowhere(Cookie(), nullptr, kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(nowhere.getVob(), nullptr);
    const VobClient fresh(makeEdit().getCookie(), nullptr, kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(VobManager::instance().getAllVobs().size(), 2u);
}

TEST_F(VobClientTest, HoldsItsVobsEditWithTheMarkedRegion) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    VobClient client(vob.get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_THAT(client.getCookies(), ElementsAre(AssetReference(edit.getCookie())));
    EXPECT_FALSE(client.getAssetReference().hasRange());
    vob->setMarkTime(IdStamp(), TimeRange(2, 4));
    EXPECT_THAT(client.getCookies(),
                ElementsAre(AssetReference(edit.getCookie(), TimeRange(2, 4))));
    EXPECT_EQ(client.getAssetReference().range, TimeRange(2, 4));
    EXPECT_TRUE(client.containsType('E'));
    EXPECT_FALSE(client.containsType('G'));
    EXPECT_EQ(client.getName(), edit->getName());
    EXPECT_FALSE(client.getContainerID().valid());
    EXPECT_FALSE(client.add({AssetReference(Cookie('E', 9))}));
    EXPECT_FALSE(client.isDynamic());
}

TEST_F(VobClientTest, IsImportedAsAContainerOfItsAssets) {
    const EditPtr edit = makeEdit();
    const VobClient client(open(edit).get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_FALSE(client.import(Cookie('G', 1))); // no bins yet
    const auto before = cutroom::installBinImporter(takeImported);
    EXPECT_TRUE(client.import(Cookie('G', 1)));
    EXPECT_THAT(imported, ElementsAre(AssetReference(edit.getCookie())));
    EXPECT_FALSE(client.import(Cookie('G', 2)));
    imported.clear();
    EXPECT_FALSE(client.import(Cookie()));
    EXPECT_FALSE(VobClient().import(Cookie('G', 1))); // nothing to give
    EXPECT_THAT(imported, IsEmpty());
    cutroom::installBinImporter(before);
}

TEST_F(VobClientTest, IsRecognisedAmongWhatTheInterfaceShows) {
    Panel panel;
    Glob plain;
    EXPECT_TRUE(iCookieContainer::cookieContainerCheckFn(&panel));
    EXPECT_FALSE(iCookieContainer::cookieContainerCheckFn(&plain));
    EXPECT_FALSE(iCookieContainer::cookieContainerCheckFn(nullptr));
}

TEST_F(VobClientTest, OnlyUnmanagedOnesMayBeDestroyedForAnother) {
    VobClient client;
    EXPECT_TRUE(client.isAutoDestroyable(nullptr));
    client.setManagementDetails(kClientManaged);
    EXPECT_FALSE(client.isAutoDestroyable(&client));
}

namespace {
struct TypeRow {
    const char* name;
    eLogType type;
    ResId text;
};
class VobClientType : public VobFixture, public testing::WithParamInterface<TypeRow> {};
} // namespace

TEST_P(VobClientType, IsNamedByTheLogTypeOfTheEdit) {
    const EditPtr edit = makeEdit();
    edit->setLogType(GetParam().type);
    const VobClient client(open(edit).get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(client.getTypeName(), resourceStrW(GetParam().text));
    EXPECT_EQ(client.getLogType(), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobClientType,
    testing::Values(TypeRow{"source", kLogTypeSource, kResTypeSource},
                    TypeRow{"edit", kLogTypeEdit, kResTypeEdit},
                    TypeRow{"syncGhost", kLogTypeSyncGhost, kResTypeSyncGhost},
                    TypeRow{"printGhost", kLogTypePrintGhost, kResTypePrintGhost},
                    TypeRow{"subclip", kLogTypeSubclip, kResTypeSubclip},
                    TypeRow{"fileCopy", kLogTypeFileCopy, kResTypeFileCopy},
                    TypeRow{"section", kLogTypeClipSection, kResTypeClipSection},
                    TypeRow{"special", kLogTypeSpecial, kResTypeOther}),
    [](const auto& row) { return std::string(row.param.name); });
