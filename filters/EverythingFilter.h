// `EverythingFilter`: the project filter that shows every edit, log and document.
#pragma once

#include "filters/SystemFilter.h"

// Any thread, as `ProjectFilterBase`.
class CUTROOM_API EverythingFilter final : public cutroom::SystemFilter {
public:
    EverythingFilter();
    ~EverythingFilter() override;
};
