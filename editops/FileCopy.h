// Copying an edit as a file. Internal to the edit operations.
#pragma once

#include "platform/store/EditPtr.h"

namespace cutroom {

// Saves what is due and copies the edit's file to that of a fresh cookie. Empty, and nothing is
// left, without a project open for writing, and when the edit could not be saved, its file not be
// copied or the copy not be opened.
EditModifier copyFileOfEdit(const EditPtr& source);
// Each picture and sound channel's segment at time 0 takes the strip of `copy` itself that has the
// channel's number within its type, from 1 on. What has no number that a strip can hold keeps its
// material.
void makeStripCookies(EditModifier& copy);

} // namespace cutroom
