#include "bins/BinsCache.h"
#include "bins/DocumentManager.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/KVContainerFile.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/ProjDb.h"
#include "tests/bins/BinProject.h"
#include "vob/VobManager.h"

#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <thread>

using namespace cutroom::test;
using cutroom::StatusCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class BinManagerTest : public BinProject {};

// --- making and finding --------------------------------------------------------------------------

TEST_F(BinManagerTest, GivesOneObjectForACookieAndNothingForWhatIsNoBin) {
    const Cookie id = newBin(L"Dailies")->getID();
    EXPECT_TRUE(bins().saveAll().ok());
    reopen();
    EXPECT_FALSE(bins().isManaged(id));
    filesForThreads();
    std::vector<Kv::Ptr<BinData>> found(4);
    std::vector<std::thread> askers;
    for (Kv::Ptr<BinData>& bin : found)
        askers.emplace_back([&bin, id] { bin = bins().getData(id); });
    for (std::thread& asker : askers)
        asker.join();
    ASSERT_TRUE(found[0]);
    EXPECT_EQ(found[0]->getName(), L"Dailies");
    for (const Kv::Ptr<BinData>& bin : found)
        EXPECT_EQ(bin, found[0]);
    EXPECT_TRUE(bins().isManaged(id));
    for (const Cookie& none : {Cookie(), Cookie('G', 77), Cookie('E', 1), Cookie('M', 5)}) {
        EXPECT_FALSE(bins().getData(none)) << none.asString();
        EXPECT_FALSE(bins().getSummary(none).valid());
        EXPECT_FALSE(bins().isManaged(none));
        EXPECT_EQ(bins().reload(none).code(), StatusCode::notFound);
    }
}

TEST_F(BinManagerTest, NewAndAddedBinsAreToldOnceAndLast) {
    const Kv::Ptr<BinData> bin = bins().newBin();
    EXPECT_THAT(told_, ElementsAre("changed 2"));
    EXPECT_EQ(heard_, bin->getID());
    EXPECT_EQ(bin->getViewType(), getDefaultGalleryView());
    EXPECT_NE(bin->getCreationTime(), 0u);
    EXPECT_EQ(bins().newBin(bin->getID()), bin);
    EXPECT_EQ(bins().reload(bin->getID()).code(), StatusCode::notFound) << "it has no file";
    EXPECT_TRUE(bin->valid() && bin->isDirty());
    EXPECT_FALSE(bins().newBin(Cookie('E', 9)));
    told_.clear();
    const auto made = Kv::makePtr<BinData>(CookieVec{newEdit()}), again = Kv::makePtr<BinData>();
    made->setID(Cookie('M', 9));
    again->setID(Cookie('M', 9));
    EXPECT_EQ(bins().addBin(made, "import"), made);
    EXPECT_THAT(told_, ElementsAre("changed 2 'import'"));
    EXPECT_EQ(bins().addBin(again), made);
    EXPECT_FALSE(bins().addBin(nullptr));
    const Cookie id = bin->getID();
    reopen();
    EXPECT_FALSE(bins().getSummary(id).isSynced());
    EXPECT_TRUE(bins().getSummary(Cookie('M', 9)).isSynced());
    EXPECT_EQ(bins().getSummary(Cookie('M', 9)).logCount, 1);
    EXPECT_TRUE(bins().getData(id)->valid());
}

// --- going ---------------------------------------------------------------------------------------

TEST_F(BinManagerTest, ADestroyedBinLeavesItsHoldersAndABackup) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Cookie id = newBin(L"child")->getID();
    const Kv::Ptr<BinData> parent = newBin(L"parent"), refusing = newBin(L"refusing");
    parent->add(id);
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_THAT(bins().findBinsContainingBin(id), ElementsAre(parent->getID()));
    EditorPreferences::setPreference("Behaviour : Nested bins", false);
    refusing->add(id); // which its summary does not say
    const std::string path = fileOf(id);
    told_.clear();
    files_.arm(0, FaultyFiles::Span::allForEver);
    EXPECT_EQ(bins().destroy(id, "why").code(), StatusCode::inputOutput);
    files_.disarm();
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_TRUE(bins().isManaged(id));

    EXPECT_TRUE(bins().destroy(id, "why").ok());
    EXPECT_THAT(told_, ElementsAre("changed 512 'why'", "changed 512 'why'", "destroyed 'why'"));
    EXPECT_EQ(heard_, id);
    EXPECT_FALSE(bins().getData(id));
    EXPECT_TRUE(parent->empty() && refusing->empty());
    EXPECT_FALSE(cutroom::fileExists(path));
    EXPECT_TRUE(cutroom::fileExists(path + ".bak"));
    EXPECT_EQ(bins().destroy(id, "again").code(), StatusCode::notFound);
    reopen();
    EXPECT_FALSE(bins().getSummary(id).valid());
}

