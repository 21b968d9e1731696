#include "filters/FilterBinData.h"

#include "bins/BinBatch.h"
#include "filters/ProjectFilterManager.h"

#include <map>
#include <unordered_set>
#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

// The upper bits of the cookies of bins that a filter presents under a fixed key. They tell such a
// cookie from fresh ones.
constexpr std::uint64_t kFixedMark = 0xF117'0000'0000'0000;
constexpr std::uint64_t kMarkBits = 0xFFFF'0000'0000'0000;

} // namespace

namespace cutroom {

// FNV-1a (Fowler, Noll, Vo), 64 bits, folded to the bits below the mark.
Cookie fixedFilterBinID(std::string_view key) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : key)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return Cookie('G', kFixedMark | ((hash ^ (hash >> 48)) & ~kMarkBits));
}

bool isFixedFilterBinID(const Cookie& bin) noexcept {
    return bin.type() == 'G' && (bin.id() & kMarkBits) == kFixedMark;
}

} // namespace cutroom

FilterBinData::FilterBinData() = default;
FilterBinData::FilterBinData(const BinData& other) : BinData(other) {}
FilterBinData::~FilterBinData() = default;

FilterBinData::FilterBinData(const LightweightString<wchar_t>& name, const Cookie& id)
    : BinData(name) {
    if (id.valid())
        setID(id);
}

bool FilterBinData::isDynamic() const { return false; }

// --- contents that follow the project ------------------------------------------------------------

BinData::Items FilterBinData::gather() const { return {}; }
std::optional<BinItem> FilterBinData::itemOf(const Cookie&) const { return std::nullopt; }

bool FilterBinData::isComplete() const { return !isDynamic() || following_.ready(); }

void FilterBinData::fill() {
    if (!isDynamic() || following_.ready() || !following_.begin())
        return;
    Items items = gather();
    {
        const Change change(*this);
        CookieVec touched;
        if (!following_.end(touched))
            return; // another thread was faster
        replaceSilently(std::move(items));
        lookAgainAt(touched);
    }
    if (following_.isOutdated())
        refresh();
}

void FilterBinData::replaceSilently(Items items) {
    silent_ = true;
    setContents(std::move(items));
    silent_ = false;
}

void FilterBinData::refresh() {
    const cutroom::ChangeLock oneAtATime;
    if (!isDynamic() || !following_.renews())
        return;
    Items items = gather();
    std::unordered_set<Cookie> wanted;
    for (const BinItem& item : items)
        wanted.insert(item.asset);
    const Change change(*this);
    CookieVec gone;
    for (const BinItem& item : std::as_const(*this))
        if (wanted.count(item.asset) == 0)
            gone.push_back(item.asset);
    CookieVec changed;
    std::erase_if(items, [&](const BinItem& item) CUTROOM_NO_THREAD_SAFETY {
        if (takeMarks(item))
            changed.push_back(item.asset);
        return contains(item.asset);
    });
    apply(std::move(items), gone, changed);
}

void FilterBinData::assetsChanged(const CookieVec& assets) {
    const cutroom::ChangeLock oneAtATime;
    if (!isDynamic() || assets.empty() || !following_.follows(assets))
        return;
    const Change change(*this);
    lookAgainAt(assets);
}

void FilterBinData::handleDeletions(const CookieVec& assets,
                                    const LightweightString<char>& reason) {
    const Change change(*this);
    if (isDynamic())
        (void)following_.follows(assets); // they may have been gathered already
    BinData::handleDeletions(assets, reason);
}

// Whether an asset belongs here is worked out only now, not when its change was told, so of two
// changes of one asset the first look settles both.
void FilterBinData::lookAgainAt(const CookieVec& assets) {
    Items come;
    CookieVec gone;
    CookieVec changed;
    std::unordered_set<Cookie> seen;
    for (const Cookie& asset : assets) {
        if (!seen.insert(asset).second)
            continue;
        const bool isHere = contains(asset);
        std::optional<BinItem> item = itemOf(asset);
        if (item && !isHere)
            come.push_back(std::move(*item));
        else if (!item && isHere)
            gone.push_back(asset);
        else if (item && takeMarks(*item))
            changed.push_back(asset);
    }
    apply(std::move(come), gone, changed);
}

// Gives the item that is here the marks of a fresh one, if that has some. A time that nobody moved
// goes along.
bool FilterBinData::takeMarks(const BinItem& fresh) {
    const auto here = find(fresh.asset);
    if (!fresh.hasMark() || here == end() ||
        (here->markIn == fresh.markIn && here->markOut == fresh.markOut))
        return false;
    if (here->time == here->markIn)
        here->time = fresh.time;
    here->markIn = fresh.markIn;
    here->markOut = fresh.markOut;
    return true;
}

void FilterBinData::apply(Items come, const CookieVec& gone, const CookieVec& changed) {
    if (come.empty() && gone.empty() && changed.empty())
        return;
    const cutroom::BinBatch batch(*this);
    handleDeletions(gone, {});
    for (const BinItem& item : come)
        add(item);
    Modification ofMarks(kModUncounted, Cookie());
    ofMarks.add(changed);
    if (!changed.empty())
        addModification(ofMarks);
}

// --- saving --------------------------------------------------------------------------------------

Status FilterBinData::save() {
    return isDynamic() ? Status() : ProjectFilterManager::instance().saveFilterOf(getID());
}

bool FilterBinData::isDirty() const { return !isDynamic() && BinData::isDirty(); }

void FilterBinData::setDirty(bool dirty) {
    if (!isDynamic())
        BinData::setDirty(dirty);
}

bool FilterBinData::canAccomodate(const Cookie& asset) const {
    return !isDynamic() && BinData::canAccomodate(asset);
}

bool FilterBinData::canAccomodate(CookieType type) const {
    return !isDynamic() && BinData::canAccomodate(type);
}

void FilterBinData::issueModificationNotification(const Modifications& changes,
                                                  LightweightString<char> reason) {
    if (silent_)
        return;
    auto* const manager = cutroom::ProcessSingleton<ProjectFilterManager>::find();
    if (manager && presenters_ > 0)
        manager->issueNotification(changes, getID(), reason);
    ContainerBase::issueModificationNotification(changes, std::move(reason));
}
