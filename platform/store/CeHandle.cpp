#include "platform/store/CelStorage.h"

ce_handle::ce_handle(const Cel& cel, std::uint32_t index) : index_(index) {
    if (index >= cel.get_num_events())
        return;
    if (!cel.life_) {
        cel.life_ = std::make_shared<cutroom::CelLife>();
        cel.life_->cel = &cel;
    }
    life_ = cel.life_;
    generation_ = life_->generation;
}

bool ce_handle::valid() const noexcept {
    return life_ && life_->cel && life_->generation == generation_ &&
           index_ < life_->cel->get_num_events();
}

ChannelEvent ce_handle::getEvent() const noexcept {
    return valid() ? life_->cel->get_event(index_) : ChannelEvent();
}

double ce_handle::get_edit_time() const noexcept {
    return valid() ? getEvent().getTime() : kNoTime;
}

// In and out points alternate, so out points have odd indices.
bool ce_handle::is_out_point() const noexcept { return valid() && (index_ & 1u) != 0; }

IdStamp ce_handle::getEffectGraph() const noexcept { return getEvent().effectGraph; }

ce_handle ce_handle::next() const {
    return valid() ? ce_handle(*life_->cel, index_ + 1) : ce_handle();
}

ce_handle ce_handle::previous() const {
    return valid() && index_ > 0 ? ce_handle(*life_->cel, index_ - 1) : ce_handle();
}

bool operator>(const ce_handle& a, const ce_handle& b) noexcept {
    if (!a.valid() || !b.valid())
        return a.index_ > b.index_;
    const cutroom::Flicks atA = a.getEvent().time;
    const cutroom::Flicks atB = b.getEvent().time;
    return atA != atB ? atA > atB : a.index_ > b.index_;
}
