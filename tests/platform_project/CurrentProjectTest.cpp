// Opening, closing and keeping a project.
#include "platform/files/FolderLock.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/project/MediaStatus.h"
#include "platform/project/ProjectPaths.h"
#include "tests/platform_project/ProjectFixture.h"

#include <gmock/gmock.h>

#include <filesystem>

using cutroom::Status;
using cutroom::StatusCode;
using cutroom::test::bytesOf;
using cutroom::test::putBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

using CurrentProjectTest = cutroom::test::ProjectFixture;

TEST_F(CurrentProjectTest, isMadeOnceAndFoundAgain) {
    EXPECT_EQ(CurrentProject::open(folder()).code(), StatusCode::notFound);
    EXPECT_FALSE(fs::exists(folder())) << "asking makes nothing";
    fs::create_directories(folder());
    putBytes(inFolder("holiday.jpg"), "x");
    EXPECT_EQ(create().code(), StatusCode::wrongUsage) << "not among other files";
    EXPECT_FALSE(fs::exists(inFolder("project.json")) || CurrentProject::isOpen());
    fs::remove(inFolder("holiday.jpg"));
    ASSERT_TRUE(create().ok());
    const Cookie id = CurrentProject::getCookie();
    EXPECT_EQ(id.type(), 'P');
    EXPECT_EQ(CurrentProject::getName(), L"film");
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
    for (const char* const part :
         {"project.json", "project.db", "edits", "groups/Filters", "documents", "associations"})
        EXPECT_TRUE(fs::exists(inFolder(part))) << part;
    EXPECT_EQ(CurrentProject::open(temp_ / "other").code(), StatusCode::wrongUsage);
    ASSERT_TRUE(CurrentProject::close().ok());
    EXPECT_FALSE(CurrentProject::isOpen());
    EXPECT_FALSE(CurrentProject::getCookie().valid());
    ASSERT_TRUE(CurrentProject::open(folder() + "/./").ok());
    EXPECT_EQ(CurrentProject::getCookie(), id);
}

TEST_F(CurrentProjectTest, keepsNameDefaultsAndAttributes) {
    ASSERT_TRUE(create().ok());
    ProjectDefaults defaults;
    defaults.frameRate = Kv::FrameRate(30000, 1001);
    defaults.dropFrame = true;
    defaults.mixConfiguration = "stage.ini";
    ASSERT_TRUE(CurrentProject::setDefaults(defaults).ok());
    ASSERT_TRUE(CurrentProject::setName(L"Wölfe / 2").ok());
    ASSERT_TRUE(CurrentProject::addCustomAttribute("weather", L"Weather", DBFieldTypes::text).ok());
    const auto rating = CurrentProject::addCustomAttribute("rating", L"★", DBFieldTypes::number);
    ASSERT_TRUE(rating.ok());
    ASSERT_TRUE(reopen().ok());
    EXPECT_EQ(CurrentProject::getDefaults(), defaults);
    EXPECT_EQ(CurrentProject::getName(), L"Wölfe / 2");
    ASSERT_THAT(CurrentProject::getCustomAttributes(), SizeIs(2));
    EXPECT_EQ(LogAttribute::fromID("rating"), *rating);
    EXPECT_EQ(LogAttribute::fromType(1001)->getDisplayName(), L"★");
    EXPECT_EQ(CurrentProject::addCustomAttribute("weather", L"x", DBFieldTypes::date)->getType(),
              1000u);
}

