#include "platform/files/KVContainerFile.h"

#include <algorithm>
#include <utility>

using cutroom::kContainerKind;
using cutroom::Result;
using cutroom::Status;

namespace {

constexpr std::string_view kNameWord = "name";
constexpr std::string_view kPermanentWord = "permanent";

bool holds(const std::vector<std::string_view>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

Cookie KVContainerFile::getCookieFromFilename(const LightweightString<wchar_t>& fileName) {
    const std::optional<std::string> path = cutroom::toUtf8Strict(fileName);
    if (!path)
        return {};
    const std::string name = cutroom::nameOf(*path);
    // The cookie of a strip has a point in it, so the whole name may be a cookie.
    if (const std::optional<Cookie> whole = Cookie::fromString(name))
        return *whole;
    return Cookie(std::string_view(name).substr(0, name.rfind('.')));
}

KVContainerFile::Reader::Reader(const LightweightString<wchar_t>& fileName, Access access) {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    if (path)
        open(*path, access);
    else
        status_ = path.status();
}

KVContainerFile::Reader::Reader(const std::string& fileName, Access access) {
    open(fileName, access);
}

void KVContainerFile::Reader::open(const std::string& fileName, Access access) {
    file_ = fileName;
    status_ = table_.load(fileName, kContainerKind, access);
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

bool KVContainerFile::Reader::holdsMoreThan(const ItemField* fields,
                                            const std::vector<std::string_view>& attributes) const {
    std::vector<std::string_view> names;
    for (; fields->name && *fields->name; ++fields)
        names.emplace_back(fields->name);
    for (const cutroom::RecordFile::Field& field : table_.fields())
        if (!holds(names, field.name))
            return true;
    for (const cutroom::RecordFile::Attribute& one : table_.attributes())
        if (!holds(attributes, one.name))
            return true;
    for (const cutroom::RecordFile::Attribute& one : table_.properties())
        if (one.name != kNameWord && one.name != kPermanentWord)
            return true;
    return false;
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

void KVContainerFile::Writer::keepUnknown(const Reader& older,
                                          std::vector<std::string_view> known) {
    older_ = &older;
    knownAttributes_ = std::move(known);
    const std::vector<cutroom::RecordFile::Field>& fields = older.table_.fields();
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (table_.findField(fields[i].name) < 0)
            keptFields_.push_back(
                {static_cast<int>(i), table_.addField(fields[i].name, fields[i].type)});
    if (keptFields_.empty())
        return;
    for (std::size_t item = 0; item < older.getNumItems(); ++item)
        olderItems_.try_emplace(older.getText(item, 0), item);
}

void KVContainerFile::Writer::addItem(std::string_view text) {
    finishItem();
    table_.addRecord();
    table_.setText(0, text);
}

// Adds the kept fields of the older file when an item is complete, since they come after all
// described ones.
void KVContainerFile::Writer::finishItem() {
    if (keptFields_.empty() || table_.size() == 0)
        return;
    const auto item = olderItems_.find(table_.text(table_.size() - 1, 0));
    if (item == olderItems_.end())
        return;
    const cutroom::RecordFile& older = older_->table_;
    for (const Kept& field : keptFields_) {
        if (!older.has(item->second, field.from))
            continue;
        const auto index = static_cast<std::size_t>(field.from);
        if (older.fields()[index].type == cutroom::kDoubleField)
            table_.setDouble(field.to, older.number(item->second, field.from));
        else
            table_.setText(field.to, older.text(item->second, field.from));
    }
}

void KVContainerFile::Writer::finish() {
    finishItem();
    if (!older_)
        return;
    for (const cutroom::RecordFile::Attribute& one : older_->table_.properties())
        if (!table_.property(one.name))
            table_.setProperty(one.name, one.text);
    for (const cutroom::RecordFile::Attribute& one : older_->table_.attributes())
        if (!table_.attribute(one.name) && !holds(knownAttributes_, one.name))
            table_.setAttribute(one.name, one.text);
    olderItems_.clear(); // the last item is complete
}

Status KVContainerFile::Writer::save(const LightweightString<wchar_t>& fileName) {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    return path ? save(*path) : path.status();
}

Status KVContainerFile::Writer::save(const std::string& fileName) {
    finish();
    return table_.save(fileName, kContainerKind);
}

std::string KVContainerFile::Writer::bytes() {
    finish();
    return table_.bytes(kContainerKind);
}
