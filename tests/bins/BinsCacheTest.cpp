#include "bins/BinsCache.h"
#include "platform/files/KVContainerFile.h"
#include "platform/files/oledb.h"
#include "tests/bins/BinProject.h"

#include <chrono>
#include <filesystem>

using namespace cutroom::test;
using cutroom::BinSummaries;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

// A table written by hand.
std::string table(const std::string& version, const std::vector<std::string>& fields,
                  const std::vector<std::vector<std::string>>& rows) {
    oledb made;
    if (version != "none")
        made.setParameter("Version", version);
    for (const std::string& field : fields)
        made.addField(field);
    for (const auto& row : rows) {
        made.addRecord();
        for (std::size_t field = 0; field < row.size(); ++field)
            made.setField(static_cast<int>(field), row[field]);
    }
    return made.bytes();
}

class BinsCacheFile : public testing::Test {
protected:
    cutroom::Result<BinSummaries> read(const std::string& bytes) {
        EXPECT_TRUE(cutroom::writeFile(path_, bytes, cutroom::Backup::none).ok());
        return cutroom::readBinsCache(path_);
    }
    TempFolder folder_{TempFolder::inMemory()};
    const std::string path_ = folder_ / "bins.odb";
};

TEST_F(BinsCacheFile, KeepsEverySummary) {
    BinSummaries summaries;
    summaries[Cookie('M', 1)].id = Cookie('M', 1);
    for (const std::wstring name : {L"", L"bars | and\nlines \\ \u00e9\u4e2d\U0001F600"}) {
        const Cookie id('G', name.size());
        BinSummary& full = summaries[id];
        full.id = id;
        full.name = name;
        full.logCount = 12;
        full.permanent = name.empty();
        full.extID = L"ext|" + name;
        full.modTime = 4'294'967'295u;
        full.created = 7;
        full.children = {Cookie('G', 5), Cookie('M', 6)};
    }
    const auto back = read(cutroom::binsCacheBytes(summaries));
    ASSERT_TRUE(back.ok()) << back.status().text();
    EXPECT_EQ(*back, summaries);
}

TEST_F(BinsCacheFile, OfAnotherVersionIsIgnoredAsAWhole) {
    const std::string id = Cookie('G', 1).asString();
    for (const std::string version : {"none", "", "5", "7", "66", "6x"})
        EXPECT_FALSE(read(table(version, {"id"}, {{id}})).ok()) << version;
    EXPECT_THAT(*read(table("6", {"id"}, {{id}})), SizeIs(1));
}

TEST_F(BinsCacheFile, FieldsAreFoundByNameAndMayBeMissing) {
    const std::string a = Cookie('G', 1).asString(), b = Cookie('M', 2).asString();
    const auto found = read(table("6", {"children", "new", "id", "permanent", "logCount"},
                                  {{a + "||" + b + "|I|nonsense|", "?", b, "yes", "3"},
                                   {"", "", a, "YES", "99999999999"},
                                   {a, "", "", "yes", "1"},
                                   {a, "", "garbage", "yes", "1"}}));
    ASSERT_TRUE(found.ok());
    ASSERT_THAT(*found, SizeIs(2));
    const BinSummary& full = found->at(Cookie('M', 2));
    EXPECT_THAT(full.children, ElementsAre(Cookie('G', 1), Cookie('M', 2)));
    EXPECT_TRUE(full.permanent);
    EXPECT_EQ(full.logCount, 3);
    EXPECT_EQ(full.name, L"");
    BinSummary plain;
    plain.id = Cookie('G', 1);
    EXPECT_EQ(found->at(plain.id), plain);
}

// --- bins found by a process that starts ---------------------------------------------------------

class BinsFound : public BinProject {
protected:
    BinsFound() {
        edit_ = newEdit();
        for (const auto& [id, name] : {std::pair(1u, L"one"), std::pair(2u, L"two")}) {
            const Kv::Ptr<BinData> bin = bins().newBin(Cookie('G', id));
            bin->setName(name);
            bin->add(edit_);
        }
        reopen();
        cache_ = cacheFile();
    }
    static std::vector<std::wstring> names() {
        std::map<Cookie, BinSummary> all;
        bins().getAllBins(all);
        std::vector<std::wstring> names;
        for (const auto& [id, summary] : all)
            names.push_back(summary.name + L" " + std::to_wstring(summary.logCount));
        return names;
    }
    // Changes the files behind the manager's back, a while after the cache was written.
    void behindItsBack(const std::function<void(const std::string& groups)>& change) {
        end();
        files_.arm(-1, FaultyFiles::Span::once);
        namespace fs = std::filesystem;
        const std::string groups = folder_ / "film/groups/";
        if (fs::exists(cache_))
            for (const auto& file : fs::directory_iterator(groups))
                fs::last_write_time(file, fs::last_write_time(file) -
                                              (file.path() == cache_ ? std::chrono::hours(1)
                                                                     : std::chrono::hours(2)));
        change(groups);
    }
    long openings() const {
        return std::count_if(files_.operations().begin(), files_.operations().end(),
                             [](const std::string& operation) {
                                 return operation.starts_with("open ") &&
                                        operation.ends_with(".bin");
                             });
    }