TEST_F(CurrentProjectTest, refusesWhatItCannotKeep) {
    ASSERT_TRUE(create().ok());
    const std::string before = bytesOf(inFolder("project.json"));
    const ProjectDefaults sound = CurrentProject::getDefaults();
    ProjectDefaults bad[3] = {sound, sound, sound};
    bad[0].frameRate = Kv::FrameRate();
    bad[1].dropFrame = true; // at 25
    bad[2].mixConfiguration = "../mix.ini";
    for (const ProjectDefaults& defaults : bad)
        EXPECT_EQ(CurrentProject::setDefaults(defaults).code(), StatusCode::wrongUsage);
    EXPECT_EQ(CurrentProject::setName(L"").code(), StatusCode::wrongUsage);
    for (const std::string& id : {std::string(), std::string("name"), std::string("a\nb"),
                                  std::string(65, 'x'), std::string("\xFF")})
        EXPECT_FALSE(CurrentProject::addCustomAttribute(id, L"x", DBFieldTypes::text).ok()) << id;
    EXPECT_EQ(bytesOf(inFolder("project.json")), before);
}

TEST_F(CurrentProjectTest, keepsMembersItDoesNotKnow) {
    ASSERT_TRUE(create().ok());
    ASSERT_TRUE(CurrentProject::close().ok());
    std::string text = bytesOf(inFolder("project.json"));
    // As if edited by hand: without the checksum, and with a member of a later version.
    text = "{\"colourSpace\": [\"Rec.709\", 1.50],\n" + text.substr(text.find("\"format\""));
    putBytes(inFolder("project.json"), text);
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    ASSERT_TRUE(CurrentProject::setName(L"Other").ok());
    const std::string after = bytesOf(inFolder("project.json"));
    EXPECT_THAT(after, testing::HasSubstr("\"colourSpace\""));
    EXPECT_THAT(after, testing::HasSubstr("1.50"));
    ASSERT_TRUE(reopen().ok());
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty()) << "the new checksum holds";
    ASSERT_TRUE(CurrentProject::setName(L"More").ok());
    ASSERT_TRUE(CurrentProject::setName(L"Other").ok());
    EXPECT_EQ(bytesOf(inFolder("project.json")), after);
}

// The tests of crashes try every damage; this one looks at what takes the place of the file.
TEST_F(CurrentProjectTest, opensWithTheFileBeforeInPlaceOfADamagedOne) {
    ASSERT_TRUE(create().ok());
    ASSERT_TRUE(CurrentProject::setName(L"Second").ok());
    const Cookie id = CurrentProject::getCookie();
    ASSERT_TRUE(CurrentProject::close().ok());
    putBytes(inFolder("project.json"), "{\"format\": ");
    for (const Access access : {Access::readOnly, Access::readWrite}) {
        ASSERT_TRUE(CurrentProject::open(folder(), access).ok());
        EXPECT_EQ(CurrentProject::getCookie(), id);
        EXPECT_EQ(CurrentProject::getName(), L"film");
        EXPECT_THAT(CurrentProject::getWarnings(), SizeIs(1));
        ASSERT_TRUE(CurrentProject::close().ok());
    }
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
}

TEST_F(CurrentProjectTest, namesTheValueThatIsWrong) {
    ASSERT_TRUE(create().ok());
    const std::string id = R"("id": ")" + CurrentProject::getCookie().asString() + '"';
    ASSERT_TRUE(CurrentProject::close().ok());
    fs::remove(inFolder("project.json.bak"));
    for (const std::string& members :
         {id, std::string(R"("id": "E1")"), R"("frameRate": 25, )" + id,
          R"("frameRate": "0", )" + id, R"("mixConfiguration": "../mix.ini", )" + id,
          R"("attributes": {}, )" + id, R"("attributes": [{"id": "a", "type": "poem"}], )" + id}) {
        putBytes(inFolder("project.json"),
                 R"({"format": "cutroom-project", "version": 1, )" + members + "}");
        ASSERT_TRUE(CurrentProject::open(folder(), Access::readOnly).ok());
        const auto said = CurrentProject::getWarnings();
        const std::string member = members.substr(0, members.find(':'));
        EXPECT_EQ(said.empty() ? "" : said[0].message(), // the rest may be left out
                  members == id ? "" : "the value of " + member + " is wrong");
        ASSERT_TRUE(CurrentProject::close().ok());
    }
}

