// The least work of telling listeners: a virtual call for each, under a recursive mutex.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace cutroom::bench {

class PlainListener {
public:
    virtual ~PlainListener() = default;
    virtual void changed(double value) = 0;
};

// A listener that sums what it is told. Its class stays in a source file of its own: a compiler
// that saw it beside the telling would put the sum in place of the call.
std::unique_ptr<PlainListener> makePlainSum();

class PlainTeller {
public:
    void add(PlainListener* listener) { listeners_.push_back(listener); }

    void tell(double value) {
        const std::lock_guard lock(mutex_);
        for (PlainListener* listener : listeners_)
            listener->changed(value);
    }

private:
    std::recursive_mutex mutex_;
    std::vector<PlainListener*> listeners_;
};

} // namespace cutroom::bench
