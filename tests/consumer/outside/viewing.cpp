// A program's own client of a viewed edit, on the platform that the package ships.
#include "consumer.h"

#include "platform/embedded/EmbeddedHost.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/Vob.h"
#include "vob/VobClient.h"
#include "vob/VobManager.h"

#include <filesystem>
#include <vector>

#include <unistd.h>

namespace {

// Hidden here, as this program's own: casts to it need nothing of the library.
class Viewer : public VobClient {
public:
    explicit Viewer(Vob* vob) : VobClient(vob, kClientPriorityViewer, kClientUnmanaged) {}
    void handleModifications(const EditModifications&, const VobModification& change) override {
        if (change.getTime() != kNoTime)
            times.push_back(change.getTime());
    }
    std::vector<double> times;
};

class Other : public VobClient {};

void castAcross(Viewer& viewer) {
    iCookieContainer* container = &viewer;
    expect(dynamic_cast<Viewer*>(container) == &viewer, "no way down to an own client");
    expect(dynamic_cast<VobClient*>(container) == &viewer, "no way down to the library's class");
    expect(dynamic_cast<iEditContainer*>(container) != nullptr, "no way to a sibling interface");
    expect(dynamic_cast<Other*>(container) == nullptr, "a client of another class passed");
}

void view() {
    const EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 2, 60.0, Kv::FrameRate(25));
    expect(bool(edit), "no edit was made");
    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(edit->getCookie());
    Viewer viewer(vob.get());
    castAcross(viewer);
    vob->setCurrentTime(12.5);
    expect(viewer.times == std::vector<double>{12.5}, "the viewer was not told of a time");
    expect(viewer.getContainerID() == Cookie(), "a viewer is a container without cookie");

    // The library hands clients out by their base; their own classes are found again.
    expect(vob->getNumClients() == 1, "there is another client");
    VobClient* known = vob->getClientPtr(0);
    expect(dynamic_cast<Viewer*>(known) == &viewer, "the client was not handed out as itself");
}

} // namespace

void viewAnEdit() {
    const std::string folder =
        std::filesystem::temp_directory_path() / ("cutroom-consumer-" + std::to_string(::getpid()));
    {
        cutroom::EmbeddedHost host(cutroom::EmbeddedHost::repeatable());
        cutroom::EmbeddedProject project(host);
        expect(
            project
                .open(folder, CurrentProject::Access::readWrite, CurrentProject::IfMissing::create)
                .ok(),
            "no project was made");
        view();
        expect(project.close().ok(), "the project did not close");
    }
    std::filesystem::remove_all(folder);
}
