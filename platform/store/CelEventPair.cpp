#include "platform/store/CelEventPair.h"

#include "platform/store/Edit.h"

CelEventPair::CelEventPair(const EditPtr& edit, int index, double seconds)
    : CelEventPair(edit, edit ? edit->getId(index) : IdStamp(), seconds) {}

CelEventPair::CelEventPair(const EditPtr& edit, const IdStamp& channel, double seconds)
    : edit_(edit), channel_(channel) {
    if (!edit_ || !cutroom::isStorableTime(seconds))
        return;
    const Edit::Lock lock(*edit_);
    const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel_);
    const std::int64_t segment = cel ? cel->findSegment(cutroom::toFlicks(seconds)) : -1;
    if (segment < 0)
        return;
    in_ = cel->getHandle(static_cast<std::uint32_t>(2 * segment));
    out_ = in_.next();
}

Cookie CelEventPair::getStripCookie() const { return in_.getEvent().material; }

void CelEventPair::setStripCookie(const Cookie& strip) {
    if (!valid())
        return;
    const Edit::Lock lock(*edit_);
    if (const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel_))
        cel->setStripCookie(in_.getIndex() / 2, strip);
}
