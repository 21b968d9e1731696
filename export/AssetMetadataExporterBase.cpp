#include "export/AssetMetadataExporterBase.h"

#include "export/CueTimecodes.h"
#include "platform/files/Files.h"
#include "platform/host/StringTable.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace {

using Base = AssetMetadataExporterBase;

struct TypeNames {
    ResId one;
    ResId several;
};

// In the order of `eAssetType`.
constexpr std::array<TypeNames, Base::kAssetMixed + 1> kTypeNames{{
    {cutroom::kResTypeSource, cutroom::kResTypeSources},
    {cutroom::kResTypeSubclip, cutroom::kResTypeSubclips},
    {cutroom::kResTypeSyncGhost, cutroom::kResTypeSyncGhosts},
    {cutroom::kResTypePrintGhost, cutroom::kResTypePrintGhosts},
    {cutroom::kResTypeFileCopy, cutroom::kResTypeFileCopies},
    {cutroom::kResTypeClipSection, cutroom::kResTypeClipSections},
    {cutroom::kResTypeEdit, cutroom::kResTypeEdits},
    {cutroom::kResTypeOther, cutroom::kResTypeOthers},
    {cutroom::kResTypeBin, cutroom::kResTypeBins},
    {cutroom::kResTypeDocument, cutroom::kResTypeDocuments},
    {cutroom::kResTypeAsset, cutroom::kResTypeAssets},
}};

Base::eAssetType typeOfLog(long long logType) {
    switch (logType) {
    case kLogTypeSource:
        return Base::kAssetClip;
    case kLogTypeSubclip:
        return Base::kAssetSubclip;
    case kLogTypeSyncGhost:
        return Base::kAssetSyncedClip;
    case kLogTypePrintGhost:
        return Base::kAssetPrint;
    case kLogTypeFileCopy:
        return Base::kAssetCopiedClip;
    case kLogTypeClipSection:
        return Base::kAssetClipSection;
    case kLogTypeEdit:
    case kLogTypeSpecial:
        return Base::kAssetSequence;
    default:
        return Base::kAssetLog;
    }
}

bool isDate(DBFieldTypes::eType type) {
    return type == DBFieldTypes::dateTime || type == DBFieldTypes::date ||
           type == DBFieldTypes::time;
}

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kYear1 = -62'135'596'800;
constexpr std::int64_t kYear10000 = 253'402'300'800;

// "%d %b %Y"
std::string dayText(std::int64_t seconds) {
    static constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto days = std::chrono::floor<std::chrono::days>(
        std::chrono::sys_seconds(std::chrono::seconds(seconds)));
    const std::chrono::year_month_day day(days);
    return cutroom::format("%02u %s %04d", static_cast<unsigned>(day.day()),
                           kMonths[static_cast<unsigned>(day.month()) - 1],
                           static_cast<int>(day.year()));
}

// "%H:%M"
std::string timeText(std::int64_t seconds) {
    const std::int64_t inDay = (seconds % kSecondsPerDay + kSecondsPerDay) % kSecondsPerDay;
    return cutroom::format("%02d:%02d", static_cast<int>(inDay / 3600),
                           static_cast<int>(inDay / 60 % 60));
}

} // namespace

AssetMetadataExporterBase::~AssetMetadataExporterBase() = default;

// --- exporting -----------------------------------------------------------------------------------

std::optional<std::string> AssetMetadataExporterBase::getText(const EditPtr&,
                                                              const std::vector<Cue>&) const {
    return std::nullopt;
}

std::optional<std::string> AssetMetadataExporterBase::getText(const Kv::Ptr<BinData>&) const {
    return std::nullopt;
}

// What is exported is the user's to keep: no copy of an older file stays beside it.
bool AssetMetadataExporterBase::save(const LightweightString<wchar_t>& path,
                                     const std::optional<std::string>& text) {
    const auto file = cutroom::toUtf8Strict(path);
    return text && file && cutroom::writeOutput(*file, *text).ok();
}

bool AssetMetadataExporterBase::exportToFile(const EditPtr& edit, const std::vector<Cue>& cues,
                                             const LightweightString<wchar_t>& path) const {
    return save(path, getText(edit, cues));
}

