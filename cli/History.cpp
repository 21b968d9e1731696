#include "cli/History.h"

namespace cutroom::cli {

std::optional<EditManager::HistoryStep> nextStep(const EditPtr& edit, bool back) {
    std::optional<EditManager::HistoryStep> last;
    for (const auto& one : EditManager::instance().getHistory(edit)) {
        if (one.undone)
            return back ? last : one;
        last = one;
    }
    return back ? last : std::nullopt;
}

} // namespace cutroom::cli
