#include "bins/AssetAssociationGroup.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/DescriptionReader.h"
#include "platform/project/ProjectPaths.h"

#include <algorithm>
#include <set>

namespace {

constexpr char kId[] = "ID";
constexpr char kName[] = "Name";
constexpr char kType[] = "Type";
constexpr char kCreated[] = "Created";
constexpr char kModified[] = "Modified";
constexpr char kExternalId[] = "ExtID";
constexpr char kConstituents[] = "Constituents";
constexpr char kUser[] = "User";
constexpr char kVersions[] = "Versions";

std::vector<Cookie> validOnes(std::vector<Cookie> cookies) {
    std::erase_if(cookies, [](const Cookie& cookie) { return !cookie.valid(); });
    return cookies;
}

// Those of `all` that are not in `others`, in the order of `all`.
CookieVec missingFrom(const std::vector<Cookie>& others, const std::vector<Cookie>& all) {
    const std::set<Cookie> known(others.begin(), others.end());
    CookieVec missing;
    for (const Cookie& cookie : all)
        if (known.count(cookie) == 0)
            missing.push_back(cookie);
    return missing;
}

AssetAssociationGroup::eType readType(const JSON::Element& from,
                                      cutroom::DescriptionReader& reader) {
    const auto member = from.find(kType);
    if (!member)
        return AssetAssociationGroup::kUserGroup;
    if (member->isString() && member->text() == kVersions)
        return AssetAssociationGroup::kVersionsGroup;
    if (!member->isString() || member->text() != kUser)
        reader.fail(kType, "is neither \"User\" nor \"Versions\"");
    return AssetAssociationGroup::kUserGroup;
}

std::vector<Cookie> readMembers(cutroom::DescriptionReader& reader) {
    std::vector<Cookie> members;
    for (const std::string& text : reader.texts(kConstituents).value_or(std::vector<std::string>()))
        members.emplace_back(text);
    if (std::any_of(members.begin(), members.end(), [](const Cookie& c) { return !c.valid(); }))
        reader.fail(kConstituents, "holds a text that is no cookie");
    return members;
}

} // namespace

AssetAssociationGroup::AssetAssociationGroup() = default;

AssetAssociationGroup::AssetAssociationGroup(const LightweightString<wchar_t>& name,
                                             const std::vector<Cookie>& constituents, eType type)
    : type_(type), constituents_(validOnes(constituents)) {
    setID(newContainerCookie());
    setStoredNames(name, {});
    setDirty(true);
}

AssetAssociationGroup::~AssetAssociationGroup() = default;

const char* AssetAssociationGroup::getFileExtension() noexcept {
    return cutroom::kAssociationExtension;
}

// --- members -------------------------------------------------------------------------------------

AssetAssociationGroup::eType AssetAssociationGroup::getType() const {
    const SharedLock::Read lock(lock_);
    return type_;
}

std::vector<Cookie> AssetAssociationGroup::getConstituents() const {
    const SharedLock::Read lock(lock_);
    return constituents_;
}

bool AssetAssociationGroup::contains(const Cookie& asset) const {
    const SharedLock::Read lock(lock_);
    return std::find(constituents_.begin(), constituents_.end(), asset) != constituents_.end();
}

void AssetAssociationGroup::setConstituents(const std::vector<Cookie>& constituents) {
    std::vector<Cookie> members = validOnes(constituents);
    const Change lock(*this);
    if (members == constituents_)
        return;
    Modification change(kModItemsAdded | kModItemsRemoved);
    change.add(missingFrom(constituents_, members));
    change.add(missingFrom(members, constituents_));
    constituents_ = std::move(members);
    keysChanged();
    addModification(change);
}

bool AssetAssociationGroup::add(const Cookie& asset) {
    const Change lock(*this);
    if (!asset.valid() || contains(asset))
        return false;
    constituents_.push_back(asset);
    keysChanged();
    addModification(Modification(kModItemsAdded, asset));
    return true;
}

bool AssetAssociationGroup::remove(const std::vector<Cookie>& assets) {
    const Change lock(*this);
    std::vector<Cookie> left = missingFrom(assets, constituents_);
    if (left.size() == constituents_.size())
        return false;
    Modification change(kModItemsRemoved);
    change.add(missingFrom(left, constituents_));
    constituents_ = std::move(left);
    keysChanged();
    addModification(change);
    return true;
}

// --- the description -----------------------------------------------------------------------------

void AssetAssociationGroup::write(JSON::Builder& out) const {
    const SharedLock::Read lock(lock_);
    out.beginObject();
    out.add(kId, getID().asString());
    out.add(kName, getName());
    out.add(kType, type_ == kUserGroup ? kUser : kVersions);
    out.add(kCreated, getCreationTime());
    out.add(kModified, getModificationTime());
    if (const auto externalId = getExternalID(); !externalId.empty())
        out.add(kExternalId, externalId);
    out.beginArray(kConstituents);
    for (const Cookie& cookie : constituents_)
        out.add(cookie.asString());
    out.endArray();
    out.endObject();
}

cutroom::Status AssetAssociationGroup::take(const JSON::Element& from, const std::string& file) {
    cutroom::DescriptionReader reader(from, file);
    const Identity identity =
        readIdentity(reader, {kId, kName, kExternalId, kCreated, kModified}, "G");
    const eType type = readType(from, reader);
    std::vector<Cookie> members = readMembers(reader);
    if (!reader.status())
        return reader.status();

    const Change lock(*this);
    if (cutroom::Status restored = restore(identity, file); !restored)
        return restored;
    type_ = type;
    constituents_ = std::move(members);
    keysChanged();
    return {};
}

// --- its manager ---------------------------------------------------------------------------------

cutroom::DescribedContainerManager& AssetAssociationGroup::manager() const {
    return AssetAssociationGroupManager::instance();
}

std::vector<std::string> AssetAssociationGroup::keys() const {
    std::vector<std::string> keys;
    keys.reserve(constituents_.size());
    for (const Cookie& cookie : constituents_)
        keys.push_back(cookie.asString());
    return keys;
}

void AssetAssociationGroup::issueModificationNotification(const Modifications& changes,
                                                          LightweightString<char> reason) {
    if (managed())
        AssetAssociationGroupManager::instance().handleGroupModification(getID(), changes, reason);
    ContainerBase::issueModificationNotification(changes, std::move(reason));
}
