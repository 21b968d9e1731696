#include "filters/ProjectSearch.h"

#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjDbSearch.h"
#include "platform/project/TextMatch.h"
#include "platform/store/ChangedEdits.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <utility>

using cutroom::isAsAsked;
using Criteria = ProjectSearch::Criteria;

namespace {

// At most this many matches are looked at before a watcher is told.
constexpr std::size_t kHitsPerTelling = 256;

bool isShot(unsigned kinds) { return (kinds & projdb::kKindsShot) != 0; }

bool needsMediaTest(unsigned kinds, const Criteria& criteria) {
    return !criteria.mediaLocation.empty() ||
           (criteria.clipMedia != cutroom::eItemPresence::any && isShot(kinds));
}

// Tracks are asked of shots only; anything else meets the condition.
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

// Tells whether a match meets the conditions beside kinds and texts.
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

// Tells the watcher of what was found since `before`.
bool goesOn(const ProjectSearch::Watcher& watcher, double share,
            const std::vector<projdb::Hit>& hits, std::size_t before) {
    std::vector<projdb::Summary> last;
    last.reserve(hits.size() - before);
    for (std::size_t i = before; i < hits.size(); ++i)
        last.push_back(hits[i].summary);
    return watcher({share, hits.size(), last});
}

// Takes over the matches that meet the other conditions too. Looking for media may be slow, so the
// watcher is told after every few. `from` and `to` are the shares done before and after the step.
// False when the watcher stops the search.
bool takeStep(const std::vector<projdb::Hit>& step, double from, double to,
              const Criteria& criteria, const ProjectSearch::Watcher& watcher,
              std::vector<projdb::Hit>& hits) {
    const bool asksMore = criteria.needsMoreThanText();
    const std::size_t atOnce = watcher ? kHitsPerTelling : step.size();
    std::size_t at = 0;
    do {
        const std::size_t before = hits.size();
        for (const std::size_t end = std::min(step.size(), at + atOnce); at < end; ++at)
            if (!asksMore || meetsRest(step[at].summary, criteria))
                hits.push_back(step[at]);
        const double part =
            step.empty() ? 1.0 : static_cast<double>(at) / static_cast<double>(step.size());
        if (watcher && !goesOn(watcher, from + (to - from) * part, hits, before))
            return false;
    } while (at < step.size());
    return true;
}

// Drops hits that no longer match, because records changed during the search.
void lookAgain(std::vector<projdb::Hit>& hits, const Criteria& criteria) {
    std::erase_if(hits, [&](const projdb::Hit& hit) {
        const std::optional<projdb::Record> record = projdb::find(hit.summary.cookie);
        return !record || !meetsAll(*record, criteria);
    });
}

// The kinds that a record of the edit would have; only the record itself tells whether it is an
// image.
unsigned kindsOf(const Edit& edit) {
    const std::optional<projdb::Summary> summary = projdb::findSummary(edit.getCookie());
    return projdb::recordKindOf(edit.getLogType()) |
           (edit.isClipboard() ? projdb::kKindClipboard : 0u) |
           (summary ? summary->kinds & projdb::kKindImage : 0u);
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
    cutroom::ChangedEdits::enter();
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
    std::vector<projdb::Hit> hits;
    std::vector<projdb::Hit> step;
    for (bool more = true; more;) {
        step.clear();
        const double before = search.share();
        more = search.next(step);
        if (!takeStep(step, before, search.share(), criteria, watcher, hits))
            return false;
    }
    if (search.failed())
        return false;
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
    const unsigned kinds = kindsOf(*edit);
    if (!criteria.matchesKinds(kinds) ||
        !meetsTracks(kinds, tracksOf(*edit, kChanVideo), tracksOf(*edit, kChanAudio), criteria))
        return false;
    if (!criteria.needsTextTest() && !needsMediaTest(kinds, criteria) &&
        !criteria.hasRequiredTime())
        return true;
    cutroom::ChangedEdits::enter();
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
