// A project that another process has open: one writes, others read and touch nothing.
#include "tests/crash/CrashFixture.h"
#include "tests/crash/Writer.h"

using namespace cutroom;
using namespace cutroom::test;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using TwoProcessesTest = CrashFixture;

TEST_F(TwoProcessesTest, aSecondWriterIsRefusedUntilTheFirstOneIsGone) {
    const auto before = filesBelow(folder_);
    WriterProcess writer("hold", folder_, 1);
    writer.read(1, std::chrono::seconds(20));
    ASSERT_THAT(writer.lines(), testing::ElementsAre("ready"));
    const Status refused = tryBegin();
    EXPECT_EQ(refused.code(), StatusCode::locked);
    EXPECT_THAT(refused.text(), HasSubstr(folder_));
    EXPECT_FALSE(CurrentProject::isOpen());
    EXPECT_EQ(bytesOf(fileOf(edits_[0])), before.at("edits/" + edits_[0].asString() + ".edit"));
    writer.kill();
    const Status opened = tryBegin();
    EXPECT_TRUE(opened.ok()) << opened.text();
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
    EXPECT_EQ(databaseTrouble(), "");
}

TEST_F(TwoProcessesTest, aReaderBesideAWriterSeesTheProjectAndTouchesNothing) {
    begin();
    const ProjectState saved = stateOfProject();
    end();
    WriterProcess writer("hold", folder_, 1);
    writer.read(1, std::chrono::seconds(20));
    auto before = filesBelow(folder_);
    begin(Access::readOnly);
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
    EXPECT_EQ(differences(stateOfProject(), saved), "");
    const EditPtr edit(edits_[0]);
    edit->setName(L"never saved");
    EXPECT_EQ(EditManager::instance().save(edit).code(), StatusCode::failed);
    EXPECT_FALSE(CurrentProject::setName(L"other").ok());
    (void)project_->close(); // says that the name is not saved
    auto after = filesBelow(folder_);
    for (auto* files : {&before, &after})
        files->erase("project.db-shm"); // the two processes' shared memory
    EXPECT_EQ(after, before);
}

// What is saved beside a reader is seen by the next reader, and never half of it.
TEST_F(TwoProcessesTest, readersBesideAWorkingWriterFindWholeEdits) {
    WriterProcess writer("edits", folder_, 5);
    for (std::size_t line = 1; line < 40; line += 3) {
        writer.read(line, std::chrono::seconds(20));
        ASSERT_GE(writer.lines().size(), line);
        begin(Access::readOnly);
        for (const auto& [name, stamp] : stateOfProject()) {
            Status why;
            if (stamp == "-" &&
                EditManager::instance().open(Cookie::fromString(name).value(), &why))
                continue; // renamed into place a moment later
            EXPECT_TRUE(stamp != "-" || why.code() == StatusCode::notFound) << why.text();
        }
        end();
    }
}

} // namespace
