// `EditConstituentsFilter`: the project filter that shows what an edit is cut from: each log or
// edit that lies on one of its channels.
#pragma once

#include "filters/SystemFilter.h"
#include "platform/store/EditManager.h"

// Any thread, as `ProjectFilterBase`; the edit is set by the filters' manager: that of the record
// machine, else that of the source machine.
class CUTROOM_API EditConstituentsFilter final : public cutroom::SystemFilter {
public:
    EditConstituentsFilter();
    ~EditConstituentsFilter() override;

    // True when it is another edit than before; the invalid cookie: no edit, no bin.
    // User-interface thread, as the next.
    bool setEdit(const Cookie& edit);
    // Follows what was cut in and out.
    void editsChanged(const std::vector<EditManager::Modification>& changes);

private:
    Cookie edit_; // user-interface thread
};
