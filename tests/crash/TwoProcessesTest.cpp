// A project that another process has open: one writes, others read and touch nothing.
#include "tests/crash/CrashFixture.h"
#include "tests/crash/Writer.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

using TwoProcessesTest = CrashFixture;

TEST_F(TwoProcessesTest, oneWritesOthersReadAndTouchNothing) {
    begin();
    const ProjectState saved = stateOfProject();
    end();
    WriterProcess writer("hold", folder_, 1);
    writer.read(1, std::chrono::seconds(20));
    ASSERT_THAT(writer.lines(), testing::ElementsAre("ready"));
    auto before = filesBelow(folder_);
    const Status refused = tryBegin();
    EXPECT_EQ(refused.code(), StatusCode::locked);
    EXPECT_THAT(refused.text(), testing::HasSubstr(folder_));
    EXPECT_FALSE(CurrentProject::isOpen());
    begin(Access::readOnly);
    EXPECT_THAT(CurrentProject::getWarnings(), testing::IsEmpty());
    EXPECT_EQ(differences(stateOfProject(), saved), "");
    const EditPtr edit(edits_[0]);
    edit->setName(L"never saved");
    EXPECT_EQ(EditManager::instance().save(edit).code(), StatusCode::failed);
    EXPECT_FALSE(CurrentProject::setName(L"other").ok());
    (void)project_->close(); // reports that the name was not saved
    auto after = filesBelow(folder_);
    for (auto* files : {&before, &after})
        files->erase("project.db-shm"); // the two processes' shared memory
    EXPECT_EQ(after, before);
    writer.kill();
    begin();
    expectNoTrace();
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
