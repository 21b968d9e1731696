// What a session keeps of bins, groups and documents: listeners that print what they are told, a
// snapshot, and views of bins.
#pragma once

#include "bins/BinData.h"
#include "bins/CachedCookieContainer.h"
#include "bins/ContainerManagerBase.h"
#include "bins/ContainerNotice.h"
#include "bins/DocumentListener.h"
#include "bins/iBinDataContainer.h"
#include "cli/PrintingClient.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace cutroom::cli {

// "added A, B; tagged C (reason)".
std::string changesText(const ContainerBase::Modifications& changes);

// Prints what it is told of one document.
class PrintingDocumentListener final : public DocumentListener {
public:
    PrintingDocumentListener(const Cookie& document, Printer printer)
        : DocumentListener(document), printer_(std::move(printer)) {}
    ~PrintingDocumentListener() override { stopListening(); }

protected:
    void handleModificationsInternal(const ContainerNotice& notice) override;

private:
    const Printer printer_;
};

// A panel that shows one bin, as far as a session has panels; says what it is asked to do.
class SessionGallery final : public iBinDataContainer {
public:
    SessionGallery(std::string name, Printer printer)
        : name_(std::move(name)), printer_(std::move(printer)) {}

    BinHandle getBinHandle() const override { return bin_; }
    bool setBinHandle(const BinHandle& bin) override;
    void setBinSelection(const LightweightVector<BinHandle>& bins) override { selected_ = bins; }
    LightweightVector<BinHandle> getBinSelection() const override { return selected_; }
    bool isActive() const override { return bin_.valid(); }
    void reveal(const Cookie& asset) override;

private:
    const std::string name_;
    const Printer printer_;
    BinHandle bin_;
    LightweightVector<BinHandle> selected_;
};

// User-interface thread.
class SessionContainers {
public:
    // Print from now on what a container, or the manager of a kind, tells. Watched already: nothing
    // changes.
    void watch(const Kv::Ptr<ContainerBase>& container, Printer printer);
    void watch(const std::string& kind, const ContainerManagerBase& manager, Printer printer);
    // Ends it; false when it was not watched.
    bool unwatch(const std::string& what) { return watched_.erase(what) > 0; }

    // The listener of one document, to be set to another.
    std::unique_ptr<PrintingDocumentListener>& follower() noexcept { return follower_; }
    CachedCookieContainer& snapshot() noexcept { return snapshot_; }
    // By name; null when there is none.
    SessionGallery* gallery(const std::string& name) const;
    SessionGallery& addGallery(const std::string& name, Printer printer);

private:
    std::map<std::string, Kv::Ptr<Guard>> watched_; // by cookie or kind
    std::unique_ptr<PrintingDocumentListener> follower_;
    CachedCookieContainer snapshot_;
    std::map<std::string, Kv::Ptr<SessionGallery>> galleries_;
};

} // namespace cutroom::cli
