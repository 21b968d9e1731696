#include "sync/VobSynchroniser.h"

VobSynchroniserLink::~VobSynchroniserLink() = default;

VobSynchroniser::~VobSynchroniser() { deleteClients(); }

void VobSynchroniser::setItemsToSync(const LightweightVector<Kv::Ptr<Vob>>& vobs) {
    const LightweightVector<Kv::Ptr<Vob>> wanted = vobs;
    const cutroom::Lifeline::Watch watch(life());
    const bool hadSuspended = keepOnly(wanted);
    for (const Kv::Ptr<Vob>& vob : wanted)
        if (watch.alive() && vob && !isSynced(vob.get()))
            createClient(vob);
    if (!watch.alive())
        return;
    takeOffsets();
    if (hadSuspended && !getSyncEnabled())
        setSyncEnabled(true);
}

bool VobSynchroniser::isSynced(const Vob* vob) {
    return vob && vob->findClient(LightweightString<char>(VobSynchroniserLink::kName)) != nullptr;
}

iVobSynchroniser::iVobListener* VobSynchroniser::makeListener(const Kv::Ptr<Vob>&) {
    return new VobSynchroniserLink(*this);
}
