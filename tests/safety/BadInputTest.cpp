// Bad input at the interface: what the headers promise comes of it, at most one bounded message is
// logged, and the project is as it was.
#include "audio/AudioMixWriter.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "export/MetadataExporters.h"
#include "interchange/EdlReader.h"
#include "interchange/Importer.h"
#include "interchange/OtioReader.h"
#include "interchange/SrtReader.h"
#include "platform/base/Timecode.h"
#include "platform/files/Files.h"
#include "platform/store/EditFile.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/FaultyFiles.h"
#include "vob/VobManager.h"

#include <cmath>
#include <filesystem>
#include <limits>

using namespace cutroom;
using namespace cutroom::test;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kLongestMessage = 600;

class BadInputTest : public CrashFixture {
protected:
    void SetUp() override {
        CrashFixture::SetUp();
        begin();
        registerMetadataExporters();
        edit_ = EditPtr(edits_[0]);
        vob_ = VobManager::instance().createVob(edit_);
        vob_->setCurrentTime(1);
        bin_ = BinManager::instance().newBin();
        bin_->add(edits_[0]);
        ASSERT_TRUE(BinManager::instance().saveAll().ok());
        ASSERT_TRUE(EditManager::instance().flushChanges(false).ok());
        before_ = state();
        projectBefore_ = stateOfProject();
    }
    void TearDown() override {
        EXPECT_EQ(differences(stateOfProject(), projectBefore_), "");
        RecordProperty("inputs", inputs_);
        vob_.reset();
        bin_.reset();
        edit_ = EditPtr();
        CrashFixture::TearDown();
    }
    // `refused`: what is documented came out.
    void expectRefused(const std::string& what, bool refused) {
        ++inputs_;
        EXPECT_TRUE(refused) << what;
        EXPECT_LE(log_.lines.size(), 1u) << what;
        for (const std::string& line : log_.lines)
            EXPECT_LE(line.size(), kLongestMessage) << what;
        log_.lines.clear();
        EXPECT_EQ(state(), before_) << what;
    }
    void expectRefused(const std::string& what, const Status& status) {
        expectRefused(what, !status.ok());
        EXPECT_FALSE(status.message().empty()) << what;
        EXPECT_LE(status.message().size(), kLongestMessage) << what;
        EXPECT_EQ(status.message().find('\n'), std::string::npos) << what;
    }
    // Tries to open another project, which fails because one is open.
    static Status tryOpenAnother(const std::string& folder) {
        return CurrentProject::open(folder, Access::readWrite, IfMissing::create);
    }
    bool exportTo(const iAssetMetadataExporter& exporter, const std::vector<Cue>& cues,
                  const std::string& target) const {
        return exporter.getSupportedSources() & iAssetMetadataExporter::kSourceMarkers
                   ? exporter.exportToFile(edit_, cues, toWide(target))
                   : exporter.exportToFile(bin_, toWide(target));
    }
    std::string state() {
        const TimeRange& region = vob_->getViewRegion();
        std::string text = stampOf(edit_) + stampOf(*bin_) + toText(vob_->getCurrentTime()) + " " +
                           toText(vob_->getMarkTime(0)) + " " + toText(region.getStart()) + " " +
                           toText(region.getEnd());
        for (const IdStamp& channel : edit_->getChans())
            text += vob_->getSelected(channel) ? '1' : '0';
        for (const auto& [name, content] : filesBelow(folder_))
            text += name.starts_with("project.db") ? "" : " " + name;
        return text;
    }

    EditPtr edit_;
    Kv::Ptr<Vob> vob_;
    Kv::Ptr<BinData> bin_;
    std::string before_;
    ProjectState projectBefore_;
    int inputs_ = 0;
};

