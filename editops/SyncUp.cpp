#include "editops/SyncUp.h"

#include "editops/CopyLog.h"
#include "editops/SyncUpBuilder.h"

using cutroom::buildSynced;
using cutroom::SyncContents;

namespace {

// The difference of two times; kNoTime when either is none. (Two of them would give 0.)
double difference(double t1, double t2) {
    return t1 == kNoTime || t2 == kNoTime ? kNoTime : t2 - t1;
}

} // namespace

Cookie synchup_cookies_by_label(Cookie first, EditChanType firstType, Cookie second,
                                EditChanType secondType, synchup_params params) {
    const double offset = synchup_get_CELtime_offset(first, firstType, second, secondType, params);
    if (offset == kNoTime)
        return {};
    return buildSynced(first, second, offset, params, SyncContents::described);
}

Cookie synchup_cookies_by_time(Cookie first, Cookie second, double t1, double t2,
                               synchup_params params) {
    return buildSynced(first, second, difference(t1, t2), params, SyncContents::described);
}

Cookie synchup_general_cookies_by_label(Cookie first, EditChanType firstType, Cookie second,
                                        EditChanType secondType, synchup_params params) {
    const double offset = synchup_get_CELtime_offset(first, firstType, second, secondType, params);
    if (offset == kNoTime)
        return {};
    return synchup_general_build_edit(first, second, offset, params, true);
}

Cookie synchup_general_cookies_by_time(Cookie first, Cookie second, double t1, double t2,
                                       synchup_params params) {
    params.part = false;
    params.soundOffset = 0;
    params.dateCheckOff = true;
    return synchup_general_build_edit(first, second, difference(t1, t2), params, true);
}

Cookie synchup_general_build_edit(Cookie first, Cookie second, double offset, synchup_params params,
                                  bool allChannels) {
    return buildSynced(first, second, offset, params,
                       allChannels ? SyncContents::allChannels : SyncContents::pictureAndSound);
}
