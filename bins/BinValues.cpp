#include "bins/BinValues.h"

#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"

#include <cmath>
#include <tuple>
#include <vector>

namespace cutroom {

namespace {

std::string secondsText(std::uint32_t seconds) {
    return seconds == 0 ? std::string() : toText(static_cast<unsigned long long>(seconds));
}

std::string markText(const Edit& edit, double mark) {
    return mark == kNoTime ? std::string() : edit.getTimecode(mark);
}

std::string locationsText(const Edit& edit) {
    std::vector<std::string> locations;
    for (const auto& location : edit.getMediaLocations())
        locations.push_back(toUtf8(location));
    return join(locations, "; ");
}

// An attribute that the project database records too, read from the open edit.
std::string recordedValue(const Edit& edit, const LogAttribute& attribute) {
    switch (attribute.getType()) {
    case LogAttribute::name:
        return toUtf8(edit.getName());
    case LogAttribute::cookie:
        return edit.getCookie().asString();
    case LogAttribute::modified:
        return secondsText(edit.getModificationTime());
    case LogAttribute::created:
        return secondsText(edit.getCreationTime());
    case LogAttribute::type:
        return toText(static_cast<long long>(edit.getLogType()));
    case LogAttribute::duration:
        return toText(std::fabs(edit.getEndTime() - edit.getStartTime()));
    case LogAttribute::tracks:
        return toText(static_cast<long long>(
            edit.getNumChans(kChanVideo | kChanAudio, kSubAll & ~unsigned{kSubDerived})));
    case LogAttribute::mediaLocation:
        return locationsText(edit);
    default:
        return edit.getConfig(attribute.getID()).value_or(std::string());
    }
}

std::string valueOfEdit(const Edit& edit, const BinItem& item, const LogAttribute& attribute) {
    const Edit::Lock lock(edit);
    switch (attribute.getType()) {
    case LogAttribute::timecode:
        return edit.getTimecode(edit.getStartTime());
    case LogAttribute::endTimecode:
        return edit.getTimecode(edit.getEndTime());
    case LogAttribute::frameRate:
        return edit.getFrameRate().asString();
    case LogAttribute::markIn:
        return markText(edit, item.markIn);
    case LogAttribute::markOut:
        return markText(edit, item.markOut);
    case LogAttribute::numMarkers:
        return toText(static_cast<unsigned long long>(edit.getCues().cues().size()));
    default:
        return recordedValue(edit, attribute);
    }
}

// Tells whether only the edit itself, not its record, has the value.
bool needsEdit(const BinItem& item, const LogAttribute& attribute) {
    switch (attribute.getType()) {
    case LogAttribute::timecode:
    case LogAttribute::endTimecode:
    case LogAttribute::frameRate:
    case LogAttribute::numMarkers:
        return true;
    case LogAttribute::markIn:
        return item.markIn != kNoTime;
    case LogAttribute::markOut:
        return item.markOut != kNoTime;
    default:
        return false;
    }
}

std::string valueOfLog(const BinItem& item, const LogAttribute& attribute) {
    if (needsEdit(item, attribute) || EditManager::instance().isOpen(item.asset)) {
        const EditPtr edit(item.asset);
        return edit ? valueOfEdit(*edit, item, attribute) : std::string();
    }
    const std::optional<projdb::Record> record = projdb::find(item.asset);
    return record ? record->getText(attribute) : std::string();
}

std::string valueOfBin(const Cookie& bin, const LogAttribute& attribute) {
    const BinSummary summary = BinManager::instance().getSummary(bin);
    switch (attribute.getType()) {
    case LogAttribute::name:
        return toUtf8(summary.name);
    case LogAttribute::cookie:
        return bin.asString();
    case LogAttribute::modified:
        return secondsText(summary.modTime);
    case LogAttribute::created:
        return secondsText(summary.created);
    case LogAttribute::externalID:
        return toUtf8(summary.extID);
    default:
        return {};
    }
}

bool isPlainNumber(std::wstring_view text) {
    return !text.empty() && text.find_first_not_of(L"0123456789.-") == std::wstring_view::npos;
}

} // namespace

std::string valueOf(const BinItem& item, const LogAttribute& attribute) {
    switch (item.getType()) {
    case 'E':
        return valueOfLog(item, attribute);
    case 'G':
    case 'M':
        return valueOfBin(item.asset, attribute);
    case 'D':
    case 'A':
        if (const Kv::Ptr<Document> document = DocumentManager::instance().getDocument(item.asset))
            return document->getAttribute(attribute);
        return {};
    default:
        return {};
    }
}

SortKey::SortKey(const LogAttribute& attribute, const std::wstring& text) : text_(text) {
    if (attribute.isNumeric()) {
        number_ = leadingInt(toUtf8(text));
        text_.clear(); // ties keep their order
        return;
    }
    const std::optional<double> number =
        isPlainNumber(text) ? parseDouble(toUtf8(text)) : std::nullopt;
    isText_ = !number;
    if (number)
        number_ = *number;
    else
        folded_ = toLower(text);
}

bool operator<(const SortKey& a, const SortKey& b) {
    return std::tie(a.isText_, a.number_, a.folded_, a.text_) <
           std::tie(b.isText_, b.number_, b.folded_, b.text_);
}

} // namespace cutroom
