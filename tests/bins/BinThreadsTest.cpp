// Containers of all kinds changed on several threads while all are saved.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/DocumentManager.h"
#include "tests/bins/BinProject.h"
#include "tests/support/Scale.h"

#include <random>
#include <thread>

using namespace cutroom::test;

namespace {

constexpr int kThreads = 4;
constexpr int kOfEach = 3; // containers of each kind

class BinThreads : public BinProject {
protected:
    // Counts what a manager tells; looks at other containers meanwhile, as a user interface does.
    template <class Manager> Kv::Ptr<Guard> count(Manager& manager, std::atomic<long>& told) {
        return manager.registerNotification(
            makeCallback<NotifyMsg>([this, &told](const NotifyMsg& message) {
                const auto* notice = message.getObjectAs<ContainerNotice>();
                if (notice->what() != ContainerNotice::What::changed ||
                    notice->reason() == "reload")
                    return;
                ++told;
                const auto other = static_cast<std::size_t>(told.load()) % kOfEach;
                EXPECT_TRUE(bins().getSummary(ids_[other]).valid());
                EXPECT_FALSE(documents_[other]->getName().empty());
                EXPECT_TRUE(groups_[other]->getID().valid());
            }),
            manager.changeMsgType());
    }
    void makeContainers() {
        for (int i = 0; i < kOfEach; ++i) {
            ids_.push_back(newBin(L"bin")->getID());
            documents_.push_back(
                DocumentManager::instance().createDocument(L"/x.pdf", 'D').getContainer());
            groups_.push_back(AssetAssociationGroupManager::instance().createGroup(L"group", {}));
        }
    }
    // One thread's changes; counts those that are to be told.
    void change(unsigned seed, int times) {
        std::mt19937 random(seed);
        for (int i = 0; i < times; ++i) {
            const auto which = random() % kOfEach;
            const Cookie asset('G', 1000 + random() % 5);
            const Kv::Ptr<BinData> bin = bins().getData(ids_[which]);
            switch (random() % 6) {
            case 0:
                bin->add(asset);
                ++binsChanged_;
                break;
            case 1:
                binsChanged_ += bin->remove(asset);
                break;
            case 2:
                binsChanged_ += bin->setName(std::to_wstring(random()));
                break;
            case 3:
                othersChanged_ += documents_[which]->setName(std::to_wstring(random()));
                break;
            case 4: // no two alike
                documents_[which]->setLocations(
                    {std::to_wstring(i * kThreads + static_cast<int>(seed)), L"/x.pdf"});
                ++othersChanged_;
                break;
            default:
                othersChanged_ += groups_[which]->setName(std::to_wstring(random()));
            }
        }
    }
    // What a fifth thread does until the others are done.
    void saveAndReload() {
        std::mt19937 random(5);
        while (!done_) {
            EXPECT_TRUE(bins().saveAll().ok());
            EXPECT_TRUE(DocumentManager::instance().saveAll().ok());
            EXPECT_TRUE(DocumentManager::instance().findDocumentReferringToFile(L"/x.pdf"));
            EXPECT_TRUE(AssetAssociationGroupManager::instance().flushChanges().ok());
            const Kv::Ptr<BinData> bin = bins().getData(ids_[random() % kOfEach]);
            EXPECT_TRUE(bins().reload(bin->getID()).ok());
            bins().reInit();
            std::map<Cookie, BinSummary> all;
            bins().getAllBins(all);
            EXPECT_THAT(all, testing::SizeIs(kOfEach));
        }
    }

    CookieVec ids_;
    std::vector<Kv::Ptr<Document>> documents_;
    std::vector<Kv::Ptr<AssetAssociationGroup>> groups_;
    std::atomic<long> binsChanged_{0}, othersChanged_{0};
    std::atomic<bool> done_{false};
};

TEST_F(BinThreads, EveryChangeIsToldAndSavedWhateverOthersDo) {
    filesForThreads();
    guard_.reset();
    makeContainers();
    EXPECT_TRUE(bins().saveAll().ok());
    std::atomic<long> binsTold{0}, othersTold{0};
    const Kv::Ptr<Guard> guards[] = {count(bins(), binsTold),
                                     count(DocumentManager::instance(), othersTold),
                                     count(AssetAssociationGroupManager::instance(), othersTold)};
    const int times = static_cast<int>(rounds(1000, 5'000'000));
    std::thread saver([this] { saveAndReload(); });
    std::vector<std::thread> changers;
    for (unsigned seed = 0; seed < kThreads; ++seed)
        changers.emplace_back([=, this] { change(seed, times); });
    for (std::thread& changer : changers)
        changer.join();
    done_ = true;
    saver.join();
    EXPECT_GT(binsChanged_, times);
    EXPECT_EQ(binsTold, binsChanged_);
    EXPECT_EQ(othersTold, othersChanged_);
    EXPECT_TRUE(bins().saveAll().ok());
    for (const Cookie& id : ids_)
        EXPECT_EQ(BinSummary(BinData(id)).name, bins().getSummary(id).name);
    EXPECT_TRUE(DocumentManager::instance().saveAll().ok());
    for (const Kv::Ptr<Document>& document : documents_) {
        JSON::Builder text;
        document->write(text);
        EXPECT_EQ(bytesOf(cutroom::toUtf8(getFilenameForCookie(document->getID()))), text.text());
    }
}

} // namespace
