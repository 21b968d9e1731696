// `AssetAssociationGroup`: assets of the project tied together under one name, because the user
// grouped them or because they are versions of one another.
#pragma once

#include "bins/DescribedContainer.h"

#include <vector>

// Owned by `AssetAssociationGroupManager`. Any thread, as `ContainerBase`. Cookies are those of
// containers (kind 'G'). Members keep their order; invalid cookies are left out.
class CUTROOM_API AssetAssociationGroup final : public cutroom::DescribedContainer {
public:
    enum eType : unsigned { kUserGroup = 0, kVersionsGroup = 1 };

    // An empty user group without a cookie, known to no manager.
    AssetAssociationGroup();
    // A group with a fresh cookie, known to no manager yet.
    AssetAssociationGroup(const LightweightString<wchar_t>& name,
                          const std::vector<Cookie>& constituents, eType type);
    ~AssetAssociationGroup() override;

    // The extension of descriptions, "AssetGroup".
    static const char* getFileExtension() noexcept;

    eType getType() const;
    std::vector<Cookie> getConstituents() const;
    bool contains(const Cookie& asset) const;
    // Replaces the members: records 768 with the cookies that came, then those that went. Nothing
    // happens when the members are the same in the same order.
    void setConstituents(const std::vector<Cookie>& constituents);
    // Appends one, recording 256; false when it is a member already or invalid.
    bool add(const Cookie& asset);
    // Takes out every entry of each cookie, recording 512 with those that went; false when none was
    // a member.
    bool remove(const std::vector<Cookie>& assets);

    // --- the description (docs/formats/asset-group.md) -----------------------------------------
    void write(JSON::Builder& out) const override;
    cutroom::Status take(const JSON::Element& from, const std::string& file) override;

protected:
    // Tells the manager first, when it belongs to it.
    void issueModificationNotification(const Modifications& changes,
                                       LightweightString<char> reason) override;
    cutroom::DescribedContainerManager& manager() const override;
    // Its members.
    std::vector<std::string> keys() const override CUTROOM_REQUIRES_SHARED(lock_);

private:
    eType type_ CUTROOM_GUARDED_BY(lock_) = kUserGroup;
    std::vector<Cookie> constituents_ CUTROOM_GUARDED_BY(lock_);
};
