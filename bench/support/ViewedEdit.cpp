#include "bench/support/ViewedEdit.h"

#include "platform/prefs/Configuration.h"

#include <cstdio>
#include <cstdlib>

namespace cutroom::bench {

ViewedEdit::ViewedEdit(std::size_t clients) {
    Configuration::instance().set("timed_tasks", "0");
    const Status opened = project_.open(folder_.path(), CurrentProject::Access::readWrite,
                                        CurrentProject::IfMissing::create);
    vob_ = VobManager::instance().createVob(Cookie());
    if (!opened.ok() || !vob_->hasEdit()) {
        std::fprintf(stderr, "bench: no edit to view\n");
        std::exit(1);
    }
    for (std::size_t i = 0; i < clients; ++i)
        clients_.push_back(
            std::make_unique<SummingClient>(vob_.get(), spreadPriority(i), kClientUnmanaged));
}

} // namespace cutroom::bench
