// What the exporters write of bins and markers, to the letter.
#include "export/MetadataExporters.h"
#include "bins/DocumentManager.h"
#include "export/AssetMetadataCSVExporter.h"
#include "export/AssetMetadataJSONExporter.h"
#include "export/AssetMetadataSRTExporter.h"
#include "export/AssetMetadataSubtitlesExporter.h"
#include "export/AssetMetadataXMLExporter.h"
#include "export/WideText.h"
#include "platform/files/JsonElement.h"
#include "tests/bins/BinProject.h"

#include <filesystem>

namespace {

using cutroom::toWide;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Base = AssetMetadataExporterBase;

std::vector<std::string> keysOf(const JSON::Element& object) {
    std::vector<std::string> keys;
    for (const auto& child : object.children())
        keys.emplace_back(child->key());
    return keys;
}

Cue marker(double from, double to, std::wstring name, std::wstring text = {}) {
    Cue cue(TimeRange(from, to), std::move(name));
    cue.setDescription(std::move(text));
    return cue;
}

// Names that break what is written carelessly.
const std::wstring kHostile =
    std::wstring(L"a<b>&\"]]>\r\n\t,;='") + L'\x01' + L'\x0B' + L'\xFFFE' + L'\xD800' + L"ü😀";

class MetadataExport : public cutroom::test::BinProject {
protected:
    // A log with a marker and locations, an edit, a document, a bin, an item that is gone.
    Kv::Ptr<BinData> fullBin() {
        const Kv::Ptr<BinData> bin = newBin(L"Dailies");
        edit_ = EditManager::instance().addToProject(
            cutroom::test::makeEdit(1, 0, Kv::FrameRate(25), L"Reel"));
        log_ = EditManager::instance().addToProject(
            cutroom::test::makeEdit(1, 0, Kv::FrameRate(25), L"A001"));
        {
            const EditModifier log(log_, "set up");
            log->setLogType(kLogTypeSource);
            log->setMediaLocations({L"/media/a.mov", L"/copy/a.mov"});
            log->setConfig("scene", std::string("12"));
            log->setConfig("markers", std::string("many"));
            log->addCue(marker(1, 2, L"Sky", L"too bright"));
        }
        EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
        const auto document = DocumentManager::instance().createDocument(L"/notes.txt", 'D');
        for (const Cookie& asset : {edit_.getCookie(), log_.getCookie(), document->getID()})
            bin->add(asset);
        bin->add(newBin(L"Inner")->getID());
        return bin;
    }
    Kv::Ptr<JSON::Element> json(const Kv::Ptr<BinData>& bin) {
        const auto text = AssetMetadataJSONExporter().getText(bin);
        return JSON::Element::parse(text.value_or(""), "out.json").value();
    }

