// `iVobSynchroniser`: links viewed edits so that their current times follow one another.
//
// User-interface thread only (asserted), as are the Vobs it links.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "vob/Vob.h"
#include "vob/VobClient.h"

class CUTROOM_API iVobSynchroniser : public virtual iVirtual {
public:
    // Bits of `getSynchronisedVobs`.
    enum eWhichVobs : unsigned {
        kVobsLinked = 0,
        kVobsToPlay = 1, // those to be played, bounded by the concurrent limit
    };
    // Bits of `getCaps`.
    enum eCaps : unsigned { kCapsNone = 0, kCapsMulticam = 1 };

    // The client by which a synchroniser hears of one Vob. Owned by the synchroniser, which is told
    // when somebody else destroys it (the manager does at the project's exit).
    class CUTROOM_API iVobListener : public VobClient {
    public:
        class CUTROOM_API iOwner {
        public:
            virtual ~iOwner();
            // The listener is being destroyed; only its address and base are there still.
            virtual void listenerGoing(iVobListener& listener) noexcept = 0;
        };

        iVobListener();
        ~iVobListener() override;

        // Who is told when the listener goes; null: nobody.
        void setOwner(iOwner* owner) noexcept { owner_ = owner; }

    protected:
        bool hasOwner() const noexcept { return owner_ != nullptr; }
        // Tells the owner that the listener goes, which its destructor then does not do again; for
        // destructors of heirs that call others.
        void leaveOwner() noexcept;

    private:
        iOwner* owner_ = nullptr;
    };

    ~iVobSynchroniser() override;

    // In the order of linking. `which`: eWhichVobs bits.
    virtual LightweightVector<Kv::Ptr<Vob>> getSynchronisedVobs(unsigned which) = 0;
    // While it is off, linked Vobs are moved one by one.
    virtual void setSyncEnabled(bool on) = 0;
    virtual bool getSyncEnabled() const = 0;
    // eCaps bits.
    virtual unsigned getCaps() const = 0;
    // A listener's Vob was changed. Called by the listener, under the Vob's client lock. It may
    // link, unlink, and destroy the synchroniser.
    virtual void handleModifications(iVobListener* listener, const EditModifications& editChanges,
                                     const VobModification& change) = 0;
};
