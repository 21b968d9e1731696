// `Notifiable`: an object that keeps its registrations.
#pragma once

#include "platform/base/Guard.h"

#include <vector>

// Base of objects that are told by others. Used on the thread that owns the object.
class CUTROOM_API Notifiable {
public:
    Notifiable() = default;
    // A copy has no registrations; assignment leaves them alone.
    Notifiable(const Notifiable&) {}
    Notifiable& operator=(const Notifiable&) noexcept { return *this; }
    // Ends what is still kept. By then the heir is gone: an heir that can be told until its end
    // calls `endRegistrations` first thing in its own destructor.
    virtual ~Notifiable();

protected:
    // Keeps a registration until `endRegistrations` or the end of the object.
    void keepRegistration(Kv::Ptr<Guard> guard);
    // Drops all guards, the last one first.
    void endRegistrations() noexcept;

private:
    std::vector<Kv::Ptr<Guard>> guards_;
};
