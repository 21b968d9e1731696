// A program that already has a loop around poll(2), a place for messages, and a language of its
// own. The library lives inside: it posts to this loop, shows messages here, and takes its texts
// from here. What a program leaves out (transport, focus, console, ...) answers harmlessly.
#include "PollLoop.h"

#include "platform/embedded/EmbeddedProject.h"
#include "platform/embedded/EnglishTexts.h"
#include "platform/host/Host.h"
#include "platform/host/UserMessages.h"
#include "platform/store/Cel.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/VobManager.h"

#include <cstdio>
#include <string>
#include <thread>

#include <unistd.h>

namespace {

class Messages : public cutroom::iUserMessages {
public:
    void show(const LightweightString<wchar_t>& text, int) override {
        std::printf("message: %s\n", cutroom::toUtf8(text).c_str());
    }
};

// Some texts in French; the library knows the others in English.
class French : public cutroom::iStringTable {
public:
    std::optional<LightweightString<wchar_t>> find(ResId id) const override {
        if (id == cutroom::kResNoEdit)
            return L"Aucun montage";
        if (id == cutroom::kResSubframeError)
            return L"$NAME$ : coupe hors image \u00E0 $TIMECODE$";
        return english_.find(id);
    }

private:
    cutroom::EnglishTexts english_;
};

class Viewer : public VobClient {
public:
    using VobClient::VobClient;
    void handleModifications(const EditModifications&, const VobModification& change) override {
        if (change.includes(kVobTime))
            std::printf("at %.2f s\n", change.getTime());
        if (change.includes(kVobStills))
            std::printf("told of a change that another thread made\n");
    }
};

void view(PollLoop& loop) {
    const EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 2, 60.0, Kv::FrameRate(25));
    edit->setName(L"Promenade");
    Viewer viewer;
    std::printf("%s\n", cutroom::toUtf8(viewer.getName()).c_str());
    const Kv::Ptr<Vob> vob = VobManager::instance().create(&viewer, edit.getCookie());

    // A change from another thread comes through the loop, as everything that is posted does.
    std::thread([&vob] { vob->addModification(kVobStills); }).join();

    // The program's own descriptor, beside the library's work: times arrive through a pipe.
    int ends[2];
    if (::pipe(ends) != 0)
        return;
    loop.watch(ends[0], [&](const std::string& text) { vob->setCurrentTime(std::stod(text)); });
    const Kv::Ptr<Guard> once = loop.addTimer(0.01, 0, [&] {
        if (::write(ends[1], "12.5", 4) != 4)
            loop.quit();
    });
    const Kv::Ptr<Guard> end = loop.addTimer(0.1, 0, [&] { loop.quit(); });
    loop.run();
    ::close(ends[0]);
    ::close(ends[1]);

    // Only the edit in the record role is changed. A cut off the frames is mended and reported.
    VobManager::instance().setRecordMachine(vob.get(), VobManager::kTellNew);
    const cutroom::Status cut = vob->performEdit([](const EditModifier& change) {
        const IdStamp track = change->getFirstChan(kChanVideo);
        return change->get_edit_cel_p(track)->lift(TimeRange(1, 2.01));
    });
    if (!cut)
        std::printf("%s\n", cut.text().c_str());
}

} // namespace

// own_loop FOLDER: opens the project there, or makes it.
int main(int count, char** words) {
    PollLoop loop;
    Messages messages;
    const French texts;
    cutroom::HostServices services;
    services.loop = &loop;
    services.messages = &messages;
    services.strings = const_cast<French*>(&texts);
    const cutroom::ScopedHost host(services);

    cutroom::EmbeddedProject project(loop); // saves by the timers of this loop
    const cutroom::Status opened =
        project.open(count > 1 ? words[1] : "walks", CurrentProject::Access::readWrite,
                     CurrentProject::IfMissing::create);
    if (!opened) {
        std::printf("%s\n", opened.text().c_str());
        return 1;
    }
    view(loop);
    std::printf("closed: %s\n", project.close().text().c_str());
}