TEST_F(BinManagerTest, ABinMayBeDestroyedByTheCookieThatAnItemHolds) {
    const Cookie edit = newEdit();
    const Kv::Ptr<BinData> one = newBin(L"one"), two = newBin(L"two");
    one->add(edit);
    two->add(edit);
    for (const Kv::Ptr<BinData>& named : {one, two}) { // by the first to let it go, and the second
        const Cookie id = newBin(L"child")->getID();
        one->insertBefore(edit, BinItem(id, 0));
        two->insertBefore(edit, BinItem(id, 0));
        EXPECT_TRUE(bins().destroy(std::as_const(*named).items().front().asset, "why").ok());
        EXPECT_EQ(heard_, id);
        EXPECT_TRUE(one->contains(edit) && two->contains(edit));
        EXPECT_FALSE(one->contains(id) || two->contains(id));
    }
}

// --- saving --------------------------------------------------------------------------------------

// Host and project are static objects: what the library made for itself while it ran goes before.
[[noreturn]] void leaveAllToTheProgramsEnd(const std::string& folder) {
    ::mallopt(M_PERTURB, 0xA5); // what has gone is not to look as it was
    static cutroom::EmbeddedHost host(cutroom::EmbeddedHost::repeatable());
    static cutroom::EmbeddedProject project(host);
    BinManager& bins = BinManager::instance();
    if (!project.open(folder, CurrentProject::Access::readWrite, CurrentProject::IfMissing::create))
        std::exit(1);
    const EditPtr edit = EditManager::instance().addToProject(makeEdit(1, 0, {25, 1}, L"last"));
    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(edit);
    new VobClient(vob.get(), kClientPriorityViewer, kClientManaged); // the manager destroys it
    VobManager::instance().setPlayMachine(vob.get(), false);
    const Kv::Ptr<BinData> bin = bins.newBin();
    bin->add(edit.getCookie());
    if (!host.transport().play() || !bin->save())
        std::exit(2);
    bin->setName(L"once more");
    std::exit(0);
}

TEST(BinManagerDeathTest, AProjectMayBeClosedByStaticObjects) {
    const TempFolder folder;
    EXPECT_EXIT(leaveAllToTheProgramsEnd(folder / "film"), testing::ExitedWithCode(0), "");
    cutroom::EmbeddedHost host;
    cutroom::EmbeddedProject project(host);
    ASSERT_TRUE(project
                    .open(folder / "film", CurrentProject::Access::readOnly,
                          CurrentProject::IfMissing::fail)
                    .ok());
    std::vector<std::string> names;
    projdb::forEach([&](const projdb::Record& record) {
        names.push_back(record.name());
        return true;
    });
    std::map<Cookie, BinSummary> bins;
    BinManager::instance().getAllBins(bins);
    for (const auto& [id, bin] : bins)
        names.push_back(cutroom::toUtf8(bin.name));
    EXPECT_THAT(names, ElementsAre("last", "once more"));
}

TEST_F(BinManagerTest, SavesAllThatIsDirtyAsOneGroup) {
    for (int i = 0; i < 20; ++i)
        newBin(L"bin");
    told_.clear();
    files_.arm(-1, FaultyFiles::Span::once);
    EXPECT_TRUE(bins().anyDirty());
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_FALSE(bins().anyDirty());
    EXPECT_LT(files_.count("flush") + files_.count("flushAll"), 20);
    EXPECT_THAT(told_, ElementsAre("saved"));
}

// The file system in use; calls back once, at the first operation of a kind.
class Meddling final : public FaultyFiles {
public:
    Meddling(std::string kind, std::function<void()> act)
        : FaultyFiles(cutroom::systemFiles()), kind_(std::move(kind)), act_(std::move(act)) {}
    ~Meddling() override { cutroom::installFileSystem(before_); }
    cutroom::Result<Handle> open(const std::string& path, cutroom::OpenMode mode) override {
        const cutroom::Result<Handle> file = FaultyFiles::open(path, mode);
        meddle("open");
        return file;
    }
    cutroom::Status rename(const std::string& from, const std::string& to) override {
        meddle("rename");
        return FaultyFiles::rename(from, to);
    }

private:
    void meddle(const char* kind) {
        if (kind == kind_)
            std::exchange(act_, [] {})();
    }

