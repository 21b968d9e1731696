// `SubClipsFilter`: the project filter that shows the sub-clips made from the edits that are being
// worked on, a bin for each edit.
#pragma once

#include "filters/FieldIndex.h"
#include "filters/SystemFilter.h"

#include <memory>

// Any thread, as `ProjectFilterBase`; the edits are set by the filters' manager: those of the
// record and the source machine.
class CUTROOM_API SubClipsFilter final : public cutroom::SystemFilter {
public:
    SubClipsFilter();
    ~SubClipsFilter() override;

    eResultsType getResultsType() const override;
    void assetsChanged(const CookieVec& assets) override;
    // True when that changed the bins. User-interface thread.
    bool setEdits(const CookieVec& edits);

private:
    // By the edit that a copy was made from.
    const std::shared_ptr<cutroom::FieldIndex> parents_;
    CookieVec edits_; // user-interface thread
};
