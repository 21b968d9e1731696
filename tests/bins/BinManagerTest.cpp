#include "bins/CachedCookieContainer.h"
#include "bins/DocumentManager.h"
#include "bins/iBinDataContainer.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/KVContainerFile.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/prefs/EditorPreferences.h"
#include "tests/bins/BinProject.h"

#include <filesystem>
#include <thread>

using namespace cutroom::test;
using cutroom::StatusCode;
using testing::Contains;
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
    }
}

TEST_F(BinManagerTest, ANewBinIsToldOnceAndLasts) {
    const Kv::Ptr<BinData> bin = bins().newBin();
    EXPECT_THAT(told_, ElementsAre("changed 2"));
    EXPECT_EQ(heard_, bin->getID());
    EXPECT_EQ(bin->getViewType(), getDefaultGalleryView());
    EXPECT_NE(bin->getCreationTime(), 0u);
    EXPECT_EQ(bins().newBin(bin->getID()), bin);
    EXPECT_EQ(bins().newBin(Cookie('M', 9))->getID(), Cookie('M', 9));
    EXPECT_FALSE(bins().newBin(Cookie('E', 9)));
    const Cookie id = bin->getID();
    reopen();
    EXPECT_TRUE(bins().getSummary(id).valid());
    EXPECT_TRUE(bins().getSummary(Cookie('M', 9)).isSynced());
    EXPECT_FALSE(bins().getSummary(id).isSynced());
    EXPECT_TRUE(bins().getData(id)->valid());
}

TEST_F(BinManagerTest, AddsABinMadeElsewhere) {
    const auto bin = Kv::makePtr<BinData>(CookieVec{newEdit()});
    EXPECT_EQ(bins().addBin(bin, "import"), bin);
    EXPECT_THAT(told_, ElementsAre("changed 2 'import'"));
    const auto other = Kv::makePtr<BinData>();
    other->setID(bin->getID());
    EXPECT_EQ(bins().addBin(other), bin);
    EXPECT_FALSE(bins().addBin(nullptr));
    EXPECT_EQ(bins().getSummary(bin->getID()).logCount, 1);
}

// --- going ---------------------------------------------------------------------------------------

TEST_F(BinManagerTest, ADestroyedBinLeavesItsHolderAndABackup) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Kv::Ptr<BinData> child = newBin(L"child");
    const Cookie id = child->getID();
    const Kv::Ptr<BinData> parent = newBin(L"parent");
    parent->add(id);
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_THAT(bins().findBinsContainingBin(id), ElementsAre(parent->getID()));
    const std::string path = fileOf(id);
    told_.clear();
    files_.arm(0, FaultyFiles::Span::allForEver);
    EXPECT_EQ(bins().destroy(id, "why").code(), StatusCode::inputOutput);
    files_.disarm();
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_TRUE(bins().isManaged(id));

    EXPECT_TRUE(bins().destroy(id, "why").ok());
    EXPECT_THAT(told_, ElementsAre("changed 512 'why'", "destroyed 'why'"));
    EXPECT_EQ(heard_, id);
    EXPECT_FALSE(bins().isManaged(id));
    EXPECT_FALSE(bins().getData(id));
    EXPECT_FALSE(parent->contains(id));
    EXPECT_FALSE(cutroom::fileExists(path));
    EXPECT_TRUE(cutroom::fileExists(path + ".bak"));
    EXPECT_EQ(bins().destroy(id, "again").code(), StatusCode::notFound);
    reopen();
    EXPECT_FALSE(bins().getSummary(id).valid());
}

TEST_F(BinManagerTest, ReloadingTakesWhatTheFileSays) {
    const Kv::Ptr<BinData> bin = newBin(L"saved");
    EXPECT_EQ(bins().reload(Cookie('G', 1)).code(), StatusCode::notFound);
    EXPECT_EQ(bins().reload(bin->getID()).code(), StatusCode::notFound) << "it has no file";
    EXPECT_TRUE(bin->valid() && bin->isDirty());
    EXPECT_TRUE(bins().saveAll().ok());
    bin->setName(L"changed");
    told_.clear();
    int toldByTheBin = 0;
    const Kv::Ptr<Guard> listener = bin->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { ++toldByTheBin; }),
        NotifyMsgTypeDictionary::instance().generalChangeMsgType());
    EXPECT_TRUE(bins().reload(bin->getID()).ok());
    EXPECT_EQ(toldByTheBin, 1);
    EXPECT_EQ(bin->getName(), L"saved");
    EXPECT_EQ(bins().getSummary(bin->getID()).name, L"saved");
    EXPECT_FALSE(bin->isDirty());
    EXPECT_THAT(told_, ElementsAre("changed 768 'reload'"));
}

