// Changes of a Vob that travel to the user-interface thread as events.
#include "platform/base/Strings.h"
#include "platform/messaging/EventQueue.h"
#include "vob/Vob.h"

#include <utility>

namespace {

// Key codes of the events.
constexpr int kPostedEditChanges = 0;
constexpr int kPostedChange = 1;
// Stands for no mark time in the text.
constexpr double kPostedNoMark = -1.0;

// The changes of an edit, on their way.
class PostedEditChanges final : public iObject {
public:
    explicit PostedEditChanges(EditModifications changes) : changes_(std::move(changes)) {}
    const EditModifications& changes() const noexcept { return changes_; }

private:
    const EditModifications changes_;
};

// "time mark track", as posted.
std::string describeForPost(const VobModification& change) {
    const double mark = change.getMarkTime();
    const std::list<IdStamp> tracks = change.getModifiedTracks();
    const IdStamp track = tracks.empty() ? IdStamp() : tracks.front();
    return cutroom::format("%lf %lf %s", change.getTime(), mark == kNoTime ? kPostedNoMark : mark,
                           track.asString().c_str());
}

} // namespace

void Vob::informClientsAsync(const VobModification& change) {
    Event event;
    event.handler = this;
    event.type = Event::kChangeType;
    event.keyCode = kPostedChange;
    event.text = describeForPost(change);
    event.value = change.getType();
    event_send_idempotent(event);
}

void Vob::informClientsAsync(const EditModifications& editChanges) {
    Event event;
    event.handler = this;
    event.type = Event::kChangeType;
    event.keyCode = kPostedEditChanges;
    event.data = Kv::Ptr<iObject>(new PostedEditChanges(editChanges));
    event_send(event);
}

EventHandler::eResult Vob::handleEvent(const Event& event) {
    if (event.handler != this)
        return kNotConsumed;
    if (event.type != Event::kChangeType || dying_)
        return kConsumed;
    if (event.keyCode == kPostedEditChanges) {
        if (const auto* posted = dynamic_cast<const PostedEditChanges*>(event.data.get()))
            informClients(posted->changes(), VobModification(0));
    } else if (event.keyCode == kPostedChange) {
        handlePostedChange(event);
    }
    return kConsumed;
}

// The change is told with the present time, not with the one at which it was posted.
void Vob::handlePostedChange(const Event& event) {
    const std::vector<std::string> pieces = cutroom::split(event.text, ' ');
    if (pieces.size() != 3)
        return;
    VobModification change(event.value);
    change.setTime(getCurrentTime());
    const double mark = cutroom::parseDouble(pieces[1]).value_or(kPostedNoMark);
    change.setMarkTime(mark == kPostedNoMark ? kNoTime : mark);
    if (const auto track = IdStamp::fromString(pieces[2]); track && track->valid())
        change.addModifiedTrack(*track);
    informClients(change);
}
