#include "bins/Glob.h"
#include "platform/host/StringTable.h"
#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

#include <set>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobClientTest : public VobFixture {};

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
    EXPECT_EQ(client.getLogType(), kLogTypeNone);
    EXPECT_EQ(client.getName(), resourceStrW(kResNoEdit));
    EXPECT_EQ(client.getTypeName(), L"");
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

TEST_F(VobClientTest, HoldsItsVobsEditAndTakesNothing) {
    const EditPtr edit = makeEdit();
    VobClient client(open(edit).get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(client.getAssetReference(), AssetReference(edit.getCookie()));
    EXPECT_TRUE(client.containsType('E'));
    EXPECT_FALSE(client.containsType('G'));
    EXPECT_FALSE(client.getContainerID().valid());
    EXPECT_FALSE(client.add({AssetReference(Cookie('E', 9))}));
}

TEST_F(VobClientTest, IsRecognisedAmongWhatTheInterfaceShows) {
    Panel panel;
    Glob plain;
    EXPECT_TRUE(iCookieContainer::cookieContainerCheckFn(&panel));
    EXPECT_FALSE(iCookieContainer::cookieContainerCheckFn(&plain));
    EXPECT_FALSE(iCookieContainer::cookieContainerCheckFn(nullptr));
}

TEST_F(VobClientTest, IsNamedByTheLogTypeOfTheEdit) {
    std::set<std::wstring> names;
    const EditPtr edit = makeEdit();
    const VobClient client(open(edit).get(), kClientPriorityLowest, kClientUnmanaged);
    for (const eLogType type : {kLogTypeSource, kLogTypeEdit, kLogTypeSyncGhost, kLogTypePrintGhost,
                                kLogTypeSubclip, kLogTypeFileCopy, kLogTypeClipSection}) {
        edit->setLogType(type);
        names.insert(client.getTypeName());
    }
    EXPECT_EQ(names.size(), 7u); // each its own
    edit->setLogType(kLogTypeSpecial);
    EXPECT_EQ(client.getTypeName(), resourceStrW(kResTypeOther));
}

TEST_F(VobClientTest, NobodyIsSkippedWhenOneLeavesAsItHearsOfANewcomer) {
    const auto vob = open(makeEdit());
    MeddlingClient a(vob.get(), calls_, "a", 3);
    const RecorderClient b(vob.get(), calls_, "b", 2);
    RecorderClient newcomer(nullptr, calls_, "n");
    a.onAdded = [&](VobClient*) { VobManager::instance().closeInternal(&a); };
    calls_.clear();
    VobManager::instance().open(&newcomer, vob);
    EXPECT_THAT(calls_, ElementsAre("a: added n", "b: removed a", "n: removed a", "b: added n"));
}

// --- moving all of them --------------------------------------------------------------------------

namespace {
struct TransferRow {
    const char* name;
    unsigned roles, otherRoles, flags; // of the Vob they leave, and of the one they come to
    bool sameEdit;
    unsigned told, rolesThen, otherRolesThen;
};
class VobTransfer : public VobFixture, public testing::WithParamInterface<TransferRow> {};
constexpr unsigned kSource = Vob::kStatusSource, kRecord = Vob::kStatusRecord;
} // namespace

TEST_P(VobTransfer, TakesTheRolesAlong) {
    const TransferRow& row = GetParam();
    const EditPtr edit = makeEdit();
    const auto from = open(edit), to = open(row.sameEdit ? edit : makeEdit());
    RecorderClient low(from.get(), calls_, "low", 1), high(from.get(), calls_, "high", 2);
    from->storeCurrentTime(3);
    for (const auto& [vob, roles] : {std::pair(from, row.roles), {to, row.otherRoles}}) {
        if (roles & kSource)
            VobManager::instance().setSourceMachineRaw(vob.get());
        if (roles & kRecord)
            VobManager::instance().setRecordMachineRaw(vob.get());
    }
    calls_.clear();
    Vob::transferClients(from.get(), to.get(), row.flags);
    EXPECT_EQ(from->getNumClients(), 0u);
    EXPECT_EQ(to->getClientPtr(0), &high);
    EXPECT_EQ(to->getClientPtr(1), &low);
    EXPECT_EQ(from->getStatus(), row.rolesThen);
    EXPECT_EQ(to->getStatus(), row.otherRolesThen);
    const std::string time = row.flags & Vob::kTransferModule ? " time 3" : " time 0";
    std::erase_if(calls_, [](const auto& call) { return !call.starts_with("high: change"); });
    EXPECT_EQ(calls_,
              row.told ? Calls{"high: change " + std::to_string(row.told) + time} : Calls());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobTransfer,
    testing::Values(TransferRow{"none", 0, 0, 0, true, 0, 0, 0},
                    TransferRow{"module", 0, kRecord, 4, true, 32, 0, kRecord},
                    TransferRow{"source", kSource, 0, 0, false, 512, 0, kSource},
                    TransferRow{"sourceToRecord", kSource, kRecord, 0, false, 8704, 0, kSource},
                    TransferRow{"record", kRecord, 0, 0, true, 1024, 0, kRecord},
                    TransferRow{"recordToSource", kRecord, kSource, 0, true, 5120, 0, kRecord},
                    TransferRow{"recordOfAnotherEdit", kRecord, kSource, 0, false, 8192, 0,
                                kSource},
                    TransferRow{"kept", kSource, 0, 8, true, 0, kSource, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobClientTest, MayBeDestroyedByWhoeverHearsItLeave) {
    const auto from = open(makeEdit()), to = open(makeEdit());
    auto goes = std::make_unique<RecorderClient>(from.get(), calls_, "goes", 2);
    MeddlingClient stays(from.get(), calls_, "stays", 1);
    stays.onRemoved = [&](VobClient*) { goes.reset(); };
    Vob::transferClients(from.get(), to.get(), 0);
    EXPECT_EQ(to->getNumClients(), 1u);
    EXPECT_EQ(stays.getVob(), to.get());
}
