// What the project database keeps of an edit. Internal to the store.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/project/ProjDbRecord.h"
#include "platform/store/EditState.h"

namespace cutroom {

projdb::Record recordOf(const Cookie& cookie, const EditState& state);
// Puts a record of every edit found in the open project's folder; files that cannot be read are
// logged and passed over.
Status rebuildRecords();

} // namespace cutroom