// --- saving --------------------------------------------------------------------------------------

TEST_F(BinManagerTest, SavesAllThatIsDirtyAsOneGroup) {
    std::vector<Kv::Ptr<BinData>> many;
    for (int i = 0; i < 20; ++i)
        many.push_back(newBin(L"bin " + std::to_wstring(i)));
    told_.clear();
    files_.arm(-1, FaultyFiles::Span::once);
    EXPECT_TRUE(bins().anyDirty());
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_FALSE(bins().anyDirty());
    EXPECT_LT(files_.count("flush") + files_.count("flushAll"), 20);
    EXPECT_THAT(told_, ElementsAre("saved"));
    for (const Kv::Ptr<BinData>& bin : many)
        EXPECT_TRUE(cutroom::fileExists(fileOf(bin->getID())));
}

// Calls back before the first file is put into its place.
class Meddling final : public FaultyFiles {
public:
    using FaultyFiles::FaultyFiles;
    cutroom::Status rename(const std::string& from, const std::string& to) override {
        if (before)
            std::exchange(before, nullptr)();
        return FaultyFiles::rename(from, to);
    }
    std::function<void()> before;
};

TEST_F(BinManagerTest, WhatChangesDuringASaveStaysDirty) {
    const Kv::Ptr<BinData> changing = newBin(L"before");
    const Kv::Ptr<BinData> quiet = newBin(L"quiet");
    Meddling files(cutroom::systemFiles());
    cutroom::iFileSystem* const former = cutroom::installFileSystem(&files);
    files.before = [&] { std::thread([&] { changing->setName(L"meanwhile"); }).join(); };
    EXPECT_TRUE(bins().saveAll().ok());
    cutroom::installFileSystem(former);
    EXPECT_FALSE(files.before) << "nothing was renamed";
    EXPECT_TRUE(changing->isDirty());
    EXPECT_FALSE(quiet->isDirty());
    EXPECT_EQ(BinData(changing->getID()).getName(), L"before");
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_EQ(BinData(changing->getID()).getName(), L"meanwhile");
}

