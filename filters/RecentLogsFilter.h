// `RecentLogsFilter`: the project filter that shows the logs made within the last day, the last 7
// and the last 30 days, a bin each.
#pragma once

#include "filters/SystemFilter.h"

// Any thread, as `ProjectFilterBase`. Days are 24 hours of the host's clock. Logs that have become
// too old leave a bin when it is looked at next.
class CUTROOM_API RecentLogsFilter final : public cutroom::SystemFilter {
public:
    RecentLogsFilter();
    ~RecentLogsFilter() override;

    eResultsType getResultsType() const override;
};
