#include "bins/Document.h"

#include "bins/DocumentManager.h"

Document::Document() = default;
Document::~Document() = default;

// --- what it holds -------------------------------------------------------------------------------

LightweightString<wchar_t> Document::getDescription() const {
    const SharedLock::Read lock(lock_);
    return description_;
}

void Document::setDescription(const LightweightString<wchar_t>& description) {
    const Change lock(*this);
    if (description == description_)
        return;
    description_ = description;
    addModification(Modification(LogAttribute::description));
}

std::uint64_t Document::getSize() const {
    const SharedLock::Read lock(lock_);
    return size_;
}

void Document::setSize(std::uint64_t bytes) {
    const Change lock(*this);
    if (bytes == size_)
        return;
    size_ = bytes;
    addModifications(kModAttribute);
}

LightweightVector<LightweightString<wchar_t>> Document::getLocations() const {
    const SharedLock::Read lock(lock_);
    return locations_;
}

void Document::setLocations(const LightweightVector<LightweightString<wchar_t>>& locations) {
    const Change lock(*this);
    if (locations == locations_)
        return;
    locations_ = locations;
    keysChanged();
    addModification(Modification(LogAttribute::mediaLocation));
}

LightweightString<wchar_t> Document::getFileName() const {
    const SharedLock::Read lock(lock_);
    return locations_.empty() ? LightweightString<wchar_t>() : locations_.front();
}

bool Document::isImported() const {
    const SharedLock::Read lock(lock_);
    return imported_;
}

void Document::setImported(bool imported) {
    const Change lock(*this);
    if (imported == imported_)
        return;
    imported_ = imported;
    addModifications(kModUncounted);
}

void Document::setCreationTime(std::uint32_t seconds) {
    const Change lock(*this);
    if (seconds == getCreationTime())
        return;
    ContainerBase::setCreationTime(seconds);
    setDirty(true);
}

void Document::setModificationTime(std::uint32_t seconds) {
    const Change lock(*this);
    if (seconds == getModificationTime())
        return;
    ContainerBase::setModificationTime(seconds);
    setDirty(true);
}

// --- attributes ----------------------------------------------------------------------------------

LightweightString<char> Document::getAttribute(const LogAttribute& attribute) const {
    if (attribute.getType() == LogAttribute::description)
        return cutroom::toUtf8(getDescription());
    if (attribute.getType() == LogAttribute::mediaLocation)
        return cutroom::toUtf8(getFileName());
    return ContainerBase::getAttribute(attribute);
}

void Document::setAttribute(const LogAttribute& attribute,
                            const LightweightString<wchar_t>& value) {
    if (attribute.getType() == LogAttribute::description)
        setDescription(value);
    else
        ContainerBase::setAttribute(attribute, value);
}

// --- its manager ---------------------------------------------------------------------------------

cutroom::DescribedContainerManager& Document::manager() const {
    return DocumentManager::instance();
}

std::vector<std::string> Document::keys() const {
    std::vector<std::string> keys;
    for (const LightweightString<wchar_t>& location : locations_)
        keys.push_back(cutroom::toUtf8(location));
    return keys;
}

void Document::issueModificationNotification(const Modifications& changes,
                                             LightweightString<char> reason) {
    if (managed())
        DocumentManager::instance().handleModification(getID(), changes, reason);
    ContainerBase::issueModificationNotification(changes, std::move(reason));
}

void Document::restoreLocations(LightweightVector<LightweightString<wchar_t>> locations) {
    const Change lock(*this);
    locations_ = std::move(locations);
    keysChanged();
}
