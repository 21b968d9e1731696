// `ContainerBase`: what bins, documents and asset groups have in common: identity, name, times, a
// dirty flag, a lock, and records of change that are merged in batches and told.
//
// Held through `Kv::Ptr`, owned by the manager of its kind. Any thread may call: for each change
// the process's change lock (bins/ChangeLock.h) is taken, then the container's lock as a writer;
// for queries and saves the container's lock as a reader. It lets its writer enter again as writer
// and as reader.
//
// Changes are told on the changing thread under both locks. A listener may read every container
// and change others, but not the one that tells; it must not save the containers of a manager, nor
// wait for another thread that changes one, nor change an edit off the user-interface thread.
#pragma once

#include "bins/ChangeLock.h"
#include "bins/iAsset.h"
#include "platform/base/Cookie.h"
#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/messaging/Notifier.h"
#include "platform/project/LogAttribute.h"

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

namespace cutroom {
class GroupCommit;
}

class CUTROOM_API ContainerBase : public Notifier, public virtual iAsset {
public:
    // Kinds of change (bits).
    enum eModificationType : unsigned {
        kModCreated = 2,         // the first one stamps the creation time
        kModAttribute = 32,      // an attribute (its type is the detail) or the presentation
        kModPermanent = 64,      // the permanent flag
        kModUncounted = 128,     // leaves the modification time alone
        kModItemsAdded = 256,    // with 512: the contents were replaced
        kModItemsRemoved = 512,  //
        kModItemsTagged = 1024,  // tags (the selection)
        kModItemsOrdered = 2048, // the order
    };

    // One record of change. A value.
    class CUTROOM_API Modification {
    public:
        // `detail` is a free mask, save for kModAttribute.
        Modification(unsigned type, unsigned detail = 0) : type_(type), detail_(detail) {}
        // Concerning one asset; no asset when it is invalid.
        Modification(eModificationType type, const Cookie& asset) : type_(type) { add(asset); }
        // Of an attribute: kModAttribute, with the attribute's type as the detail.
        Modification(LogAttribute::eType attribute)
            : type_(kModAttribute), detail_(unsigned{attribute}) {}

        unsigned getType() const noexcept { return type_; }
        unsigned getDetail() const noexcept { return detail_; }
        // The assets concerned, in the order added; may be empty, one may occur more than once.
        const CookieVec& getCookies() const noexcept { return cookies_; }
        // Ignores the invalid cookie.
        void add(const Cookie& asset) {
            if (asset.valid())
                cookies_.push_back(asset);
        }
        void add(const CookieVec& assets) {
            cookies_.insert(cookies_.end(), assets.begin(), assets.end());
        }

        bool valid() const noexcept { return type_ != 0; }
        bool includes(unsigned mask) const noexcept { return (type_ & mask) != 0; }
        bool includes(eModificationType type) const noexcept { return includes(unsigned{type}); }
        bool includes(LogAttribute::eType attribute) const noexcept {
            return includes(kModAttribute) && detail_ == unsigned{attribute};
        }
        bool refersTo(const Cookie& asset) const noexcept;

        friend bool operator==(const Modification&, const Modification&) = default;

    private:
        unsigned type_;
        unsigned detail_ = 0;
        CookieVec cookies_;
    };

    // The records of one batch, one for each distinct type value, in the order in which the types
    // first occurred; and why they were made. Travels in the message that tells them.
    class CUTROOM_API Modifications final : public iObject {
    public:
        Modifications() = default;
        // A copy is an object of its own, shared by nobody yet.
        Modifications(const Modifications& other) = default;
        Modifications& operator=(const Modifications& other) = default;
        ~Modifications() override;

        // Merges a record: the cookies join the record of exactly that type, which keeps its
        // detail; a type without a record gets one. False, and nothing changes, for type 0.
        bool add(Modification change);
        void clear() noexcept;
        bool empty() const noexcept { return records_.empty(); }
        const std::vector<Modification>& records() const noexcept { return records_; }
        // The types of all records together.
        unsigned getTypes() const noexcept;
        // Some record shares a bit with `mask`; with `detailMask` its detail shares one too.
        bool includes(unsigned mask) const noexcept;
        bool includes(unsigned mask, unsigned detailMask) const noexcept;
        // Some record is of that attribute.
        bool includes(LogAttribute::eType attribute) const noexcept;
        // Some record names the asset.
        bool refersTo(const Cookie& asset) const noexcept;
        const LightweightString<char>& getReason() const noexcept { return reason_; }
        void setReason(LightweightString<char> reason) { reason_ = std::move(reason); }

    private:
        std::vector<Modification> records_;
        LightweightString<char> reason_;
    };

