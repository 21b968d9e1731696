// `ImageFilter`: the project filter that shows the still images: logs whose media are single
// pictures, and documents that stand for one.
#pragma once

#include "filters/SystemFilter.h"

// Any thread, as `ProjectFilterBase`.
class CUTROOM_API ImageFilter final : public cutroom::SystemFilter {
public:
    ImageFilter();
    ~ImageFilter() override;

protected:
    eVisibility getDefaultVisibility() const override;
};
