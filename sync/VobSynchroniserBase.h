// `VobSynchroniserBase`: the linked Vobs of a synchroniser, their offsets, and how the move of one
// is handed on to the others.
//
// One flag of the process says that a move is being handed on: moves that this causes are handed on
// by no synchroniser, not even another one that links one of the Vobs too.
//
//   A at 10   B at 25   linked: offsets 0 and 15      A moves to 12: B moves to 27
//
// Clients that are told of a move may link, unlink, close Vobs and destroy the synchroniser. A set
// that is linked anew meanwhile ends the handing on: its offsets are those of that moment.
#pragma once

#include "sync/Lifeline.h"
#include "sync/iVobSynchroniser.h"

#include <cstdint>
#include <list>

class CUTROOM_API VobSynchroniserBase : public iVobSynchroniser,
                                        private iVobSynchroniser::iVobListener::iOwner {
public:
    // One linked Vob. The first of the list is the reference.
    struct Client {
        iVobListener* listener; // owned by the synchroniser; never null
        double offset;          // seconds; what counts is how the offsets of two differ
        std::uint64_t serial;   // rises with every client linked
    };
    using Clients = std::list<Client>;

    explicit VobSynchroniserBase(bool syncEnabled);
    VobSynchroniserBase(const VobSynchroniserBase&) = delete;
    VobSynchroniserBase& operator=(const VobSynchroniserBase&) = delete;
    // Unlinks all. A Vob that no other unmanaged client shows closes then, as with any client.
    ~VobSynchroniserBase() override;

    LightweightVector<Kv::Ptr<Vob>> getSynchronisedVobs(unsigned which) override;
    void setSyncEnabled(bool on) override;
    bool getSyncEnabled() const override { return syncEnabled_; }
    unsigned getCaps() const override { return kCapsNone; }
    // Hands a change of time on, when synchronisation is on, no other move is being handed on, and
    // `updateAllowed`. A time that is none is not handed on.
    void handleModifications(iVobListener* listener, const EditModifications& editChanges,
                             const VobModification& change) override;

    // In the order of linking.
    const Clients& clients() const noexcept { return clients_; }
    // The client that links `vob`; null when none does.
    const Client* findClient(const Vob* vob) const;

    // How much later than the reference a linked Vob belongs, in seconds; 0 for one that is not
    // linked.
    double offsetOf(const Vob* vob) const;
    // How much later `vob` stands than the reference, in seconds. 0 for null, without clients, and
    // when one of both has no time.
    double calculateOffsetFor(const Vob* vob) const;
    // Links `vob`, with the offset that it has now, whether it is linked already or not. Nothing
    // for null.
    void createClient(const Kv::Ptr<Vob>& vob);
    // Unlinks all. A suspension by one of them ends; nobody is told.
    void deleteClients();
    // Puts every other linked Vob where it belongs when the Vob of `source` stands at `seconds`,
    // with the time change flags of that Vob and kTimeBySynchroniser raised meanwhile. What this
    // causes is handed on again unless a move is being handed on.
    void informTimeChanged(const Client& source, double seconds);
    // False for null and for a Vob that is playing while the transport runs at speed 5 or more, in
    // either direction.
    static bool updateAllowed(const Vob* vob);

    // Sets how much later than the reference a linked Vob shall stand; nothing moves before the
    // next change of time. False for the reference, for a Vob that is not linked, and for no time.
    bool setOffset(const Vob* vob, double seconds);
    // Takes the in marks of the linked Vobs as one moment. Vobs without mark keep their offsets.
    // Gives the number that were set; 0 when the reference has no mark.
    unsigned takeOffsetsFromMarks();

protected:
    // A new listener for `vob`; it is attached by the caller unless it is already.
    virtual iVobListener* makeListener(const Kv::Ptr<Vob>& vob) = 0;
    // The most Vobs to be played at once; 0: no limit.
    virtual std::uint16_t getConcurrentPlaybackLimit() const;
    // Runs after each change of time that was handed on. Nothing in the base.
    virtual void handleTimeChange();

    // The first `limit` linked Vobs; 0: all.
    LightweightVector<Kv::Ptr<Vob>> collectVobs(std::uint16_t limit) const;
    // `informTimeChanged`, of which nothing is handed on again.
    void handOn(const Client& source, double seconds);
    // Unlinks those whose Vob is not among `vobs`; tells whether one of them had suspended
    // synchronisation.
    bool keepOnly(const LightweightVector<Kv::Ptr<Vob>>& vobs);
    // Takes every offset from where the Vobs stand.
    void takeOffsets();
    // For operations during which the synchroniser may be destroyed.
    cutroom::Lifeline& life() noexcept { return life_; }

private:
    class Walk;

    void listenerGoing(iVobListener& listener) noexcept override;
    Clients::iterator find(const iVobListener* listener);
    void take(Clients::iterator client);
    // Unlinks the clients for whose Vob `goes` is true, of those linked by now.
    template <class Goes> bool unlink(const Goes& goes);

    Clients clients_;
    bool syncEnabled_;
    std::uint64_t lastSerial_ = 0;
    std::uint64_t linkings_ = 0; // changes with every set linked anew
    std::uint64_t removals_ = 0; // changes with every client that goes
    cutroom::Lifeline life_;
};
