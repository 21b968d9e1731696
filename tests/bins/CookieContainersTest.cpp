#include "bins/CachedCookieContainer.h"
#include "bins/ContainerManagerBase.h"
#include "bins/iEditContainer.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const Cookie kA('E', 1), kB('D', 2), kBin('G', 3);

class Shelf final : public iCookieContainer {
public:
    Cookie getContainerID() const override { return kBin; }
    LightweightVector<AssetReference> getCookies() const override {
        ++asked;
        return held;
    }
    LightweightString<wchar_t> getName() const override { return L"Shelf"; }
    LightweightString<wchar_t> getTypeName() const override { return L"Furniture"; }

    LightweightVector<AssetReference> held{AssetReference(kA, TimeRange(1, 2)), AssetReference(kB)};
    mutable int asked = 0;
};

class Bare final : public iCookieContainer {
public:
    Cookie getContainerID() const override { return {}; }
    LightweightVector<AssetReference> getCookies() const override { return {}; }
};

class OneEdit final : public iEditContainer {
public:
    Cookie getAssetID() const override { return kA; }
    AssetReference getAssetReference() const override { return {kA, TimeRange(3, 4)}; }
    LightweightString<wchar_t> getAssetName() const override { return {}; }
    eLogType getLogType() const override { return kLogTypeEdit; }
};

// Takes what is imported.
class Importer {
public:
    Importer() : before_(cutroom::installBinImporter(&take)) { taken().clear(); }
    ~Importer() { cutroom::installBinImporter(before_); }
    static LightweightVector<AssetReference>& taken() {
        static LightweightVector<AssetReference> assets;
        return assets;
    }

private:
    static bool take(const LightweightVector<AssetReference>& assets, const Cookie& bin) {
        taken() = assets;
        return bin == kBin;
    }
    const cutroom::BinImporter before_;
};

} // namespace

TEST(CookieContainer, DefaultsRefuseAndAnswerEmpty) {
    Bare bare;
    EXPECT_FALSE(bare.add({AssetReference(kA)}));
    EXPECT_THAT(bare.getCookies(), IsEmpty());
    EXPECT_EQ(bare.getName(), L"");
    EXPECT_EQ(bare.getTypeName(), L"");
    EXPECT_FALSE(bare.containsType('E'));
    EXPECT_FALSE(OneEdit().isDynamic());
}

TEST(CookieContainer, ContainsTheTypesOfItsAssets) {
    const Shelf shelf;
    EXPECT_TRUE(shelf.containsType('E'));
    EXPECT_TRUE(shelf.containsType('D'));
    EXPECT_FALSE(shelf.containsType('G')); // that is its own
}

TEST(CookieContainer, IsImportedWithItsRanges) {
    Shelf shelf;
    EXPECT_FALSE(shelf.import(kBin)); // there are no bins
    const Importer importer;
    EXPECT_TRUE(shelf.import(kBin));
    EXPECT_THAT(Importer::taken(), testing::ContainerEq(shelf.held));
    EXPECT_FALSE(shelf.import(Cookie('G', 9)));
    EXPECT_TRUE(OneEdit().import(kBin));
    EXPECT_THAT(Importer::taken(), ElementsAre(AssetReference(kA, TimeRange(3, 4))));
    Importer::taken().clear();
    EXPECT_FALSE(Bare().import(kBin));
    EXPECT_FALSE(shelf.import(Cookie()));
    EXPECT_THAT(Importer::taken(), IsEmpty());
}

TEST(CachedCookieContainer, ReadsOnceAndNeverAgain) {
    Shelf shelf;
    CachedCookieContainer cached(shelf);
    const auto before = shelf.held;
    shelf.held.clear();
    EXPECT_THAT(cached.getCookies(), testing::ContainerEq(before));
    EXPECT_EQ(cached.getName(), L"Shelf");
    EXPECT_EQ(cached.getTypeName(), L"Furniture");
    EXPECT_FALSE(cached.getContainerID().valid());
    EXPECT_TRUE(cached.containsType('D'));
    EXPECT_EQ(shelf.asked, 1);
    EXPECT_FALSE(static_cast<iCookieContainer&>(cached).add({AssetReference(kA)}));
    cached = shelf;
    EXPECT_EQ(cached.numContained(), 0u);
    EXPECT_EQ(CachedCookieContainer(&shelf).getName(), L"Shelf");
    EXPECT_EQ(CachedCookieContainer(static_cast<const iCookieContainer*>(nullptr)).getName(), L"");
}

TEST(CachedCookieContainer, IsFilledByHandToo) {
    CachedCookieContainer cached(LightweightVector<AssetReference>{AssetReference(kB)});
    cached.add(kA);
    cached.setName(L"Mine");
    cached.setTypeName(L"List");
    const CachedCookieContainer copy(cached);
    cached.clear();
    EXPECT_EQ(cached.numContained(), 0u);
    EXPECT_THAT(copy.getCookies(), ElementsAre(AssetReference(kB), AssetReference(kA)));
    EXPECT_EQ(copy.getName(), L"Mine");
    EXPECT_EQ(copy.getTypeName(), L"List");
}

// --- managers ------------------------------------------------------------------------------------

namespace {

class Note final : public iObject {};

class Keeper final : public ContainerManagerBase {
public:
    void tell(Kv::Ptr<iObject> payload = {}) const {
        ContainerManagerBase::issueNotification(std::move(payload));
    }
    Kv::Ptr<Guard> listen(std::function<void(const NotifyMsg&)> function) const {
        return registerNotification(makeCallback<NotifyMsg>(std::move(function)), changeMsgType());
    }
};

class ContainerManager : public testing::Test {
protected:
    cutroom::EmbeddedHost host_{cutroom::EmbeddedHost::repeatable()};
    Keeper keeper_, other_;
};

} // namespace

TEST_F(ContainerManager, TellsThePayloadUnderItsOwnType) {
    EXPECT_EQ(keeper_.changeMsgType(),
              NotifyMsgTypeDictionary::instance().intern("ContainerManagerBaseChange"));
    Kv::Ptr<iObject> seen;
    const auto guard = keeper_.listen([&](const NotifyMsg& m) { seen = m.getObject(); });
    const Kv::Ptr<iObject> note(new Note);
    keeper_.tell(note);
    EXPECT_EQ(seen, note);
}

TEST_F(ContainerManager, LosesWhatAListenerRaisesOnTheWay) {
    std::vector<std::string> told;
    const auto first = keeper_.listen([&](const NotifyMsg&) {
        told.emplace_back("first");
        keeper_.tell();
        other_.tell();
    });
    const auto second = keeper_.listen([&](const NotifyMsg&) { told.emplace_back("second"); });
    const auto third = other_.listen([&](const NotifyMsg&) {
        told.emplace_back("other");
        keeper_.tell();
    });
    keeper_.tell();
    keeper_.tell(); // the way is free again
    EXPECT_THAT(told, ElementsAre("first", "other", "second", "first", "other", "second"));
}

TEST_F(ContainerManager, LosesNothingThatAnotherThreadTells) {
    int told = 0; // under the notifier's lock
    const auto guard = keeper_.listen([&](const NotifyMsg&) { ++told; });
    std::thread worker([&] {
        for (int i = 0; i < 500; ++i)
            keeper_.tell();
    });
    for (int i = 0; i < 500; ++i)
        keeper_.tell();
    worker.join();
    EXPECT_EQ(told, 1000);
}
