#include "interchange/Importer.h"

#include "interchange/Exporter.h"
#include "platform/files/Files.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/interchange/OtioText.h"
#include "tests/support/FaultyFiles.h"

#include <gmock/gmock.h>

namespace {

using namespace cutroom;
using namespace cutroom::test;
using namespace otiotext;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Import = ImportFixture;

std::string external(const std::string& url, double start, double duration) {
    return "\"media_references\":{\"DEFAULT_MEDIA\":" +
           object("ExternalReference.1", "",
                  "\"target_url\":\"" + url + "\",\"available_range\":" + range(start, duration)) +
           "}";
}

std::string sound(const std::string& list) {
    return object("Track.1", "A", R"("kind":"Audio",)" + children(list));
}

const std::string kPlain =
    timeline(track(clip("one", 86410, 10, external("file:///a%20%c3%BC.mov", 86400, 100)) + "," +
                   clip("two", 86450, 20, external("file:///a%20%c3%BC.mov", 86400, 100))) +
                 "," + sound(clip("three", 5, 30)),
             otiotext::time(86400));

TEST_F(Import, ClipsPlayStripsOfLogsInMediaTime) {
    const ImportReport report = import(write("cut.otio", kPlain));
    EXPECT_EQ(report.logs, 2u);
    EXPECT_THAT(report.warnings, IsEmpty());
    const EditPtr edit(report.edits.at(0).edit);
    EXPECT_EQ(edit->getTimecode(0), "01:00:00:00");
    EXPECT_EQ(itemsOf(edit, *celOf(edit, 0)), "C0+10@86410 C10+20@86450");
    EXPECT_EQ(itemsOf(edit, *celOf(edit, 1)), "C0+30@5");

    const CelSegment clip = celOf(edit, 0)->getSegment(1);
    EXPECT_EQ(toUtf8(clip.detail.name), "two");
    EXPECT_EQ(toUtf8(clip.detail.media), "file:///a%20%c3%BC.mov");
    const EditPtr log(convertCookie(clip.material, 'E'));
    ASSERT_TRUE(log);
    EXPECT_EQ(log->getLogType(), kLogTypeSource);
    EXPECT_EQ(toUtf8(log->getName()), "a ü.mov");
    EXPECT_EQ(frameOf(log, log->getEndTime()), 100);
    EXPECT_EQ(log->getTimecode(0), "01:00:00:00");
    EXPECT_EQ(frameOf(log, log->getStartStripTime()), 86400);
    EXPECT_EQ(log->getChanForStrip(clip.material), log->getFirstChan(kChanVideo));
    EXPECT_TRUE(celOf(log, 0)->hasFlag(kCelHasMaterial));
    EXPECT_THAT(log->getMediaLocations(), ElementsAre(L"file:///a%20%c3%BC.mov"));

    const EditPtr tone(convertCookie(celOf(edit, 1)->getSegment(0).material, 'E'));
    EXPECT_EQ(tone->getNumChans(kChanVideo), 0);
    EXPECT_EQ(tone->getNumChans(kChanAudio), 1);
    EXPECT_EQ(tone->getLabel(kLabelVideoTimecode, {4, 1}).get_abs_posn(), 5);
    EXPECT_EQ(frameOf(tone, tone->getEndTime()), 30);
}

std::string warped(const std::string& scalar) {
    return R"("effects":[{"OTIO_SCHEMA":"LinearTimeWarp.1","name":"","time_scalar":)" + scalar +
           "}]";
}

TEST_F(Import, ItemsAreLaidAsTheyPlay) {
    const struct {
        const char* name;
        std::string items;
        const char* laid;
    } rows[] = {
        {"transitions everywhere",
         transition(4, 3) + "," + clip("a", 50, 20) + "," + transition(2, 5) + "," +
             clip("b", 0, 20) + "," + transition(6, 7),
         "T0+7 C4+20@50 T22+7 C24+20@0 T38+13"},
        {"tail transition without out offset", clip("a", 0, 20) + "," + transition(6, 0),
         "C0+20@0 T14+6"},
        {"backwards from the end of its range", clip("a", 100, 20, warped("-2")), "C0+20@140"},
        {"a nested thing is one clip",
         clip("a", 0, 5) + "," + object("Stack.1", "n", children(track(clip("b", 0, 9)))),
         "C0+5@0 C5+9@0"},
        {"shorter than half a frame",
         clip("a", 0, 5) + "," + clip("b", 0, 0.2) + "," + clip("c", 7, 5), "C0+5@0 C5+5@7"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const EditModifier edit = imported("t.otio", timeline(track(row.items)));
        EXPECT_EQ(itemsOf(edit, *celOf(edit, 0)), row.laid);
        EXPECT_EQ(edit->checkConsistency(), "");
        EXPECT_FALSE(edit->getVideoTimecodeLabel().is_valid()); // the file has no start
    }
}

TEST_F(Import, FlagsMetadataAndTransitionsAreKept) {
    const Cookie made =
        imported("t.otio",
                 timeline(track(clip("off", 0, 5, R"("enabled":false,"metadata":{"x":[1,NaN]})") +
                                "," + transition(2, 2) + "," +
                                clip("still", 0, 5,
                                     R"("effects":[{"OTIO_SCHEMA":"FreezeFrame.1","name":""}])"))))
            .getCookie();
    reopen();
    const EditPtr edit(made);
    const CelSegment off = celOf(edit, 0)->getSegment(0), still = celOf(edit, 0)->getSegment(1);
    EXPECT_EQ(off.flags, kEventDisabled);
    EXPECT_THAT(off.detail.metadata, HasSubstr(R"("metadata":{"x":[1,NaN]})"));
    EXPECT_EQ(still.flags, kEventFreeze);
    EXPECT_THAT(still.detail.metadata, HasSubstr("FreezeFrame.1"));
    const auto graph = edit->getEffectGraph(still.inGraph);
    ASSERT_TRUE(graph && graph->isTransition());
    EXPECT_EQ(EffectTemplateManager::instance().getTemplate(graph->effectTemplate)->name,
              L"Dissolve");
    EXPECT_THAT(graph->parameters, HasSubstr(R"("type":"SMPTE_Dissolve")"));
    EXPECT_THAT(edit->getImportedMetadata(),
                AllOf(HasSubstr(R"("format":"otio")"), HasSubstr(R"("schema":"Timeline.1")")));
}

TEST_F(Import, SourcesThatTheProjectHasAreUsedAgain) {
    const EditModifier a = imported("cut.otio", kPlain);
    const auto played = [](const EditPtr& edit, int channel) {
        return celOf(edit, channel)->getSegment(0).material;
    };
    const Cookie picture = played(a, 0), sound = played(a, 1);
    const std::size_t records = projdb::count();
    reopen();
    const EditModifier b = imported("cut.otio", kPlain);
    EXPECT_EQ(projdb::count(), records + 1);
    EXPECT_EQ(played(b, 0), picture);
    EXPECT_EQ(played(b, 1), sound);
}

TEST_F(Import, LogsUsedAgainFitOrAreMadeAnew) {
    const auto reel = [&](const std::string& in, const std::string& out) {
        return import(
            write("r.edl", "001 R1 V C " + in + " " + out + " 01:00:00:00 01:00:10:00\n"));
    };
    const ImportReport first = reel("02:00:00:00", "02:00:10:00");
    const std::string said = "logs of the project that hold less of their media than the file: 1";
    EXPECT_THAT(first.warnings, testing::Not(testing::Contains(said)));
    EXPECT_THAT(reel("02:00:05:00", "02:00:15:00").warnings, testing::Contains(said));
    // The same timecode at another rate is another time.
    ImportOptions film;
    film.rate = Kv::FrameRate(24000, 1001);
    for (const std::size_t fresh : {1u, 0u})
        EXPECT_EQ(import(temp_ / "r.edl", film).logs, fresh);
    const Cookie log =
        convertCookie(celOf(EditPtr(first.edits.at(0).edit), 0)->getSegment(0).material, 'E');
    ASSERT_TRUE(CurrentProject::close());
    std::ofstream(folder() + "/edits/" + log.asString() + ".edit") << "damaged";
    open();
    EXPECT_EQ(reel("02:00:00:00", "02:00:10:00").logs, 1u);
}

TEST_F(Import, LogsCountAsTheListSaysOfTheirEvents) {
    const EditModifier edit =
        imported("mixed.edl",
                 "FCM: DROP FRAME\nFCM: NON-DROP FRAME\n"
                 "001 N V C 10:00:00:00 10:00:10:00 01:00:00;00 01:00:10;00\nFCM: DROP FRAME\n"
                 "002 D V C 10:00:00;00 10:00:10;00 01:00:10;00 01:00:20;00\n",
                 Kv::FrameRate(30000, 1001));
    const Kv::Ptr<Cel> cel = celOf(edit, 0);
    const auto start = [&](std::uint32_t event) {
        return EditPtr(convertCookie(cel->getSegment(event).material, 'E'))->getTimecode(0);
    };
    EXPECT_EQ(start(0), "10:00:00:00");
    EXPECT_EQ(start(1), "10:00:00;00");
    CelSegment cutIn = cel->getSegment(0);
    cutIn.detail.metadata.clear(); // what an event said
    ASSERT_TRUE(cel->setSegments({cutIn}).ok());
    EXPECT_THAT(
        exportEdl(edit)->text,
        HasSubstr("FCM: NON-DROP FRAME\n001  N        V     C        10:00:00:00 10:00:10:00 "
                  "01:00:00;00 01:00:10;00\n"));
}

TEST_F(Import, ContentsTellTheKindOfFile) {
    EXPECT_EQ(import(write("a.edl", "\n " + kPlain)).edits.size(), 1u);
    const EditModifier list = imported(
        "b.otio", "TITLE: L\n001  R1 A2 C 00:00:01:00 00:00:02:00 01:00:00:00 01:00:01:00\n",
        Kv::FrameRate(25));
    EXPECT_EQ(list->getName(), L"L");
    EXPECT_EQ(list->getFrameRate(), Kv::FrameRate(25));
    EXPECT_EQ(celOf(list, 0)->getSegment(0).material.index(), 2);
    std::filesystem::create_directory(temp_ / "bundle.otiod");
    write("bundle.otiod/content.otio", kPlain);
    EXPECT_EQ(import(temp_ / "bundle.otiod").edits.size(), 1u);
    EXPECT_FALSE(importFile(write("c.otio", "")).ok());
    EXPECT_THAT(importFile(write("d.otioz", "PK\x03\x04...")).status().text(), HasSubstr("zip"));
}

TEST_F(Import, ProgressRunsFromNothingToAll) {
    std::vector<double> told;
    ImportOptions options;
    options.progress = [&](double done) { told.push_back(done); };
    import(write("cut.otio", kPlain), options);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.front(), 0);
    EXPECT_EQ(told.back(), 1);
}

// Found out while laying: beyond the range of an edit.
TEST_F(Import, WhatFailsLeavesNothing) {
    const auto files = editFiles();
    const std::string far = timeline(track(clip("a", 9e10, 10)));
    EXPECT_FALSE(importFile(write("bad.otio", far)).ok());
    EXPECT_EQ(editFiles(), files);
    EXPECT_EQ(projdb::count(), 0u);
    EXPECT_THAT(EditManager::instance().getAllEdits(), IsEmpty());
}

class ImportFaults : public ImportFixture {
protected:
    ImportFaults() { installFileSystem(&faulty_); }
    ~ImportFaults() override {
        (void)CurrentProject::close(); // its lock is held through these files
        installFileSystem(nullptr);
    }

