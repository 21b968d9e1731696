#include "platform/files/KVContainerFile.h"

using cutroom::kContainerKind;
using cutroom::Result;
using cutroom::Status;

namespace {

constexpr std::string_view kNameWord = "name";
constexpr std::string_view kPermanentWord = "permanent";

} // namespace

Cookie KVContainerFile::getCookieFromFilename(const LightweightString<wchar_t>& fileName) {
    const std::optional<std::string> path = cutroom::toUtf8Strict(fileName);
    if (!path)
        return {};
    const std::string name = cutroom::nameOf(*path);
    // A strip's cookie has a point in it, so the whole name may be one.
    if (const std::optional<Cookie> whole = Cookie::fromString(name))
        return *whole;
    return Cookie(std::string_view(name).substr(0, name.rfind('.')));
}

KVContainerFile::Reader::Reader(const LightweightString<wchar_t>& fileName) {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    if (path)
        open(*path);
    else
        status_ = path.status();
}

KVContainerFile::Reader::Reader(const std::string& fileName) { open(fileName); }

void KVContainerFile::Reader::open(const std::string& fileName) {
    status_ = table_.load(fileName, kContainerKind);
}

std::string KVContainerFile::Reader::getName() const {
    const std::string* name = table_.property(kNameWord);
    return name ? *name : std::string();
}

bool KVContainerFile::Reader::getPermanent() const {
    const std::string* permanent = table_.property(kPermanentWord);
    return permanent && *permanent == "yes";
}

bool KVContainerFile::Reader::hasAttribute(std::string_view name) const noexcept {
    return table_.attribute(name) != nullptr;
}

std::string KVContainerFile::Reader::getAttribute(std::string_view name,
                                                  std::string_view otherwise) const {
    const std::string* text = table_.attribute(name);
    return text ? *text : std::string(otherwise);
}

long long KVContainerFile::Reader::getIntAttribute(std::string_view name,
                                                   long long otherwise) const {
    const std::string* text = table_.attribute(name);
    return text ? cutroom::parseInt(*text).value_or(otherwise) : otherwise;
}

int KVContainerFile::Reader::getFieldIndex(std::string_view name) const noexcept {
    return table_.findField(name);
}

KVContainerFile::Writer::Writer(const ItemField* fields) {
    for (; fields->name && *fields->name; ++fields)
        table_.addField(fields->name, fields->type);
}

void KVContainerFile::Writer::setName(std::string_view name) {
    table_.setProperty(kNameWord, name);
}

void KVContainerFile::Writer::setPermanent(bool permanent) {
    table_.setProperty(kPermanentWord, permanent ? "yes" : "no");
}

void KVContainerFile::Writer::addAttribute(std::string_view name, std::string_view text) {
    table_.setAttribute(name, text);
}

void KVContainerFile::Writer::keepUnknown(const Reader& older) {
    for (const cutroom::RecordFile::Attribute& one : older.table_.properties())
        if (!table_.property(one.name))
            table_.setProperty(one.name, one.text);
    for (const cutroom::RecordFile::Attribute& one : older.table_.attributes())
        if (!table_.attribute(one.name))
            table_.setAttribute(one.name, one.text);
}

void KVContainerFile::Writer::addItem(std::string_view text) {
    table_.addRecord();
    table_.setText(0, text);
}

Status KVContainerFile::Writer::save(const LightweightString<wchar_t>& fileName) const {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    return path ? save(*path) : path.status();
}

Status KVContainerFile::Writer::save(const std::string& fileName) const {
    return table_.save(fileName, kContainerKind);
}

std::string KVContainerFile::Writer::bytes() const { return table_.bytes(kContainerKind); }
