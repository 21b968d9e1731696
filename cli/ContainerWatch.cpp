#include "cli/ContainerWatch.h"

#include "cli/Assets.h"
#include "cli/FilterWords.h"
#include "platform/base/Strings.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "sync/SyncGroupData.h"

#include <array>
#include <utility>

namespace cutroom::cli {

namespace {

constexpr std::array kTypeWords{
    std::pair{ContainerBase::kModCreated, "created"},
    std::pair{ContainerBase::kModPermanent, "permanence"},
    std::pair{ContainerBase::kModUncounted, "assets changed"},
    std::pair{ContainerBase::kModItemsAdded, "added"},
    std::pair{ContainerBase::kModItemsRemoved, "removed"},
    std::pair{ContainerBase::kModItemsTagged, "tagged"},
    std::pair{ContainerBase::kModItemsOrdered, "ordered"},
    std::pair{static_cast<ContainerBase::eModificationType>(SyncGroupData::kModClipMovedAlone),
              "moved alone"},
};

// Tells whether kModUncounted only accompanies another kind, and so needs no word of its own.
bool isAside(const ContainerBase::Modification& change, ContainerBase::eModificationType type) {
    return type == ContainerBase::kModUncounted && change.getType() != unsigned{type};
}

std::string typesText(const ContainerBase::Modification& change) {
    std::string text;
    for (const auto& [type, word] : kTypeWords)
        if (change.includes(type) && !isAside(change, type))
            text += (text.empty() ? "" : "+") + std::string(word);
    if (!change.includes(ContainerBase::kModAttribute))
        return text;
    const auto attribute = LogAttribute::fromType(change.getDetail());
    return text + (text.empty() ? "" : "+") +
           (attribute && attribute->valid() ? attribute->getID() : std::string("properties"));
}

// Names of assets; an asset that is gone shows as its kind.
std::string namesText(const CookieVec& assets) {
    std::string text;
    for (const Cookie& asset : assets) {
        std::string name = assetName(asset);
        if (name == asset.asString())
            name = filterName(asset);
        text += (text.empty() ? "" : ", ") +
                (name == asset.asString() ? asset.type() + std::string("-asset") : name);
    }
    return text;
}

std::string reasonText(const std::string& reason) {
    return reason.empty() ? std::string() : " (" + reason + ')';
}

std::string noticeText(const ContainerNotice& notice) {
    using What = ContainerNotice::What;
    const std::string subjects = namesText(notice.subjects());
    switch (notice.what()) {
    case What::changed:
        if (!notice.container().valid())
            return changesText(notice.changes());
        return subjects + ": " + changesText(notice.changes());
    case What::destroyed:
        return "destroyed " + subjects + reasonText(notice.reason());
    case What::saved:
        return "saved";
    case What::reset:
        return "set up anew";
    case What::logsDeleted:
        return "logs deleted: " + subjects + reasonText(notice.reason());
    case What::logsModified:
        return "logs changed: " + subjects;
    }
    return {};
}

} // namespace

std::string changesText(const ContainerBase::Modifications& changes) {
    std::string text;
    for (const ContainerBase::Modification& change : changes.records()) {
        const std::string assets = namesText(change.getCookies());
        text +=
            (text.empty() ? "" : "; ") + typesText(change) + (assets.empty() ? "" : " ") + assets;
    }
    return text + reasonText(changes.getReason());
}

void PrintingDocumentListener::handleModificationsInternal(const ContainerNotice& notice) {
    printer_("follower: " + noticeText(notice));
}

bool SessionGallery::setBinHandle(const BinHandle& bin) {
    if (!bin.getBin())
        return false;
    bin_ = bin;
    return true;
}

void SessionGallery::reveal(const Cookie& asset) {
    printer_(name_ + ": reveals " + assetName(asset));
}

void SessionContainers::watch(const Kv::Ptr<ContainerBase>& container, Printer printer) {
    watched_.try_emplace(
        container->getID().asString(),
        container->registerNotification(
            makeCallback<NotifyMsg>([printer, told = container.get()](const NotifyMsg& message) {
                if (const auto* changes = message.getObjectAs<ContainerBase::Modifications>())
                    printer(toUtf8(told->getName()) + ": " + changesText(*changes));
            }),
            NotifyMsgTypeDictionary::kGeneralChange));
}

void SessionContainers::watch(const std::string& kind, const ContainerManagerBase& manager,
                              Printer printer) {
    watched_.try_emplace(kind,
                         manager.registerNotification(
                             makeCallback<NotifyMsg>([printer, kind](const NotifyMsg& message) {
                                 if (const auto* notice = message.getObjectAs<ContainerNotice>())
                                     printer(kind + ": " + noticeText(*notice));
                             }),
                             manager.changeMsgType()));
}

SessionGallery* SessionContainers::gallery(const std::string& name) const {
    const auto found = galleries_.find(name);
    return found == galleries_.end() ? nullptr : found->second.get();
}

SessionGallery& SessionContainers::addGallery(const std::string& name, Printer printer) {
    const auto [at, made] = galleries_.try_emplace(name);
    if (made)
        at->second = Kv::makePtr<SessionGallery>(name, std::move(printer));
    return *at->second;
}

} // namespace cutroom::cli
