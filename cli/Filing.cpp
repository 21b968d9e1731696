#include "cli/Filing.h"

#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "cli/Names.h"
#include "platform/files/Files.h"
#include "platform/project/ProjectLayout.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <utility>

namespace cutroom::cli {

namespace {

constexpr char kReason[] = "not kept";

Status saveEdits(const CookieVec& made) {
    std::vector<EditPtr> edits;
    edits.reserve(made.size());
    for (const Cookie& cookie : made)
        edits.emplace_back(cookie);
    return EditManager::instance().save(edits);
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
        const auto name = parseName(bin);
        if (!name)
            return name.status();
        filing.newName_ = *name;
        return filing;
    }
    auto opened = cli::openBin(bin);
    if (!opened)
        return opened.status();
    filing.bin_ = std::move(*opened);
    return filing;
}

Status Filing::keep(const CookieVec& made) {
    if (made.empty())
        return {};
    auto files = stage(made);
    Status saved = files.status();
    if (saved) {
        const SaveAlongside together(std::move(*files));
        saved = saveEdits(made);
    }
    const Status settled = settle(saved.ok());
    if (saved)
        return settled;
    const Status gone = EditManager::instance().discard(made);
    if (!settled)
        return settled;
    return gone.ok() ? saved : gone;
}

Result<std::vector<FileInProject>> Filing::stage(const CookieVec& made) {
    if (made.empty() || (!bin_ && newName_.empty()))
        return std::vector<FileInProject>();
    openBin().add(made);
    staged_ = made;
    auto image = bin_->takeForSaving();
    if (!image) {
        const Status gone = takeBack(std::exchange(staged_, {}));
        return gone.ok() ? image.status() : gone;
    }
    return std::vector{
        FileInProject{joinPath(kGroupsFolder, nameOf(image->path)), std::move(image->bytes)}};
}

Status Filing::settle(bool written) {
    const CookieVec staged = std::exchange(staged_, {});
    if (staged.empty())
        return {};
    if (!written)
        return takeBack(staged);
    fresh_ = false;
    return {};
}

BinData& Filing::openBin() {
    if (!bin_) {
        bin_ = BinManager::instance().newBin();
        bin_->setName(newName_);
        fresh_ = true;
    }
    return *bin_;
}

Status Filing::takeBack(const CookieVec& made) {
    bin_->remove(made);
    bin_->setDirty(true); // it may count as saved
    if (!std::exchange(fresh_, false))
        return {};
    const Status gone = BinManager::instance().destroy(bin_->getID(), kReason);
    bin_.reset();
    return gone.code() == StatusCode::notFound ? Status() : gone;
}

} // namespace cutroom::cli
