#include "cli/ContainerText.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "cli/Command.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <chrono>
#include <map>

namespace cutroom::cli {

namespace {

using Rows = std::vector<std::vector<std::string>>;

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80; // counts the first bytes
    }));
}

template <class Managed> void sortByName(std::vector<Kv::Ptr<Managed>>& all) {
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a->getName() < b->getName(); });
}

} // namespace

std::string tableText(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += oneLine(row[i]) + std::string(widths[i] - widthOf(row[i]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

std::string dateText(std::uint32_t seconds) {
    if (seconds == 0)
        return {};
    using namespace std::chrono;
    const sys_seconds when{std::chrono::seconds(seconds)};
    const auto day = floor<days>(when);
    const year_month_day date(day);
    const hh_mm_ss clock(when - day);
    return format("%04d-%02u-%02u %02d:%02d", int(date.year()), unsigned(date.month()),
                  unsigned(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()));
}

Result<LogAttribute> parseColumn(const std::string& text) {
    if (const auto column = LogAttribute::fromID(text))
        return *column;
    std::string known;
    for (const LogAttribute& column : LogAttribute::builtIn())
        known += (known.empty() ? "" : ", ") + column.getID();
    return Status(StatusCode::wrongUsage, text, "no such column; there are " + known);
}

Result<std::vector<LogAttribute>> parseColumns(const std::string& text) {
    std::vector<LogAttribute> columns;
    if (text.empty())
        return columns;
    for (const std::string& id : split(text, ',')) {
        const auto column = parseColumn(id);
        if (!column)
            return column.status();
        columns.push_back(*column);
    }
    return columns;
}

std::string madeText(const Cookie& cookie, const std::wstring& name, bool json) {
    if (!json)
        return cookie.asString() + '\t' + oneLine(toUtf8(name)) + '\n';
    JSON::Builder out;
    out.beginObject();
    out.add("id", cookie.asString());
    out.add("name", name);
    out.endObject();
    return out.take();
}

std::string countText(std::size_t items) {
    return format("%zu %s", items, items == 1 ? "item" : "items");
}

std::string bytesText(std::uint64_t bytes) {
    return format("%llu bytes", static_cast<unsigned long long>(bytes));
}

void addTimes(JSON::Builder& json, std::uint32_t created, std::uint32_t modified,
              const std::wstring& externalId) {
    json.add("created", created);
    json.add("modified", modified);
    json.add("external_id", externalId);
}

// --- lists ---------------------------------------------------------------------------------------

std::string listBins(bool json) {
    std::map<Cookie, BinSummary> found;
    BinManager::instance().getAllBins(found);
    std::vector<BinSummary> bins;
    for (auto& [cookie, summary] : found)
        bins.push_back(std::move(summary));
    std::stable_sort(bins.begin(), bins.end(),
                     [](const auto& a, const auto& b) { return a.name < b.name; });
    JSON::Builder out;
    Rows rows;
    out.beginArray();
    for (const BinSummary& bin : bins) {
        const auto children = bin.children.size();
        rows.push_back({bin.id.asString(),
                        countText(static_cast<std::size_t>(bin.logCount) + children),
                        dateText(bin.modTime), bin.permanent ? "permanent" : "", toUtf8(bin.name)});
        out.beginObject();
        out.add("id", bin.id.asString());
        out.add("name", bin.name);
        out.add("items", static_cast<std::size_t>(bin.logCount));
        out.beginArray("bins");
        for (const Cookie& child : bin.children)
            out.add(child.asString());
        out.endArray();
        out.add("permanent", bin.permanent);
        addTimes(out, bin.created, bin.modTime, bin.extID);
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : tableText(rows);
}

std::string listGroups(bool json) {
    auto groups = AssetAssociationGroupManager::instance().getGroups();
    sortByName(groups);
    JSON::Builder out;
    Rows rows;
    out.beginArray();
    for (const auto& group : groups) {
        const bool versions = group->getType() == AssetAssociationGroup::kVersionsGroup;
        const auto count = group->getConstituents().size();
        rows.push_back({group->getID().asString(), countText(count), versions ? "versions" : "",
                        toUtf8(group->getName())});
        out.beginObject();
        out.add("id", group->getID().asString());
        out.add("name", group->getName());
        out.add("type", versions ? "versions" : "user");
        out.add("items", count);
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : tableText(rows);
}

std::string listDocuments(bool json) {
    const DocumentManager& manager = DocumentManager::instance();
    auto documents = manager.getDocuments();
    sortByName(documents);
    JSON::Builder out;
    Rows rows;
    out.beginArray();
    for (const auto& document : documents) {
        const bool local = manager.isLocal(document->getID());
        const std::string file = toUtf8(document->getFileName());
        const bool found = fileExists(file);
        rows.push_back({document->getID().asString(), bytesText(document->getSize()),
                        !found  ? "missing"
                        : local ? "local"
                                : "",
                        toUtf8(document->getName()), file});
        out.beginObject();
        out.add("id", document->getID().asString());
        out.add("name", document->getName());
        out.add("size", document->getSize());
        out.add("local", local);
        out.add("file", file);
        out.add("found", found);
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : tableText(rows);
}

} // namespace cutroom::cli