    const std::string kind_;
    std::function<void()> act_;
    cutroom::iFileSystem* const before_ = cutroom::installFileSystem(this);
};

TEST_F(BinManagerTest, ABinThatGoesWhileItIsReadStaysAway) {
    const Cookie id = newBin(L"going")->getID();
    bins().reInit(); // saves and drops it
    const Meddling files("open", [&] { EXPECT_TRUE(bins().destroy(id, "").ok()); });
    EXPECT_FALSE(bins().getData(id));
    EXPECT_FALSE(bins().getSummary(id).valid());
}

// Calls back when it has been read.
struct SlowBin final : BinData {
    using BinData::load;
    cutroom::Status load(const Cookie& id) override {
        const cutroom::Status read = BinData::load(id);
        std::exchange(act, [] {})();
        return read;
    }
    static inline std::function<void()> act = [] {};
};

TEST_F(BinManagerTest, AnAssetThatGoesWhileABinIsReadIsNotInIt) {
    DocumentManager& documents = DocumentManager::instance();
    const Cookie edit = newEdit(), document = documents.createDocument(L"/a.pdf", 'D')->getID();
    const Cookie id = newBin(L"read")->getID();
    bins().getData(id)->add(CookieVec{edit, document});
    cutroom::installBinMaker('G', [] { return Kv::Ptr<BinData>(Kv::makePtr<SlowBin>()); });
    const std::function<void()> goings[] = {
        [&] { EXPECT_TRUE(documents.destroy(document, "").ok()); },
        [&] { EXPECT_TRUE(EditManager::instance().deleteEdits({edit}, "").ok()); }};
    unsigned left = 2;
    for (const auto& going : goings) {
        bins().reInit(); // saves and drops it
        SlowBin::act = going;
        EXPECT_EQ(bins().getData(id)->numItems(), --left);
    }
    cutroom::installBinMaker('G', nullptr);
}

TEST_F(BinManagerTest, WhatChangesDuringASaveStaysDirty) {
    const Kv::Ptr<BinData> changing = newBin(L"before"), quiet = newBin(L"quiet");
    {
        const Meddling files("rename",
                             [&] { std::thread([&] { changing->setName(L"meanwhile"); }).join(); });
        EXPECT_TRUE(bins().saveAll().ok());
    }
    EXPECT_TRUE(changing->isDirty());
    EXPECT_FALSE(quiet->isDirty());
    EXPECT_EQ(BinData(changing->getID()).getName(), L"before");
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_EQ(BinData(changing->getID()).getName(), L"meanwhile");
}

TEST_F(BinManagerTest, EveryFailureLeavesTheOldBinsOrTheNewOnes) {
    const Kv::Ptr<BinData> a = newBin(L"old"), b = newBin(L"old");
    EXPECT_TRUE(bins().saveAll().ok());
    for (long at = 0; at == 0 || files_.struck(); ++at) {
        const std::wstring name = std::to_wstring(at), before = BinData(a->getID()).getName();
        a->setName(name);
        b->setName(name);
        told_.clear();
        files_.arm(at, FaultyFiles::Span::once);
        const cutroom::Status saved = bins().saveAll();
        files_.disarm();
        for (const Kv::Ptr<BinData>& bin : {a, b}) {
            EXPECT_EQ(saved.ok(), !bin->isDirty()) << at;
            const std::wstring now = BinData(bin->getID()).getName();
            EXPECT_TRUE(now == name || (!saved && now == before)) << at << saved.text();
        }
        EXPECT_EQ(told_.size(), saved.ok() ? 1u : 0u) << at;
        EXPECT_TRUE(bins().saveAll().ok()) << at;
        EXPECT_EQ(BinData(b->getID()).getName(), name) << at;
        ASSERT_LT(at, 200);
    }
}

TEST_F(BinManagerTest, ABinOfALaterVersionDoesNotHoldUpTheOthers) {
    const std::string path = fileOf(Cookie('G', 1));
    const std::string bytes = cutroom::CheckedFile::wrap(cutroom::kContainerKind, 99, "x");
    EXPECT_TRUE(cutroom::writeFile(path, bytes).ok());
    const Kv::Ptr<BinData> later = bins().getData(Cookie('G', 1)), other = newBin(L"other");
    EXPECT_FALSE(later->valid());
    later->setName(L"changed");
    EXPECT_THAT(bins().saveAll().text(), HasSubstr("later version"));
    EXPECT_TRUE(later->isDirty());
    EXPECT_FALSE(other->isDirty());
    EXPECT_EQ(file(path), bytes);
    later->setDirty(false);
}

