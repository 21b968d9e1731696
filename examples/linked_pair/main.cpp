// Two edits viewed side by side and linked: whichever is moved, the other one follows at the
// distance that they had when they were linked.
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/EditManager.h"
#include "sync/VobSynchroniser.h"
#include "vob/VobManager.h"

#include <cstdio>

namespace {

// A viewer that prints where its edit stands.
class Viewer : public VobClient {
public:
    Viewer(const Kv::Ptr<Vob>& vob, const char* name)
        : VobClient(vob.get(), kClientPriorityViewer, kClientUnmanaged), name_(name) {}

    void handleModifications(const EditModifications&, const VobModification& change) override {
        if (change.includes(kVobTime))
            std::printf("  %s at %.2f s\n", name_, change.getTime());
    }

private:
    const char* name_;
};

Kv::Ptr<Vob> viewNewEdit(double seconds) {
    const EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 2, seconds, Kv::FrameRate(25));
    return VobManager::instance().createVob(edit.getCookie());
}

} // namespace

int main() {
    const cutroom::EmbeddedHost host;
    const Kv::Ptr<Vob> camera = viewNewEdit(120.0);
    const Kv::Ptr<Vob> sound = viewNewEdit(180.0);
    const Viewer cameraViewer(camera, "camera");
    const Viewer soundViewer(sound, "sound");

    std::puts("apart, to where both show the same moment");
    camera->setCurrentTime(10.0);
    sound->setCurrentTime(25.0);

    // The link lasts as long as its synchroniser.
    VobSynchroniser link;
    link.setItemsToSync({camera, sound});
    std::puts("linked");
    camera->setCurrentTime(12.0);
    sound->setCurrentTime(60.0);

    std::puts("moved one by one again");
    link.setSyncEnabled(false);
    camera->setCurrentTime(0.0);
}
