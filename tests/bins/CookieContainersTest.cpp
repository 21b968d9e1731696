#include "bins/CachedCookieContainer.h"
#include "bins/ContainerManagerBase.h"
#include "bins/iEditContainer.h"
#include "platform/embedded/EmbeddedHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

LightweightVector<AssetReference> taken;
bool take(const LightweightVector<AssetReference>& assets, const Cookie& bin) {
    taken = assets;
    return bin == kBin;
}

} // namespace

TEST(CookieContainer, DefaultsRefuseAndAnswerEmpty) {
    Bare bare;
    EXPECT_FALSE(bare.add({AssetReference(kA)}));
    EXPECT_THAT(bare.getCookies(), IsEmpty());
    EXPECT_EQ(bare.getName() + bare.getTypeName(), L"");
    EXPECT_FALSE(bare.containsType('E') || OneEdit().isDynamic());
}

TEST(CookieContainer, IsImportedWithItsRanges) {
    const Shelf shelf;
    EXPECT_FALSE(shelf.import(kBin)); // there are no bins
    const auto before = cutroom::installBinImporter(&take);
    EXPECT_TRUE(shelf.import(kBin));
    EXPECT_THAT(taken, testing::ContainerEq(shelf.held));
    EXPECT_FALSE(shelf.import(Cookie('G', 9)));
    EXPECT_TRUE(OneEdit().import(kBin));
    EXPECT_THAT(taken, ElementsAre(AssetReference(kA, TimeRange(3, 4))));
    taken.clear();
    EXPECT_FALSE(Bare().import(kBin) || shelf.import(Cookie()));
    EXPECT_THAT(taken, IsEmpty());
    cutroom::installBinImporter(before);
}

TEST(CachedCookieContainer, ReadsOnceAndNeverAgain) {
    Shelf shelf;
    CachedCookieContainer cached(shelf);
    const auto before = std::exchange(shelf.held, {});
    EXPECT_THAT(cached.getCookies(), testing::ContainerEq(before));
    EXPECT_EQ(cached.getName() + cached.getTypeName(), L"ShelfFurniture");
    EXPECT_FALSE(cached.getContainerID().valid());
    EXPECT_TRUE(cached.containsType('E') && cached.containsType('D') && !cached.containsType('G'));
    EXPECT_EQ(shelf.asked, 1);
    EXPECT_FALSE(static_cast<iCookieContainer&>(cached).add({AssetReference(kA)}));
    CachedCookieContainer copy(cached);
    copy.add(kA);
    cached = shelf;
    EXPECT_EQ(copy.numContained() * 10 + cached.numContained(), 30u);
    EXPECT_EQ(CachedCookieContainer(&shelf).getName(), L"Shelf");
    EXPECT_EQ(CachedCookieContainer(static_cast<const iCookieContainer*>(nullptr)).getName(), L"");
}

// --- managers ------------------------------------------------------------------------------------

namespace {

class Keeper final : public ContainerManagerBase {
public:
    void tell() const { ContainerManagerBase::issueNotification({}); }
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
