#include "platform/store/BurntIn.h"

#include "platform/prefs/EditorPreferences.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr const char* kNamesKey = "BITC layouts";
constexpr std::size_t kFields = 8; // type, medium, roll, x, y, size, colour, prefix

std::string layoutKey(const LightweightString<wchar_t>& name) {
    return "BITC layout : " + cutroom::toUtf8(name);
}

std::string defaultKey() {
    return "BITC layout default : " + CurrentProject::getCookie().asString();
}

std::string labelText(const BITCLabel& label) {
    const auto number = [](long long value) { return cutroom::toText(value); };
    const auto real = [](float value) {
        char digits[32];
        return std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    return cutroom::join({number(label.type), number(label.mediumRoll.first),
                          number(label.mediumRoll.second), real(label.x), real(label.y),
                          real(label.size), number(label.colour), cutroom::toUtf8(label.prefix)},
                         "\t");
}

std::optional<BITCLabel> parseLabel(const std::string& line) {
    const auto fields = cutroom::split(line, '\t');
    if (fields.size() != kFields)
        return std::nullopt;
    const auto type = cutroom::parseInt(fields[0]);
    const auto medium = cutroom::parseInt(fields[1]);
    const auto roll = cutroom::parseInt(fields[2]);
    const auto colour = cutroom::parseInt(fields[6]);
    if (!type || *type < kLabelNone || *type > kLabelInk || !medium || !roll || !colour)
        return std::nullopt;
    BITCLabel label;
    for (const auto& [target, field] : {std::pair{&label.x, 3}, {&label.y, 4}, {&label.size, 5}}) {
        const auto value = cutroom::parseDouble(fields[static_cast<std::size_t>(field)]);
        if (!value)
            return std::nullopt;
        *target = static_cast<float>(*value);
    }
    label.type = static_cast<eLabelType>(*type);
    label.mediumRoll = {static_cast<std::int32_t>(*medium), static_cast<std::int32_t>(*roll)};
    label.colour = static_cast<std::uint32_t>(*colour) & 0xFFFFFFu;
    label.prefix = cutroom::toWide(fields[7]);
    return label;
}

} // namespace

LightweightString<char> BITCLayoutsManager::asString(const BITCEffect& layout) {
    std::string text = layout.enabled() ? "on" : "off";
    for (const BITCLabel& label : layout.labels())
        text += '\n' + labelText(label);
    return text;
}

std::optional<BITCEffect> BITCLayoutsManager::fromString(const LightweightString<char>& text) {
    const auto lines = cutroom::split(text, '\n');
    if (lines.front() != "on" && lines.front() != "off")
        return std::nullopt;
    BITCEffect layout;
    layout.setEnabled(lines.front() == "on");
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto label = parseLabel(lines[i]);
        if (!label)
            return std::nullopt;
        layout.addLabel(*label);
    }
    return layout;
}

std::vector<LightweightString<wchar_t>> BITCLayoutsManager::getLayoutNames() {
    std::vector<LightweightString<wchar_t>> names;
    const std::string stored = EditorPreferences::getPreference(kNamesKey, "");
    for (const std::string& name : cutroom::split(stored, '\n'))
        if (!name.empty())
            names.push_back(cutroom::toWide(name));
    return names;
}

BITCEffect BITCLayoutsManager::getLayout(const LightweightString<wchar_t>& name) {
    return fromString(EditorPreferences::getPreference(layoutKey(name), "")).value_or(BITCEffect());
}

bool BITCLayoutsManager::setLayout(const LightweightString<wchar_t>& name,
                                   const BITCEffect& layout) {
    if (name.empty() || name.find(L'\n') != name.npos)
        return false;
    const auto names = getLayoutNames();
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        std::string stored = EditorPreferences::getPreference(kNamesKey, "");
        stored += (stored.empty() ? "" : "\n") + cutroom::toUtf8(name);
        EditorPreferences::setPreference(kNamesKey, stored);
    }
    EditorPreferences::setPreference(layoutKey(name), asString(layout));
    return true;
}

bool BITCLayoutsManager::removeLayout(const LightweightString<wchar_t>& name) {
    auto names = getLayoutNames();
    if (std::erase(names, name) == 0)
        return false;
    std::vector<std::string> kept;
    for (const auto& other : names)
        kept.push_back(cutroom::toUtf8(other));
    EditorPreferences::setPreference(kNamesKey, cutroom::join(kept, "\n"));
    EditorPreferences::removePreference(layoutKey(name));
    return true;
}

LightweightString<wchar_t> BITCLayoutsManager::getProjectDefault() {
    return cutroom::toWide(EditorPreferences::getPreference(defaultKey(), ""));
}

void BITCLayoutsManager::setProjectDefault(const LightweightString<wchar_t>& name) {
    EditorPreferences::setPreference(defaultKey(), cutroom::toUtf8(name));
}

void BITCLayoutsManager::applyProjectDefault(const EditPtr& edit) {
    const auto name = getProjectDefault();
    if (edit && !name.empty())
        edit->setBITC(getLayout(name));
}
