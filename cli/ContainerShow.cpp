// One container with all that is in it.
#include "bins/DocumentManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"

#include <utility>

namespace cutroom::cli {

namespace {

using Rows = std::vector<std::vector<std::string>>;

void addAsset(JSON::Builder& json, const Cookie& asset) {
    json.add("id", asset.asString());
    json.add("kind", kindText(asset));
    json.add("name", assetName(asset));
}

// What a person reads of a value: the kind of an asset and dates are numbers otherwise.
std::string readable(const Cookie& asset, const LogAttribute& column, const std::string& value) {
    if (column.getType() == LogAttribute::type)
        return kindText(asset);
    if (column.getFieldType() == DBFieldTypes::dateTime)
        return dateText(static_cast<std::uint32_t>(parseInt(value).value_or(0)));
    if (column.getType() == LogAttribute::duration) // a timecode where the edit is open
        if (const auto seconds = parseDouble(value))
            return format("%.2f s", *seconds);
    return value;
}

std::string binHead(const BinData& bin) {
    const bool split = bin.getViewType() == eGalleryViews::SplitImage;
    const std::string view = split ? "split" : toLowerUtf8(getPersistableString(bin.getViewType()));
    return oneLine(toUtf8(bin.getName())) + "   " + countText(bin.numItems()) + ", " + view +
           " view, tiles " + Kv::ImageSize::getPersistableString(bin.getTileSize()) +
           (bin.getAutoPosition() ? " placed by themselves" : "") +
           (bin.getPermanent() ? ", permanent" : "") +
           (bin.getExternalID().empty() ? "" : ", external id " + toUtf8(bin.getExternalID())) +
           '\n';
}

void addTime(JSON::Builder& json, std::string_view key, double seconds) {
    if (seconds == kNoTime)
        json.addNull(key);
    else
        json.add(key, seconds);
}

void addItem(JSON::Builder& json, const BinData& bin, unsigned index,
             const std::vector<LogAttribute>& columns) {
    const BinItem item = bin.getItem(index);
    json.beginObject();
    addAsset(json, item.asset);
    json.add("time", item.time);
    addTime(json, "mark_in", item.markIn);
    addTime(json, "mark_out", item.markOut);
    if (item.position == BinItem::kNotPlaced) {
        json.addNull("position");
    } else {
        json.beginArray("position");
        json.add(static_cast<double>(item.position.x));
        json.add(static_cast<double>(item.position.y));
        json.endArray();
    }
    json.beginObject("columns");
    for (const LogAttribute& column : columns)
        json.add(column.getID(), bin.getAttribute(index, column));
    json.endObject();
    json.endObject();
}

std::string binJson(const BinData& bin, const std::vector<LogAttribute>& columns) {
    JSON::Builder json;
    json.beginObject();
    json.add("id", bin.getID().asString());
    json.add("name", bin.getName());
    json.add("view", getPersistableString(bin.getViewType()));
    json.add("tiles", Kv::ImageSize::getPersistableString(bin.getTileSize()));
    json.add("auto_position", bin.getAutoPosition());
    json.add("permanent", bin.getPermanent());
    addTimes(json, bin.getCreationTime(), bin.getModificationTime(), bin.getExternalID());
    json.beginArray("items");
    for (unsigned i = 0; i < bin.numItems(); ++i)
        addItem(json, bin, i, columns);
    json.endArray();
    json.endObject();
    return json.take();
}

} // namespace

std::string showBin(const BinData& bin, std::vector<LogAttribute> columns, bool json) {
    if (columns.empty())
        columns = bin.getTableColumns();
    if (json)
        return binJson(bin, columns);
    Rows rows(1, {"", ""});
    for (const LogAttribute& column : columns)
        rows.front().push_back(toUtf8(column.getDisplayName()));
    for (unsigned i = 0; i < bin.numItems(); ++i) {
        const Cookie asset = bin.getItem(i).asset;
        rows.push_back({std::to_string(i + 1), asset.asString()});
        for (const LogAttribute& column : columns)
            rows.back().push_back(readable(asset, column, toUtf8(bin.getAttribute(i, column))));
    }
    return binHead(bin) + (bin.empty() ? "" : tableText(rows));
}

std::string showGroup(const AssetAssociationGroup& group, bool json) {
    const bool versions = group.getType() == AssetAssociationGroup::kVersionsGroup;
    const std::vector<Cookie> assets = group.getConstituents();
    if (!json) {
        Rows rows;
        for (const Cookie& asset : assets)
            rows.push_back({std::to_string(rows.size() + 1), asset.asString(), kindText(asset),
                            assetName(asset)});
        return oneLine(toUtf8(group.getName())) + "   " + countText(assets.size()) +
               (versions ? ", versions of one another\n" : "\n") + tableText(rows);
    }
    JSON::Builder out;
    out.beginObject();
    out.add("id", group.getID().asString());
    out.add("name", group.getName());
    out.add("type", versions ? "versions" : "user");
    addTimes(out, group.getCreationTime(), group.getModificationTime(), group.getExternalID());
    out.beginArray("items");
    for (const Cookie& asset : assets) {
        out.beginObject();
        addAsset(out, asset);
        out.endObject();
    }
    out.endArray();
    out.endObject();
    return out.take();
}

std::string showDocument(const Document& document, bool json) {
    const bool local = DocumentManager::instance().isLocal(document.getID());
    const auto locations = document.getLocations();
    if (!json) {
        std::string text = oneLine(toUtf8(document.getName())) + "   " +
                           bytesText(document.getSize()) +
                           format("%s, made %s\n", local ? ", local" : "",
                                  dateText(document.getCreationTime()).c_str());
        if (!document.getDescription().empty())
            text += oneLine(toUtf8(document.getDescription())) + '\n';
        for (const auto& location : locations) {
            const std::string file = toUtf8(location);
            text += "  " + oneLine(file) + (fileExists(file) ? "\n" : "   (missing)\n");
        }
        return text;
    }
    JSON::Builder out;
    out.beginObject();
    out.add("id", document.getID().asString());
    out.add("name", document.getName());
    out.add("description", document.getDescription());
    out.add("size", document.getSize());
    out.add("local", local);
    addTimes(out, document.getCreationTime(), document.getModificationTime(),
             document.getExternalID());
    out.beginArray("locations");
    for (const auto& location : locations)
        out.add(location);
    out.endArray();
    out.endObject();
    return out.take();
}

std::string showHolders(const std::vector<Cookie>& holders, bool json) {
    JSON::Builder out;
    Rows rows;
    out.beginArray();
    for (const Cookie& holder : holders) {
        rows.push_back({holder.asString(), assetName(holder)});
        out.beginObject();
        addAsset(out, holder);
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : tableText(rows);
}

} // namespace cutroom::cli
