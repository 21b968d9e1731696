// The form of result bins in filter files.
#include "filters/FilterBinData.h"

#include "bins/DocumentManager.h"
#include "platform/base/Locks.h"
#include "platform/project/ProjDb.h"

#include <cmath>
#include <map>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

// The kind of bin that holds items.
constexpr char kItemsType[] = "Items";
// Members of a bin.
constexpr char kType[] = "Type";
constexpr char kID[] = "ID";
constexpr char kName[] = "Name";
constexpr char kItems[] = "Items";
// Members of an item.
constexpr char kCookie[] = "Cookie";
constexpr char kTime[] = "Time";
constexpr char kMarkIn[] = "MarkIn";
constexpr char kMarkOut[] = "MarkOut";

Status refuse(const std::string& file, std::string reason) {
    return {StatusCode::damaged, file, std::move(reason)};
}

// Takes a number over if the member is there; false for what is no finite number.
bool readNumber(const JSON::Cursor& item, std::string_view key, double& number) {
    const JSON::Cursor member = item.find(key);
    if (!member)
        return true;
    const auto value = member.kind() == JSON::Kind::number ? member.asDouble() : std::nullopt;
    if (!value || !std::isfinite(*value))
        return false;
    number = *value;
    return true;
}

// Why the item cannot be read; empty when it was.
std::string readItem(const JSON::Cursor& object, BinItem& item) {
    if (object.kind() != JSON::Kind::object)
        return "an object is expected";
    const auto cookie = Cookie::fromString(object.getText(kCookie));
    if (!cookie || !cookie->valid())
        return "Cookie: \"" + std::string(object.getText(kCookie)) + "\" is no cookie";
    item.asset = *cookie;
    for (const auto& [key, number] : {std::pair<const char*, double*>{kTime, &item.time},
                                      {kMarkIn, &item.markIn},
                                      {kMarkOut, &item.markOut}})
        if (!readNumber(object, key, *number))
            return std::string(key) + ": a number is expected";
    return {};
}

// As in bins: references to edits and documents that are no longer there are dropped.
bool isThere(const Cookie& asset) {
    switch (asset.type()) {
    case 'E':
        return projdb::isPresent(asset);
    case 'A':
    case 'D':
        return DocumentManager::instance().exists(asset);
    default:
        return true;
    }
}

cutroom::Result<BinData::Items> readItems(const JSON::Element& object, const std::string& file) {
    BinData::Items items;
    const auto list = object.find(kItems);
    if (!list)
        return items;
    if (!list->isArray())
        return refuse(file, "Items: a list is expected");
    std::size_t number = 0;
    for (JSON::Cursor at = JSON::Cursor::childrenOf(*list); at; at.next(), ++number) {
        BinItem item;
        if (const std::string why = readItem(at, item); !why.empty())
            return refuse(file, "Items[" + std::to_string(number) + "]: " + why);
        if (isThere(item.asset))
            items.push_back(std::move(item));
    }
    return items;
}

} // namespace

LightweightString<char> FilterBinData::getTypeID() const { return kItemsType; }

void FilterBinData::writeIdentity(JSON::Builder& object) const {
    object.add(kType, getTypeID());
    object.add(kID, getID().asString());
    object.add(kName, getName());
}

void FilterBinData::write(JSON::Builder& object) const {
    writeIdentity(object);
    if (isDynamic())
        return;
    object.beginArray(kItems);
    const Reading lock(*this);
    for (const BinItem& item : *this) {
        if (!item.asset.valid())
            continue; // it could not be read again
        object.beginObject();
        object.add(kCookie, item.asset.asString());
        object.add(kTime, std::isfinite(item.time) ? item.time : 0.0);
        for (const auto& [key, mark] : {std::pair(kMarkIn, item.markIn), {kMarkOut, item.markOut}})
            if (mark != kNoTime && std::isfinite(mark))
                object.add(key, mark);
        object.endObject();
    }
    object.endArray();
}

Status FilterBinData::readIdentity(const JSON::Element& object, const std::string& file) {
    if (!object.isObject())
        return refuse(file, "is no bin: an object is expected");
    if (const std::string type = object.getString(kType, getTypeID()); type != getTypeID())
        return refuse(file, "Type: \"" + type + "\" is another kind of bin");
    const auto id = Cookie::fromString(object.getString(kID));
    if (object.has(kID) && (!id || id->type() != 'G'))
        return refuse(file, "ID: the cookie of a bin is expected");
    if (const auto name = object.find(kName); name && !name->isString())
        return refuse(file, "Name: a text is expected");
    const Change change(*this);
    setStoredNames(object.getWString(kName), {});
    if (id)
        setID(*id);
    return {};
}

Status FilterBinData::read(const JSON::Element& object, const std::string& file) {
    auto items = readItems(object, file);
    if (!items)
        return items.status();
    if (Status identity = readIdentity(object, file); !identity)
        return identity;
    const Change change(*this);
    replaceSilently(std::move(*items));
    setDirty(false);
    return {};
}

// --- the kinds of bin ----------------------------------------------------------------------------

namespace {

CriticalSection makersLock{LockRank::leaf};

std::map<std::string, cutroom::FilterBinMaker, std::less<>>& makers() {
    using Makers = std::map<std::string, cutroom::FilterBinMaker, std::less<>>;
    static Makers& all = *new Makers; // never destroyed
    return all;
}

} // namespace

namespace cutroom {

void installFilterBinMaker(const LightweightString<char>& typeID, FilterBinMaker maker) {
    const CriticalSection::Lock lock(makersLock);
    if (maker)
        makers()[typeID] = maker;
    else
        makers().erase(typeID);
}

namespace {

FilterBinMaker makerOf(std::string_view typeID) {
    const CriticalSection::Lock lock(makersLock);
    const auto at = makers().find(typeID);
    return at == makers().end() ? nullptr : at->second;
}

} // namespace

bool hasFilterBinMaker(const LightweightString<char>& typeID) { return makerOf(typeID) != nullptr; }

Result<Kv::Ptr<FilterBinData>> readFilterBin(const JSON::Element& object, const std::string& file) {
    if (!object.isObject())
        return refuse(file, "is no bin: an object is expected");
    Kv::Ptr<FilterBinData> bin;
    if (const std::string type = object.getString(kType, kItemsType); type == kItemsType)
        bin = Kv::makePtr<FilterBinData>();
    else if (const FilterBinMaker maker = makerOf(type))
        bin = maker();
    else
        return refuse(file, "Type: \"" + type + "\" is no known kind of bin");
    if (Status read = bin->read(object, file); !read)
        return read;
    return bin;
}

} // namespace cutroom
