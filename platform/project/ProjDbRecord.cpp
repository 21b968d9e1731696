#include "platform/project/ProjDbRecord.h"

#include "platform/base/Strings.h"

#include <cmath>
#include <iterator>

namespace projdb {

unsigned recordKindOf(eLogType logType) noexcept {
    switch (logType) {
    case kLogTypeSource:
    case kLogTypeFileCopy:
        return kKindClip;
    case kLogTypeEdit:
    case kLogTypeSpecial:
        return kKindSequence;
    case kLogTypeSyncGhost:
        return kKindSync;
    case kLogTypePrintGhost:
        return kKindPrint;
    case kLogTypeSubclip:
        return kKindSubClip;
    case kLogTypeClipSection:
        return kKindClipSection;
    default:
        return 0;
    }
}

unsigned markerTypeBit(std::uint32_t colour) noexcept {
    static constexpr std::uint32_t kNamed[] = {0xFF0000, 0x00FF00, 0x0000FF, 0x00FFFF,
                                               0xFF00FF, 0xFFFF00, 0xFFFFFF, 0x000000};
    for (unsigned i = 0; i < std::size(kNamed); ++i)
        if (kNamed[i] == (colour & 0xFFFFFF))
            return 1u << i;
    return 1u << std::size(kNamed);
}

std::string Record::getText(const LogAttribute& attribute) const {
    const auto number = [](std::uint32_t value) {
        return cutroom::toText(static_cast<unsigned long long>(value));
    };
    switch (attribute.getType()) {
    case LogAttribute::cookie:
        return cookie.asString();
    case LogAttribute::created:
        return created ? number(created) : std::string();
    case LogAttribute::modified:
        return modified ? number(modified) : std::string();
    case LogAttribute::type:
        return number(logType);
    case LogAttribute::duration:
        return cutroom::toText(std::fabs(end - start));
    case LogAttribute::tracks:
        return number(videoTracks + audioTracks);
    case LogAttribute::mediaLocation:
        return cutroom::join(mediaLocations, "; ");
    default:
        break;
    }
    const auto found = attributes.find(attribute.getID());
    return found == attributes.end() ? std::string() : found->second;
}

std::string Record::getField(std::string_view attributeID) const {
    if (const auto attribute = LogAttribute::fromID(attributeID))
        return getText(*attribute);
    const auto found = attributes.find(attributeID);
    return found == attributes.end() ? std::string() : found->second;
}

void Record::setField(std::string_view attributeID, std::string_view text) {
    if (text.empty()) {
        if (const auto found = attributes.find(attributeID); found != attributes.end())
            attributes.erase(found);
        return;
    }
    attributes.insert_or_assign(std::string(attributeID), std::string(text));
}

const std::string& Record::name() const {
    static const auto& none = *new std::string; // never destroyed
    const auto found = attributes.find("name");
    return found == attributes.end() ? none : found->second;
}

} // namespace projdb