    FaultyFiles faulty_{systemFiles()};
};

// Whichever operation fails, alone or as the last one ever, the project opens with all of the file
// with what is written beside it, or nothing of the file.
TEST_F(ImportFaults, AllOrNothingWhereverItStops) {
    const std::string path = write("cut.otio", kPlain);
    int attempt = 0;
    ImportOptions options;
    options.alongside = [&](const ImportReport&) {
        return std::vector{FileInProject{"groups/filed", std::to_string(attempt)}};
    };
    for (const auto span : {FaultyFiles::Span::once, FaultyFiles::Span::allForEver}) {
        bool struck = true;
        for (long at = 0; struck; ++at) {
            SCOPED_TRACE(at);
            const std::size_t before = projdb::count();
            ++attempt;
            faulty_.arm(at, span);
            const bool done = importFile(path, options).ok();
            struck = faulty_.struck();
            const std::size_t known = EditManager::instance().getAllEdits().size();
            faulty_.disarm();
            const std::size_t all = before + (before == 0 ? 3 : 1);
            if (span == FaultyFiles::Span::once) {
                EXPECT_EQ(known, done ? all : before);
            }
            reopen();
            const std::size_t after = EditManager::instance().getAllEdits().size();
            EXPECT_TRUE(after == before || after == all) << before << " " << after;
            // The edits are never there without it; after a failure it may be there without them.
            const auto filed = readFile(joinPath(CurrentProject::getFolder(), "groups/filed"));
            EXPECT_TRUE(after == before || (filed && *filed == std::to_string(attempt)));
            for (const Cookie& edit : EditManager::instance().getAllEdits())
                EXPECT_TRUE(EditPtr(edit)) << edit.asString();
        }
    }
}

} // namespace
