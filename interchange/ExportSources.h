// What the clips of an edit play, as the logs of the project say it now.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Cookie.h"
#include "platform/store/Cel.h"

#include <string>
#include <unordered_map>

namespace cutroom {

// Looks up each asset once. Used by one export; opens logs, so no edit's lock may be held.
class ExportSources {
public:
    // Tells whether `played` is an edit, which is written as something nested, and no log.
    bool isEdit(const Cookie& played);
    // Gives a clip that plays `played` its media: the references kept with the segment while they
    // lead where the log says the media lies, else those kept with the log, else what the log says.
    // False when the project does not have the log; then what the segment tells is all.
    bool fill(const Cookie& played, const CelSegment& segment, Item& item);

private:
    struct Asset {
        bool known = false;
        bool isEdit = false;
        MediaReference media; // `raw` from the import of the log
    };
    const Asset& find(const Cookie& played);

    std::unordered_map<Cookie, Asset> assets_;
};

} // namespace cutroom
