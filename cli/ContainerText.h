// Bins, groups and documents as text for a person and as JSON.
#pragma once

#include "bins/AssetAssociationGroup.h"
#include "bins/BinData.h"
#include "bins/Document.h"
#include "platform/base/Status.h"
#include "platform/files/JsonBuilder.h"
#include "platform/project/LogAttribute.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

// Rows in columns as wide as their widest text, two blanks apart; control characters become blanks.
std::string tableText(const std::vector<std::vector<std::string>>& rows);
// "2026-11-21 21:26" (UTC) of seconds since 1970; empty for 0.
std::string dateText(std::uint32_t seconds);

// "3 items", "12 bytes".
std::string countText(std::size_t items);
std::string bytesText(std::uint64_t bytes);
// The members "created", "modified" (seconds since 1970) and "external_id".
void addTimes(JSON::Builder& json, std::uint32_t created, std::uint32_t modified,
              const std::wstring& externalId);

// Reads "name,scene,timecode": attributes by their persisted names. `wrongUsage` for an unknown
// one.
Result<std::vector<LogAttribute>> parseColumns(const std::string& text);
Result<LogAttribute> parseColumn(const std::string& text);

// What the project holds of each kind: a line or an object each, in the order of the names.
std::string listBins(bool json);
std::string listGroups(bool json);
std::string listDocuments(bool json);

// One container with all that is in it. Without `columns` the bin's own are shown.
std::string showBin(const BinData& bin, std::vector<LogAttribute> columns, bool json);
std::string showGroup(const AssetAssociationGroup& group, bool json);
std::string showDocument(const Document& document, bool json);
// The containers that hold an asset.
std::string showHolders(const std::vector<Cookie>& holders, bool json);
// What was made: "COOKIE<TAB>NAME", or an object with id and name.
std::string madeText(const Cookie& cookie, const std::wstring& name, bool json);

} // namespace cutroom::cli
