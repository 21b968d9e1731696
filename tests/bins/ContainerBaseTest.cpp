#include "bins/ContainerBase.h"
#include "bins/ContainerModifier.h"
#include "platform/base/IdSource.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Modification = ContainerBase::Modification;
using Modifications = ContainerBase::Modifications;

// A time of day that a test moves.
class Clock final : public cutroom::iIdSource {
public:
    Clock() : before_(cutroom::installIdSource(this)) {}
    ~Clock() override { cutroom::installIdSource(before_); }
    std::uint64_t nextId() override { return ++last_; }
    std::uint32_t secondsNow() override { return now; }

    std::uint32_t now = 100;

private:
    std::uint64_t last_ = 0;
    cutroom::iIdSource* const before_;
};

class Box final : public ContainerBase {
public:
    cutroom::Status save() override {
        setDirty(false);
        return {};
    }
    using ContainerBase::setCreationTime;
    using ContainerBase::setModificationTime;
    int issued = 0; // whether anybody listens or not

protected:
    void issueModificationNotification(const Modifications& changes,
                                       LightweightString<char> reason) override {
        ++issued;
        ContainerBase::issueModificationNotification(changes, std::move(reason));
    }
};

class ContainerBaseTest : public testing::Test {
protected:
    // "32/3 256 'reason'": type, detail when not 0, and the reason when there is one.
    void listen() {
        guard_ = box_->registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
                auto* const changes = message.getObjectAs<Modifications>();
                last_ = changes;
                std::string text;
                for (const Modification& record : changes->records()) {
                    text += (text.empty() ? "" : " ") + std::to_string(record.getType());
                    if (record.getDetail() != 0)
                        text += "/" + std::to_string(record.getDetail());
                }
                if (!changes->getReason().empty())
                    text += " '" + changes->getReason() + "'";
                told_.push_back(text);
            }),
            NotifyMsgTypeDictionary::instance().generalChangeMsgType());
    }

    Clock clock_;
    Kv::Ptr<Box> box_ = Kv::makePtr<Box>();
    Kv::Ptr<Guard> guard_;
    std::vector<std::string> told_;
    Kv::Ptr<Modifications> last_;
};

const Cookie kA('E', 1), kB('E', 2);

} // namespace

// --- records -------------------------------------------------------------------------------------

TEST(ContainerModification, SaysWhatItIncludes) {
    EXPECT_FALSE(Modification(0, 7).valid());
    EXPECT_THAT(Modification(ContainerBase::kModItemsAdded, Cookie()).getCookies(), IsEmpty());
    const Modification added(ContainerBase::kModItemsAdded, kA);
    EXPECT_TRUE(added.refersTo(kA));
    EXPECT_FALSE(added.refersTo(kB));
    EXPECT_TRUE(added.includes(768u));
    EXPECT_FALSE(added.includes(ContainerBase::kModItemsRemoved));
    const Modification attribute(LogAttribute::scene);
    EXPECT_EQ(attribute.getType(), 32u);
    EXPECT_TRUE(attribute.includes(LogAttribute::scene));
    EXPECT_FALSE(attribute.includes(LogAttribute::shot));
    EXPECT_FALSE(Modification(64, LogAttribute::scene).includes(LogAttribute::scene));
}

TEST(ContainerModifications, KeepOneRecordForEachTypeInTheOrderOfTheFirst) {
    Modifications changes;
    EXPECT_FALSE(changes.add(Modification(0, 1)));
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(changes.add(Modification(ContainerBase::kModItemsRemoved, kA)));
    EXPECT_TRUE(changes.add(Modification(768, 4)));
    EXPECT_TRUE(changes.add(Modification(ContainerBase::kModItemsRemoved, kB)));
    EXPECT_TRUE(changes.add(Modification(768, 8)));
    EXPECT_TRUE(changes.add(changes.records()[0])); // its own cookies once more
    ASSERT_EQ(changes.records().size(), 2u);
    EXPECT_THAT(changes.records()[0].getCookies(), ElementsAre(kA, kB, kA, kB));
    EXPECT_EQ(changes.records()[1].getDetail(), 4u); // the first one's
    EXPECT_EQ(changes.getTypes(), 768u);
    EXPECT_TRUE(changes.includes(256u));
    EXPECT_FALSE(changes.includes(32u));
    EXPECT_TRUE(changes.includes(256u, 12u));
    EXPECT_FALSE(changes.includes(256u, 8u));
    EXPECT_TRUE(changes.refersTo(kB));
    changes.clear();
    EXPECT_TRUE(changes.empty());
}

