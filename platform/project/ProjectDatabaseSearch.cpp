// Searching the project database, a step at a time.
#include "platform/base/Log.h"
#include "platform/project/ProjectDatabase.h"
#include "platform/project/SearchState.h"

#include <algorithm>
#include <limits>

namespace cutroom {

namespace {

// The work of one step, which takes a few milliseconds: rows looked at, bytes of text searched.
constexpr std::size_t kRowsPerStep = 1024;
constexpr std::size_t kBytesPerStep = std::size_t{4} << 20;
constexpr RecordTable::Number kLastNumber = std::numeric_limits<RecordTable::Number>::max();

} // namespace

void ProjectDatabase::searchOn(projdb::Search::State& search, std::vector<projdb::Hit>& found) {
    using Way = projdb::Search::State::Way;
    CriticalSection::Lock lock(lock_);
    if (!search.started) {
        search.started = true;
        search.revision = revision_;
    }
    Status status;
    if (!table_)
        search.done = true;
    else if (search.way == Way::kinds)
        searchKinds(search, found);
    else if (search.way == Way::texts)
        status = searchTexts(search, found);
    else
        status = searchRows(search, found);
    search.disturbed = search.revision != revision_;
    if (!status) {
        LogBoth("%s\n", status.text().c_str());
        search.done = search.failed = true;
    }
}

// When gaps were closed or records read anew since the last step, `place` is no longer right. Slots
// stay in the order of their numbers, so the search goes on behind the last number it saw.
void ProjectDatabase::searchKinds(projdb::Search::State& search, std::vector<projdb::Hit>& found) {
    std::size_t at = search.place;
    if (at > entries_.size() || (at > 0 && entries_[at - 1].number != search.after))
        at = static_cast<std::size_t>(
            std::find_if(entries_.begin(), entries_.end(),
                         [&](const Entry& entry) { return entry.number > search.after; }) -
            entries_.begin());
    const std::size_t end = std::min(entries_.size(), at + kRowsPerStep);
    for (; at < end; ++at) {
        const Entry& entry = entries_[at];
        if (entry.number == 0)
            continue;
        search.after = entry.number;
        if (search.criteria.matchesKinds(entry.summary.kinds))
            found.push_back({entry.number, entry.summary});
    }
    search.place = at;
    search.done = at == entries_.size();
    search.share =
        std::max(search.share, static_cast<double>(at) / static_cast<double>(entries_.size() + 1));
}

Status ProjectDatabase::searchRows(projdb::Search::State& search, std::vector<projdb::Hit>& found) {
    std::size_t rows = 0;
    Status status = table_->readFrom(search.after, kLastNumber, kRowsPerStep,
                                     [&](Number number, projdb::Record&& record) {
                                         ++rows;
                                         search.after = number;
                                         if (search.criteria.matchesKinds(record.kinds) &&
                                             projdb::matchRecord(record, search.criteria))
                                             found.push_back({number, summaryOf(record)});
                                     });
    search.done = rows < kRowsPerStep;
    search.share += static_cast<double>(rows) / static_cast<double>(entries_.size() + 1);
    return status;
}

Status ProjectDatabase::searchTexts(projdb::Search::State& search,
                                    std::vector<projdb::Hit>& found) {
    const bool tooMany = textBytesNeeded_ > search.mostTextBytes;
    if (!tooMany && textsUpTo_ < kLastNumber)
        if (Status status = loadTexts(); !status)
            return status;
    if (tooMany || texts_.bytes() > search.mostTextBytes) {
        textBytesNeeded_ = std::max(textBytesNeeded_, texts_.bytes());
        forgetTexts();
        search.way = projdb::Search::State::Way::rows;
        search.share = 0;
        return {};
    }
    if (search.generation != texts_.generation()) {
        search.generation = texts_.generation();
        search.place = 0;
    }
    std::vector<Slot> slots;
    texts_.search(search.pattern, search.wholeWords, search.place, kBytesPerStep, slots);
    for (const Slot slot : slots)
        if (Status status = takeHit(slot, search, found); !status)
            return status;
    search.done = textsUpTo_ == kLastNumber && texts_.isEnd(search.place);
    search.share =
        std::min(1.0, static_cast<double>(search.place) / static_cast<double>(entries_.size() + 1));
    return {};
}

Status ProjectDatabase::takeHit(Slot slot, const projdb::Search::State& search,
                                std::vector<projdb::Hit>& found) {
    const Entry& entry = entries_[slot];
    if (!search.criteria.matchesKinds(entry.summary.kinds))
        return {};
    if (search.readsHits) {
        const Result<std::optional<projdb::Record>> record = table_->read(entry.number);
        if (!record)
            return record.status();
        if (!*record || !projdb::matchRecord(**record, search.criteria))
            return {};
    }
    found.push_back({entry.number, entry.summary});
    return {};
}

// Reads the texts of the next records into memory.
Status ProjectDatabase::loadTexts() {
    std::size_t rows = 0;
    Number last = textsUpTo_;
    Status status =
        table_->readFrom(textsUpTo_, kLastNumber, kRowsPerStep,
                         [&](Number number, projdb::Record&& record) CUTROOM_REQUIRES(lock_) {
                             ++rows;
                             last = number;
                             if (const std::optional<Slot> slot = slots_.find(record.cookie))
                                 texts_.put(*slot, record);
                         });
    if (status)
        textsUpTo_ = rows < kRowsPerStep ? kLastNumber : last;
    else
        forgetTexts();
    return status;
}

void ProjectDatabase::forgetTexts() {
    texts_.clear();
    textsUpTo_ = 0;
}

} // namespace cutroom
