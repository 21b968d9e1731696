#include "bins/BinHandle.h"

#include "bins/BinManager.h"

#include <atomic>
#include <utility>

namespace {

constexpr char kParentMark = '|';
constexpr char kNextMark = ',';

std::atomic<cutroom::FilterResultsResolver> resolver{nullptr};

} // namespace

namespace cutroom {

FilterResultsResolver installFilterResultsResolver(FilterResultsResolver fresh) noexcept {
    return resolver.exchange(fresh);
}

} // namespace cutroom

BinHandle::BinHandle() noexcept = default;
BinHandle::BinHandle(const Cookie& id, const Cookie& parent) : parent_(parent), id_(id) {}
BinHandle::BinHandle(const Kv::Ptr<BinData>& bin) : id_(bin ? bin->getID() : Cookie()), bin_(bin) {}
BinHandle::BinHandle(const LightweightString<char>& text) { initFromString(text); }
BinHandle::BinHandle(const LightweightString<wchar_t>& text) { initFromString(text); }
BinHandle::BinHandle(const BinHandle&) = default;
BinHandle::BinHandle(BinHandle&&) noexcept = default;
BinHandle& BinHandle::operator=(const BinHandle&) = default;
BinHandle& BinHandle::operator=(BinHandle&&) noexcept = default;
BinHandle::~BinHandle() = default;

LightweightString<char> BinHandle::asString() const {
    LightweightString<char> text = id_.asString();
    if (isGrouped())
        text += kParentMark + parent_.asString();
    return text;
}

LightweightString<wchar_t> BinHandle::asWString() const { return cutroom::toWide(asString()); }

LightweightString<char> BinHandle::asString(const LightweightVector<BinHandle>& handles) {
    LightweightString<char> text;
    for (const BinHandle& handle : handles) {
        if (!text.empty())
            text += kNextMark;
        text += handle.asString();
    }
    return text;
}

void BinHandle::initFromString(const LightweightString<char>& text) {
    const std::string_view all = text;
    const std::size_t mark = all.find(kParentMark);
    id_ = Cookie(all.substr(0, mark));
    parent_ = mark == std::string_view::npos ? Cookie() : Cookie(all.substr(mark + 1));
    bin_.reset();
}

void BinHandle::initFromString(const LightweightString<wchar_t>& text) {
    initFromString(cutroom::toUtf8(text));
}

const Kv::Ptr<BinData>& BinHandle::getBin() const {
    if (!bin_ && valid()) {
        bin_ = BinManager::instance().getData(id_);
        if (!bin_)
            if (const cutroom::FilterResultsResolver resolve = resolver.load())
                bin_ = resolve(id_);
    }
    return bin_;
}

Kv::Ptr<BinData> BinHandle::getGroup() const {
    return isGrouped() ? BinManager::instance().getData(parent_) : nullptr;
}

BinData* BinHandle::operator->() const { return getBin().get(); }
