// What documents and asset groups have in common: each is described by one small JSON file under
// its cookie, and belongs to the one manager of its kind.
#pragma once

#include "bins/ContainerBase.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cutroom {

class DescribedContainerManager;

// Any thread, as `ContainerBase`.
class CUTROOM_API DescribedContainer : public ContainerBase {
public:
    // Written under the container's lock, and clean afterwards only when nothing changed meanwhile.
    struct Image {
        std::string text;
        std::uint64_t changes = 0;
    };

    ~DescribedContainer() override;

    // Replaces the description's file crash-safely, by way of the manager when it has one. All well
    // without an open project: nothing is written and nothing becomes clean. Not to be called under
    // a container's lock.
    Status save() override;
    void setDirty(bool dirty) override;

    // Writes the description as one JSON object.
    virtual void write(JSON::Builder& out) const = 0;
    // Replaces the contents by a description, without a record of change. `damaged`, and nothing
    // changes, when `from` is none; `file` is for the message.
    virtual Status take(const JSON::Element& from, const std::string& file) = 0;
    // The file's text, with a count of changes.
    Image image() const;
    // `image` has been saved: clean, unless it changed since.
    void noteSaved(const Image& image);
    // The keys under which its manager finds it; the container's lock is held.
    virtual std::vector<std::string> keys() const = 0;

protected:
    DescribedContainer() = default;

    // The manager that it belongs to; null: none.
    DescribedContainerManager* manager() const;
    // What the manager finds it by has changed; the lock is held as a writer.
    void keysChanged() CUTROOM_REQUIRES(lock_);
    // Sets what all descriptions hold, without a record of change.
    struct Identity {
        Cookie id;
        LightweightString<wchar_t> name;
        LightweightString<wchar_t> externalId;
        std::uint32_t created = 0;
        std::uint32_t modified = 0;
    };
    void restoreIdentity(const Identity& identity);

private:
    friend class DescribedContainerManager;

    DescribedContainerManager* manager_ CUTROOM_GUARDED_BY(lock_) = nullptr;
    std::uint64_t changes_ CUTROOM_GUARDED_BY(lock_) = 0; // times it was made dirty
};

} // namespace cutroom
