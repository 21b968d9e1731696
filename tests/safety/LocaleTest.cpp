// The same work under every locale and time zone writes the same bytes.
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "export/MetadataExporters.h"
#include "interchange/Exporter.h"
#include "tests/crash/CrashFixture.h"

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <locale>

using namespace cutroom;
using namespace cutroom::test;

// The C library never frees its list of the folders in LOCPATH.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep"; }

namespace {

// Makes the locales on the spot, with character sets that are not ours.
class LocaleTest : public CrashFixture {
protected:
    void SetUp() override {
        options_ = EmbeddedHost::repeatable();
        ::setenv("LOCPATH", made_.path().c_str(), 1);
        for (const auto& [name, charset] :
             {std::pair{"de_DE", "ISO-8859-1"}, {"fr_FR", "ISO-8859-1"}, {"tr_TR", "ISO-8859-9"}}) {
            const std::string make = std::string("localedef -c -i ") + name + " -f " + charset +
                                     " '" + (made_ / name) + "' >/dev/null 2>&1";
            ASSERT_EQ(std::system(make.c_str()), 0) << name << ": the package locales is missing";
        }
    }
    void TearDown() override {
        in("C", "UTC0");
        ::unsetenv("LOCPATH");
        ::unsetenv("TZ");
    }
    static void in(const char* locale, const char* zone) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
        std::locale::global(std::locale(locale));
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    void exportAll(const EditPtr& edit, const Kv::Ptr<BinData>& bin) const {
        registerMetadataExporters();
        int number = 0;
        for (const auto& exporter : BinManager::instance().getMetadataExporters()) {
            const std::wstring file = toWide(folder_ + "/out") + std::to_wstring(++number);
            exporter->exportToFile(edit, edit->getCues().cues(), file + L".markers");
            exporter->exportToFile(bin, file + L".bin");
        }
        putBytes(folder_ + "/out.otio", exportOtio(edit).value().text);
        putBytes(folder_ + "/out.edl", exportEdl(edit, "V1").value().text);
    }
    void work() const {
        const CookieVec edits = importTimelines();
        const auto bin = BinManager::instance().newBin();
        bin->setName(L"TITLE \u0130\u0131i \u00e9t\u00e9");
        for (std::size_t i = 0; i < edits.size(); ++i)
            bin->add(BinItem(edits[i], 1234.5 * static_cast<double>(i)));
        bin->sort(LogAttribute::name, true);
        DocumentManager::instance().createDocument(L"/outside/TITLE.PDF", 'D');
        const EditPtr edit(edits[0]);
        edit->addCue(Cue(TimeRange(1.25, 2.5), L"I i 1,5 1.5"));
        edit->setConfig("ratio", 1234.5);
        exportAll(edit, bin);
    }
    // Every file that a project and its exports make, without the database's.
    std::map<std::string, std::string> filesOfOneLife() {
        begin(Access::readWrite, IfMissing::create);
        work();
        end();
        auto files = filesBelow(folder_);
        std::erase_if(files, [](const auto& file) { return file.first.starts_with("project.db"); });
        std::filesystem::remove_all(folder_);
        return files;
    }

    TempFolder made_;
};

TEST_F(LocaleTest, sameBytesInEachAndInEveryTimeZone) {
    in("C", "UTC0");
    (void)filesOfOneLife(); // what lives as long as the program takes its ids
    const auto expected = filesOfOneLife();
    EXPECT_GT(expected.size(), 20u);
    int cells = 0;
    for (const char* const locale : {"C", "de_DE", "fr_FR", "tr_TR"})
        for (const char* const zone : {"UTC0", "EST5EDT,M3.2.0,M11.1.0", "<+1245>-12:45"}) {
            in(locale, zone);
            const auto found = filesOfOneLife();
            for (const auto& [name, content] : expected)
                EXPECT_TRUE(found.contains(name) && found.at(name) == content)
                    << locale << ' ' << zone << ": " << name;
            EXPECT_EQ(found.size(), expected.size());
            ++cells;
        }
    RecordProperty("cells", cells);
}

} // namespace
