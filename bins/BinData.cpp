// Making, presentation, and telling of changes.
#include "bins/BinData.h"

#include "bins/BinBatch.h"
#include "bins/BinIndex.h"
#include "bins/BinManager.h"
#include "platform/host/ProcessLife.h"
#include "platform/prefs/EditorPreferences.h"

#include <utility>

using cutroom::BinBatch;
using cutroom::BinIndex;

namespace {
constexpr char kAutoPositionKey[] = "Gallery auto position";
}

// --- making --------------------------------------------------------------------------------------

BinData::BinData() : index_(std::make_unique<BinIndex>()) {
    contents_.autoPosition = getAutoPositionDefault();
    setID(newContainerCookie());
}

BinData::BinData(const Cookie& id) : index_(std::make_unique<BinIndex>()) {
    contents_.autoPosition = getAutoPositionDefault();
    setID(id);
    (void)load(); // `valid` tells
}

BinData::BinData(const LightweightString<wchar_t>& name) : BinData() { setStoredNames(name, {}); }

BinData::BinData(const CookieVec& assets) : BinData() {
    contents_.items.reserve(assets.size());
    for (const Cookie& asset : assets)
        contents_.items.emplace_back(asset, 0.0);
}

BinData::BinData(const BinData& other) : BinData() {
    setStoredNames(other.getName(), other.getExternalID());
    setCreationTime(other.getCreationTime());
    setModificationTime(other.getModificationTime());
    takeOver(other);
}

BinData& BinData::operator=(const BinData& other) {
    if (this == &other)
        return *this;
    const LightweightString<wchar_t> name = other.getName(), externalId = other.getExternalID();
    const Change change(*this);
    const BinBatch batch(*this);
    takeOver(other);
    setName(name);
    setExternalID(externalId);
    addModifications(kModItemsAdded | kModItemsRemoved);
    return *this;
}

// Reads the other bin before this one is locked, or under the change lock.
void BinData::takeOver(const BinData& other) {
    cutroom::BinContents contents;
    unsigned caps = 0;
    std::vector<LogAttribute> columns;
    {
        const SharedLock::Read lock(other.lock_);
        contents = other.contents_;
        caps = other.caps_;
        columns = other.columns_;
    }
    const Change change(*this);
    std::swap(contents_, contents);
    caps_ = caps;
    columns_.swap(columns);
    index_->drop();
}

BinData::~BinData() = default;

bool BinData::valid() const {
    const SharedLock::Read lock(lock_);
    return contents_.valid;
}

// --- presentation --------------------------------------------------------------------------------

eGalleryViews::eGalleryView BinData::getViewType() const {
    const SharedLock::Read lock(lock_);
    return contents_.view;
}

void BinData::setViewType(eGalleryViews::eGalleryView view) {
    const Change change(*this);
    if (std::exchange(contents_.view, view) != view)
        addModifications(kModAttribute);
}

Kv::ImageSize::Presets::Preset BinData::getTileSize() const {
    const SharedLock::Read lock(lock_);
    return contents_.tileSize;
}

void BinData::setTileSize(Kv::ImageSize::Presets::Preset size) {
    const Change change(*this);
    if (std::exchange(contents_.tileSize, size) != size)
        addModifications(kModAttribute);
}

bool BinData::getAutoPosition() const {
    const SharedLock::Read lock(lock_);
    return contents_.autoPosition;
}

void BinData::setAutoPosition(bool on) {
    const Change change(*this);
    if (std::exchange(contents_.autoPosition, on) != on)
        addModifications(kModAttribute);
}

bool BinData::getAutoPositionDefault() {
    return EditorPreferences::getPreference(kAutoPositionKey, true);
}

void BinData::setAutoPositionDefault(bool on) {
    EditorPreferences::setPreference(kAutoPositionKey, on);
}

XY<int> BinData::getDimensions() const {
    const SharedLock::Read lock(lock_);
    return contents_.dimensions;
}

void BinData::setDimensions(const XY<int>& size) {
    const Change change(*this);
    if (std::exchange(contents_.dimensions, size) != size)
        setDirty(true);
}

bool BinData::getPermanent() const {
    const SharedLock::Read lock(lock_);
    return contents_.permanent;
}

void BinData::setPermanent(bool on) {
    const Change change(*this);
    if (std::exchange(contents_.permanent, on) != on)
        addModifications(kModPermanent);
}

BinData::eVersion BinData::getVersion() const {
    const SharedLock::Read lock(lock_);
    return contents_.version;
}

unsigned BinData::getCaps() const {
    const SharedLock::Read lock(lock_);
    return caps_;
}

void BinData::setCaps(unsigned caps) {
    const Change change(*this);
    caps_ = caps;
}

std::string BinData::getSyncedSources() const {
    const SharedLock::Read lock(lock_);
    return contents_.syncedSources;
}

void BinData::setSyncedSources(std::string text) {
    const Change change(*this);
    if (contents_.syncedSources == text)
        return;
    contents_.syncedSources = std::move(text);
    setDirty(true);
}

std::vector<LogAttribute> BinData::getTableColumns() const {
    const SharedLock::Read lock(lock_);
    return columns_.empty() ? defaultTableColumns() : columns_;
}

void BinData::setDefaultTableColumns(const std::vector<LogAttribute>& columns) {
    const Change change(*this);
    columns_ = columns;
}

const std::vector<LogAttribute>& BinData::defaultTableColumns() {
    static const auto& columns = *new std::vector<LogAttribute>{
        // never destroyed
        LogAttribute::name,     LogAttribute::timecode, LogAttribute::endTimecode,
        LogAttribute::duration, LogAttribute::tracks,   LogAttribute::type,
        LogAttribute::modified};
    return columns;
}

// --- telling -------------------------------------------------------------------------------------

// A manager that nobody has asked for yet has no listeners; it is not made under the locks of a
// change.
void BinData::issueModificationNotification(const Modifications& changes,
                                            LightweightString<char> reason) {
    if (BinManager* const manager = cutroom::ProcessSingleton<BinManager>::find())
        manager->handleBinModification(getID(), changes, reason);
    ContainerBase::issueModificationNotification(changes, std::move(reason));
}
