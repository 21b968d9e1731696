#include "platform/files/oledb.h"

using cutroom::kTableKind;
using cutroom::Result;
using cutroom::Status;

Status oledb::open(const LightweightString<wchar_t>& fileName) {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    if (path)
        return open(*path);
    table_ = {};
    return path.status();
}

Status oledb::open(const std::string& fileName) {
    table_ = {};
    return table_.load(fileName, kTableKind);
}

Status oledb::save(const LightweightString<wchar_t>& fileName) const {
    const Result<std::string> path = cutroom::narrowPath(fileName);
    return path ? save(*path) : path.status();
}

Status oledb::save(const std::string& fileName) const {
    return table_.save(fileName, kTableKind, cutroom::Backup::none);
}

std::string oledb::bytes() const { return table_.bytes(kTableKind); }

std::optional<std::string> oledb::getParameter(std::string_view name) const {
    const std::string* text = table_.attribute(name);
    return text ? std::optional(*text) : std::nullopt;
}

void oledb::setParameter(std::string_view name, std::string_view text) {
    table_.setAttribute(name, text);
}

void oledb::getFields(std::size_t record, std::vector<std::string_view>& texts) const {
    texts.resize(getNumFields());
    for (std::size_t field = 0; field < texts.size(); ++field)
        texts[field] = table_.text(record, static_cast<int>(field));
}
