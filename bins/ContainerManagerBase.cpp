#include "bins/ContainerManagerBase.h"

#include "bins/ChangeLock.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"

namespace {

// The managers that this thread is telling the listeners of, the innermost first: each telling is
// an entry on the stack.
class Telling;
thread_local const Telling* innermost = nullptr;

class Telling {
public:
    explicit Telling(const ContainerManagerBase& manager) : manager_(manager), outer_(innermost) {
        innermost = this;
    }
    ~Telling() { innermost = outer_; }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

    static bool underWay(const ContainerManagerBase& manager) {
        for (const Telling* telling = innermost; telling; telling = telling->outer_)
            if (&telling->manager_ == &manager)
                return true;
        return false;
    }

private:
    const ContainerManagerBase& manager_;
    const Telling* const outer_;
};

} // namespace

ContainerManagerBase::ContainerManagerBase()
    : changeMsgType_(NotifyMsgTypeDictionary::instance().intern("ContainerManagerBaseChange")) {}

ContainerManagerBase::~ContainerManagerBase() = default;

void ContainerManagerBase::issueNotification(Kv::Ptr<iObject> payload) const {
    if (Telling::underWay(*this))
        return;
    const cutroom::ChangeLock oneAtATime;
    const Telling telling(*this);
    call(NotifyMsg(std::move(payload)), changeMsgType_);
}
