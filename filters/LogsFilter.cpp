#include "filters/LogsFilter.h"

#include "filters/AssetsBin.h"
#include "platform/host/StringTable.h"

namespace {

struct Kind {
    projdb::eRecordKind kind;
    ResId name;
    const char* key; // of the bin
};

constexpr Kind kKinds[] = {
    {projdb::kKindClip, cutroom::kResBinClips, "clips"},
    {projdb::kKindSubClip, cutroom::kResBinSubclips, "subclips"},
    {projdb::kKindSync, cutroom::kResBinSyncs, "syncs"},
    {projdb::kKindPrint, cutroom::kResBinPrints, "prints"},
    {projdb::kKindClipSection, cutroom::kResBinClipSections, "clip sections"},
};

// The number of kinds of log that the project has, as far as `atMost`.
int countKinds(int atMost) {
    unsigned wanted = projdb::kKindsShot;
    int count = 0;
    while (wanted != 0 && count < atMost) {
        unsigned found = 0;
        cutroom::forEachOfKinds(wanted, [&](const projdb::Summary& summary) {
            found = summary.kinds & wanted;
            return false;
        });
        if (found == 0)
            break;
        wanted &= ~found;
        ++count;
    }
    return count;
}

} // namespace

LogsFilter::LogsFilter() : SystemFilter("logs", cutroom::kResFilterLogs) {
    for (const Kind& kind : kKinds)
        appendResult(Kv::makePtr<cutroom::AssetsBin>(resourceStrW(kind.name), kind.key,
                                                     unsigned{kind.kind}));
}

LogsFilter::~LogsFilter() = default;

iProjectFilter::eResultsType LogsFilter::getResultsType() const {
    return countKinds(2) > 1 ? kGroupedResults : kFlatResults;
}

iProjectFilter::eVisibility LogsFilter::getDefaultVisibility() const {
    return countKinds(1) > 0 ? kAlways : kOptional;
}
