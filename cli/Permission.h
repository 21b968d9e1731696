// Whether an edit may be changed, as its own flag and its mark in the project's permissions say.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

#include <string>

namespace cutroom::cli {

// Fails with the reason when the edit is read-only, or marked so.
Status mayChange(const EditPtr& edit);
// Fails when its mark keeps the present user from it; `name` is what it is called in the reason.
Status marksAllow(const Cookie& edit, const std::string& name);

} // namespace cutroom::cli
