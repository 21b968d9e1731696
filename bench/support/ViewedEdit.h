// An edit in view, with clients that do next to nothing: what the benches of Vobs start from.
#pragma once

#include "platform/embedded/EmbeddedProject.h"
#include "tests/support/TempFolder.h"
#include "vob/VobManager.h"

#include <memory>
#include <vector>

namespace cutroom::bench {

// Sums the kinds that it is told.
class SummingClient : public VobClient {
public:
    using VobClient::VobClient;
    void handleModifications(const EditModifications&, const VobModification& change) override {
        sum += change.getType();
    }
    unsigned sum = 0;
};

// The `i`th of clients spread over the five priorities.
inline eClientPriority spreadPriority(std::size_t i) { return static_cast<eClientPriority>(i % 5); }

// A host, a project in a folder of its own, and a Vob on a new edit with `clients` clients. Timed
// tasks are switched off.
class ViewedEdit {
public:
    explicit ViewedEdit(std::size_t clients);
    ViewedEdit(const ViewedEdit&) = delete;
    ViewedEdit& operator=(const ViewedEdit&) = delete;

    Vob& vob() noexcept { return *vob_; }
    const Kv::Ptr<Vob>& vobPtr() const noexcept { return vob_; }

private:
    test::TempFolder folder_;
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
    Kv::Ptr<Vob> vob_;
    std::vector<std::unique_ptr<SummingClient>> clients_;
};

} // namespace cutroom::bench
