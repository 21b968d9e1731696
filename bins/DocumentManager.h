// `DocumentManager`: the single owner of the project's documents.
//
//   documents/<cookie>.KvDoc          descriptions
//   documents/local/<cookie>/<name>   files that were copied into the project
//   documents/cache/<cookie>/         what hosts derive from a document and can make again
#pragma once

#include "bins/ContainerModifier.h"
#include "bins/DateRange.h"
#include "bins/DescribedContainerManager.h"
#include "bins/Document.h"

#include <cstddef>
#include <vector>

namespace cutroom {
template <class T> class ProcessSingleton;
}

// Any thread, with the restrictions of DescribedContainerManager.h. Listeners of changeMsgType()
// are given a `ContainerNotice`, on the thread that made the change, for a change of a document
// under its lock as a writer. All descriptions are read when a project is entered; a listener that
// needs documents at that moment makes this manager before it registers.
class CUTROOM_API DocumentManager final : public cutroom::DescribedContainerManager {
public:
    static DocumentManager& instance();

    // --- making and finding --------------------------------------------------------------------
    // A new document of kind 'D' or 'A' for an outside file: a fresh cookie, the file as its only
    // location, named like the file, with the file's size when it is there. Its creation is told
    // when the batch that is returned ends. Empty for another kind.
    ContainerModifier<Document> createDocument(const LightweightString<wchar_t>& file,
                                               CookieType type);
    // An empty document under that cookie. Empty when it is taken or of another kind.
    ContainerModifier<Document> createDocument(const Cookie& id);

    // Empty when unknown.
    Kv::Ptr<Document> getDocument(const Cookie& id) const;
    bool exists(const Cookie& id) const;
    // In the order of their cookies.
    std::vector<Kv::Ptr<Document>> getDocuments() const;
    // Those that were made (their creation time) within the range.
    std::vector<Kv::Ptr<Document>> getDocuments(const DateRange& created) const;
    // The number of documents with cookies of that kind.
    std::size_t getNumDocuments(CookieType type) const;
    // The first, in the order of the cookies, with a location of exactly that text; else empty.
    Kv::Ptr<Document> findDocumentReferringToFile(const LightweightString<wchar_t>& file) const;

    // --- going ---------------------------------------------------------------------------------
    // Takes documents out of the project, removes descriptions and local copies as one group (each
    // stays as ".bak") and then the caches, and tells one notice naming all that went. Outside
    // files stay. What of a cache cannot be removed is logged. Unknown cookies are skipped;
    // `notFound` when none is known. On failure all stay. Not to be called under a container's
    // lock.
    cutroom::Status destroy(const Cookie& id, const LightweightString<char>& reason);
    cutroom::Status destroy(const CookieVec& ids, const LightweightString<char>& reason);

    // --- places --------------------------------------------------------------------------------
    // The extension of descriptions, "KvDoc".
    static const char* getFileExtension() noexcept;
    // The folder of the descriptions. Like all places: empty without an open project.
    LightweightString<wchar_t> getStorageLocation() const;
    // The description's file; empty when `project` is valid and not the open one, or `document` is
    // no document's cookie.
    LightweightString<wchar_t> getStorageLocation(const Cookie& project,
                                                  const Cookie& document) const;
    // The folder of the document's local copies, whether it is there or not.
    LightweightString<wchar_t> getLocalLocation(const Cookie& id) const;
    // The document's first location lies in its local location.
    bool isLocal(const Cookie& id) const;
    // The folder for what is derived from documents, and the one of a document. Neither is made
    // here.
    LightweightString<wchar_t> getCacheLocation() const;
    LightweightString<wchar_t> getCacheLocation(const Kv::Ptr<Document>& document) const;

    // --- files ---------------------------------------------------------------------------------
    // Registers the documents that are described in the storage location and not known yet, tells
    // of each as created, and gives their number. What cannot be read is logged: see getDamaged.
    // Not to be called under a container's lock.
    cutroom::Result<int> scan();
    // Saves what changed: all or nothing. On failure all stay dirty; what changes meanwhile stays
    // dirty. Then tells one notice (`saved`) if anything was written. Not to be called under a
    // container's lock.
    cutroom::Status saveAll();

    // --- what it is told -----------------------------------------------------------------------
    // By each of its documents, under that one's lock: passes the change on.
    void handleModification(const Cookie& id, const ContainerBase::Modifications& changes,
                            LightweightString<char> reason);
    // By the edit store: passed on as `logsDeleted` and `logsModified`.
    void handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason) override;
    void handleLogsModification(const std::vector<EditManager::Modification>& changes) override;

private:
    DocumentManager();
    ~DocumentManager() override;
    friend class cutroom::ProcessSingleton<DocumentManager>;
    friend class Document;

    ContainerPtr makeEmpty() const override;
    bool takes(const Cookie& id) const override;
    void afterReading(cutroom::DescribedContainer& container) const override;
    cutroom::Result<std::vector<std::string>> filesOf(const Cookie& id) const override;
    void afterDestruction(const Cookie& id) const override;

    ContainerModifier<Document> beginDocument(const Cookie& id);
    cutroom::Status localise(Document& document);
    // Puts a copy that has been made before the document's other locations.
    cutroom::Status takeCopy(Document& document, const std::string& copy, std::uint64_t bytes);
};
