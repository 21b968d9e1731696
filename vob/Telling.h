// `Telling`: the record of one telling of a Vob's clients: who was told already.
//
// Internal to this folder. While the client list stays as it is, the place in the list says who was
// told. The first change of the list makes every telling under way note the ids of those it has
// told; from then on it goes by them. Tellings inside one another each keep a record of their own,
// and nothing is allocated unless the list changes.
#pragma once

#include "platform/base/IdStamp.h"

#include <cstddef>
#include <memory>
#include <unordered_set>
#include <vector>

class VobClient;

namespace cutroom {

// Writes the exception being caught to the log, so that the failure of one client does not reach
// the others. `where` begins the line. Only inside a catch clause.
[[gnu::cold]] void logFailedClient(const char* where) noexcept;

// One telling of clients, of whatever Vob and whatever about. Lives on the stack of the
// user-interface thread. When 500 are inside one another, some client seems to answer every call
// with another telling. From then on, until the outermost one is over, further tellings reach
// nobody.
class NestedTelling {
public:
    // `where` begins the line in the log.
    explicit NestedTelling(const char* where) noexcept
        : refused_(++depth_ > kDeepest ? cutOff(where) : runaway_) {}
    ~NestedTelling() {
        if (--depth_ == 0)
            runaway_ = false;
    }
    NestedTelling(const NestedTelling&) = delete;
    NestedTelling& operator=(const NestedTelling&) = delete;

    // True when this telling must not reach anybody.
    bool refused() const noexcept { return refused_; }

private:
    static constexpr int kDeepest = 500;
    [[gnu::cold]] static bool cutOff(const char* where) noexcept;

    static inline int depth_ = 0;
    static inline bool runaway_ = false;
    const bool refused_;
};

// Lives on the stack while clients are told, under the Vob's client lock.
class Telling {
public:
    // Becomes the innermost of the tellings in `chain`; the destructor takes it out again.
    Telling(Telling*& chain, std::size_t clientsAtStart) noexcept;
    ~Telling() { chain_ = outer_; }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

    // Notes that the first `count` of the list, as long as it does not change, have been told.
    void setTold(std::size_t count) noexcept { told_ = count; }
    // Once the list has changed: notes that `client` is being told; false when it was already.
    bool begin(const VobClient& client);
    // True when the list changed during this telling, so that places no longer say who was told.
    bool listChanged() const noexcept { return toldIds_ != nullptr; }
    // Inside another telling of the same Vob.
    bool isInner() const noexcept { return outer_ != nullptr; }
    // Counts one telling in a changed list; true when there were so many that it is a runaway.
    bool isRunaway() noexcept { return --allowance_ == 0; }

    // To be called before `clients` changes, for the innermost telling (may be null).
    static void listWillChange(Telling* innermost, const std::vector<VobClient*>& clients);

private:
    Telling*& chain_;
    Telling* const outer_;
    std::size_t told_ = 0; // the number of clients told, the first of the list, until it changes
    std::size_t allowance_;
    std::unique_ptr<std::unordered_set<IdStamp>> toldIds_; // null until it changes
};

} // namespace cutroom