    EditPtr edit_, log_;
};

TEST_F(MetadataExport, ABinIsGroupedByKindInOrderAndOnlyWhatIsTaggedIsWritten) {
    ASSERT_TRUE(CurrentProject::addCustomAttribute("markers", L"Own", DBFieldTypes::text).ok());
    const Kv::Ptr<BinData> bin = fullBin();
    const auto all = json(bin);
    EXPECT_THAT(keysOf(*all), ElementsAre("name", "Clips", "Sequences", "Bins", "Documents"));
    EXPECT_EQ(all->getString("name"), "Dailies");
    const auto log = all->find("Clips")->child(0);
    EXPECT_EQ(log->getString("name"), "A001");
    EXPECT_EQ(log->getString("scene"), "12");
    EXPECT_FALSE(log->has("media_location"));
    EXPECT_FALSE(log->has("notes")) << "empty values are left out";
    EXPECT_EQ(log->find("Locations")->child(1)->text(), "/copy/a.mov");
    EXPECT_EQ(log->getString("markers 2"), "many");
    EXPECT_THAT(keysOf(*log->find("markers")->child(0)),
                ElementsAre("name", "description", "in", "out", "colour"));
    EXPECT_FALSE(all->find("Sequences")->child(0)->has("markers"));
    EXPECT_THAT(keysOf(*all->find("Documents")->child(0)),
                ElementsAre("name", "cookie", "modified", "created", "Locations"));
    EXPECT_THAT(cutroom::split(*AssetMetadataCSVExporter().getText(bin), '\n'),
                ElementsAre(StartsWith("name,cookie,modified,created,type,duration,"),
                            StartsWith("Reel,"),
                            AllOf(StartsWith("A001,"), HasSubstr("/media/a.mov; /copy/a.mov")),
                            StartsWith("notes.txt,"), StartsWith("Inner,"), ""));
    EXPECT_THAT(*AssetMetadataXMLExporter().getText(bin),
                HasSubstr("<Locations>\n                <Location>/media/a.mov</Location>\n"));
    EXPECT_EQ(Base::getAssetType(bin), Base::kAssetMixed);
    EXPECT_EQ(Base::getAssetType(nullptr), Base::kAssetMixed);
    EXPECT_EQ(Base::getAssetType(nullptr, 0), Base::kAssetMixed);
    EXPECT_EQ(Base::getPersistableString(nullptr, 0, LogAttribute::name), "");
    bin->setTags(std::map<unsigned, bool>{{1, true}});
    EXPECT_THAT(keysOf(*json(bin)), ElementsAre("name", "Clips"));
    EXPECT_FALSE(AssetMetadataJSONExporter().getText(newBin(L"none")));
}

TEST_F(MetadataExport, EveryKindOfAssetHasASectionInItsPlace) {
    const Kv::Ptr<BinData> bin = newBin(L"All");
    for (const int type : {0, 3, 1024, 256, 8, 4, 16, 1}) {
        const EditPtr made = EditManager::instance().addToProject(cutroom::test::makeEdit(1, 0));
        made->setLogType(static_cast<eLogType>(type));
        ASSERT_TRUE(EditManager::instance().save(made).ok());
        bin->add(made.getCookie());
    }
    EXPECT_THAT(keysOf(*json(bin)),
                ElementsAre("name", "Clips", "Subclips", "Synced clips", "Prints", "Copied clips",
                            "Clip sections", "Sequences", "Logs"));
    EXPECT_EQ(Base::getDisplayString(Base::kAssetPrint, true, Base::kStringLowerCase), L"prints");
}

TEST_F(MetadataExport, TheMarkersOfAnEditAreWrittenByEachFormat) {
    ASSERT_TRUE(CurrentProject::addCustomAttribute("cue.take", L"Take", DBFieldTypes::text).ok());
    ASSERT_TRUE(CurrentProject::addCustomAttribute("cue.name", L"Own", DBFieldTypes::text).ok());
    const EditPtr edit = cutroom::test::makeEdit(1, 0, Kv::FrameRate(25), L"Reel");
    cutroom::test::setStartTimecode(edit, "01:00:00:00");
    Cue first = marker(1, 2.48, L"Sky", L"=SUM(1), \"x\"");
    first.setColour(0xFF0000);
    first.setCustomMetadata("take", L"3");
    first.setCustomMetadata("name", L"mine");
    Cue second(3.0, L"point");
    second.setColour(0x123456);
    const std::vector<Cue> cues{first, second};
    const auto textOf = [&](const Base& exporter) { return exporter.getText(edit, cues).value(); };

    EXPECT_EQ(textOf(AssetMetadataCSVExporter()),
              "name,description,in,out,colour,take,name 2\r\n"
              "Sky,\"=SUM(1), \"\"x\"\"\",01:00:01:00,01:00:02:12,red,3,mine\r\n"
              "point,,01:00:03:00,,#123456,,\r\n");
    EXPECT_THAT(textOf(AssetMetadataCSVExporter(AssetMetadataCSVExporter::Cells::guarded)),
                HasSubstr("\"'=SUM(1), "));
    const std::string xml = textOf(AssetMetadataXMLExporter());
    EXPECT_TRUE(xml.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<assets>\n"
                                "    <name>Reel</name>\n    <Sequences>\n"));
    EXPECT_THAT(xml, HasSubstr("<name_2 key=\"name 2\">mine</name_2>"));
    EXPECT_EQ(Base::getCueTimecode(edit, 1), "01:00:01:00");
    EXPECT_EQ(Base::getCueTimecode(edit, kNoTime) + Base::getCueTimecode(EditPtr(), 1), "");
}