bool AssetMetadataExporterBase::exportToFile(const Kv::Ptr<BinData>& bin,
                                             const LightweightString<wchar_t>& path) const {
    return save(path, getText(bin));
}

// --- assets --------------------------------------------------------------------------------------

Base::eAssetType AssetMetadataExporterBase::getAssetType(const Kv::Ptr<BinData>& bin) {
    const unsigned count = bin ? bin->numItems() : 0;
    for (unsigned i = 1; i < count; ++i)
        if (getAssetType(bin, i) != getAssetType(bin, 0))
            return kAssetMixed;
    return count == 0 ? kAssetMixed : getAssetType(bin, 0);
}

Base::eAssetType AssetMetadataExporterBase::getAssetType(const Kv::Ptr<BinData>& bin,
                                                         unsigned index) {
    switch (bin ? bin->getItem(index).getType() : BinData::kAnyType) {
    case 'E': {
        const auto text = cutroom::toUtf8(bin->getAttribute(index, LogAttribute::type));
        return typeOfLog(cutroom::parseInt(text).value_or(kLogTypeNone));
    }
    case 'G':
    case 'M':
        return kAssetBin;
    case 'D':
    case 'A':
        return kAssetDocument;
    default:
        return kAssetMixed;
    }
}

LightweightString<wchar_t> AssetMetadataExporterBase::getDisplayString(eAssetType type, bool plural,
                                                                       eStringFormat format) {
    const TypeNames& names = kTypeNames[std::min<unsigned>(type, kAssetMixed)];
    const auto text = resourceStrW(plural ? names.several : names.one);
    return format == kStringLowerCase ? cutroom::toLower(text) : text;
}

std::vector<LogAttribute> AssetMetadataExporterBase::getAssetAttributes() {
    std::vector<LogAttribute> attributes = LogAttribute::builtIn();
    for (const LogAttribute& own : CurrentProject::getCustomAttributes())
        if (!own.getID().starts_with("cue."))
            attributes.push_back(own);
    return attributes;
}

std::vector<LogAttribute> AssetMetadataExporterBase::getDocumentAttributes() {
    return {LogAttribute::name,       LogAttribute::cookie,     LogAttribute::modified,
            LogAttribute::created,    LogAttribute::externalID, LogAttribute::mediaLocation,
            LogAttribute::description};
}

LightweightString<char>
AssetMetadataExporterBase::getPersistableString(const Kv::Ptr<BinData>& bin, unsigned index,
                                                const LogAttribute& attribute) {
    return bin ? getPersistableString(attribute, bin->getAttribute(index, attribute)) : "";
}

LightweightString<char>
AssetMetadataExporterBase::getPersistableString(const LogAttribute& attribute,
                                                const LightweightString<wchar_t>& value) {
    LightweightString<char> text = cutroom::toUtf8(value);
    if (isDate(attribute.getFieldType()))
        if (const auto seconds = cutroom::parseInt(text))
            return getDateString(*seconds, attribute.getFieldType());
    return text;
}

LightweightString<char> AssetMetadataExporterBase::getDateString(std::int64_t value,
                                                                 DBFieldTypes::eType type) {
    if (!isDate(type) || value < kYear1 || value >= kYear10000)
        return {};
    if (type == DBFieldTypes::time)
        return timeText(value);
    return type == DBFieldTypes::date ? dayText(value) : dayText(value) + ", " + timeText(value);
}

// --- markers -------------------------------------------------------------------------------------

LightweightString<char> AssetMetadataExporterBase::getCueTimecode(const EditPtr& edit,
                                                                  double seconds) {
    LightweightString<char> text;
    cutroom::CueTimecodes(edit).append(text, seconds);
    return text;
}

LightweightString<char> AssetMetadataExporterBase::getMarkerColour(const Cue& cue) {
    static constexpr std::array<std::pair<std::uint32_t, const char*>, 8> kNames{{
        {0xFF0000, "red"},
        {0x00FF00, "green"},
        {0x0000FF, "blue"},
        {0x00FFFF, "cyan"},
        {0xFF00FF, "magenta"},
        {0xFFFF00, "yellow"},
        {0xFFFFFF, "white"},
        {0x000000, "black"},
    }};
    for (const auto& [value, name] : kNames)
        if (value == cue.getColour())
            return name;
    return {};
}