TEST_F(BadInputTest, numbersThatAreNoTimesNorLevels) {
    const auto cel = edit_->get_edit_cel_p(edit_->getFirstChan(kChanVideo));
    const IdStamp levels = edit_->getFirstChan(kChanLevels);
    for (const double bad : {kNaN, kInfinity, -kInfinity, 1e308, -1e308}) {
        const std::string text = " " + toText(bad);
        const auto gain = static_cast<float>(std::min(std::max(bad, -1e300), 1e300));
        expectRefused("cue" + text, !edit_->addCue(Cue(bad, L"bad")));
        Cue endless(1, L"bad");
        endless.setEndTime(bad);
        expectRefused("cue's end" + text, !edit_->addCue(endless));
        expectRefused("viewed cue" + text, !vob_->addCue(Cue(bad, L"bad")));
        expectRefused("lift from" + text, cel->lift(TimeRange(bad, 1)));
        expectRefused("remove" + text, cel->remove(TimeRange(bad, 1)));
        expectRefused("slide" + text, cel->slide(bad));
        expectRefused("level nodes" + text,
                      !edit_->setLevelNodes(levels, LevelNodes{LevelNode{1, -std::abs(gain)}}));
        expectRefused("pan" + text, [&] {
            AudioMixWriter(edit_, "bad").setChannelPan(0, gain);
            return true;
        }());
        expectRefused("timecode" + text, edit_->getTimecode(bad).size() < 20);
        if (!std::isfinite(bad)) {
            vob_->setCurrentTime(bad);
            expectRefused("current time" + text, true);
            AudioMixWriter(edit_, "bad").setChannelLevel(0, static_cast<float>(bad));
            expectRefused("level" + text, true);
        }
    }
}

TEST_F(BadInputTest, channelsThatTheEditDoesNotHave) {
    const auto refuse = [&](const auto& bad, const std::string& text) {
        expectRefused("cel" + text, !edit_->get_edit_cel_p(bad));
        vob_->setSelected(bad, true);
        expectRefused("selection" + text, !vob_->getSelected(bad));
        vob_->setMarkTime(bad, 1, Kv::MarkTypes::In);
        expectRefused("mark" + text, !vob_->isMarkValid(bad));
    };
    for (const int bad : {-1, 200, kChanEnd, 65534}) {
        const std::string text = " " + std::to_string(bad);
        refuse(bad, text);
        expectRefused("id" + text, !edit_->getId(bad).valid());
        vob_->setSelectedFrom(bad);
        expectRefused("selection from" + text, true);
        vob_->invalidateMark(bad);
        expectRefused("no mark" + text, true);
        expectRefused("mark's time" + text, vob_->getMarkTime(bad) == kNoTime);
        const Cookie strip('V', 1, static_cast<std::uint8_t>(bad));
        expectRefused("strip" + text, !edit_->getChanForStrip(strip).valid());
    }
    const IdStamp unknown(7, 7, 7);
    refuse(unknown, " unknown");
    expectRefused("index", edit_->getIdx(unknown) == kChanEnd);
    expectRefused("removal", !edit_->removeChan(unknown, true));
    expectRefused("cel", !edit_->set_edit_cel_p(unknown, *edit_->get_edit_cel_p(0)));
    expectRefused("twice", !edit_->addChan(kChanVideo, kSubNormal, edit_->getId(0)).valid());
    expectRefused("nodes", !edit_->setLevelNodes(unknown, {}));
    expectRefused("selections", !vob_->getTrackSelections(unknown));
    expectRefused("cue", !edit_->removeCue(unknown));
}

