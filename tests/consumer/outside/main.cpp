// Uses what the package gives: values, counted objects, notification, an interface that the program
// implements and the library calls, and casts across the library's boundary.
#include "bins/BinItem.h"
#include "platform/base/Cookie.h"
#include "platform/base/Log.h"
#include "platform/base/Ptr.h"
#include "platform/base/Version.h"
#include "platform/store/EditModule.h"
#include "sync/MulticamSynchroniser.h"
#include "vob/VobClient.h"
#include "vob/notify/ValServer.h"

#include <cstdio>
#include <string>

namespace {

int faults = 0;

void expect(bool condition, const char* what) {
    if (!condition) {
        std::printf("consumer: %s\n", what);
        ++faults;
    }
}

class RecordingSink : public cutroom::iLogSink {
public:
    void write(std::string_view message) override { heard += message; }
    std::string heard;
};

class Shot : public iObject {
public:
    explicit Shot(bool& alive) : alive_(alive) { alive_ = true; }
    ~Shot() override { alive_ = false; }

private:
    bool& alive_;
};

void useValues() {
    const std::string expected = std::to_string(cutroom::kVersionMajor) + "." +
                                 std::to_string(cutroom::kVersionMinor) + "." +
                                 std::to_string(cutroom::kVersionPatch);
    expect(cutroom::version() == expected, "the library is of another version than its headers");
    const Cookie cookie('E', 42);
    expect(Cookie::fromString(cookie.asString()) == cookie, "a cookie's text lost something");
    expect(!Cookie::fromString("../etc/passwd"), "a path passed for a cookie");
}

void useCountedObjects() {
    bool alive = false;
    {
        const Kv::Ptr<iObject> object = Kv::makePtr<Shot>(alive);
        expect(object->refCount() == 1, "a new object has one share");
        const Kv::InternalRefCount* counted = object.get();
        expect(dynamic_cast<const iVirtual*>(counted) != nullptr, "no way to a sibling base");
        expect(Kv::dynamicCast<Shot>(object)->refCount() == 2, "no way down to an own class");
    }
    expect(!alive, "the last share did not destroy the object");
}

void useInterfaces() {
    RecordingSink sink;
    cutroom::iLogSink* before = cutroom::installLogSink(&sink);
    LogBoth("%d cuts", 3);
    cutroom::installLogSink(before);
    expect(sink.heard == "3 cuts", "the log did not reach the installed sink");
}

void useNotification() {
    double heard = 0;
    ValServer<double> server(1.0);
    Kv::Ptr<Guard> guard = server.registerNotification(
        makeCallback<NotifierEvent<double>>(
            [&heard](const NotifierEvent<double>& event) { heard = event.getValue(); }),
        ValServerBase::valChangedMsgType);
    server = 2.5;
    expect(heard == 2.5, "a change was not told");
    guard.reset();
    server = 4.0;
    expect(heard == 2.5, "a dropped guard still listens");

    NotifierBase* base = &server; // its type information lies in the library
    expect(dynamic_cast<ValServer<double>*>(base) == &server, "no way down to the server");
    expect(dynamic_cast<ValServerBase*>(base) != nullptr, "no way across to its other base");
    expect(dynamic_cast<ValServer<bool>*>(base) == nullptr, "a server of another type passed");
}

class Other : public VobClient {};

// A client of this program's own is hidden here; the library hands it out by its bases.
void castClients() {
    class Viewer : public VobClient {
    } viewer;
    iCookieContainer* container = &viewer;
    expect(dynamic_cast<Viewer*>(container) == &viewer, "no way down to an own client");
    expect(dynamic_cast<VobClient*>(container) == &viewer, "no way down to the library's class");
    expect(dynamic_cast<iEditContainer*>(container) != nullptr, "no way to a sibling interface");
    expect(dynamic_cast<Other*>(container) == nullptr, "a client of another class passed");
    expect(viewer.getContainerID() == Cookie(), "a viewer is a container without cookie");
}

// A synchroniser of this program's own, which watches whether it survives.
class Pair : public VobSynchroniserBase {
public:
    Pair() : VobSynchroniserBase(true) {}
    bool isAlive() { return cutroom::Lifeline::Watch(life()).alive(); }

private:
    iVobListener* makeListener(const Kv::Ptr<Vob>&) override {
        return new MultiVobClientInternal(*this);
    }
};

// Parts of values and bases that are not inline.
void useTheirOtherParts() {
    expect(EditModule() == EditModule(), "two modules without edit differ");
    expect(ChannelEvent() == ChannelEvent(), "two fresh points differ");
    expect(BinItem().getVobId().empty(), "a fresh item names a viewed edit");
    expect(cutroom::ClipReference().clipTimeAt(5) == 5, "a clip at speed 1 runs otherwise");
    expect(Pair().isAlive(), "a synchroniser does not survive a look");
}

} // namespace

int main() {
    useValues();
    useCountedObjects();
    useNotification();
    useInterfaces();
    castClients();
    useTheirOtherParts();
    std::printf("consumer: cutroom %s, %d faults\n", cutroom::version(), faults);
    return faults == 0 ? 0 : 1;
}
