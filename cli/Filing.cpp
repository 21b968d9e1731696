#include "cli/Filing.h"

#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "platform/base/Strings.h"
#include "platform/store/EditManager.h"

#include <algorithm>

namespace cutroom::cli {

namespace {

constexpr char kReason[] = "not kept";

Status saveEdits(const CookieVec& made) {
    std::vector<EditPtr> edits;
    edits.reserve(made.size());
    for (const Cookie& cookie : made)
        edits.emplace_back(cookie);
    const Status saved = EditManager::instance().save(edits);
    if (saved.ok())
        return saved;
    const Status gone = EditManager::instance().discard(made);
    return gone.ok() ? saved : gone;
}

} // namespace

Result<Filing> Filing::into(const std::string& bin) {
    Filing filing;
    if (bin.empty())
        return filing;
    const auto known = allAssets(kBins);
    const bool none = std::none_of(known.begin(), known.end(), [&](const NamedAsset& asset) {
        return asset.name == bin || asset.cookie.asString() == bin;
    });
    if (none) {
        const auto name = toWideStrict(bin);
        if (!name)
            return Status(StatusCode::wrongUsage, bin, "not UTF-8 text");
        filing.newName_ = *name;
        return filing;
    }
    auto opened = openBin(bin);
    if (!opened)
        return opened.status();
    filing.bin_ = std::move(*opened);
    return filing;
}

Status Filing::keep(const CookieVec& made) {
    if (made.empty())
        return {};
    if (Status saved = saveEdits(made); !saved)
        return saved;
    if (!bin_ && newName_.empty())
        return {};
    BinManager& bins = BinManager::instance();
    const bool fresh = !bin_;
    if (fresh) {
        bin_ = bins.newBin();
        bin_->setName(newName_);
    }
    bin_->add(made);
    const Status saved = bins.saveAll();
    if (saved.ok())
        return saved;
    bin_->remove(made);
    if (fresh) {
        const Status gone = bins.destroy(bin_->getID(), kReason);
        bin_.reset();
        if (!gone && gone.code() != StatusCode::notFound)
            return gone;
    }
    const Status gone = EditManager::instance().deleteEdits(made, kReason);
    return gone.ok() ? saved : gone;
}

} // namespace cutroom::cli
