// A browser of bins: it lists all bins of a project and draws itself anew when one of them changes.
//
// Bins change on any thread, and their listeners run there, under the locks of the change. So a
// listener does as little as it can: it notes that something changed and posts the drawing to the
// user-interface thread, once for however many changes.
#include "bins/BinManager.h"
#include "bins/ContainerNotice.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/EditManager.h"

#include <atomic>
#include <cstdio>
#include <set>
#include <string>
#include <thread>

namespace {

class BinBrowser {
public:
    BinBrowser()
        : changes_(BinManager::instance().registerNotification(
              makeCallback(this, &BinBrowser::noteChange),
              BinManager::instance().changeMsgType())) {}

    // The summaries come from the project's cache: no bin is opened for them.
    void draw() {
        drawn_ = true;
        std::map<Cookie, BinManager::BinSummary> bins;
        BinManager::instance().getAllBins(bins);
        std::multiset<std::string> lines; // the summaries stand in the order of the cookies
        for (const auto& [cookie, bin] : bins)
            lines.insert(cutroom::toUtf8(bin.name) + ", " + std::to_string(bin.logCount));
        std::printf("%zu bins\n", lines.size());
        for (const std::string& line : lines)
            std::printf("  %s\n", line.c_str());
    }

private:
    void noteChange(const NotifyMsg& message) {
        const auto* notice = message.getObjectAs<ContainerNotice>();
        const bool redraws = notice && notice->what() != ContainerNotice::What::saved;
        if (redraws && drawn_.exchange(false))
            cutroom::postToUiThread([this] { draw(); });
    }

    std::atomic<bool> drawn_{true};
    Kv::Ptr<Guard> changes_; // ends the listening when the browser goes
};

Kv::Ptr<BinData> newBin(const wchar_t* name) {
    Kv::Ptr<BinData> bin = BinManager::instance().newBin();
    bin->setName(name);
    return bin;
}

} // namespace

// bin_browser FOLDER: opens the project there, or makes one.
int main(int count, char** words) {
    cutroom::EmbeddedHost host;
    BinManager::instance(); // made before the project is opened, since other threads will use it
    cutroom::EmbeddedProject project(host);
    const cutroom::Status opened =
        project.open(count > 1 ? words[1] : "browsed", CurrentProject::Access::readWrite,
                     CurrentProject::IfMissing::create);
    if (!opened) {
        std::fprintf(stderr, "%s\n", opened.text().c_str());
        return 1;
    }
    BinBrowser browser;
    browser.draw();

    const Kv::Ptr<BinData> dailies = newBin(L"Dailies");
    newBin(L"Selects");
    host.loop().pump(); // what was posted runs: one drawing for two new bins

    const EditPtr edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 2, 60.0, Kv::FrameRate(25));
    std::thread([&] { dailies->add(edit.getCookie()); }).join();
    host.loop().pump();

    if (const cutroom::Status closed = project.close(); !closed) // saves what is dirty
        std::fprintf(stderr, "%s\n", closed.text().c_str());
}
