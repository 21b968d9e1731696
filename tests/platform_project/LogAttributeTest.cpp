// The table of attributes.
#include "platform/project/LogAttribute.h"
#include "platform/project/ProjectFile.h"
#include "tests/support/TempFolder.h"

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
    for (const auto& [number, counts, numeric] : {std::tuple(1u, true, false),
                                                  {3u, false, false},
                                                  {13u, false, false},
                                                  {77u, true, true},
                                                  {121u, true, true}}) {
        const std::optional<LogAttribute> attribute = LogAttribute::fromType(number);
        ASSERT_TRUE(attribute) << number;
        EXPECT_EQ(attribute->countsAsModification(), counts) << number;
        EXPECT_EQ(attribute->isNumeric(), numeric) << number;
    }
}

TEST(LogAttribute, appliesToTheKindsOfLogThatHaveIt) {
    const LogAttribute custom(0, "rating", L"Rating", DBFieldTypes::number);
    for (const auto& [attribute, type, applies] :
         {std::tuple(LogAttribute(LogAttribute::cameraReel), kLogTypeSource, true),
          {LogAttribute::cameraReel, kLogTypeClipSection, true},
          {LogAttribute::cameraReel, kLogTypeEdit, false},
          {LogAttribute::name, kLogTypeEdit, true},
          {custom, kLogTypeEdit, true},
          {LogAttribute(), kLogTypeEdit, false}})
        EXPECT_EQ(attribute.isApplicableTo(type), applies) << attribute.getID() << type;
}

// Users cannot change what the system works out itself.
TEST(LogAttribute, isEditableWhereOnlyPeopleKnow) {
    std::string editable;
    for (const LogAttribute& attribute : LogAttribute::builtIn())
        if (attribute.isEditable())
            editable += attribute.getID() + ' ';
    EXPECT_EQ(editable, "name ext_id tags scene shot who description notes reelid reelid1 24P_reel "
                        "camreel cam_date lab_reel comp_reel sequence Aspect Ratio source_medium "
                        "take ");
}

TEST(LogAttribute, isInvalidForWhatNobodyKnows) {
    EXPECT_FALSE(LogAttribute::fromID("") || LogAttribute::fromID("Scene")) << "case matters";
    EXPECT_FALSE(LogAttribute::fromType(0) || LogAttribute::fromType(2000));
    EXPECT_FALSE(LogAttribute(static_cast<LogAttribute::eType>(76)).valid());
    EXPECT_EQ(LogAttribute().getID(), "");
}

TEST(LogAttribute, isNotSavedWithMoreThanAreReadAgain) {
    const cutroom::test::TempFolder folder;
    cutroom::ProjectFile file;
    file.id = Cookie('P', 1);
    for (const std::size_t count : {10'000u, 10'001u}) {
        file.customAttributes.resize(count, LogAttribute(0, "id", L"", DBFieldTypes::text));
        EXPECT_EQ(file.save(folder / "project.json").ok(), count == 10'000u);
        EXPECT_TRUE(cutroom::ProjectFile::load(folder / "project.json").ok());
    }
    file.customAttributes.clear();
    for (const std::size_t megabytes : {63u, 65u}) {
        file.name.assign(megabytes << 20, 'x');
        EXPECT_EQ(file.save(folder / "project.json").ok(), megabytes == 63u);
        EXPECT_TRUE(cutroom::ProjectFile::load(folder / "project.json").ok());
    }
}

} // namespace
