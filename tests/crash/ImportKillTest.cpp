// Processes killed at random moments of a large import: all of it is in the project, or nothing.
#include "platform/embedded/EmbeddedProject.h"
#include "platform/project/ProjDb.h"
#include "tests/crash/Writer.h"
#include "tests/support/LogLines.h"
#include "tests/support/Scale.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

using namespace cutroom;
using namespace cutroom::test;
using std::chrono::microseconds;
using testing::IsEmpty;

namespace {

constexpr std::size_t kSources = 1500;

class ImportKillTest : public testing::Test {
protected:
    // Clips one after the other, each of a source of its own.
    ImportKillTest() {
        std::ofstream file(temp_ / "timeline.otio");
        file << R"({"OTIO_SCHEMA": "Track.1", "kind": "Video", "children": [)";
        for (std::size_t i = 0; i < kSources; ++i)
            file << (i ? ", " : "") << R"({"OTIO_SCHEMA": "Clip.1", "source_range": {)"
                 << R"("OTIO_SCHEMA": "TimeRange.1", "duration": {"OTIO_SCHEMA": )"
                 << R"("RationalTime.1", "rate": 25, "value": 10}}, "media_reference": {)"
                 << R"("OTIO_SCHEMA": "ExternalReference.1", "target_url": ")" << i << ".mov\"}}";
        file << "]}";
    }

    // Opens the project as a process would, looks at it, and closes it.
    template <class Look> void open(CurrentProject::IfMissing missing, const Look& look) const {
        EmbeddedHost host;
        EmbeddedProject project(host);
        const Status opened = project.open(folder_, CurrentProject::Access::readWrite, missing);
        ASSERT_TRUE(opened.ok()) << opened.text();
        look();
        const Status closed = project.close();
        EXPECT_TRUE(closed.ok()) << closed.text();
    }

    // Kills an import after some progress, or a little later: in the midst of its end.
    void killOne() {
        std::filesystem::remove_all(folder_);
        open(CurrentProject::IfMissing::create, [] {});
        WriterProcess writer("import", folder_, 0);
        writer.read(1 + random_() % 100, std::chrono::seconds(20));
        writer.read(1000, microseconds(random_() % 60'000));
        writer.kill();
        told_ = std::count(writer.lines().begin(), writer.lines().end(), "done") == 1;
    }

    void openNext() {
        open(CurrentProject::IfMissing::fail, [this] {
            EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
            EXPECT_THAT(litterAmong(filesBelow(folder_)), IsEmpty());
            EXPECT_EQ(databaseTrouble(), "");
            const bool nothing = projdb::count() == 0;
            EXPECT_TRUE(nothing || projdb::count() == kSources + 1) << projdb::count();
            EXPECT_FALSE(nothing && told_);
            untouched_ += nothing;
        });
    }

    TempFolder temp_{TempFolder::inMemory()};
    const std::string folder_ = temp_ / "film";
    LogLines log_;
    std::mt19937 random_{7};
    bool told_ = false;  // the import had told its end
    long untouched_ = 0; // projects that held nothing of it
};

TEST_F(ImportKillTest, AllOfAnImportIsThereOrNothing) {
    const long moments = rounds(12, 200);
    RecordProperty("kills", std::to_string(moments));
    for (long i = 0; i < moments && !HasFatalFailure() && !HasNonfatalFailure(); ++i) {
        SCOPED_TRACE(i);
        killOne();
        openNext();
    }
    EXPECT_GT(untouched_, 0);
}

} // namespace
