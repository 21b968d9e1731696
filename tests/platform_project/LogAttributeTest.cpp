// The table of attributes.
#include "platform/project/LogAttribute.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(LogAttribute, isFoundByNumberAndByName) {
    std::set<std::string> ids;
    unsigned before = 0;
    for (const LogAttribute& attribute : LogAttribute::builtIn()) {
        EXPECT_GT(attribute.getType(), before) << "in ascending order";
        before = attribute.getType();
        EXPECT_TRUE(ids.insert(attribute.getID()).second) << attribute.getID();
        EXPECT_FALSE(attribute.getDisplayName().empty());
        EXPECT_EQ(LogAttribute::fromID(attribute.getID()), attribute);
        EXPECT_EQ(LogAttribute::fromType(attribute.getType()), attribute);
    }
}

TEST(LogAttribute, keepsTheNumbersThatAreKnownOutside) {
    struct Row {
        unsigned number;
        bool counts;
        bool numeric;
    };
    for (const Row& row : {Row{1, true, false}, Row{3, false, false}, Row{13, false, false},
                           Row{77, true, true}, Row{121, true, true}}) {
        const std::optional<LogAttribute> attribute = LogAttribute::fromType(row.number);
        ASSERT_TRUE(attribute) << row.number;
        EXPECT_EQ(attribute->countsAsModification(), row.counts) << row.number;
        EXPECT_EQ(attribute->isNumeric(), row.numeric) << row.number;
    }
}

TEST(LogAttribute, appliesToTheKindsOfLogThatHaveIt) {
    EXPECT_TRUE(LogAttribute(LogAttribute::cameraReel).isApplicableTo(kLogTypeSource));
    EXPECT_TRUE(LogAttribute(LogAttribute::cameraReel).isApplicableTo(kLogTypeClipSection));
    EXPECT_FALSE(LogAttribute(LogAttribute::cameraReel).isApplicableTo(kLogTypeEdit));
    EXPECT_TRUE(LogAttribute(LogAttribute::name).isApplicableTo(kLogTypeEdit));
    EXPECT_FALSE(LogAttribute().isApplicableTo(kLogTypeEdit));
    EXPECT_TRUE(
        LogAttribute(0, "rating", L"Rating", DBFieldTypes::number).isApplicableTo(kLogTypeEdit));
}

TEST(LogAttribute, isInvalidForWhatNobodyKnows) {
    EXPECT_FALSE(LogAttribute::fromID(""));
    EXPECT_FALSE(LogAttribute::fromID("Scene")) << "case matters";
    EXPECT_FALSE(LogAttribute::fromType(0));
    EXPECT_FALSE(LogAttribute::fromType(2000));
    EXPECT_FALSE(LogAttribute(static_cast<LogAttribute::eType>(76)).valid());
    EXPECT_EQ(LogAttribute().getID(), "");
}

} // namespace