TEST_F(BadInputTest, ratesCookiesAndTimecodesThatAreNone) {
    for (const double bad : {0.0, -25.0, kNaN, kInfinity, -kInfinity, 1e308, 1e-308})
        expectRefused("rate " + toText(bad), !Kv::FrameRate::fromDouble(bad));
    for (const auto& [num, den] : {std::pair{0, 1}, {0, 0}, {25, 0}, {-25, 1}, {25, -1}})
        expectRefused("rate " + std::to_string(num), !Kv::FrameRate(num, den).valid());
    const std::string huge(1'000'000, '9');
    for (const std::string& bad :
         {std::string(), huge, std::string("0"), std::string("-25"), std::string("nan"),
          std::string("25/0"), std::string("\xff\xfe"), std::string("25\0", 3)}) {
        const std::string text = bad.substr(0, 10);
        expectRefused("rate " + text, !Kv::FrameRate::fromString(bad));
        expectRefused("cookie " + text, !Cookie::fromString(bad));
        expectRefused("id " + text, !IdStamp::fromString(bad));
        expectRefused("edit " + text, !EditManager::instance().open(Cookie(bad)));
        expectRefused("bin " + text, !BinManager::instance().getData(Cookie(bad)));
        expectRefused("document " + text, !DocumentManager::instance().getDocument(Cookie(bad)));
        expectRefused("timecode " + text, !parseTimecode(bad, {Kv::FrameRate(25), false}));
    }
    EditManager& manager = EditManager::instance();
    expectRefused("taken", !manager.makeNewEdit(edits_[0], 1, 1, 1.0, Kv::FrameRate(25)));
    for (const char type : {'I', 'G', 'D', 'V', 'e', '\0'})
        expectRefused("kind", !manager.makeNewEdit(Cookie(type, 5), 1, 1, 1.0, Kv::FrameRate(25)));
}

TEST_F(BadInputTest, textsThatAreNoFilesOfTheirKind) {
    const std::string deep(100'000, '['), large(200'000, 'x'), zero(1, '\0');
    for (const std::string& text :
         {std::string(), zero, deep, large, std::string("\xff\xfe\xfd"), std::string("{\"a\":"),
          std::string("{\"OTIO_SCHEMA\": 5}"), std::string("\r\n\r\n"), std::string("-->"),
          std::string("\""), std::string("nan")}) {
        const std::string name = "'" + text.substr(0, 12) + "' as ";
        expectRefused(name + "otio", readOtio(text, "file").status());
        expectRefused(name + "edl", readEdl(text, "file").status());
        expectRefused(name + "subtitles", readSrt(text, "file").status());
        expectRefused(name + "edit", EditFile::decode(text, "file").status());
        const std::string file = temp_ / "timeline";
        putBytes(file, text);
        expectRefused(name + "timeline", importFile(file).status());
    }
}

TEST_F(BadInputTest, placesThatCannotBeReadOrWritten) {
    const std::vector<Cue> cues{Cue(TimeRange(1, 2), L"a range")};
    const std::string folder = temp_.path();
    for (const std::string& target :
         {std::string(), folder, folder + "/none/x", std::string("/dev/full"),
          std::string("/tmp/a\0b", 8), std::string("/dev/null/x"),
          folder + "/" + std::string(300, 'n'), "/" + std::string(5000, 'n'), folder + "/\xff\xfe",
          std::string("/proc/none")}) {
        const std::string name = target.substr(0, 30);
        if (target != "/dev/full") // it has much to read
            expectRefused("import " + name, importFile(target).status());
        expectRefused("output " + name, writeOutput(target, "text"));
        expectRefused("folder " + name, tryOpenAnother(target));
        if (!isUtf8(target))
            continue; // it cannot be written as a wide text
        for (const auto& exporter : BinManager::instance().getMetadataExporters())
            expectRefused("export " + name, !exportTo(*exporter, cues, target));
    }
}

TEST_F(BadInputTest, fullAndReadOnlyDisks) {
    const std::vector<Cue> cues{Cue(TimeRange(1, 2), L"a range")};
    FaultyFiles faulty(systemFiles());
    for (const char* const message : {"No space left on device", "Read-only file system"}) {
        const auto failing = [&](const std::string& what, const std::function<bool()>& work) {
            faulty.arm(0, FaultyFiles::Span::allForEver, message);
            installFileSystem(&faulty);
            const bool done = work();
            installFileSystem(nullptr);
            expectRefused(what + ": " + message, !done);
        };
        for (const auto& exporter : BinManager::instance().getMetadataExporters())
            failing("export", [&] { return exportTo(*exporter, cues, temp_ / "out"); });
        failing("edit", [&] { return EditManager::instance().save(edit_).ok(); });
        failing("bin", [&] { return bin_->save().ok(); });
        failing("name", [] { return CurrentProject::setName(L"other").ok(); });
        failing("output", [&] { return writeOutput(temp_ / "out", "text").ok(); });
    }
}

} // namespace
