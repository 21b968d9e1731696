// What documents and asset groups have in common: each is described by one small JSON file under
// its cookie, and belongs to the one manager of its kind.
#pragma once

#include "bins/ContainerBase.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

class DescribedContainerManager;
class DescriptionReader;

// Any thread, as `ContainerBase`. The cookie of one that is managed is not to be changed.
class CUTROOM_API DescribedContainer : public ContainerBase {
public:
    ~DescribedContainer() override;

    // Writes the description as one JSON object.
    virtual void write(JSON::Builder& out) const = 0;
    // Replaces the contents by a description, without a record of change. `damaged`, and nothing
    // changes, when `from` is no description; `file` is for the message.
    virtual Status take(const JSON::Element& from, const std::string& file) = 0;
    // As `take`, by hand: the next save writes it. False, and nothing changes, when the element is
    // empty or no description of this kind.
    bool read(const Kv::Ptr<JSON::Element>& description);

    // Puts the description's file into a group; on failure nothing is put there.
    Status stage(GroupCommit& group) override;
    // Writes the description's file alone, crash-safely. All well without an open project: nothing
    // is written, and it stays dirty. `wrongUsage` when it has left its manager, or another one of
    // the manager has its cookie. Not to be called under a container's lock.
    Status save() override;

protected:
    // What every description holds.
    struct Identity {
        Cookie id;
        LightweightString<wchar_t> name;
        LightweightString<wchar_t> externalId;
        std::uint32_t created = 0; // seconds since 1970, as the next
        std::uint32_t modified = 0;
    };
    // The keys of these in one kind's descriptions.
    struct IdentityKeys {
        const char *id, *name, *externalId, *created, *modified;
    };

    DescribedContainer() = default;

    // Reads an identity whose cookie is of one of the kinds in `types`; damage is the reader's.
    static Identity readIdentity(DescriptionReader& reader, const IdentityKeys& keys,
                                 std::string_view types);

    // The manager of the kind.
    virtual DescribedContainerManager& manager() const = 0;
    // The keys under which the manager finds it.
    virtual std::vector<std::string> keys() const CUTROOM_REQUIRES_SHARED(lock_) = 0;
    // To be called when they have changed, before the record of the change.
    void keysChanged() CUTROOM_REQUIRES(lock_);
    // It belongs to the manager, so that one is told of its changes.
    bool managed() const;
    // Takes an identity over without a record of change. `damaged`, and nothing changes, when it is
    // managed and the identity that of another container; `file` is for the message.
    Status restore(const Identity& identity, const std::string& file) CUTROOM_REQUIRES(lock_);

private:
    friend class DescribedContainerManager;

    enum class Membership { none, managed, left };

    // Enter and leave the manager, also again; false when it has one or its cookie is taken.
    bool join(DescribedContainerManager& manager);
    void leave(DescribedContainerManager& manager);
    bool hasLeft() const;

    Membership membership_ CUTROOM_GUARDED_BY(lock_) = Membership::none;
};

} // namespace cutroom
