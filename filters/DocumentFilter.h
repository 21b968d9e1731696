// `DocumentFilter`: the project filter that shows every document as one bin.
#pragma once

#include "filters/SystemFilter.h"

// Any thread, as `ProjectFilterBase`.
class CUTROOM_API DocumentFilter final : public cutroom::SystemFilter {
public:
    DocumentFilter();
    ~DocumentFilter() override;

    // The cookie of its bin, always the same.
    static Cookie getBinID() noexcept;
    // The project has no documents; fills nothing.
    bool isEmpty() const override;

protected:
    eVisibility getDefaultVisibility() const override;
};
