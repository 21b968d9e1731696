// Two users and one project.
#include "platform/project/PermissionsManager.h"
#include "tests/platform_project/ProjectFixture.h"

#include <gmock/gmock.h>

using cutroom::StatusCode;

namespace {

const Cookie kEdit('E', 5);

class PermissionsTest : public cutroom::test::ProjectFixture {
protected:
    void TearDown() override {
        permissions().setCurrentUser("");
        ProjectFixture::TearDown();
    }
    static PermissionsManager& permissions() { return PermissionsManager::instance(); }
    // Opens the project as that user.
    void becomes(const std::string& user) {
        permissions().setCurrentUser(user);
        ASSERT_TRUE(reopen().ok());
    }
};

TEST_F(PermissionsTest, lockAnAssetForOneUser) {
    ASSERT_TRUE(create().ok());
    permissions().setCurrentUser("ann");
    ASSERT_TRUE(permissions().lock(kEdit).ok());
    EXPECT_TRUE(permissions().canWrite(kEdit));
    becomes("bob");
    EXPECT_TRUE(permissions().isReadOnly(kEdit));
    EXPECT_FALSE(permissions().isReadOnly(Cookie('E', 6)));
    EXPECT_EQ(permissions().getLockHolder(kEdit), "ann");
    EXPECT_EQ(permissions().lock(kEdit).code(), StatusCode::failed);
    EXPECT_EQ(permissions().unlock(kEdit).code(), StatusCode::failed);
    ASSERT_TRUE(permissions().takeOver(kEdit).ok());
    EXPECT_TRUE(permissions().canWrite(kEdit));
    becomes("ann");
    EXPECT_TRUE(permissions().isReadOnly(kEdit));
    becomes("bob");
    ASSERT_TRUE(permissions().unlock(kEdit).ok());
    EXPECT_EQ(permissions().getLockHolder(kEdit), "");
}

TEST_F(PermissionsTest, protectAnAssetFromEverybody) {
    ASSERT_TRUE(create().ok());
    ASSERT_TRUE(permissions().setProtected(kEdit, true).ok());
    ASSERT_TRUE(permissions().takeOver(kEdit).ok());
    EXPECT_TRUE(permissions().isReadOnly(kEdit)) << "a taken lock is no licence";
    ASSERT_TRUE(reopen().ok());
    EXPECT_TRUE(permissions().isProtected(kEdit));
    ASSERT_TRUE(permissions().forget(kEdit).ok());
    ASSERT_TRUE(reopen().ok());
    EXPECT_FALSE(permissions().isProtected(kEdit));
    EXPECT_EQ(permissions().getLockHolder(kEdit), "");
}

TEST_F(PermissionsTest, areNotGivenWithoutAProjectOpenForWriting) {
    EXPECT_FALSE(permissions().isReadOnly(kEdit));
    EXPECT_EQ(permissions().lock(kEdit).code(), StatusCode::failed);
    ASSERT_TRUE(create().ok());
    ASSERT_TRUE(reopen(Access::readOnly).ok());
    EXPECT_TRUE(permissions().isReadOnly(kEdit));
    EXPECT_FALSE(permissions().isReadOnly(Cookie()));
    EXPECT_EQ(permissions().lock(kEdit).code(), StatusCode::failed);
}

} // namespace
