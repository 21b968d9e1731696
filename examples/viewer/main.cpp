// The smallest client: it shows an edit by printing what it is told, in the order of the telling.
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/VobManager.h"

#include <cstdio>

namespace {

// A client has a priority (those above it are told first) and lives as long as its maker wants; its
// destructor detaches it.
class Viewer : public VobClient {
public:
    explicit Viewer(Vob* vob) : VobClient(vob, kClientPriorityViewer, kClientUnmanaged) {}

    void handleModifications(const EditModifications&, const VobModification& change) override {
        if (change.includes(kVobTime))
            std::printf("at %.2f s\n", change.getTime());
        if (change.includes(kVobMarks))
            std::printf("marks or cues changed, %zu cues\n",
                        getEdit()->getCues().getNumCuePoints());
    }
};

} // namespace

int main() {
    const cutroom::EmbeddedHost host; // a loop, a clock, texts: what the library asks of a program

    // Without a project edits live in memory. This one has a picture track and two of sound.
    const Cookie edit = EditManager::instance()
                            .makeNewEdit(makeNewEditCookie(), 1, 2, 60.0, Kv::FrameRate(25))
                            .getCookie();
    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(edit);
    const Viewer viewer(vob.get());

    vob->setCurrentTime(12.5);
    vob->addCue(Cue(3.0, L"Opening"));

    vob->beginModifications(); // a batch is told once, at its end
    vob->setCurrentTime(20.0);
    vob->addCue(Cue(20.0, L"Interview"));
    vob->endModifications();
}
