#include "platform/project/LogAttribute.h"

#include "platform/project/CurrentProject.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr unsigned kLogs = kLogTypeSource | kLogTypeSyncGhost | kLogTypePrintGhost |
                           kLogTypeSubclip | kLogTypeFileCopy | kLogTypeClipSection;
constexpr unsigned kAll = kLogs | kLogTypeEdit | kLogTypeSpecial;

struct Entry {
    LogAttribute::eType type;
    std::string id;
    std::wstring displayName;
    DBFieldTypes::eType fieldType;
    unsigned logTypes; // a set of eLogType bits
    bool editable;
};

// In ascending order of number. Never destroyed: static objects may close a project.
const std::vector<Entry>& table() {
    using A = LogAttribute;
    using namespace DBFieldTypes;
    static const std::vector<Entry>& entries = *new std::vector<Entry>{
        {A::invalid, "", L"", text, 0, false},
        {A::name, "name", L"Name", text, kAll, true},
        {A::cookie, "cookie", L"ID", text, kAll, false},
        {A::modified, "modified", L"Date modified", dateTime, kAll, false},
        {A::created, "created", L"Date created", dateTime, kAll, false},
        {A::type, "type", L"Type", number, kAll, false},
        {A::duration, "duration", L"Duration", number, kAll, false},
        {A::timecode, "timecode", L"Start", text, kAll, false},
        {A::endTimecode, "end_timecode", L"End", text, kAll, false},
        {A::tracks, "tracks", L"Tracks", number, kAll, false},
        {A::frameRate, "frame_rate", L"Frame rate", text, kAll, false},
        {A::markIn, "mark_in", L"Mark in", text, kAll, false},
        {A::markOut, "mark_out", L"Mark out", text, kAll, false},
        {A::externalID, "ext_id", L"External ID", text, kAll, true},
        {A::tags, "tags", L"Tags", text, kAll, true},
        {A::mediaLocation, "media_location", L"Media location", text, kLogs, false},
        {A::createdBy, "created_by", L"Created by", text, kAll, false},
        {A::parent, "parent", L"Parent", text, kAll, false},
        {A::scene, "scene", L"Scene", text, kAll, true},
        {A::shot, "shot", L"Shot", text, kAll, true},
        {A::who, "who", L"Who", text, kAll, true},
        {A::description, "description", L"Description", text, kAll, true},
        {A::notes, "notes", L"Notes", text, kAll, true},
        {A::reel, "reelid", L"Reel", text, kLogs, true},
        {A::audioReel, "reelid1", L"Sound reel", text, kLogs, true},
        {A::filmReel24P, "24P_reel", L"24P reel", text, kLogs, true},
        {A::cameraReel, "camreel", L"Camera reel", text, kLogs, true},
        {A::cameraDate, "cam_date", L"Camera date", text, kLogs, true},
        {A::labReel, "lab_reel", L"Lab reel", text, kLogs, true},
        {A::compReel, "comp_reel", L"Compilation reel", text, kLogs, true},
        {A::audioSampleRate, "AudioInputSampleRate", L"Sample rate", number, kLogs, false},
        {A::compression, "compression format", L"Compression", text, kLogs, false},
        {A::frameBased, "frame_based", L"Frame based", text, kLogs, false},
        {A::pulldown, "pulldown", L"Pulldown", text, kLogs, false},
        {A::sequence, "sequence", L"Sequence", text, kLogs, true},
        {A::sourceFormat, "Source Format", L"Source format", text, kLogs, false},
        {A::aspectRatio, "Aspect Ratio", L"Aspect ratio", text, kLogs, true},
        {A::mediaDate, "media_date", L"Media date", text, kLogs, false},
        {A::sourceMedium, "source_medium", L"Source medium", text, kLogs, true},
        {A::take, "take", L"Take", number, kAll, true},
        {A::numMarkers, "num_markers", L"Markers", number, kAll, false},
    };
    return entries;
}

// The row of a built-in attribute; for all others the first row, which belongs to none.
const Entry& entryOf(unsigned type) noexcept {
    const std::vector<Entry>& all = table();
    const auto at =
        std::lower_bound(all.begin(), all.end(), type,
                         [](const Entry& entry, unsigned wanted) { return entry.type < wanted; });
    return at != all.end() && at->type == type ? *at : all.front();
}

std::vector<LogAttribute> makeBuiltIn() {
    std::vector<LogAttribute> all;
    for (const Entry& entry : table())
        if (entry.type != LogAttribute::invalid)
            all.emplace_back(entry.type);
    return all;
}

template <class Test> std::optional<LogAttribute> findCustom(const Test& test) {
    const std::vector<LogAttribute> customs = CurrentProject::getCustomAttributes();
    const auto found = std::find_if(customs.begin(), customs.end(), test);
    return found == customs.end() ? std::nullopt : std::optional<LogAttribute>(*found);
}

} // namespace

LogAttribute::LogAttribute(eType number) : type_(entryOf(number).type) {}

LogAttribute::LogAttribute(unsigned index, std::string id, LightweightString<wchar_t> displayName,
                           DBFieldTypes::eType fieldType)
    : type_(static_cast<eType>(firstCustom + index)), customFieldType_(fieldType),
      customID_(std::move(id)), customName_(std::move(displayName)) {}

const std::vector<LogAttribute>& LogAttribute::builtIn() {
    static const auto& all = *new std::vector<LogAttribute>(makeBuiltIn()); // never destroyed
    return all;
}

std::optional<LogAttribute> LogAttribute::fromID(std::string_view id) {
    if (id.empty())
        return std::nullopt;
    for (const Entry& entry : table())
        if (entry.id == id)
            return LogAttribute(entry.type);
    return findCustom([&](const LogAttribute& custom) { return custom.customID_ == id; });
}

std::optional<LogAttribute> LogAttribute::fromType(unsigned type) {
    if (type < firstCustom) {
        const LogAttribute attribute(static_cast<eType>(type));
        return attribute.valid() ? std::optional<LogAttribute>(attribute) : std::nullopt;
    }
    return findCustom([&](const LogAttribute& custom) { return custom.type_ == type; });
}

const std::string& LogAttribute::getID() const noexcept {
    return isCustom() ? customID_ : entryOf(type_).id;
}

const LightweightString<wchar_t>& LogAttribute::getDisplayName() const noexcept {
    return isCustom() ? customName_ : entryOf(type_).displayName;
}

DBFieldTypes::eType LogAttribute::getFieldType() const noexcept {
    return isCustom() ? customFieldType_ : entryOf(type_).fieldType;
}

bool LogAttribute::isApplicableTo(eLogType logType) const noexcept {
    return isCustom() || (entryOf(type_).logTypes & logType) != 0;
}

bool LogAttribute::isEditable() const noexcept { return isCustom() || entryOf(type_).editable; }
