// `Document`: an asset that stands for an outside file which the user keeps with the project.
#pragma once

#include "bins/ContainerModifier.h"
#include "bins/DescribedContainer.h"

#include <cstdint>

// Cookies are of kind 'D' or 'A'. Made and owned by `DocumentManager`. Any thread, as
// `ContainerBase`; setters that find the value equal record nothing.
class CUTROOM_API Document final : public cutroom::DescribedContainer {
public:
    // Empty, without a cookie, and known to no manager.
    Document();
    ~Document() override;

    LightweightString<wchar_t> getDescription() const;
    // Records a change of LogAttribute::description.
    void setDescription(const LightweightString<wchar_t>& description);
    // The outside file's size in bytes, as it was when the document was made or localised.
    std::uint64_t getSize() const;
    // Records a change of an attribute (kModAttribute, detail 0).
    void setSize(std::uint64_t bytes);
    // The paths at which the outside file is found, the best first.
    LightweightVector<LightweightString<wchar_t>> getLocations() const;
    // Records a change of LogAttribute::mediaLocation.
    void setLocations(const LightweightVector<LightweightString<wchar_t>>& locations);
    // The first location; empty when there is none.
    LightweightString<wchar_t> getFileName() const;
    // Came into the project by an import. Lives in memory only: a change is told (kModUncounted)
    // and not saved.
    bool isImported() const;
    void setImported(bool imported);
    // Set the times in seconds since 1970, for the next save, without a record of change.
    void setCreationTime(std::uint32_t seconds);
    void setModificationTime(std::uint32_t seconds);

    // Copies the outside file (the first location at which there is one) into the project's local
    // storage under its own name, numbered where another content has it, puts the copy before other
    // locations and takes its size. Pipes and devices are no files. All well, and nothing happens,
    // when the first location is such a copy already. `notFound` when no location leads to a file,
    // `wrongUsage` for a document that is not in an open project; on failure the document is as it
    // was. Not to be called under a container's lock; the document's own is not held while the file
    // is copied.
    cutroom::Status localise();

    // --- the description (docs/formats/document.md) --------------------------------------------
    void write(JSON::Builder& out) const override;
    // Everything but `isImported`; the size only where the description has one.
    cutroom::Status take(const JSON::Element& from, const std::string& file) override;

    // Description and first location beside what every container has.
    LightweightString<char> getAttribute(const LogAttribute& attribute) const override;
    using ContainerBase::setAttribute;
    // Description beside what every container lets be set.
    void setAttribute(const LogAttribute& attribute,
                      const LightweightString<wchar_t>& value) override;

protected:
    // Tells the manager first, when it belongs to it.
    void issueModificationNotification(const Modifications& changes,
                                       LightweightString<char> reason) override;
    cutroom::DescribedContainerManager& manager() const override;
    // Its locations.
    std::vector<std::string> keys() const override CUTROOM_REQUIRES_SHARED(lock_);

private:
    friend class DocumentManager;
    // Takes locations as if they had been read, without a record of change.
    void restoreLocations(LightweightVector<LightweightString<wchar_t>> locations);

    LightweightString<wchar_t> description_ CUTROOM_GUARDED_BY(lock_);
    std::uint64_t size_ CUTROOM_GUARDED_BY(lock_) = 0;
    LightweightVector<LightweightString<wchar_t>> locations_ CUTROOM_GUARDED_BY(lock_);
    bool imported_ CUTROOM_GUARDED_BY(lock_) = false;
};
