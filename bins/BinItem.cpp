#include "bins/BinItem.h"

#include "platform/base/IdSource.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <algorithm>

namespace {

// Ids that a thread may still give out: 64 bits that nobody else has, and a count.
struct IdBlock {
    std::uint64_t bits = 0;
    std::uint32_t given = 0;
};
constexpr std::uint32_t kBlockSize = 1u << 20;
constexpr std::uint32_t kRowSize = 1u << 10;

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

void IdRow::take() noexcept {
    first_ = WithIdentity().getID();
    given_ = 0;
    left_ = std::min(kRowSize, kBlockSize - block.given + 1);
    block.given += left_ - 1;
}

const std::string& RareText::none() noexcept {
    static const auto& empty = *new std::string; // never destroyed
    return empty;
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

const LightweightString<char>& BinItem::vobId() {
    if (getVobId().empty())
        vobId(Vob::makeUniqueID());
    return getVobId();
}

bool BinItem::equals(const BinItem& other) const noexcept {
    return asset == other.asset && time == other.time && markIn == other.markIn &&
           markOut == other.markOut && position == other.position && tagged == other.tagged &&
           getVobId() == other.getVobId();
}
