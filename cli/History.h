// What an undo or a redo is about to take.
#pragma once

#include "platform/store/EditManager.h"

#include <optional>

namespace cutroom::cli {

// Which way a step goes: an undo goes back, a redo forth.
inline constexpr bool kBack = true;
inline constexpr bool kForth = false;

// The step that the next undo (`back`), or the next redo, takes; nothing when there is none.
std::optional<EditManager::HistoryStep> nextStep(const EditPtr& edit, bool back);

} // namespace cutroom::cli
