// Processes killed at random moments of their work: what they acknowledged is there, nothing is
// torn, and the next one opens the project without a question.
#include "bins/BinManager.h"
#include "platform/project/ProjDb.h"
#include "tests/crash/CrashFixture.h"
#include "tests/crash/Writer.h"
#include "tests/support/Scale.h"

#include <filesystem>
#include <fstream>
#include <random>

using namespace cutroom;
using namespace cutroom::test;
using std::chrono::microseconds;

namespace {

// Rounds of each kind of work: few under a sanitizer, where a process takes long to start and finds
// nothing more.
#ifdef CUTROOM_SANITIZED
constexpr long kMoments = 15;
#else
constexpr long kMoments = 50;
#endif

class KillTest : public CrashFixture, public testing::WithParamInterface<const char*> {
protected:
    KillTest() : CrashFixture(std::filesystem::temp_directory_path()) {}

    void SetUp() override {
        CrashFixture::SetUp();
        begin();
        BinManager::instance().newBin();
        EXPECT_TRUE(BinManager::instance().saveAll().ok());
        acknowledged_ = stateOfProject();
        end();
    }

    // Lets a process work and kills it: at any moment from its start on, or a little after it wrote
    // some line, and so in the midst of a save.
    void killOne(unsigned seed) {
        WriterProcess writer(GetParam(), folder_, seed);
        if (random_() % 8 == 0)
            writer.read(1000, microseconds(random_() % 60'000));
        else
            writer.read(1 + random_() % 6, std::chrono::seconds(20));
        writer.read(1000, microseconds(random_() % 4'000));
        writer.kill();
        tried_.clear();
        for (const std::string& line : writer.lines()) {
            EXPECT_FALSE(line.starts_with("failed")) << line;
            if (line.starts_with("try "))
                tried_ = stateOf(line.substr(4));
            if (line != "done")
                continue;
            acknowledged_ = std::exchange(tried_, {});
            ++acknowledgements_;
        }
    }

    // Opens the project in the next process. `turn` chooses the edit whose history is gone through.
    void openNext(unsigned turn) {
        begin();
        expectNoTrace();
        EXPECT_EQ(summaryTrouble(), "");
        const ProjectState found = stateOfProject();
        cutOff_ += !tried_.empty();
        if (tried_.empty() || found != tried_) {
            ASSERT_EQ(found, acknowledged_) << differences(found, acknowledged_) << "or, tried:\n"
                                            << differences(found, tried_);
        }
        acknowledged_ = found;
        const CookieVec edits = EditManager::instance().getAllEdits();
        const Cookie& edit = edits[turn % edits.size()];
        EXPECT_EQ(historyTrouble(EditPtr(edit)), "") << edit.asString();
        end();
    }

    std::mt19937 random_{20};
    ProjectState acknowledged_; // the last state that is known to be saved
    ProjectState tried_;        // the one whose saving was cut off, or empty
    long acknowledgements_ = 0;
    long cutOff_ = 0; // kills in the midst of a save
};

INSTANTIATE_TEST_SUITE_P(Work, KillTest, testing::Values("edits", "bins", "documents", "groups"),
                         [](const auto& test) { return test.param; });

TEST_P(KillTest, whatWasAcknowledgedIsThereAndNothingIsTorn) {
    const long moments = rounds(kMoments, 2'500);
    RecordProperty("kills", std::to_string(moments));
    for (long i = 0; i < moments && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        killOne(static_cast<unsigned>(i));
        openNext(static_cast<unsigned>(i));
    }
    EXPECT_GT(acknowledgements_, moments / 2);
    EXPECT_GT(cutOff_, moments / 10);
    EXPECT_THAT(log_.lines, testing::IsEmpty());
}

// Clips one after the other, each of a source of its own.
void writeTimeline(const std::string& path, std::size_t sources) {
    std::ofstream file(path);
    file << R"({"OTIO_SCHEMA": "Track.1", "kind": "Video", "children": [)";
    for (std::size_t i = 0; i < sources; ++i)
        file << (i ? ", " : "") << R"({"OTIO_SCHEMA": "Clip.1", "source_range": {)"
             << R"("OTIO_SCHEMA": "TimeRange.1", "duration": {"OTIO_SCHEMA": )"
             << R"("RationalTime.1", "rate": 25, "value": 10}}, "media_reference": {)"
             << R"("OTIO_SCHEMA": "ExternalReference.1", "target_url": ")" << i << ".mov\"}}";
    file << "]}";
}

using ImportKillTest = CrashFixture;

// The import is killed after some progress, or a little later, in the midst of its end.
TEST_F(ImportKillTest, allOfAnImportIsThereOrNothing) {
    constexpr std::size_t kSources = 1500;
    writeTimeline(temp_ / "timeline.otio", kSources);
    begin();
    const std::size_t before = projdb::count();
    end();
    const std::string sound = temp_ / "sound";
    std::filesystem::rename(folder_, sound);
    std::mt19937 random(7);
    const long moments = rounds(12, 200);
    RecordProperty("kills", std::to_string(moments));
    long untouched = 0;
    for (long i = 0; i < moments && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        std::filesystem::remove_all(folder_);
        std::filesystem::copy(sound, folder_, std::filesystem::copy_options::recursive);
        WriterProcess writer("import", folder_, 0);
        writer.read(1 + random() % 100, std::chrono::seconds(20));
        writer.read(1000, microseconds(random() % 60'000));
        writer.kill();
        const bool told = testing::Value(writer.lines(), testing::Contains("done"));
        begin();
        expectNoTrace();
        const std::size_t made = projdb::count() - before;
        EXPECT_TRUE(made == kSources + 1 || (made == 0 && !told)) << made;
        untouched += made == 0;
        end();
    }
    EXPECT_GT(untouched, 0);
}

} // namespace