TEST_F(MetadataExport, WhatNamesHoldBreaksNoFile) {
    const EditPtr edit = cutroom::test::makeEdit(1, 0, Kv::FrameRate(25), kHostile);
    const std::vector<Cue> cues{marker(0, 1, kHostile),
                                marker(1, 2, L"5\n\n00:00:01,000 ---> 2 --> 3"),
                                marker(2, 3, L"\n \r"), marker(3, 4, L"a --> b")};
    const auto json = AssetMetadataJSONExporter().getText(edit, cues);
    EXPECT_TRUE(JSON::Element::parse(json.value_or(""), "x").ok());
    const std::string xml = AssetMetadataXMLExporter().getText(edit, cues).value();
    EXPECT_THAT(xml, HasSubstr("<name>a&lt;b&gt;&amp;\"]]&gt;&#13;\n\t,;='"
                               "\uFFFD\uFFFD\uFFFD\uFFFDü😀</name>"));
    EXPECT_THAT(AssetMetadataCSVExporter().getText(edit, cues).value(),
                HasSubstr("\r\n\"a<b>&\"\"]]>\r\n\t,;='"
                          "\uFFFD\uFFFD\xEF\xBF\xBE\uFFFDü😀\","));
    EXPECT_EQ(AssetMetadataSRTExporter().getText(edit, {cues[1], cues[2], cues[3]}).value(),
              "1\n00:00:01,000 --> 00:00:02,000\n5 00:00:01,000 -> 2 -> 3\n\n"
              "3\n00:00:03,000 --> 00:00:04,000\na --> b\n");
    for (const int code : {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xD800, 0xDFFF, 0xE000, 0xFFFF,
                           0x10000, 0x10FFFF, 0x110000}) {
        std::string utf8;
        const auto c = static_cast<wchar_t>(code);
        cutroom::appendChar(utf8, c);
        EXPECT_EQ(utf8, cutroom::toUtf8(std::wstring(1, c))) << code;
    }
}

TEST_F(MetadataExport, ValuesAreWrittenAsTheyAreStoredAndDatesToBeRead) {
    using enum DBFieldTypes::eType;
    const struct {
        std::int64_t value;
        DBFieldTypes::eType type;
        const char* text;
    } rows[] = {{1'700'000'000, dateTime, "14 Nov 2023, 22:13"},
                {1'700'000'000, date, "14 Nov 2023"},
                {0, dateTime, "01 Jan 1970, 00:00"},
                {-1, dateTime, "31 Dec 1969, 23:59"},
                {3661, time, "01:01"},
                {951'782'400, date, "29 Feb 2000"},
                {3661, number, ""},
                {std::numeric_limits<std::int64_t>::min(), date, ""},
                {std::numeric_limits<std::int64_t>::max(), dateTime, ""}};
    for (const auto& row : rows)
        EXPECT_EQ(Base::getDateString(row.value, row.type), row.text);
    EXPECT_EQ(Base::getPersistableString(LogAttribute::created, L"1700000000"),
              "14 Nov 2023, 22:13");
    EXPECT_EQ(Base::getPersistableString(LogAttribute::created, L"soon"), "soon");
    EXPECT_EQ(Base::getPersistableString(LogAttribute::duration, L"12.5"), "12.5");
}

TEST_F(MetadataExport, TheExportersAreOfferedAndWriteWholeFilesOrNone) {
    cutroom::registerMetadataExporters();
    cutroom::registerMetadataExporters();
    std::string offered;
    const Kv::Ptr<BinData> bin = fullBin();
    const std::string path = folder_ / "out";
    const std::vector<Cue> cues{marker(0, 1, L"x")};
    for (const auto& exporter : bins().getMetadataExporters()) {
        EXPECT_FALSE(exporter->exportToFile(edit_, std::vector<Cue>(), toWide(folder_ / "none")));
        for (const std::wstring& to : {toWide(folder_ / "no/such"), toWide(path) + L'\xD800'})
            EXPECT_FALSE(exporter->exportToFile(edit_, cues, to));
        const bool takesBins = exporter->getSupportedSources() & iAssetMetadataExporter::kSourceBin;
        offered += cutroom::toUtf8(exporter->getFormatName()) + '.' +
                   cutroom::toUtf8(exporter->getFileExtension()) + ' ' +
                   std::to_string(exporter->getSupportedSources()) + ' ';
        EXPECT_EQ(exporter->exportToFile(bin, toWide(path)), takesBins);
        if (!takesBins)
            continue;
        const std::string old = file(path);
        bin->setName(L"Renamed");
        for (long at = 0;; ++at) {
            files_.arm(at, cutroom::test::FaultyFiles::Span::once);
            const bool done = exporter->exportToFile(bin, toWide(path));
            files_.disarm();
            if (!files_.struck()) {
                EXPECT_TRUE(done);
                break;
            }
            ASSERT_LT(at, 100);
            const std::string now = file(path); // may be new where only its folder was not flushed
            EXPECT_TRUE(now == old ? !done : now.find("Renamed") != now.npos);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "none"));
    EXPECT_EQ(offered, "SRT.srt 2 Subtitles.txt 2 JSON.json 3 XML.xml 3 CSV.csv 3 ");
}

} // namespace
