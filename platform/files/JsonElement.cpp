#include "platform/files/JsonElement.h"

#include "platform/files/JsonDocument.h"

namespace JSON {

Element::Element(std::shared_ptr<const detail::Document> document, std::uint32_t node)
    : document_(std::move(document)), node_(node) {}

Element::~Element() = default;

Kind Element::kind() const noexcept { return document_->nodes[node_].kind; }

std::string_view Element::key() const noexcept { return document_->key(document_->nodes[node_]); }

std::size_t Element::size() const noexcept {
    const detail::Node& node = document_->nodes[node_];
    return detail::hasChildren(node.kind) ? node.size : 0;
}

Kv::Ptr<Element> Element::child(std::size_t index) const {
    const std::uint32_t found = document_->child(node_, index);
    return found ? Kv::Ptr<Element>(new Element(document_, found)) : nullptr;
}

std::vector<Kv::Ptr<Element>> Element::children() const {
    std::vector<Kv::Ptr<Element>> all;
    all.reserve(size());
    const std::uint32_t end = document_->nodes[node_].next;
    for (std::uint32_t at = node_ + 1; at < end; at = document_->nodes[at].next)
        all.push_back(Kv::Ptr<Element>(new Element(document_, at)));
    return all;
}

Kv::Ptr<Element> Element::find(std::string_view key) const {
    const std::uint32_t found = document_->find(node_, key);
    return found ? Kv::Ptr<Element>(new Element(document_, found)) : nullptr;
}

bool Element::has(std::string_view key) const { return document_->find(node_, key) != 0; }

std::string_view Element::text() const noexcept { return document_->text(document_->nodes[node_]); }

std::optional<double> Element::asDouble() const noexcept {
    return detail::asDouble(kind(), text());
}
std::optional<std::int64_t> Element::asInt() const noexcept {
    return detail::asInt(kind(), text());
}
std::optional<std::uint64_t> Element::asUnsigned() const noexcept {
    return detail::asUnsigned(kind(), text());
}
std::optional<bool> Element::asBool() const noexcept {
    const detail::Node& node = document_->nodes[node_];
    return node.kind == Kind::boolean ? std::optional(node.size != 0) : std::nullopt;
}

std::string Element::getString(std::string_view key, std::string_view otherwise) const {
    const Cursor found = Cursor::at(*this).find(key);
    return std::string(found && found.kind() == Kind::string ? found.text() : otherwise);
}

LightweightString<wchar_t> Element::getWString(std::string_view key,
                                               std::wstring_view otherwise) const {
    const Cursor found = Cursor::at(*this).find(key);
    return found && found.kind() == Kind::string ? cutroom::toWide(found.text())
                                                 : LightweightString<wchar_t>(otherwise);
}

double Element::getDouble(std::string_view key, double otherwise) const {
    return Cursor::at(*this).getDouble(key, otherwise);
}

std::int64_t Element::getInt(std::string_view key, std::int64_t otherwise) const {
    return Cursor::at(*this).getInt(key, otherwise);
}

std::uint64_t Element::getUnsigned(std::string_view key, std::uint64_t otherwise) const {
    const Cursor found = Cursor::at(*this).find(key);
    return found ? detail::asUnsigned(found.kind(), found.text()).value_or(otherwise) : otherwise;
}

bool Element::getBool(std::string_view key, bool otherwise) const {
    return Cursor::at(*this).getBool(key, otherwise);
}

Cursor Cursor::at(const Element& element) noexcept {
    const std::uint32_t node = element.node_;
    return {element.document_.get(), node, element.document_->nodes[node].next};
}

Cursor Cursor::childrenOf(const Element& parent) noexcept { return childrenOf(at(parent)); }

Cursor Cursor::childrenOf(const Cursor& parent) noexcept {
    const detail::Node& node = parent.document_->nodes[parent.node_];
    if (!detail::hasChildren(node.kind) || node.size == 0)
        return {};
    return {parent.document_, parent.node_ + 1, node.next};
}

void Cursor::next() noexcept {
    node_ = document_->nodes[node_].next;
    if (node_ >= end_)
        document_ = nullptr;
}

Kind Cursor::kind() const noexcept { return document_->nodes[node_].kind; }
std::string_view Cursor::key() const noexcept { return document_->key(document_->nodes[node_]); }
std::string_view Cursor::text() const noexcept { return document_->text(document_->nodes[node_]); }

std::size_t Cursor::size() const noexcept {
    const detail::Node& node = document_->nodes[node_];
    return detail::hasChildren(node.kind) ? node.size : 0;
}

Cursor Cursor::find(std::string_view key) const noexcept {
    const std::uint32_t found = document_->find(node_, key);
    return found ? Cursor(document_, found, document_->nodes[found].next) : Cursor();
}

std::optional<double> Cursor::asDouble() const noexcept { return detail::asDouble(kind(), text()); }
std::optional<std::int64_t> Cursor::asInt() const noexcept { return detail::asInt(kind(), text()); }

std::string_view Cursor::getText(std::string_view key, std::string_view otherwise) const noexcept {
    const Cursor found = find(key);
    return found && found.kind() == Kind::string ? found.text() : otherwise;
}

double Cursor::getDouble(std::string_view key, double otherwise) const noexcept {
    const Cursor found = find(key);
    return found ? found.asDouble().value_or(otherwise) : otherwise;
}

std::int64_t Cursor::getInt(std::string_view key, std::int64_t otherwise) const noexcept {
    const Cursor found = find(key);
    return found ? found.asInt().value_or(otherwise) : otherwise;
}

bool Cursor::getBool(std::string_view key, bool otherwise) const noexcept {
    const Cursor found = find(key);
    return found && found.kind() == Kind::boolean ? found.text() == "true" : otherwise;
}

Kv::Ptr<Element> Cursor::element(const Element& root) const {
    return Kv::Ptr<Element>(new Element(root.document_, node_));
}

} // namespace JSON
