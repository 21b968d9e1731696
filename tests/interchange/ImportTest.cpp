#include "interchange/Importer.h"

#include "platform/files/Files.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/interchange/OtioText.h"
#include "tests/support/FaultyFiles.h"

#include <gmock/gmock.h>

namespace {

using namespace cutroom;
using namespace cutroom::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Import = ImportFixture;

std::string external(const std::string& url, double start, double duration) {
    return "\"media_references\":{\"DEFAULT_MEDIA\":" +
           otiotext::object("ExternalReference.1", "",
                            "\"target_url\":\"" + url +
                                "\",\"available_range\":" + otiotext::range(start, duration)) +
           "}";
}

std::string sound(const std::string& list) {
    return otiotext::object("Track.1", "A", R"("kind":"Audio",)" + otiotext::children(list));
}

const std::string kPlain = otiotext::timeline(
    otiotext::track(otiotext::clip("one", 86410, 10, external("file:///a%20b.mov", 86400, 100)) +
                    "," +
                    otiotext::clip("two", 86450, 20, external("file:///a%20b.mov", 86400, 100))) +
        "," + sound(otiotext::clip("three", 5, 30)),
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
    EXPECT_EQ(toUtf8(clip.detail.media), "file:///a%20b.mov");
    const EditPtr log(convertCookie(clip.material, 'E'));
    ASSERT_TRUE(log);
    EXPECT_EQ(log->getLogType(), kLogTypeSource);
    EXPECT_EQ(toUtf8(log->getName()), "a b.mov");
    EXPECT_EQ(frameOf(log, log->getEndTime()), 100);
    EXPECT_EQ(log->getTimecode(0), "01:00:00:00");
    EXPECT_EQ(frameOf(log, log->getStartStripTime()), 86400);
    EXPECT_EQ(log->getChanForStrip(clip.material), log->getFirstChan(kChanVideo));
    EXPECT_TRUE(celOf(log, 0)->hasFlag(kCelHasMaterial));
    EXPECT_THAT(log->getMediaLocations(), ElementsAre(L"file:///a%20b.mov"));

    const EditPtr tone(convertCookie(celOf(edit, 1)->getSegment(0).material, 'E'));
    EXPECT_EQ(tone->getNumChans(kChanVideo), 0);
    EXPECT_EQ(tone->getNumChans(kChanAudio), 1);
    EXPECT_EQ(tone->getLabel(kLabelVideoTimecode, {4, 1}).get_abs_posn(), 5);
    EXPECT_EQ(frameOf(tone, tone->getEndTime()), 30);
}

struct Row {
    const char* name;
    std::string track;
    const char* items;
};

class ImportItems : public ImportFixture, public testing::WithParamInterface<Row> {};

TEST_P(ImportItems, AreLaidAsTheyPlay) {
    const ImportReport report =
        import(write("t.otio", otiotext::timeline(otiotext::track(GetParam().track))));
    const EditPtr edit(report.edits.at(0).edit);
    EXPECT_EQ(itemsOf(edit, *celOf(edit, 0)), GetParam().items);
    EXPECT_EQ(edit->checkConsistency(), "");
}

std::string warped(const std::string& scalar) {
    return R"("effects":[{"OTIO_SCHEMA":"LinearTimeWarp.1","name":"","time_scalar":)" + scalar +
           "}]";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ImportItems,
    testing::Values(
        Row{"TransitionsEverywhere",
            otiotext::transition(4, 3) + "," + otiotext::clip("a", 50, 20) + "," +
                otiotext::transition(2, 5) + "," + otiotext::clip("b", 0, 20) + "," +
                otiotext::transition(6, 7),
            "T0+7 C4+20@50 T22+7 C24+20@0 T38+13"},
        Row{"TailTransitionWithoutOutOffset",
            otiotext::clip("a", 0, 20) + "," + otiotext::transition(6, 0), "C0+20@0 T14+6"},
        Row{"Gaps",
            otiotext::item("Gap.1", "", 0, 5) + "," + otiotext::clip("a", 0, 20) + "," +
                otiotext::item("Gap.1", "", 0, 6),
            "G0+5 C5+20@0 G25+6"},
        Row{"BackwardsBeginsAtTheEndOfItsRange", otiotext::clip("a", 100, 20, warped("-2")),
            "C0+20@140"},
        Row{"NestedThingIsOneClip",
            otiotext::clip("a", 0, 5) + "," +
                otiotext::object("Stack.1", "n",
                                 otiotext::children(otiotext::track(otiotext::clip("b", 0, 9)))),
            "C0+5@0 C5+9@0"},
        Row{"ShorterThanHalfAFrame",
            otiotext::clip("a", 0, 5) + "," + otiotext::clip("b", 0, 0.2) + "," +
                otiotext::clip("c", 7, 5),
            "C0+5@0 C5+5@7"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Import, FlagsMetadataAndTransitionsAreKept) {
    const std::string track =
        otiotext::clip("off", 0, 5, R"("enabled":false,"metadata":{"x":[1,NaN]})") + "," +
        otiotext::transition(2, 2) + "," +
        otiotext::clip("still", 0, 5, R"("effects":[{"OTIO_SCHEMA":"FreezeFrame.1","name":""}])");
    const ImportReport report = import(write("t.otio", otiotext::timeline(otiotext::track(track))));
    reopen();
    const EditPtr edit(report.edits.at(0).edit);
    const CelSegment off = celOf(edit, 0)->getSegment(0);
    EXPECT_EQ(off.flags, kEventDisabled);
    EXPECT_THAT(off.detail.metadata, HasSubstr(R"("metadata":{"x":[1,NaN]})"));
    const CelSegment still = celOf(edit, 0)->getSegment(1);
    EXPECT_EQ(still.flags, kEventFreeze);
    EXPECT_THAT(still.detail.metadata, HasSubstr("FreezeFrame.1"));
    const auto graph = edit->getEffectGraph(still.inGraph);
    ASSERT_TRUE(graph);
    EXPECT_TRUE(graph->isTransition());
    EXPECT_EQ(EffectTemplateManager::instance().getTemplate(graph->effectTemplate)->name,
              L"Dissolve");
    EXPECT_THAT(graph->parameters, HasSubstr(R"("type":"SMPTE_Dissolve")"));
    EXPECT_THAT(edit->getImportedMetadata(),
                AllOf(HasSubstr(R"("format":"otio")"), HasSubstr(R"("schema":"Timeline.1")")));
}

TEST_F(Import, SourcesThatTheProjectHasAreUsedAgain) {
    const std::string path = write("cut.otio", kPlain);
    const ImportReport first = import(path);
    const std::size_t records = projdb::count();
    reopen();
    const ImportReport second = import(path);
    EXPECT_EQ(second.logs, 0u);
    EXPECT_EQ(projdb::count(), records + 1);
    const EditPtr a(first.edits[0].edit), b(second.edits[0].edit);
    EXPECT_EQ(celOf(a, 0)->getSegment(0).material, celOf(b, 0)->getSegment(0).material);
    EXPECT_EQ(celOf(a, 1)->getSegment(0).material, celOf(b, 1)->getSegment(0).material);
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
    // Timecode at another rate is another time.
    ImportOptions film;
    film.rate = Kv::FrameRate(24000, 1001);
    EXPECT_EQ(import(temp_ / "r.edl", film).logs, 1u);
    EXPECT_EQ(import(temp_ / "r.edl", film).logs, 0u);
    const Cookie log =
        convertCookie(celOf(EditPtr(first.edits.at(0).edit), 0)->getSegment(0).material, 'E');
    ASSERT_TRUE(CurrentProject::close());
    std::ofstream(folder() + "/edits/" + log.asString() + ".edit") << "damaged";
    open();
    EXPECT_EQ(reel("02:00:00:00", "02:00:10:00").logs, 1u);
}

TEST_F(Import, ContentsTellTheKindOfFile) {
    EXPECT_EQ(import(write("a.edl", "\n " + kPlain)).edits.size(), 1u);
    const std::string list =
        "TITLE: L\n001  R1 A2 C 00:00:01:00 00:00:02:00 01:00:00:00 01:00:01:00\n";
    ImportOptions options;
    options.rate = Kv::FrameRate(25);
    std::vector<double> told;
    options.progress = [&](double done) { told.push_back(done); };
    const ImportReport report = import(write("b.otio", list), options);
    const EditPtr edit(report.edits.at(0).edit);
    EXPECT_EQ(toUtf8(edit->getName()), "L");
    EXPECT_EQ(edit->getFrameRate(), Kv::FrameRate(25));
    EXPECT_EQ(celOf(edit, 0)->getSegment(0).material.index(), 2);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.front(), 0);
    EXPECT_EQ(told.back(), 1);
    std::filesystem::create_directory(temp_ / "bundle.otiod");
    write("bundle.otiod/content.otio", kPlain);
    EXPECT_EQ(import(temp_ / "bundle.otiod").edits.size(), 1u);
    EXPECT_FALSE(importFile(write("c.otio", "")).ok());
    EXPECT_THAT(importFile(write("d.otioz", "PK\x03\x04...")).status().text(), HasSubstr("zip"));
}

TEST_F(Import, WhatFailsLeavesNothing) {
    const auto files = editFiles();
    // Found out while reading, and only while laying (beyond the range of an edit).
    const std::string far = otiotext::timeline(otiotext::track(otiotext::clip("a", 9e10, 10)));
    for (const std::string& text : {kPlain.substr(0, kPlain.size() / 2), far}) {
        EXPECT_FALSE(importFile(write("bad.otio", text)).ok());
        EXPECT_EQ(editFiles(), files);
        EXPECT_EQ(projdb::count(), 0u);
        EXPECT_THAT(EditManager::instance().getAllEdits(), IsEmpty());
    }
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
            // The edits never stand without it; after a failure it may stand without them.
            const auto filed = readFile(joinPath(CurrentProject::getFolder(), "groups/filed"));
            EXPECT_TRUE(after == before || (filed && *filed == std::to_string(attempt)));
            for (const Cookie& edit : EditManager::instance().getAllEdits())
                EXPECT_TRUE(EditPtr(edit)) << edit.asString();
        }
    }
}

TEST_F(Import, ManyClipsOfManySources) {
    constexpr int kClips = 20'000;
    std::string clips;
    for (int i = 0; i < kClips; ++i)
        clips += (i ? "," : "") +
                 otiotext::clip("c" + std::to_string(i), i, 3,
                                external("file:///m" + std::to_string(i % 50), 0, kClips + 3));
    const ImportReport report =
        import(write("big.otio", otiotext::timeline(otiotext::track(clips))));
    EXPECT_EQ(report.logs, 50u);
    const EditPtr edit(report.edits.at(0).edit);
    EXPECT_EQ(celOf(edit, 0)->numSegments(), static_cast<std::uint32_t>(kClips));
    EXPECT_EQ(frameOf(edit, edit->getEndTime()), 3 * kClips);
}

} // namespace
