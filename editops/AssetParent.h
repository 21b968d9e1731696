// What a copy was made from.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/store/EditPtr.h"

// Notes `parent` in the configuration of `copy` (key "parent"). An edit (type 2) also joins the
// asset association groups of its parent, which are saved; when there is none, a new group holds
// the two. Nothing without an edit or for a parent that is no edit or log. Not to be called under
// an edit's lock; any thread otherwise.
CUTROOM_API void setAssetParent(EditModifier& copy, const Cookie& parent);
