#include "bins/BinItem.h"

#include "platform/base/IdSource.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

namespace {

// Ids that a thread may still give out: 64 bits that nobody else has, and a count.
struct IdBlock {
    std::uint64_t bits = 0;
    std::uint32_t given = 0;
};
constexpr std::uint32_t kBlockSize = 1u << 20;

thread_local constinit IdBlock block;

} // namespace

namespace cutroom {

IdStamp WithIdentity::fresh() noexcept {
    if (block.given == 0 || block.given == kBlockSize)
        block = {idSource().nextId(), 0};
    ++block.given;
    return IdStamp(static_cast<std::uint32_t>(block.bits >> 32),
                   static_cast<std::uint32_t>(block.bits), block.given);
}

} // namespace cutroom

BinItem::BinItem(const EditPtr& edit) {
    if (!edit)
        return;
    asset = edit.getCookie();
    time = edit->getStoredCurrentTime();
    markIn = edit->getStoredMark(Kv::MarkTypes::In);
    markOut = edit->getStoredMark(Kv::MarkTypes::Out);
}

BinItem::~BinItem() = default;

const LightweightString<char>& BinItem::vobId() {
    if (vobId_.empty())
        vobId_ = Vob::makeUniqueID();
    return vobId_;
}

bool BinItem::equals(const BinItem& other) const noexcept {
    return asset == other.asset && time == other.time && markIn == other.markIn &&
           markOut == other.markOut && position == other.position && tagged == other.tagged &&
           vobId_ == other.vobId_;
}
