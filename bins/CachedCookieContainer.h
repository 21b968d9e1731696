// `CachedCookieContainer`: a snapshot of what another container held.
#pragma once

#include "bins/iCookieContainer.h"

// A value; one thread at a time. Reads the other container once, through its own operations, and
// never again. It does not take the container's id, since it does not follow the contents.
class CUTROOM_API CachedCookieContainer : public iCookieContainer {
public:
    CachedCookieContainer() = default;
    explicit CachedCookieContainer(LightweightVector<AssetReference> cookies)
        : cookies_(std::move(cookies)) {}
    // Take cookies, name and type name (null: nothing).
    CachedCookieContainer(const iCookieContainer& from) { take(from); }
    explicit CachedCookieContainer(const iCookieContainer* from) {
        if (from)
            take(*from);
    }
    // A copy of a snapshot is the same snapshot.
    CachedCookieContainer(const CachedCookieContainer& other) = default;
    CachedCookieContainer& operator=(const CachedCookieContainer& other) = default;
    // Takes a new snapshot in place of the old one.
    CachedCookieContainer& operator=(const iCookieContainer& from);
    ~CachedCookieContainer() override;

    Cookie getContainerID() const override { return id_; }
    void setContainerID(const Cookie& id) { id_ = id; }
    LightweightVector<AssetReference> getCookies() const override { return cookies_; }
    LightweightString<wchar_t> getName() const override { return name_; }
    LightweightString<wchar_t> getTypeName() const override { return typeName_; }

    using iCookieContainer::add;
    // Appends one reference to the whole of an asset.
    void add(const Cookie& asset) { cookies_.emplace_back(asset); }
    void clear() noexcept { cookies_.clear(); }
    std::size_t numContained() const noexcept { return cookies_.size(); }
    void setName(const LightweightString<wchar_t>& name) { name_ = name; }
    void setTypeName(const LightweightString<wchar_t>& name) { typeName_ = name; }

private:
    void take(const iCookieContainer& from);

    Cookie id_;
    LightweightVector<AssetReference> cookies_;
    LightweightString<wchar_t> name_;
    LightweightString<wchar_t> typeName_;
};