    ContainerBase(const ContainerBase&) = delete;
    ContainerBase& operator=(const ContainerBase&) = delete;
    ~ContainerBase() override;

    // --- saving --------------------------------------------------------------------------------
    // Tells whether there are changes that `save` would write. Every recorded change makes the
    // container dirty, except one of tags alone or one of type kModUncounted alone.
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);
    // Writes the container's file; the container stays dirty when that fails.
    virtual cutroom::Status save() = 0;
    // Puts what `save` would write into a group of changes whose root is the project's folder;
    // nothing is written yet. In the base: `wrongUsage`.
    virtual cutroom::Status stage(cutroom::GroupCommit& group);
    // Counts what made it dirty; never falls. Taken before a save, it tells `setSaved` whether
    // something changed meanwhile.
    std::uint64_t changeCount() const noexcept { return changes_; }
    // The state at that count is written: the container is clean, unless it has changed since.
    void setSaved(std::uint64_t changeCount);

    // --- identity ------------------------------------------------------------------------------
    Cookie getID() const;
    void setID(const Cookie& id);
    LightweightString<wchar_t> getName() const;
    // False when it has that name already; otherwise records a change of LogAttribute::name.
    bool setName(const LightweightString<wchar_t>& name);

    Cookie getAssetID() const override { return getID(); }
    std::uint32_t getCreationTime() const override;
    std::uint32_t getModificationTime() const override;
    LightweightString<wchar_t> getExternalID() const override;
    // Records a change of LogAttribute::externalID when it differs.
    void setExternalID(const LightweightString<wchar_t>& id) override;
    // Name, cookie, external id, and the times in seconds since 1970 (empty for 0).
    LightweightString<char> getAttribute(const LogAttribute& attribute) const override;
    // Name and external id.
    void setAttribute(const LogAttribute& attribute,
                      const LightweightString<wchar_t>& value) override;
    // The text is UTF-8; calls the other form.
    void setAttribute(const LogAttribute& attribute, const LightweightString<char>& value) final;

    // --- changes -------------------------------------------------------------------------------
    // Batches nest and may be opened on any thread. An end without a beginning holds all later
    // changes back until another beginning makes up for it.
    void beginModifications() override;
    void endModifications(LightweightString<char> reason = {}) override;
    // Records a change and stamps the times; tells it at once outside a batch. Ignores type 0.
    void addModification(const Modification& change);
    void addModifications(unsigned types) { addModification(Modification(types)); }
    // Forgets what is pending.
    void clearModifications();
    // Tells a record at once that is no change to be saved: neither times nor the dirty flag
    // follow. For what was read anew. Ignores type 0.
    void tellModification(const Modification& change, LightweightString<char> reason = {});

protected:
    ContainerBase() = default;

    // What every mutator holds for the whole of its change: the change lock, then the container's
    // lock as a writer. Nests.
    class CUTROOM_API CUTROOM_SCOPED_CAPABILITY Change {
    public:
        explicit Change(const ContainerBase& container) CUTROOM_ACQUIRE(container.lock_);
        ~Change() CUTROOM_RELEASE();
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

    private:
        SharedLock& lock_;
    };

    // Tells the container's own listeners with a message of the general change type whose object is
    // a copy of `changes` with that reason; makes nothing when nobody listens. Heirs tell their
    // manager first, then call this. Both locks of a change are held.
    virtual void issueModificationNotification(const Modifications& changes,
                                               LightweightString<char> reason);
    // Set name, external id and times as they were stored, without a record.
    void setStoredNames(LightweightString<wchar_t> name, LightweightString<wchar_t> externalId);
    void setCreationTime(std::uint32_t seconds);
    void setModificationTime(std::uint32_t seconds);

    // Guards this object and what heirs add. Taken as a writer through `Change` only. A thread
    // without the change lock holds it, as a reader, for one container at a time.
    mutable SharedLock lock_{LockRank::container};

private:
    void stampTimes(const Modification& change) CUTROOM_REQUIRES(lock_);
    void issuePending(LightweightString<char> reason) CUTROOM_REQUIRES(lock_);

    Modifications pending_ CUTROOM_GUARDED_BY(lock_);
    std::atomic<int> openBatches_{0};
    std::uint32_t modificationTime_ CUTROOM_GUARDED_BY(lock_) = 0;
    std::uint32_t creationTime_ CUTROOM_GUARDED_BY(lock_) = 0;
    std::atomic<bool> dirty_{false};
    std::atomic<std::uint64_t> changes_{0};
    LightweightString<wchar_t> name_ CUTROOM_GUARDED_BY(lock_);
    LightweightString<wchar_t> externalId_ CUTROOM_GUARDED_BY(lock_);
    Cookie id_ CUTROOM_GUARDED_BY(lock_);
};
