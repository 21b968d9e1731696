#include "sync/VobSynchroniserBase.h"

#include "platform/host/TransitStatus.h"
#include "platform/messaging/UiThread.h"
#include "sync/MultiVobClientInternal.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace {

// At this speed and above, what plays moves too fast for others to be moved along.
constexpr double kFastSpeed = 5.0;

bool handingOn = false; // a move is being handed on; user-interface thread

// Sets the flag for its own lifetime.
class HandingOn {
public:
    HandingOn() : before_(std::exchange(handingOn, true)) {}
    ~HandingOn() { handingOn = before_; }
    HandingOn(const HandingOn&) = delete;
    HandingOn& operator=(const HandingOn&) = delete;

private:
    const bool before_;
};

double exactTimeOf(const Vob& vob) { return vob.getCurrentTime(EditModule::kAccuracyExact); }

} // namespace

// A walk over the clients that stays safe whatever is done to them, or to the synchroniser,
// meanwhile.
class VobSynchroniserBase::Walk {
public:
    explicit Walk(VobSynchroniserBase& whole)
        : alive_(whole.life_), whole_(whole), next_(whole.clients_.begin()),
          last_(whole.lastSerial_), linkings_(whole.linkings_), removals_(whole.removals_) {}

    // The next of the clients that were there at the start; null at the end, when the set was
    // linked anew, and when the synchroniser has gone.
    const Client* next() {
        if (!alive_.alive() || whole_.linkings_ != linkings_)
            return nullptr;
        if (whole_.removals_ != removals_) { // the next one may have gone
            removals_ = whole_.removals_;
            next_ = std::find_if(whole_.clients_.begin(), whole_.clients_.end(),
                                 [&](const Client& client) { return client.serial > seen_; });
        }
        if (next_ == whole_.clients_.end() || next_->serial > last_)
            return nullptr;
        seen_ = next_->serial;
        return &*next_++;
    }

private:
    const cutroom::Lifeline::Watch alive_;
    VobSynchroniserBase& whole_;
    Clients::iterator next_;
    std::uint64_t seen_ = 0;
    const std::uint64_t last_;
    const std::uint64_t linkings_;
    std::uint64_t removals_;
};

VobSynchroniserBase::VobSynchroniserBase(bool syncEnabled) : syncEnabled_(syncEnabled) {}

VobSynchroniserBase::~VobSynchroniserBase() { deleteClients(); }

// --- the clients ---------------------------------------------------------------------------------

VobSynchroniserBase::Clients::iterator VobSynchroniserBase::find(const iVobListener* listener) {
    return std::find_if(clients_.begin(), clients_.end(),
                        [&](const Client& client) { return client.listener == listener; });
}

const VobSynchroniserBase::Client* VobSynchroniserBase::findClient(const Vob* vob) const {
    const auto found = std::find_if(clients_.begin(), clients_.end(), [&](const Client& client) {
        return vob && client.listener->getVob() == vob;
    });
    return found == clients_.end() ? nullptr : &*found;
}

// When the first client, the reference, goes, the next becomes the reference. All offsets stay, so
// that a move that is being handed on keeps its distances.
void VobSynchroniserBase::take(Clients::iterator client) {
    ++removals_;
    clients_.erase(client);
}

void VobSynchroniserBase::listenerGoing(iVobListener& listener) noexcept {
    if (const auto client = find(&listener); client != clients_.end())
        take(client);
}

double VobSynchroniserBase::offsetOf(const Vob* vob) const {
    const Client* const client = findClient(vob);
    return client ? client->offset - clients_.front().offset : 0.0;
}

double VobSynchroniserBase::calculateOffsetFor(const Vob* vob) const {
    const Vob* const reference = clients_.empty() ? nullptr : clients_.front().listener->getVob();
    if (!vob || !reference)
        return 0.0;
    const double time = exactTimeOf(*vob), referenceTime = exactTimeOf(*reference);
    return time == kNoTime || referenceTime == kNoTime ? 0.0 : time - referenceTime;
}

void VobSynchroniserBase::createClient(const Kv::Ptr<Vob>& vob) {
    assert(cutroom::isUiThread());
    if (!vob)
        return;
    const Kv::Ptr<Vob> linked = vob;
    const double offset =
        clients_.empty() ? 0.0 : clients_.front().offset + calculateOffsetFor(linked.get());
    std::unique_ptr<iVobListener> made(makeListener(linked));
    clients_.push_back({made.get(), offset, ++lastSerial_});
    iVobListener* const listener = made.release();
    listener->setOwner(this);
    // A client that is told of the new one may unlink it, or all.
    if (!listener->getVob())
        VobManager::instance().open(listener, linked);
}