TEST(ContainerModifications, OfTwoAttributesTheFirstIsKnown) {
    Modifications changes;
    changes.add(Modification(LogAttribute::scene));
    changes.add(Modification(LogAttribute::shot));
    EXPECT_TRUE(changes.includes(LogAttribute::scene));
    EXPECT_FALSE(changes.includes(LogAttribute::shot));
}

// --- times ---------------------------------------------------------------------------------------

namespace {
struct TimeRow {
    const char* name;
    Modification change;
    bool counts, makesDirty;
};
class ContainerTimes : public ContainerBaseTest, public testing::WithParamInterface<TimeRow> {};
} // namespace

TEST_P(ContainerTimes, ChangesThatCountMoveTheModificationTime) {
    box_->setModificationTime(50);
    box_->addModification(GetParam().change);
    EXPECT_EQ(box_->getModificationTime(), GetParam().counts ? 100u : 50u);
    EXPECT_EQ(box_->isDirty(), GetParam().makesDirty);
    EXPECT_EQ(box_->issued, GetParam().change.valid() ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ContainerTimes,
    testing::Values(TimeRow{"added", {ContainerBase::kModItemsAdded, kA}, true, true},
                    TimeRow{"attribute", {LogAttribute::scene}, true, true},
                    TimeRow{"modified", {LogAttribute::modified}, false, true},
                    TimeRow{"externalId", {LogAttribute::externalID}, false, true},
                    TimeRow{"detailOfAnotherType", {256u, 3u}, true, true},
                    TimeRow{"uncounted", {128u}, false, false},
                    TimeRow{"uncountedWithOthers", {128u | 256u}, false, true},
                    TimeRow{"tags", {ContainerBase::kModItemsTagged, kA}, true, false},
                    TimeRow{"nothing", {0u, 3u}, false, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ContainerBaseTest, TheFirstCreationStampsTheCreationTime) {
    EXPECT_EQ(box_->getCreationTime(), 0u);
    box_->addModification(Modification(256u));
    EXPECT_EQ(box_->getCreationTime(), 0u);
    box_->addModification(Modification(2u | 128u));
    clock_.now = 200;
    box_->addModification(Modification(2u));
    EXPECT_EQ(box_->getCreationTime(), 100u);
    EXPECT_EQ(box_->getModificationTime(), 200u);
}

// --- telling -------------------------------------------------------------------------------------

TEST_F(ContainerBaseTest, OutsideABatchEachChangeIsToldAtOnce) {
    listen();
    box_->addModification(Modification(LogAttribute::scene));
    box_->addModifications(768);
    EXPECT_THAT(told_, ElementsAre("32/20", "768"));
}

TEST_F(ContainerBaseTest, BatchesAreToldOnceAtTheOuterEndWithItsReason) {
    listen();
    box_->beginModifications();
    box_->addModification(Modification(ContainerBase::kModItemsAdded, kA));
    box_->beginModifications();
    box_->addModification(Modification(LogAttribute::scene));
    box_->endModifications("inner");
    box_->addModification(Modification(ContainerBase::kModItemsAdded, kB));
    EXPECT_THAT(told_, IsEmpty());
    box_->endModifications("outer");
    EXPECT_THAT(told_, ElementsAre("256 32/20 'outer'"));
    EXPECT_THAT(last_->records()[0].getCookies(), ElementsAre(kA, kB));
    EXPECT_EQ(box_->issued, 1);
}

TEST_F(ContainerBaseTest, ABatchWithNothingInItTellsNobody) {
    listen();
    box_->beginModifications();
    box_->addModification(Modification(256u));
    box_->clearModifications();
    box_->endModifications("reason");
    EXPECT_EQ(box_->issued, 0);
}

TEST_F(ContainerBaseTest, AnEndWithoutABeginningHoldsChangesBack) {
    listen();
    box_->endModifications();
    box_->addModification(Modification(256u));
    EXPECT_THAT(told_, IsEmpty());
    box_->beginModifications();
    box_->addModification(Modification(512u));
    EXPECT_THAT(told_, ElementsAre("256 512"));
}

TEST_F(ContainerBaseTest, AModifierIsABatch) {
    listen();
    {
        ContainerModifier<Box> outer(box_, "reason");
        ContainerModifier<Box> copy(outer), moved(std::move(outer));
        copy->setName(L"One");
        copy = ContainerModifier<Box>();
        EXPECT_FALSE(copy);
        EXPECT_THAT(told_, IsEmpty());
        moved.release();
        EXPECT_EQ(told_.size(), 1u);
    }
    EXPECT_THAT(told_, ElementsAre("32/1 'reason'"));
}

TEST_F(ContainerBaseTest, AListenerMayReadWhatItIsToldOf) {
    std::wstring seen;
    const auto guard = box_->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { seen = box_->getName(); }),
        NotifyMsgTypeDictionary::kGeneralChange);
    EXPECT_TRUE(box_->setName(L"Rushes"));
    EXPECT_EQ(seen, L"Rushes");
}

TEST_F(ContainerBaseTest, BatchesOfSeveralThreadsLoseNoChange) {
    std::size_t cookies = 0; // under the container's lock
    const auto counting = box_->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
            for (const Modification& record : message.getObjectAs<Modifications>()->records())
                cookies += record.getCookies().size();
        }),
        NotifyMsgTypeDictionary::kGeneralChange);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this] {
            for (int round = 0; round < 200; ++round) {
                const ContainerModifier<Box> batch(box_);
                box_->addModification(Modification(ContainerBase::kModItemsAdded, kA));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(cookies, 800u);
}

// --- identity and attributes ---------------------------------------------------------------------

TEST_F(ContainerBaseTest, SettersThatChangeNothingTellNothing) {
    listen();
    EXPECT_TRUE(box_->setName(L"One"));
    EXPECT_FALSE(box_->setName(L"One"));
    box_->setExternalID(L"x1");
    box_->setExternalID(L"x1");
    EXPECT_THAT(told_, ElementsAre("32/1", "32/13"));
    EXPECT_EQ(box_->getModificationTime(), 100u);
}

TEST_F(ContainerBaseTest, AttributesAreItsIdentityAndTimes) {
    box_->setID(kA);
    box_->setCreationTime(7);
    box_->setAttribute(LogAttribute(LogAttribute::name), std::string("Caf\xC3\xA9"));
    box_->setAttribute(LogAttribute(LogAttribute::externalID), std::wstring(L"x"));
    box_->setAttribute(LogAttribute(LogAttribute::created), std::string("9"));
    EXPECT_EQ(box_->getName(), L"Caf\u00E9");
    EXPECT_EQ(box_->getAssetID(), kA);
    for (const auto& [attribute, text] : {std::pair(LogAttribute::name, std::string("Caf\xC3\xA9")),
                                          std::pair(LogAttribute::cookie, kA.asString()),
                                          std::pair(LogAttribute::created, std::string("7")),
                                          std::pair(LogAttribute::modified, std::string("100")),
                                          std::pair(LogAttribute::externalID, std::string("x")),
                                          std::pair(LogAttribute::scene, std::string())})
        EXPECT_EQ(box_->getAttribute(LogAttribute(attribute)), text) << attribute;
    EXPECT_EQ(Box().getAttribute(LogAttribute(LogAttribute::created)), "");
}

// Each listener looks at the other container, while that one changes on another thread.
TEST(ContainerThreads, ListenersReadOtherContainersWhileThoseChange) {
    const Kv::Ptr<Box> boxes[] = {Kv::makePtr<Box>(), Kv::makePtr<Box>()};
    std::atomic<int> told{0};
    std::vector<Kv::Ptr<Guard>> guards;
    for (int i = 0; i < 2; ++i)
        guards.push_back(boxes[i]->registerNotification(
            makeCallback<NotifyMsg>(
                [&, i](const NotifyMsg&) { told += boxes[1 - i]->getName().size() < 10; }),
            NotifyMsgTypeDictionary::instance().generalChangeMsgType()));
    std::vector<std::thread> changers;
    for (const Kv::Ptr<Box>& box : boxes)
        changers.emplace_back([&box] {
            for (int i = 0; i < 2000; ++i)
                box->setName(std::to_wstring(i));
        });
    for (std::thread& changer : changers)
        changer.join();
    EXPECT_EQ(told, 4000);
}
