// What changed in an edit: passed to clients beside the description of the viewed edit's change.
//
// A value, free of locks. A set without details costs no memory beyond itself.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"
#include "platform/store/Numbers.h"
#include "vob/notify/ValServer.h"

#include <cstdint>
#include <vector>

// One change: its kind, a detail number whose meaning the kind sets, the channel concerned, the cue
// concerned (its external id) and the name of who made it.
struct CUTROOM_API EditModification {
    EditModification() = default;
    EditModification(EditModificationType kindOfChange, unsigned detailCode = 0)
        : kind(kindOfChange), detail(detailCode) {}

    EditModificationType kind = kModNone;
    unsigned detail = 0;
    IdStamp track;
    IdStamp cue;
    LightweightString<char> origin;

    friend bool operator==(const EditModification&, const EditModification&) = default;
};

class CUTROOM_API EditModifications {
public:
    EditModifications() = default;
    EditModifications(EditModificationType kind) { add(kind); }
    EditModifications(const EditModification& change) { add(change); }

    bool empty() const noexcept { return kinds_ == 0; }
    // One bit per kind.
    std::uint64_t kinds() const noexcept { return kinds_; }
    bool includes(EditModificationType kind) const noexcept {
        return (kinds_ >> static_cast<unsigned>(kind)) & 1u;
    }
    // `mask` holds `bit(kind)` of each kind asked for.
    bool includesAnyOf(std::uint64_t mask) const noexcept { return (kinds_ & mask) != 0; }
    static constexpr std::uint64_t bit(EditModificationType kind) noexcept {
        return std::uint64_t{1} << static_cast<unsigned>(kind);
    }

    // The changes that carry more than their kind, in the order added.
    const std::vector<EditModification>& details() const noexcept { return details_; }

    // Adds one kind, one change, or all of another set. kModNone adds nothing.
    void add(EditModificationType kind);
    void add(const EditModification& change);
    void add(const EditModifications& other);
    void clear();

    // Channels came or went, or the contents were replaced as a whole.
    bool structureChanged() const noexcept;
    // The contents were replaced as a whole.
    bool contentReplaced() const noexcept;
    // With this flag a viewed edit reports the change description it was given beforehand even when
    // the telling brings a description of its own.
    bool keepsChangeDescription() const noexcept { return keepDescription_; }
    void setKeepsChangeDescription(bool on) noexcept { keepDescription_ = on; }

    // For the log: the kinds in ascending order, "1 7 22".
    LightweightString<char> asString() const;

    friend bool operator==(const EditModifications&, const EditModifications&) = default;

private:
    std::uint64_t kinds_ = 0;
    bool keepDescription_ = false;
    std::vector<EditModification> details_;
};

// The object that the edit manager's modification notice carries.
class CUTROOM_API EditModificationNotice final : public iObject {
public:
    EditModificationNotice(const Cookie& edit, EditModifications changes)
        : edit_(edit), changes_(std::move(changes)) {}
    ~EditModificationNotice() override;

    const Cookie& edit() const noexcept { return edit_; }
    const EditModifications& modifications() const noexcept { return changes_; }

private:
    Cookie edit_;
    EditModifications changes_;
};

extern template class ValServer<EditModifications>;