// Each client is looked up anew: one that is told of another's going may unlink more of them.
template <class Goes> bool VobSynchroniserBase::unlink(const Goes& goes) {
    assert(cutroom::isUiThread());
    std::vector<std::uint64_t> going;
    for (const Client& client : clients_)
        if (goes(client.listener->getVob()))
            going.push_back(client.serial);
    const cutroom::Lifeline::Watch watch(life_);
    bool hadSuspended = false;
    for (const std::uint64_t serial : going) {
        const auto client = std::find_if(clients_.begin(), clients_.end(),
                                         [&](const Client& c) { return c.serial == serial; });
        if (client == clients_.end())
            continue;
        iVobListener* const listener = client->listener;
        const auto* const suspender = dynamic_cast<const MultiVobClientInternal*>(listener);
        hadSuspended |= suspender && suspender->hasSuspendedSync();
        listener->setOwner(nullptr);
        take(client);
        VobManager::instance().close(listener, true);
        if (!watch.alive())
            return false;
    }
    return hadSuspended;
}

void VobSynchroniserBase::deleteClients() {
    const bool hadSuspended = unlink([](const Vob*) { return true; });
    if (hadSuspended)
        syncEnabled_ = true;
}

bool VobSynchroniserBase::keepOnly(const LightweightVector<Kv::Ptr<Vob>>& vobs) {
    return unlink([&](const Vob* vob) {
        return !vob || std::find(vobs.begin(), vobs.end(), vob) == vobs.end();
    });
}

void VobSynchroniserBase::takeOffsets() {
    ++linkings_;
    for (Client& client : clients_)
        client.offset = calculateOffsetFor(client.listener->getVob());
}

bool VobSynchroniserBase::setOffset(const Vob* vob, double seconds) {
    const Client* const client = findClient(vob);
    if (!client || client == &clients_.front() || !cutroom::isStorableTime(seconds))
        return false;
    find(client->listener)->offset = clients_.front().offset + seconds;
    return true;
}

unsigned VobSynchroniserBase::takeOffsetsFromMarks() {
    const auto markOf = [](const Client& client) {
        const Vob* const vob = client.listener->getVob();
        return vob ? vob->getEditModule().getMark(Kv::MarkTypes::In) : kNoTime;
    };
    const double reference = clients_.empty() ? kNoTime : markOf(clients_.front());
    if (reference == kNoTime)
        return 0;
    unsigned taken = 0;
    for (auto client = std::next(clients_.begin()); client != clients_.end(); ++client) {
        const double mark = markOf(*client);
        if (mark == kNoTime)
            continue;
        client->offset = clients_.front().offset + mark - reference;
        ++taken;
    }
    return taken;
}

// --- what is linked ------------------------------------------------------------------------------

LightweightVector<Kv::Ptr<Vob>> VobSynchroniserBase::collectVobs(std::uint16_t limit) const {
    LightweightVector<Kv::Ptr<Vob>> vobs;
    for (const Client& client : clients_) {
        if (Vob* const vob = client.listener->getVob())
            vobs.emplace_back(vob);
        if (vobs.size() == limit && limit != 0)
            break;
    }
    return vobs;
}

LightweightVector<Kv::Ptr<Vob>> VobSynchroniserBase::getSynchronisedVobs(unsigned which) {
    return collectVobs((which & kVobsToPlay) != 0 ? getConcurrentPlaybackLimit()
                                                  : std::uint16_t{0});
}

std::uint16_t VobSynchroniserBase::getConcurrentPlaybackLimit() const { return 0; }

void VobSynchroniserBase::setSyncEnabled(bool on) { syncEnabled_ = on; }

void VobSynchroniserBase::handleTimeChange() {}

bool VobSynchroniserBase::updateAllowed(const Vob* vob) {
    if (!vob)
        return false;
    return !vob->isPlaying() || std::fabs(TransitStatus::manager().getCurrentSpeed()) < kFastSpeed;
}

// --- handing moves on ----------------------------------------------------------------------------

void VobSynchroniserBase::handleModifications(iVobListener* listener, const EditModifications&,
                                              const VobModification& change) {
    if (handingOn || !change.includes(kVobTime) || !syncEnabled_ || !listener ||
        !updateAllowed(listener->getVob()))
        return;
    assert(cutroom::isUiThread());
    const HandingOn raised;
    const auto source = find(listener);
    if (source == clients_.end())
        return;
    const cutroom::Lifeline::Watch watch(life_);
    informTimeChanged(*source, change.getTime());
    if (watch.alive())
        handleTimeChange();
}

void VobSynchroniserBase::handOn(const Client& source, double seconds) {
    const HandingOn raised;
    informTimeChanged(source, seconds);
}

void VobSynchroniserBase::informTimeChanged(const Client& source, double seconds) {
    const Vob* const moved = source.listener->getVob();
    if (!moved || !cutroom::isStorableTime(seconds))
        return;
    const unsigned flags = moved->getTimeChangeFlags() | Vob::kTimeBySynchroniser;
    const iVobListener* const listener = source.listener;
    const double zero = seconds - source.offset;
    Walk walk(*this);
    while (const Client* const client = walk.next())
        if (Vob* const vob = client->listener->getVob(); vob && client->listener != listener)
            vob->setCurrentTime(zero + client->offset, flags);
}
