// `LogsFilter`: the project filter that shows all logs, one bin for each kind: clips, subclips,
// synced clips, prints, clip sections.
#pragma once

#include "filters/SystemFilter.h"

// Any thread, as `ProjectFilterBase`.
class CUTROOM_API LogsFilter final : public cutroom::SystemFilter {
public:
    LogsFilter();
    ~LogsFilter() override;

    // Grouped when the project has logs of more than one kind, else flat. Fills nothing.
    eResultsType getResultsType() const override;

protected:
    // Always when the project has logs, else optional.
    eVisibility getDefaultVisibility() const override;
};
