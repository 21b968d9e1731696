#include "cli/SessionLinks.h"

#include "cli/SessionWords.h"

#include <utility>

namespace cutroom::cli {

VobSynchroniser* SessionLinks::find(const std::string& name) const {
    const auto found = all_.find(name);
    return found == all_.end() ? nullptr : found->second.get();
}

VobSynchroniser& SessionLinks::current() const {
    VobSynchroniser* const synchroniser = find(current_);
    if (!synchroniser)
        refuse(StatusCode::failed, "links", "there are none; `link` and `multicam` make them");
    return *synchroniser;
}

MulticamSynchroniser& SessionLinks::multicam() const {
    auto* const multicam = dynamic_cast<MulticamSynchroniser*>(&current());
    if (!multicam)
        refuse(StatusCode::failed, current_, "not a multicam; `multicam` makes one");
    return *multicam;
}

void SessionLinks::use(const std::string& name) {
    if (!find(name))
        refuse(StatusCode::notFound, name, "no links of this name");
    current_ = name;
}

VobSynchroniser& SessionLinks::add(const std::string& name,
                                   std::unique_ptr<VobSynchroniser> synchroniser) {
    all_.erase(name); // unlinks, so that the new one can link the same viewers
    current_ = name;
    return *(all_[name] = std::move(synchroniser));
}

// Taken out of the table before it is destroyed: clients that are told of its end may ask for
// links.
void SessionLinks::endCurrent() {
    current(); // refuses without one
    const auto going = all_.extract(current_);
    current_ = all_.empty() ? std::string() : all_.begin()->first;
}

void SessionLinks::clear() { std::exchange(all_, {}).clear(); }

} // namespace cutroom::cli
