#include "filters/ProjectSearch.h"

#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjDbSearch.h"
#include "platform/project/TextMatch.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <utility>

using cutroom::isAsAsked;
using Criteria = ProjectSearch::Criteria;

namespace {

bool isShot(unsigned kinds) { return (kinds & projdb::kKindsShot) != 0; }

bool needsMediaTest(unsigned kinds, const Criteria& criteria) {
    return !criteria.mediaLocation.empty() ||
           (criteria.clipMedia != cutroom::eItemPresence::any && isShot(kinds));
}

// What is asked of one that is no shot does not count.
bool meetsTracks(unsigned kinds, std::uint32_t video, std::uint32_t audio,
                 const Criteria& criteria) {
    return !isShot(kinds) ||
           (isAsAsked(video, criteria.clipVTracks) && isAsAsked(audio, criteria.clipATracks));
}

bool meetsTime(double start, double end, const Criteria& criteria) {
    return !criteria.hasRequiredTime() || cutroom::extentHolds(start, end, criteria.requiredTime);
}

bool meetsMedia(const projdb::Record& record, unsigned kinds, const Criteria& criteria) {
    return !needsMediaTest(kinds, criteria) ||
           cutroom::mediaIsAsAsked(record, criteria.mediaLocation,
                                   isShot(kinds) ? criteria.clipMedia
                                                 : cutroom::eItemPresence::any);
}

// What is asked beside kinds and texts.
bool meetsRest(const projdb::Summary& found, const Criteria& criteria) {
    if (!meetsTracks(found.kinds, found.videoTracks, found.audioTracks, criteria) ||
        !meetsTime(found.start, found.end, criteria))
        return false;
    if (!needsMediaTest(found.kinds, criteria))
        return true;
    const std::optional<projdb::Record> record = projdb::find(found.cookie);
    return record && meetsMedia(*record, found.kinds, criteria);
}

bool meetsAll(const projdb::Record& record, const Criteria& criteria) {
    return criteria.matchesKinds(record.kinds) && projdb::matchRecord(record, criteria) &&
           meetsTracks(record.kinds, record.videoTracks, record.audioTracks, criteria) &&
           meetsTime(record.start, record.end, criteria) &&
           meetsMedia(record, record.kinds, criteria);
}

BinItem itemOf(const Cookie& asset, double start, double end) {
    BinItem item(asset, std::min(start, end));
    item.markIn = std::min(start, end);
    item.markOut = std::max(start, end);
    return item;
}

BinData::Items itemsOf(const std::vector<projdb::Hit>& hits) {
    BinData::Items items;
    items.reserve(hits.size());
    for (const projdb::Hit& hit : hits)
        items.push_back(itemOf(hit.summary.cookie, hit.summary.start, hit.summary.end));
    return items;
}

// Tells the watcher of a step.
bool goesOn(const ProjectSearch::Watcher& watcher, double share, std::size_t before,
            const std::vector<projdb::Hit>& step) {
    std::vector<projdb::Summary> last;
    last.reserve(step.size());
    for (const projdb::Hit& hit : step)
        last.push_back(hit.summary);
    return watcher({share, before + last.size(), last});
}

// Drops what matches no more, when records have changed while they were looked through.
void lookAgain(std::vector<projdb::Hit>& hits, const Criteria& criteria) {
    std::erase_if(hits, [&](const projdb::Hit& hit) {
        const std::optional<projdb::Record> record = projdb::find(hit.summary.cookie);
        return !record || !meetsAll(*record, criteria);
    });
}

std::uint32_t tracksOf(const Edit& edit, unsigned type) {
    return static_cast<std::uint32_t>(edit.getNumChans(type) - edit.getNumChans(type, kSubDerived));
}

} // namespace

ProjectSearch& ProjectSearch::instance() { return cutroom::ProcessSingleton<ProjectSearch>::get(); }

Kv::Ptr<BinData> ProjectSearch::perform(const Criteria& criteria) {
    return perform(criteria, Watcher());
}

Kv::Ptr<BinData> ProjectSearch::perform(const Criteria& criteria, const Watcher& watcher) {
    BinData::Items items;
    if (!find(criteria, items, watcher))
        return nullptr;
    Kv::Ptr<BinData> bin = Kv::makePtr<BinData>(makeName(criteria, false));
    bin->setContents(std::move(items));
    return bin;
}

bool ProjectSearch::find(const Criteria& criteria, BinData::Items& items, const Watcher& watcher) {
    if (criteria.clipMedia != eItemPresence::any)
        MediaStatus::instance().forgetAll(); // drives come and go
    projdb::Search search(criteria);
    const bool asksMore = criteria.needsMoreThanText();
    std::vector<projdb::Hit> hits;
    std::vector<projdb::Hit> step;
    for (bool more = true; more;) {
        step.clear();
        more = search.next(step);
        if (asksMore)
            std::erase_if(
                step, [&](const projdb::Hit& hit) { return !meetsRest(hit.summary, criteria); });
        if (watcher && !goesOn(watcher, search.share(), hits.size(), step))
            return false;
        hits.insert(hits.end(), step.begin(), step.end());
    }
    projdb::putInOrder(hits);
    if (search.disturbed())
        lookAgain(hits, criteria);
    items = itemsOf(hits);
    return true;
}

std::optional<BinItem> ProjectSearch::findItem(const Cookie& asset, const Criteria& criteria) {
    const std::optional<projdb::Record> record = projdb::find(asset);
    if (!record || !meetsAll(*record, criteria))
        return std::nullopt;
    return itemOf(asset, record->start, record->end);
}

bool ProjectSearch::satisfiesCriteria(const EditPtr& edit, const Criteria& criteria) {
    if (!edit)
        return false;
    const unsigned kinds = projdb::recordKindOf(edit->getLogType()) |
                           (edit->isClipboard() ? projdb::kKindClipboard : 0u);
    if (!criteria.matchesKinds(kinds) ||
        !meetsTracks(kinds, tracksOf(*edit, kChanVideo), tracksOf(*edit, kChanAudio), criteria))
        return false;
    if (!criteria.needsTextTest() && !needsMediaTest(kinds, criteria) &&
        !criteria.hasRequiredTime())
        return true;
    const std::optional<projdb::Record> record = projdb::find(edit->getCookie());
    return record && projdb::matchRecord(*record, criteria) &&
           meetsMedia(*record, kinds, criteria) && meetsTime(record->start, record->end, criteria);
}

bool ProjectSearch::compareStrings(const LightweightString<char>& text,
                                   const LightweightString<char>& pattern, bool wholeWords,
                                   bool caseSensitive) {
    return cutroom::compareText(text, pattern, wholeWords, caseSensitive);
}

bool ProjectSearch::compareStrings(const LightweightString<wchar_t>& text,
                                   const LightweightString<wchar_t>& pattern, bool wholeWords,
                                   bool caseSensitive) {
    return cutroom::compareText(cutroom::toUtf8(text), cutroom::toUtf8(pattern), wholeWords,
                                caseSensitive);
}
