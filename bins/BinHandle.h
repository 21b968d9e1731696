// `BinHandle`: names a bin, and the group in which it sits, and finds the live bin.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"

class BinData;

// A value: two cookies and the bin found last. One thread at a time.
class CUTROOM_API BinHandle {
public:
    // Names nothing.
    BinHandle() noexcept;
    // `parent` is the group; the invalid cookie for a bin that sits in none.
    explicit BinHandle(const Cookie& id, const Cookie& parent = {});
    // Names a bin that the caller holds, in no group; names nothing for null.
    explicit BinHandle(const Kv::Ptr<BinData>& bin);
    // Reads a string form.
    explicit BinHandle(const LightweightString<char>& text);
    explicit BinHandle(const LightweightString<wchar_t>& text);
    BinHandle(const BinHandle&);
    BinHandle(BinHandle&&) noexcept;
    BinHandle& operator=(const BinHandle&);
    BinHandle& operator=(BinHandle&&) noexcept;
    ~BinHandle();

    const Cookie& getID() const noexcept { return id_; }
    const Cookie& getParentID() const noexcept { return parent_; }
    // Names a bin.
    bool valid() const noexcept { return id_.valid(); }
    bool isGrouped() const noexcept { return parent_.valid(); }

    // The bin's cookie, and behind '|' that of the group when there is one. Several are joined by
    // ','.
    LightweightString<char> asString() const;
    LightweightString<wchar_t> asWString() const;
    static LightweightString<char> asString(const LightweightVector<BinHandle>& handles);
    // Splits at the first '|'; what is no cookie gives the invalid one.
    void initFromString(const LightweightString<char>& text);
    void initFromString(const LightweightString<wchar_t>& text);

    // The bin, resolved at the first call that finds it: the managed bin, else the result bin of a
    // project filter; empty when there is neither. A bin that its manager has destroyed since stays
    // with the handles that found it.
    const Kv::Ptr<BinData>& getBin() const;
    // The group, from the bin manager; empty when the handle is not grouped or there is none.
    Kv::Ptr<BinData> getGroup() const;
    // The same as `getBin`; null when there is none.
    BinData* operator->() const;

    // By group where the groups differ, else by bin.
    friend bool operator<(const BinHandle& a, const BinHandle& b) noexcept {
        return a.parent_ == b.parent_ ? a.id_ < b.id_ : a.parent_ < b.parent_;
    }
    friend bool operator==(const BinHandle& a, const BinHandle& b) noexcept {
        return a.id_ == b.id_ && a.parent_ == b.parent_;
    }

private:
    Cookie parent_;
    Cookie id_;
    mutable Kv::Ptr<BinData> bin_;
};

namespace cutroom {

// Finds the result bin of a project filter by its cookie; empty when no filter has such a one.
// Installed by the folder of the filters, which lies higher. User-interface thread.
using FilterResultsResolver = Kv::Ptr<BinData> (*)(const Cookie& bin);
// Installs `resolver` (null: none); gives the one before.
CUTROOM_API FilterResultsResolver
installFilterResultsResolver(FilterResultsResolver resolver) noexcept;

} // namespace cutroom
