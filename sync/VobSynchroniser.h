// `VobSynchroniser`: locks any set of viewed edits together, for instance several source viewers.
// `VobSynchroniserLink`: its client on each of them.
#pragma once

#include "sync/MultiVobClientInternal.h"
#include "sync/VobSynchroniserBase.h"

// A Vob is linked exactly when it has a client of this name.
class CUTROOM_API VobSynchroniserLink final : public MultiVobClientInternal {
public:
    static constexpr char kName[] = "VobSynchroniserLink";

    using MultiVobClientInternal::MultiVobClientInternal;
    ~VobSynchroniserLink() override;
    const char* idstring() const override { return kName; }
};

class CUTROOM_API VobSynchroniser : public VobSynchroniserBase {
public:
    explicit VobSynchroniser(bool syncEnabled = true) : VobSynchroniserBase(syncEnabled) {}
    ~VobSynchroniser() override;

    // Links exactly these. Links to others go; those that stay keep their place in the order, new
    // ones follow in the order given; then every offset is taken from where the Vobs stand. A Vob
    // that another synchroniser links is left to that one. When a link goes that had suspended
    // synchronisation, it is switched on again.
    void setItemsToSync(const LightweightVector<Kv::Ptr<Vob>>& vobs);
    // Some synchroniser links the Vob. False for null.
    static bool isSynced(const Vob* vob);

protected:
    iVobListener* makeListener(const Kv::Ptr<Vob>& vob) override;
};