TEST_F(BinManagerTest, AProjectThatCannotBeWrittenSaysSoAtItsClose) {
    const Kv::Ptr<BinData> bin = newBin(L"lost");
    const std::string groups = folder_ / "film/groups";
    std::filesystem::rename(groups, groups + ".away");
    EXPECT_THAT(project_->close().text(), HasSubstr("groups"));
    std::filesystem::rename(groups + ".away", groups);
    EXPECT_FALSE(bins().isManaged(bin->getID()));
    openProject(CurrentProject::Access::readOnly);
    newBin(L"not here");
    EXPECT_THAT(bins().saveAll().text(), HasSubstr("reading only"));
    EXPECT_FALSE(project_->close().ok());
}

TEST_F(BinManagerTest, ALoopSavesBinsAfterAMinute) {
    end();
    host_.emplace(cutroom::EmbeddedHost::repeatable());
    openProject();
    const Kv::Ptr<BinData> bin = newBin(L"one");
    host_->loop().runFor(59);
    EXPECT_TRUE(bin->isDirty());
    host_->loop().runFor(2);
    EXPECT_FALSE(bin->isDirty());
}

// --- what it is told -----------------------------------------------------------------------------

TEST_F(BinManagerTest, SummariesFollowTheBins) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Kv::Ptr<BinData> bin = newBin(L"Shots");
    const Cookie a = newEdit(L"a"), b = newEdit(L"b");
    const Cookie document = DocumentManager::instance().createDocument(L"/x.pdf", 'D')->getID();
    bin->add(CookieVec{a, document, Cookie('A', 4), Cookie('M', 6), Cookie('G', 5)});
    EXPECT_FALSE(EditManager::instance().isOpen(a)) << "its times are taken, no more";
    bin->setExternalID(L"ext");
    bin->setPermanent(true);
    const BinManager::BinSummary summary = bins().getSummary(bin->getID());
    EXPECT_EQ(summary, BinManager::getSummary(*bin));
    EXPECT_EQ(summary.logCount, 2);
    EXPECT_THAT(summary.children, ElementsAre(Cookie('M', 6), Cookie('G', 5)));
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_EQ(cutroom::readBinSummary(cutroom::toUtf8(bin->getLocation()), bin->getID()).value(),
              summary);
    std::map<Cookie, BinManager::BinSummary> all{{Cookie('G', 1), {}}};
    bins().getAllBins(all);
    EXPECT_THAT(all, ElementsAre(testing::Pair(bin->getID(), summary)));
    EXPECT_THAT(bins().findBinsContainingLog(a), ElementsAre(bin));
    EXPECT_THAT(bins().findBinsContainingLog(b), IsEmpty());
    EXPECT_THAT(bins().findBinsContainingLog(document), ElementsAre(bin));
    EditorPreferences::setPreference("Behaviour : Nested bins", false);
    EXPECT_THAT(BinManager::getSummary(*bin).children, IsEmpty());
}

// --- the life of a project -----------------------------------------------------------------------

TEST_F(BinManagerTest, SettingUpAgainKeepsWhatIsHeldOrNotSaved) {
    const Kv::Ptr<BinData> held = newBin(L"held");
    const Cookie loose = newBin(L"loose")->getID();
    EXPECT_TRUE(bins().saveAll().ok());
    told_.clear();
    bins().reInit();
    EXPECT_THAT(told_, ElementsAre("saved", "reset"));
    EXPECT_FALSE(bins().isManaged(loose));
    EXPECT_EQ(bins().getData(held->getID()), held);
    EXPECT_EQ(bins().getSummary(loose).name, L"loose");
    held->setName(L"renamed");
    EXPECT_EQ(bins().getSummary(held->getID()).name, L"renamed");
}

TEST_F(BinManagerTest, WhatIsMadeWithoutAProjectGetsIntoNone) {
    const Cookie kept = newBin(L"kept")->getID();
    ASSERT_TRUE(project_->close().ok());
    EXPECT_FALSE(bins().isManaged(kept));
    newBin(L"in memory");
    told_.clear();
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_THAT(told_, ElementsAre("saved"));
    EXPECT_TRUE(bins().anyDirty());
    openProject();
    EXPECT_FALSE(bins().anyDirty());
    std::map<Cookie, BinManager::BinSummary> all;
    bins().getAllBins(all);
    EXPECT_THAT(all, ElementsAre(testing::Key(kept)));
}

} // namespace