    Cookie edit_;
    std::string cache_;
};

TEST_F(BinsFound, AreListedWithoutOpeningOne) {
    behindItsBack([](const std::string&) {});
    open();
    EXPECT_THAT(names(), ElementsAre(L"one 1", L"two 1"));
    EXPECT_EQ(openings(), 0);
    EXPECT_FALSE(bins().isManaged(Cookie('G', 1)));
    EXPECT_THAT(bins().findBinsContainingLog(edit_), SizeIs(2));
}

TEST_F(BinsFound, AddedReplacedAndRemovedFilesAreNoticed) {
    behindItsBack([](const std::string& groups) {
        namespace fs = std::filesystem;
        fs::remove(groups + Cookie('G', 1).asString() + ".bin");
        const std::string two = groups + Cookie('G', 2).asString() + ".bin";
        fs::copy_file(two, groups + Cookie('G', 3).asString() + ".bin");
        fs::copy_file(two, groups + "no cookie.bin");
        fs::copy_file(two, groups + Cookie('E', 3).asString() + ".bin");
        KVContainerFile::ItemField fields[] = {{"Cookie", 'a'}, {nullptr, 'a'}};
        KVContainerFile::Writer writer(fields);
        writer.setName("replaced");
        for (const Cookie& asset : {Cookie('E', 404), Cookie('G', 7), Cookie('D', 5)})
            writer.addItem(asset.asString());
        EXPECT_TRUE(writer.save(two).ok());
    });
    open();
    EXPECT_THAT(names(), ElementsAre(L"replaced 0", L"two 1"));
    EXPECT_EQ(openings(), 2);
    reopen();
    EXPECT_THAT(cutroom::readBinsCache(cache_).value(),
                ElementsAre(testing::Key(Cookie('G', 2)), testing::Key(Cookie('G', 3))));
}

TEST_F(BinsFound, ABinSavedAfterTheCacheIsReadOnceOnly) {
    bins().getData(Cookie('G', 1))->setDimensions({640, 480}); // no summary says that
    ASSERT_TRUE(bins().saveAll().ok());
    reopen();
    behindItsBack([](const std::string& groups) {
        namespace fs = std::filesystem;
        const std::string one = groups + Cookie('G', 1).asString() + ".bin";
        fs::last_write_time(one, fs::last_write_time(one) + std::chrono::minutes(90));
    });
    open();
    EXPECT_EQ(openings(), 1);
    end();
    files_.arm(-1, FaultyFiles::Span::once);
    open();
    EXPECT_EQ(openings(), 0);
}

TEST_F(BinsFound, ADamagedBinKeepsItsSummaryAndItsFile) {
    const std::string path = fileOf(Cookie('G', 1));
    behindItsBack([&](const std::string&) { putBytes(path, "nonsense"); });
    open();
    EXPECT_THAT(names(), ElementsAre(L"one 1", L"two 1"));
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr(path)));
    const Kv::Ptr<BinData> bin = bins().getData(Cookie('G', 1));
    ASSERT_TRUE(bin);
    EXPECT_FALSE(bin->valid());
    EXPECT_EQ(bins().getSummary(bin->getID()).name, L"one");
    EXPECT_TRUE(bins().saveAll().ok());
    EXPECT_EQ(file(path), "nonsense");
}

TEST_F(BinsFound, ACacheThatCannotBeWrittenCostsNothingButTime) {
    const Kv::Ptr<BinData> bin = newBin(L"three");
    EXPECT_TRUE(bins().saveAll().ok());
    for (long at = 0; at < 60; ++at) {
        files_.arm(at, FaultyFiles::Span::sameForEver);
        bins().handleProjectExit();
        files_.disarm();
        bins().handleProjectEntry();
        EXPECT_THAT(names(), SizeIs(3)) << at;
    }
}

} // namespace
