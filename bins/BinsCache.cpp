#include "bins/BinsCache.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/files/oledb.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"
#include "platform/project/ProjectPaths.h"

#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace cutroom {

namespace {

constexpr int kCacheVersion = 6;
constexpr char kVersion[] = "Version";
constexpr char kYes[] = "yes";
constexpr char kNo[] = "no";
constexpr char kChildSeparator = '|';
constexpr char kCacheExtension[] = ".odb";

// The fields, in the order in which they are written.
enum Column { kId, kName, kPermanent, kLogCount, kExtId, kModTime, kCreated, kChildren, kColumns };
constexpr std::array<const char*, kColumns> kColumnNames{
    "id", "name", "permanent", "logCount", "ExtID", "ModTime", "Created", "children"};

// Where a table has the columns; -1 for one that it lacks.
using ColumnPlaces = std::array<int, kColumns>;

template <class Number> Number numberOf(std::string_view text) {
    Number number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size() ? number : Number{0};
}

LightweightVector<Cookie> childrenOf(std::string_view text) {
    LightweightVector<Cookie> children;
    while (!text.empty()) {
        const std::size_t end = text.find(kChildSeparator);
        if (const Cookie child(text.substr(0, end)); child.valid())
            children.push_back(child);
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return children;
}

std::string textOf(const LightweightVector<Cookie>& children) {
    std::string text;
    for (const Cookie& child : children) {
        if (!text.empty())
            text += kChildSeparator;
        text += child.asString();
    }
    return text;
}

BinSummary summaryOf(const std::vector<std::string_view>& row, const ColumnPlaces& places) {
    const auto field = [&](Column column) {
        const int place = places[column];
        return place < 0 ? std::string_view() : row[static_cast<std::size_t>(place)];
    };
    BinSummary summary;
    summary.id = Cookie(field(kId));
    summary.name = toWide(field(kName));
    summary.permanent = field(kPermanent) == kYes;
    summary.logCount = numberOf<std::int32_t>(field(kLogCount));
    summary.extID = toWide(field(kExtId));
    summary.modTime = numberOf<std::uint32_t>(field(kModTime));
    summary.created = numberOf<std::uint32_t>(field(kCreated));
    summary.children = childrenOf(field(kChildren));
    return summary;
}

void addRow(oledb& table, const BinSummary& summary) {
    table.addRecord();
    table.setField(kId, summary.id.asString());
    table.setField(kName, toUtf8(summary.name));
    table.setField(kPermanent, summary.permanent ? kYes : kNo);
    table.setField(kLogCount, std::to_string(summary.logCount));
    table.setField(kExtId, toUtf8(summary.extID));
    table.setField(kModTime, std::to_string(summary.modTime));
    table.setField(kCreated, std::to_string(summary.created));
    table.setField(kChildren, textOf(summary.children));
}

} // namespace

std::string binsCacheName() {
    const Cookie project = CurrentProject::getCookie();
    if (!project.valid())
        return {};
    return joinPath(kGroupsFolder,
                    convertCookie(project, 'G', Cookie::kNoIndex).asString() + kCacheExtension);
}

std::string binsCachePath() {
    const std::string name = binsCacheName();
    return name.empty() ? name : joinPath(CurrentProject::getFolder(), name);
}

Result<BinSummaries> readBinsCache(const std::string& path) {
    oledb table;
    if (const Status read = table.open(path); !read)
        return read;
    const std::optional<std::string> version = table.getParameter(kVersion);
    if (!version || parseInt(*version) != kCacheVersion)
        return Status(StatusCode::damaged, path, "the bins cache is of another version");
    ColumnPlaces places;
    for (int column = 0; column < kColumns; ++column)
        places[static_cast<std::size_t>(column)] =
            table.findField(kColumnNames[static_cast<std::size_t>(column)]);
    BinSummaries summaries;
    std::vector<std::string_view> texts;
    for (std::size_t row = 0; row < table.getNumRecords(); ++row) {
        table.getFields(row, texts);
        if (BinSummary summary = summaryOf(texts, places); summary.valid())
            summaries.emplace_hint(summaries.end(), summary.id, std::move(summary));
    }
    return summaries;
}

std::string binsCacheBytes(const BinSummaries& summaries) {
    oledb table;
    table.setParameter(kVersion, std::to_string(kCacheVersion));
    for (const char* name : kColumnNames)
        table.addField(name);
    for (const auto& [bin, summary] : summaries)
        addRow(table, summary);
    return table.bytes();
}

namespace {

// The bin whose file has that name; the invalid cookie for no bin's.
Cookie binOf(std::string_view name) {
    if (extensionOf(std::string(name)) != kBinExtension)
        return {};
    const Cookie bin(name.substr(0, name.rfind('.')));
    return bin.type() == 'G' || bin.type() == 'M' ? bin : Cookie();
}

// One look at the project's bins.
class Search {
public:
    FoundBins run();

private:
    void readCache(bool needed);
    void add(const std::string& path, const Cookie& bin);
    void addRead(const std::string& path, const Cookie& bin, const BinSummary* cached);

    BinSummaries cached_;
    std::int64_t cacheTime_ = 0;
    FoundBins found_;
};

// The folder is listed as it is: whether an entry is a bin's file shows when it is looked at.
FoundBins Search::run() {
    const std::string folder = toUtf8(getProjectGroupsDirectory());
    const auto names = fileSystem().list(folder);
    if (!names && names.status().code() != StatusCode::notFound)
        LogBoth("%s\n", names.status().text().c_str());
    std::vector<std::pair<Cookie, std::string>> files;
    if (names)
        for (const std::string& name : *names)
            if (const Cookie bin = binOf(name); bin.valid())
                files.emplace_back(bin, joinPath(folder, name));
    readCache(!files.empty());
    for (const auto& [bin, path] : files)
        add(path, bin);
    if (cached_.size() != found_.summaries.size())
        found_.cacheIsCurrent = false;
    return std::move(found_);
}

void Search::readCache(bool needed) {
    const std::string path = binsCachePath();
    if (const auto info = fileSystem().stat(path))
        cacheTime_ = info->modifiedNanos;
    else if (!needed)
        return; // a project without bins has none
    auto read = readBinsCache(path);
    if (read) {
        cached_ = std::move(*read);
        return;
    }
    found_.cacheIsCurrent = false;
    LogBoth("%s; the bins are read instead\n", read.status().text().c_str());
}

// A file written in the same tick of the clock as the cache may be newer.
void Search::add(const std::string& path, const Cookie& bin) {
    const auto known = cached_.find(bin);
    if (known == cached_.end()) {
        found_.cacheIsCurrent = false;
        addRead(path, bin, nullptr);
        return;
    }
    const auto info = fileSystem().stat(path);
    if (info && info->modifiedNanos < cacheTime_)
        found_.summaries.emplace_hint(found_.summaries.end(), bin, known->second);
    else
        addRead(path, bin, &known->second);
}

void Search::addRead(const std::string& path, const Cookie& bin, const BinSummary* cached) {
    auto read = readBinSummary(path, bin);
    BinSummary summary;
    if (read) {
        summary = std::move(*read);
    } else {
        LogBoth("%s\n", read.status().text().c_str());
        if (cached)
            summary = *cached;
        summary.id = bin;
    }
    found_.cacheIsCurrent = false; // so that the next start can trust one that is newer
    found_.summaries.insert_or_assign(found_.summaries.end(), bin, std::move(summary));
}

} // namespace

FoundBins findBins() { return CurrentProject::isOpen() ? Search().run() : FoundBins(); }

} // namespace cutroom