TEST_F(CurrentProjectTest, refusesFilesOfLaterVersions) {
    ASSERT_TRUE(create().ok() && CurrentProject::close().ok());
    const std::string text = "{\"format\": \"cutroom-project\", \"version\": 2}";
    putBytes(inFolder("project.json"), text);
    EXPECT_EQ(CurrentProject::open(folder()).code(), StatusCode::failed);
    EXPECT_EQ(bytesOf(inFolder("project.json")), text);
}

TEST_F(CurrentProjectTest, isWrittenByOneAtATime) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(cutroom::FolderLock::take(folder()).status().code(), StatusCode::locked);
    ASSERT_TRUE(CurrentProject::close().ok());
    const auto other = cutroom::FolderLock::take(folder());
    ASSERT_TRUE(other.ok());
    EXPECT_EQ(CurrentProject::open(folder()).code(), StatusCode::locked);
    EXPECT_FALSE(CurrentProject::isOpen());
    ASSERT_TRUE(CurrentProject::open(folder(), Access::readOnly).ok());
    EXPECT_EQ(CurrentProject::setName(L"x").code(), StatusCode::failed);
    EXPECT_EQ(projdb::put(record(1, "a")).code(), StatusCode::failed);
}

TEST_F(CurrentProjectTest, tellsEntryAndExitInOrder) {
    std::vector<std::string> told;
    const auto callback = makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
        const bool answers = CurrentProject::getCookie().asString() == message.getText();
        told.push_back(NotifyMsgTypeDictionary::instance().nameOf(message.getType()) +
                       (answers ? " open" : " closed"));
    });
    Kv::Ptr<Guard> guard = CurrentProject::addListener(callback);
    ASSERT_TRUE(create().ok());
    ASSERT_TRUE(CurrentProject::close().ok());
    EXPECT_THAT(told, ElementsAre("projectEntered open", "projectAboutToExit open",
                                  "projectExited closed"));
    guard.reset();
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EXPECT_THAT(told, SizeIs(3));
}

TEST_F(CurrentProjectTest, namesFilesInsideItsFolderOnly) {
    EXPECT_EQ(getFilenameForCookie(Cookie('E', 1)), L"") << "no project";
    ASSERT_TRUE(create().ok());
    const std::pair<Cookie, const wchar_t*> rows[] = {
        {Cookie('E', 1), L"/edits/E0000000000001.edit"},
        {Cookie('M', 1), L"/groups/M0000000000001.bin"},
        {Cookie('D', 2), L"/documents/D0000000000002.KvDoc"}};
    for (const auto& [cookie, name] : rows)
        EXPECT_EQ(getFilenameForCookie(cookie), getProjectDirectory() + name);
    EXPECT_EQ(getFilenameForCookie(Cookie()) + getFilenameForCookie(Cookie('X', 1)), L"");
    const Cookie group('G', 3);
    EXPECT_EQ(getFileNameForLogGroup(group, nullptr, Cookie()),
              getProjectGroupsDirectory() + L"/G0000000000003.bin");
    EXPECT_EQ(getFileNameForLogGroup(group, L"/elsewhere/", CurrentProject::getCookie()),
              L"/elsewhere/G0000000000003.bin");
    EXPECT_EQ(getFileNameForLogGroup(Cookie('E', 3), nullptr, Cookie()), L"");
    EXPECT_EQ(getFileNameForLogGroup(group, nullptr, Cookie('P', 99)), L"");
}

TEST_F(CurrentProjectTest, looksForMediaBesideItself) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(MediaStatus::instance().get("a.mov"), MediaStatus::State::absent);
    putBytes(inFolder("a.mov"), "x");
    ASSERT_TRUE(reopen().ok());
    EXPECT_EQ(MediaStatus::instance().get("a.mov"), MediaStatus::State::present);
}

} // namespace
