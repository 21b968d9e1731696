// `BinItem`: one entry of a bin: a reference to an asset, with the place and marks at which the bin
// shows it.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"
#include "platform/base/XY.h"

#include <cstdint>
#include <memory>

class EditPtr;

namespace cutroom {

// Gives ids one after the other in a few nanoseconds each; none was ever given before, by this or
// any other process. One thread at a time.
class CUTROOM_API IdRow {
public:
    IdStamp next() noexcept {
        if (left_ == 0)
            take();
        --left_;
        return {first_.getOrigin(), first_.getTime(), first_.getTickCount() + given_++};
    }

private:
    void take() noexcept;

    IdStamp first_;
    std::uint32_t given_ = 0; // of those from the first on
    std::uint32_t left_ = 0;
};

// An id of its own for every object that is constructed; copies and assignment carry it along, so
// that it names an item wherever its bin moves it.
class CUTROOM_API WithIdentity {
public:
    WithIdentity() noexcept : id_(fresh()) {}

    const IdStamp& getID() const noexcept { return id_; }

protected:
    explicit WithIdentity(IdRow& ids) noexcept : id_(ids.next()) {}

private:
    static IdStamp fresh() noexcept;

    IdStamp id_;
};

// A text that most objects do not have: an empty one takes no more than a pointer. A value.
class CUTROOM_API RareText {
public:
    RareText() noexcept = default;
    RareText(const RareText& other) : text_(other.copy()) {}
    RareText(RareText&&) noexcept = default;
    RareText& operator=(const RareText& other) {
        text_ = other.copy();
        return *this;
    }
    RareText& operator=(RareText&&) noexcept = default;
    ~RareText() = default;

    const std::string& get() const noexcept { return text_ ? *text_ : none(); }
    void set(const std::string& text) {
        text_ = text.empty() ? nullptr : std::make_unique<const std::string>(text);
    }

private:
    static const std::string& none() noexcept;
    std::unique_ptr<const std::string> copy() const {
        return text_ ? std::make_unique<const std::string>(*text_) : nullptr;
    }

    std::unique_ptr<const std::string> text_; // null: empty
};

} // namespace cutroom

// A value; counted too, so that one may be shared on its own. One thread at a time; inside a bin
// the bin's lock guards it.
class CUTROOM_API BinItem final : public Kv::InternalRefCount, public cutroom::WithIdentity {
public:
    // An item of no asset.
    BinItem() = default;
    // The asset at `seconds`, without marks, not placed.
    BinItem(const Cookie& assetCookie, double seconds) : asset(assetCookie), time(seconds) {}
    // The same, for one of many that are made in a row.
    BinItem(const Cookie& assetCookie, double seconds, cutroom::IdRow& ids)
        : WithIdentity(ids), asset(assetCookie), time(seconds) {}
    // The edit as it was last left: its current time, in and out mark. No asset for no edit.
    explicit BinItem(const EditPtr& edit);
    BinItem(const BinItem&) = default;
    BinItem(BinItem&&) noexcept = default;
    BinItem& operator=(const BinItem&) = default;
    BinItem& operator=(BinItem&&) noexcept = default;
    ~BinItem() override = default;

    // Not placed in the gallery.
    static constexpr XY<float> kNotPlaced{-1.0f, -1.0f};

    const Cookie& getAssetID() const noexcept { return asset; }
    CookieType getType() const noexcept { return asset.type(); }
    // Refers to an asset.
    bool valid() const noexcept { return asset.valid(); }
    // One mark at least is set.
    bool hasMark() const noexcept { return markIn != kNoTime || markOut != kNoTime; }

    // Names the viewed edit that shows the item; made at the first call.
    const LightweightString<char>& vobId();
    void vobId(const LightweightString<char>& id) { vobId_.set(id); }
    // The same without making one: empty when there is none yet.
    const LightweightString<char>& getVobId() const noexcept { return vobId_.get(); }

    // Tells whether two items say the same, whatever their identities.
    bool equals(const BinItem& other) const noexcept;

    // 'E' an edit or log, 'D' and 'A' documents, 'G' and 'M' bins and groups.
    Cookie asset;
    // The current position and the marks, in seconds of the asset; kNoTime: no mark.
    double time = 0.0;
    double markIn = kNoTime;
    double markOut = kNoTime;
    // The tile's place in the gallery, in tiles.
    XY<float> position = kNotPlaced;
    // Selected in the bin.
    bool tagged = false;

private:
    cutroom::RareText vobId_;
};