TEST_F(BinManagerTest, EveryFailureLeavesTheOldBinsOrTheNewOnes) {
    const Kv::Ptr<BinData> a = newBin(L"old"), b = newBin(L"old");
    EXPECT_TRUE(bins().saveAll().ok());
    bool struck = true;
    for (long at = 0; struck; ++at) {
        const std::wstring name = L"new " + std::to_wstring(at);
        const std::wstring before = BinData(a->getID()).getName();
        a->setName(name);
        b->setName(name);
        told_.clear();
        files_.arm(at, FaultyFiles::Span::once);
        const cutroom::Status saved = bins().saveAll();
        struck = files_.struck();
        files_.disarm();
        EXPECT_TRUE(files_.openHandles() <= 1) << at; // the project's lock
        for (const Kv::Ptr<BinData>& bin : {a, b}) {
            EXPECT_EQ(saved.ok(), !bin->isDirty()) << at;
            const std::wstring now = BinData(bin->getID()).getName();
            EXPECT_TRUE(now == name || (!saved && now == before)) << at << saved.text();
        }
        EXPECT_EQ(told_.size(), saved.ok() ? 1u : 0u) << at;
        EXPECT_TRUE(bins().saveAll().ok()) << at;
        EXPECT_EQ(BinData(b->getID()).getName(), name) << at;
        EXPECT_THAT(cutroom::listFiles(folder_ / "film/groups").value(), testing::SizeIs(4)) << at;
        ASSERT_LT(at, 200);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
        EXPECT_FALSE(cutroom::isTemporaryName(entry.path().filename().string())) << entry.path();
}

TEST_F(BinManagerTest, ABinOfALaterVersionDoesNotHoldUpTheOthers) {
    const Cookie later = newBin(L"later")->getID();
    EXPECT_TRUE(bins().saveAll().ok());
    reopen();
    const std::string path = fileOf(later);
    const std::string bytes = cutroom::CheckedFile::wrap(cutroom::kContainerKind, 99, "x");
    EXPECT_TRUE(cutroom::writeFile(path, bytes).ok());
    const Kv::Ptr<BinData> bin = bins().getData(later);
    EXPECT_FALSE(bin->valid());
    bin->setName(L"changed");
    const Kv::Ptr<BinData> other = newBin(L"other");
    EXPECT_THAT(bins().saveAll().text(), HasSubstr("later version"));
    EXPECT_TRUE(bin->isDirty());
    EXPECT_FALSE(other->isDirty());
    EXPECT_EQ(file(path), bytes);
    bin->setDirty(false);
}

TEST_F(BinManagerTest, AProjectThatCannotBeWrittenSaysSoAtItsClose) {
    const Kv::Ptr<BinData> bin = newBin(L"lost");
    const std::string groups = folder_ / "film/groups";
    std::filesystem::rename(groups, groups + ".away");
    EXPECT_THAT(project_->close().text(), HasSubstr("groups"));
    std::filesystem::rename(groups + ".away", groups);
    EXPECT_FALSE(bins().isManaged(bin->getID()));
    EXPECT_TRUE(project_
                    ->open(folder_ / "film", CurrentProject::Access::readOnly,
                           CurrentProject::IfMissing::fail)
                    .ok());
    newBin(L"not here");
    EXPECT_THAT(bins().saveAll().text(), HasSubstr("reading only"));
    EXPECT_FALSE(project_->close().ok());
}

TEST_F(BinManagerTest, ALoopSavesBinsAfterAMinuteOrManyChanges) {
    end();
    host_.emplace(cutroom::EmbeddedHost::repeatable());
    project_.emplace(*host_);
    ASSERT_TRUE(project_
                    ->open(folder_ / "film", CurrentProject::Access::readWrite,
                           CurrentProject::IfMissing::fail)
                    .ok());
    const Kv::Ptr<BinData> bin = newBin(L"one");
    host_->loop().runFor(59);
    EXPECT_TRUE(bin->isDirty());
    host_->loop().runFor(2);
    EXPECT_FALSE(bin->isDirty());
    for (int i = 0; i < 25; ++i)
        std::thread([&] { bin->setName(std::to_wstring(i)); }).join();
    host_->loop().runFor(0.1);
    EXPECT_FALSE(bin->isDirty());
    EXPECT_EQ(BinData(bin->getID()).getName(), L"24");
}

// --- what it is told -----------------------------------------------------------------------------

TEST_F(BinManagerTest, SummariesFollowTheBins) {
    EditorPreferences::setPreference("Behaviour : Nested bins", true);
    const Kv::Ptr<BinData> bin = newBin(L"Shots");
    const Cookie a = newEdit(L"a"), b = newEdit(L"b");
    const Cookie document = DocumentManager::instance().createDocument(L"/x.pdf", 'D')->getID();
    bin->add(CookieVec{a, document, Cookie('A', 4), Cookie('G', 5), Cookie('M', 6)});
    EXPECT_FALSE(EditManager::instance().isOpen(a)) << "its times are taken, no more";
    bin->setExternalID(L"ext");
    bin->setPermanent(true);
    const BinManager::BinSummary summary = bins().getSummary(bin->getID());
    EXPECT_EQ(summary, BinManager::getSummary(*bin));
    EXPECT_EQ(summary.logCount, 2);
    EXPECT_THAT(summary.children, ElementsAre(Cookie('G', 5), Cookie('M', 6)));
    std::map<Cookie, BinManager::BinSummary> all{{Cookie('G', 1), {}}};
    bins().getAllBins(all);
    EXPECT_THAT(all, ElementsAre(testing::Pair(bin->getID(), summary)));
    EXPECT_THAT(bins().findBinsContainingLog(a), ElementsAre(bin));
    EXPECT_THAT(bins().findBinsContainingLog(b), IsEmpty());
    EXPECT_THAT(bins().findBinsContainingLog(document), ElementsAre(bin));
    EditorPreferences::setPreference("Behaviour : Nested bins", false);
    EXPECT_THAT(BinManager::getSummary(*bin).children, IsEmpty());
}

TEST_F(BinManagerTest, DeletedAndChangedAssetsReachTheLoadedBins) {
    const Cookie edit = newEdit(), other = newEdit();
    auto modifier = DocumentManager::instance().createDocument(L"/x.pdf", 'D');
    const Kv::Ptr<Document> document = modifier.getContainer();
    modifier.release();
    const Kv::Ptr<BinData> bin = newBin(L"bin");
    bin->add(CookieVec{edit, other, document->getID()});
    told_.clear();
    {
        const EditModifier changing{EditPtr(other)};
        changing->setName(L"renamed");
    }
    document->setName(L"paper");
    EXPECT_TRUE(EditManager::instance().deleteEdits({edit}, "gone").ok());
    EXPECT_TRUE(DocumentManager::instance().destroy(document->getID(), "shred").ok());
    EXPECT_THAT(told_, ElementsAre("changed 128", "changed 128", "changed 512 'gone'",
                                   "changed 512 'shred'"));
    EXPECT_EQ(bins().getSummary(bin->getID()).logCount, 1);
}

class View final : public iBinDataContainer {
public:
    BinHandle getBinHandle() const override { return handle; }
    BinHandle handle;
};

TEST_F(BinManagerTest, ContainersAreImportedIntoBins) {
    const Cookie a = newEdit(L"a"), b = newEdit(L"b");
    const Kv::Ptr<BinData> from = newBin(L"from");
    from->add(CookieVec{a, b});
    const Kv::Ptr<BinData> to = newBin(L"to");
    View view;
    EXPECT_FALSE(view.import(to->getID()));
    view.handle = BinHandle(from->getID());
    EXPECT_EQ(view.getBinData(), from);
    EXPECT_FALSE(view.import(Cookie('G', 404)));
    EXPECT_TRUE(view.import(to->getID()));
    EXPECT_TRUE(to->contains(CookieVec{a, b}));
    EXPECT_FALSE(view.import(to->getID())) << "it holds them";
    const Cookie c = newEdit(L"c");
    const CachedCookieContainer snapshot(
        {AssetReference(c, {1.0, 2.0}), AssetReference(Cookie('V', 1))});
    EXPECT_TRUE(snapshot.import(to->getID()));
    EXPECT_EQ(to->findItem(c).markIn, 1.0);
    EXPECT_EQ(to->findItem(c).markOut, 2.0);
    EXPECT_FALSE(view.setBinHandle({}));
    EXPECT_FALSE(view.isActive());
    EXPECT_THAT(view.getBinSelection(), IsEmpty());
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
    const Cookie id = held->getID();
    held->setName(L"renamed");
    EXPECT_EQ(bins().getSummary(id).name, L"renamed");
    ASSERT_TRUE(project_->close().ok());
    EXPECT_FALSE(bins().isManaged(id));
    told_.clear();
    const Cookie inMemory = newBin(L"in memory")->getID();
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_THAT(told_, Contains("saved")) << "though there is no project";
    ASSERT_TRUE(bins().destroy(inMemory, "").ok());
    std::map<Cookie, BinManager::BinSummary> all;
    bins().getAllBins(all);
    EXPECT_THAT(all, IsEmpty());
}

TEST_F(BinManagerTest, MakesBinsOfAKindByTheInstalledMaker) {
    struct Group final : BinData {};
    cutroom::installBinMaker('M', [] { return Kv::Ptr<BinData>(new Group); });
    const Kv::Ptr<BinData> made = bins().newBin(Cookie('M', 3));
    EXPECT_TRUE(Kv::dynamicCast<Group>(made));
    made->setName(L"angles");
    reopen();
    const Kv::Ptr<BinData> loaded = bins().getData(Cookie('M', 3));
    EXPECT_TRUE(Kv::dynamicCast<Group>(loaded));
    EXPECT_EQ(loaded->getName(), L"angles");
    EXPECT_TRUE(cutroom::installBinMaker('M', nullptr));
    EXPECT_FALSE(cutroom::installBinMaker('E', [] { return Kv::Ptr<BinData>(); }));
}

class Format final : public iAssetMetadataExporter {
public:
    explicit Format(std::wstring name) : name_(std::move(name)) {}
    LightweightString<wchar_t> getFormatName() override { return name_; }
    LightweightString<wchar_t> getFileExtension() override { return L"x"; }
    unsigned getSupportedSources() const override { return kSourceBin; }

private:
    const std::wstring name_;
};

TEST_F(BinManagerTest, KeepsOneExporterForEachFormat) {
    const auto a = Kv::makePtr<Format>(L"A"), b = Kv::makePtr<Format>(L"B");
    const auto again = Kv::makePtr<Format>(L"A");
    for (const Kv::Ptr<Format>& format : {a, b, again, Kv::Ptr<Format>()})
        bins().registerMetadataExporter(format);
    using Exporter = Kv::Ptr<iAssetMetadataExporter>;
    EXPECT_THAT(bins().getMetadataExporters(), ElementsAre(Exporter(again), Exporter(b)));
    bins().deRegisterMetadataExporter(L"A");
    bins().deRegisterMetadataExporter(L"C");
    EXPECT_THAT(bins().getMetadataExporters(), ElementsAre(Exporter(b)));
}

} // namespace
