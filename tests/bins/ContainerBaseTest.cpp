#include "bins/ContainerBase.h"
#include "bins/ContainerModifier.h"
#include "platform/base/IdSource.h"
#include "tests/bins/ToldRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

using cutroom::test::ToldRecords;
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
    std::uint64_t nextId() override { return 1; }
    std::uint32_t secondsNow() override { return now; }

    std::uint32_t now = 100;

private:
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
    Clock clock_;
    Kv::Ptr<Box> box_ = Kv::makePtr<Box>();
    ToldRecords told_{*box_};
};

const Cookie kA('E', 1), kB('E', 2);

} // namespace

TEST(ContainerModification, SaysWhatItIncludes) {
    EXPECT_FALSE(Modification(0, 7).valid());
    EXPECT_THAT(Modification(ContainerBase::kModItemsAdded, Cookie()).getCookies(), IsEmpty());
    const Modification added(ContainerBase::kModItemsAdded, kA);
    EXPECT_TRUE(added.refersTo(kA) && !added.refersTo(kB));
    EXPECT_TRUE(added.includes(768u) && !added.includes(ContainerBase::kModItemsRemoved));
    const Modification attribute(LogAttribute::scene);
    EXPECT_EQ(attribute.getType(), 32u);
    EXPECT_TRUE(attribute.includes(LogAttribute::scene) && !attribute.includes(LogAttribute::shot));
    EXPECT_FALSE(Modification(64, LogAttribute::scene).includes(LogAttribute::scene));
}

TEST(ContainerModifications, KeepOneRecordForEachTypeInTheOrderOfTheFirst) {
    Modifications changes;
    EXPECT_FALSE(changes.add(Modification(0, 1)));
    EXPECT_TRUE(changes.empty());
    for (const Modification& change :
         {Modification(ContainerBase::kModItemsRemoved, kA), Modification(768, 4),
          Modification(ContainerBase::kModItemsRemoved, kB), Modification(768, 8),
          Modification(LogAttribute::scene), Modification(LogAttribute::shot)})
        EXPECT_TRUE(changes.add(change));
    EXPECT_TRUE(changes.add(changes.records()[0])); // its own cookies once more
    ASSERT_EQ(changes.records().size(), 3u);
    EXPECT_THAT(changes.records()[0].getCookies(), ElementsAre(kA, kB, kA, kB));
    EXPECT_EQ(changes.getTypes(), 768u | 32u);
    EXPECT_TRUE(changes.includes(256u) && !changes.includes(64u));
    EXPECT_TRUE(changes.includes(256u, 12u) && !changes.includes(256u, 8u)); // the first's
    EXPECT_TRUE(changes.includes(LogAttribute::scene) && !changes.includes(LogAttribute::shot));
    EXPECT_TRUE(changes.refersTo(kB));
    changes.clear();
    EXPECT_TRUE(changes.empty());
}

TEST_F(ContainerBaseTest, ChangesThatCountMoveTheModificationTime) {
    const struct {
        const char* name;
        Modification change;
        bool counts, makesDirty;
    } rows[] = {
        {"added", {ContainerBase::kModItemsAdded, kA}, true, true},
        {"attribute", {LogAttribute::scene}, true, true},
        {"modified", {LogAttribute::modified}, false, true},
        {"external id", {LogAttribute::externalID}, false, true},
        {"detail of another type", {256u, 3u}, true, true},
        {"uncounted", {128u}, false, false},
        {"uncounted with others", {128u | 256u}, false, true},
        {"tags", {ContainerBase::kModItemsTagged, kA}, true, false},
        {"nothing", {0u, 3u}, false, false},
    };
    for (const auto& row : rows) {
        Box box;
        box.setModificationTime(50);
        box.addModification(row.change);
        EXPECT_EQ(box.getModificationTime(), row.counts ? 100u : 50u) << row.name;
        EXPECT_EQ(box.isDirty(), row.makesDirty) << row.name;
        EXPECT_EQ(box.issued, row.change.valid() ? 1 : 0) << row.name;
    }
}

TEST_F(ContainerBaseTest, TheFirstCreationStampsTheCreationTime) {
    box_->addModification(Modification(256u));
    EXPECT_EQ(box_->getCreationTime(), 0u);
    box_->addModification(Modification(2u | 128u));
    clock_.now = 200;
    box_->addModification(Modification(2u));
    EXPECT_EQ(box_->getCreationTime(), 100u);
    EXPECT_EQ(box_->getModificationTime(), 200u);
}

TEST_F(ContainerBaseTest, OutsideABatchEachChangeIsToldAtOnceInsideOneAtItsOuterEnd) {
    box_->addModification(Modification(LogAttribute::scene));
    box_->addModifications(768);
    EXPECT_THAT(told_.take(), ElementsAre("32", "768"));
    box_->beginModifications();
    box_->addModification(Modification(ContainerBase::kModItemsAdded, kA));
    box_->beginModifications();
    box_->addModification(Modification(LogAttribute::scene));
    box_->endModifications("inner");
    box_->addModification(Modification(ContainerBase::kModItemsAdded, kB));
    EXPECT_THAT(told_.texts, IsEmpty());
    box_->endModifications("outer");
    EXPECT_THAT(told_.take(), ElementsAre("256:1,2 32 'outer'"));
    box_->beginModifications();
    box_->addModification(Modification(256u));
    box_->clearModifications();
    box_->endModifications("of nothing");
    EXPECT_EQ(box_->issued, 3);
}

TEST_F(ContainerBaseTest, AModifierIsABatch) {
    {
        ContainerModifier<Box> outer(box_, "reason");
        ContainerModifier<Box> copy(outer), moved(std::move(outer));
        copy->setName(L"One");
        copy = ContainerModifier<Box>();
        EXPECT_FALSE(copy);
        EXPECT_THAT(told_.texts, IsEmpty());
        moved.release();
        EXPECT_EQ(told_.texts.size(), 1u);
    }
    EXPECT_THAT(told_.texts, ElementsAre("32 'reason'"));
}

TEST_F(ContainerBaseTest, BatchesOfSeveralThreadsLoseNoChange) {
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
    std::ptrdiff_t cookies = 0;
    for (const std::string& text : told_.texts) // "256:1,1"
        cookies += std::count(text.begin(), text.end(), '1');
    EXPECT_EQ(cookies, 800);
}

TEST_F(ContainerBaseTest, AttributesAreItsIdentityAndTimes) {
    box_->setID(kA);
    box_->setCreationTime(7);
    for (int round = 0; round < 2; ++round) { // told once
        box_->setAttribute(LogAttribute(LogAttribute::name), std::string("Caf\xC3\xA9"));
        box_->setAttribute(LogAttribute(LogAttribute::externalID), std::wstring(L"x"));
        box_->setAttribute(LogAttribute(LogAttribute::created), std::string("9"));
    }
    EXPECT_THAT(told_.texts, ElementsAre("32", "32"));
    std::string text;
    for (const auto attribute : {LogAttribute::name, LogAttribute::cookie, LogAttribute::created,
                                 LogAttribute::modified, LogAttribute::externalID})
        text += box_->getAttribute(LogAttribute(attribute)) + " ";
    EXPECT_EQ(text, "Caf\xC3\xA9 " + kA.asString() + " 7 100 x ");
    EXPECT_EQ(Box().getAttribute(LogAttribute(LogAttribute::created)), "");
}
