// `FilterBinData`: a bin that a project filter presents.
//
// A plain one holds the items it was given and belongs to a user's filter. A dynamic one (an heir)
// works its items out when it is looked at first, and follows the project from then on; a filter
// that nobody looks at costs nothing.
#pragma once

#include "bins/BinData.h"
#include "filters/FollowState.h"
#include "filters/iProjectFilter.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <atomic>
#include <optional>
#include <string>

// Any thread, as `BinData`. No manager of bins knows it: while a filter presents it, it tells the
// manager of the filters, then its own listeners. It has no file of its own: a plain one is written
// with its filter, a dynamic one is never dirty.
class CUTROOM_API FilterBinData : public BinData {
public:
    using Ptr = Kv::Ptr<FilterBinData>;

    // Empty, under a fresh cookie, or under one that is always the same.
    FilterBinData();
    explicit FilterBinData(const LightweightString<wchar_t>& name, const Cookie& id = {});
    // Copies of the items, the name and the presentation of any bin, under a fresh cookie.
    explicit FilterBinData(const BinData& other);
    ~FilterBinData() override;

    // The persisted name of the kind of bin: "Items" for plain ones. Heirs that are persisted have
    // a maker for theirs (`installFilterBinMaker`).
    virtual LightweightString<char> getTypeID() const;
    // Works out its own items. False by default; then there is nothing to fill or to follow.
    virtual bool isDynamic() const;

    // For who looks: works the items out, unless that was done; nothing is told of that. Not to be
    // called under the lock of a container that is only read.
    virtual void fill();
    // True once it has been filled.
    bool isComplete() const override;
    // Works the items out anew if it has been filled, or is being filled; tells as the next.
    void refresh();
    // Looks at these assets again if it has been filled: each is in the bin afterwards when it
    // belongs there, with the marks that belong to it. Tells 256 for those that came, 512 with
    // those that went, 128 with those whose marks are others.
    void assetsChanged(const CookieVec& assets);
    // Deleted while it is being filled, they are not in it either.
    void handleDeletions(const CookieVec& assets, const LightweightString<char>& reason) override;

    // --- the form in a filter file (docs/formats/filter.md) --------------------------------------
    // Adds the members to the object that is being written. Heirs write "Type", "ID" and "Name"
    // with `writeIdentity`, and their own behind; a dynamic bin writes no items.
    virtual void write(JSON::Builder& object) const;
    // Takes the members over. `damaged`, with the place in the message, and nothing changes, for
    // what is no such bin. Heirs read the identity with `readIdentity`.
    virtual cutroom::Status read(const JSON::Element& object, const std::string& file);

    // Counts the filters that present the bin: one more, or one fewer.
    void presented(bool more) noexcept { presenters_ += more ? 1 : -1; }
    bool isPresented() const noexcept { return presenters_ > 0; }

    // Saves the filter that presents the bin. `notFound` when none of the user's does; dynamic
    // bins have nothing to save.
    cutroom::Status save() override;
    using BinData::save;
    bool isDirty() const override;
    void setDirty(bool dirty) override;
    // Dynamic ones take nothing in.
    bool canAccomodate(const Cookie& asset) const override;
    bool canAccomodate(CookieType type) const override;
    using BinData::canAccomodate;

protected:
    // --- for dynamic heirs; called on any thread, under no lock or the change lock ---------------
    // Every item that belongs into the bin, as the project is now.
    virtual Items gather() const;
    // The item of an asset; nothing when the asset does not belong into the bin (any longer).
    virtual std::optional<BinItem> itemOf(const Cookie& asset) const;

    void writeIdentity(JSON::Builder& object) const;
    cutroom::Status readIdentity(const JSON::Element& object, const std::string& file);

    // Tells the filters' manager first, then the bin's own listeners.
    void issueModificationNotification(const Modifications& changes,
                                       LightweightString<char> reason) override;

private:
    void replaceSilently(Items items) CUTROOM_REQUIRES(lock_);
    bool takeMarks(const BinItem& fresh) CUTROOM_REQUIRES(lock_);
    void apply(Items come, const CookieVec& gone, const CookieVec& changed) CUTROOM_REQUIRES(lock_);
    void lookAgainAt(const CookieVec& assets) CUTROOM_REQUIRES(lock_);

    cutroom::FollowState following_;
    std::atomic<int> presenters_{0};
    std::atomic<bool> silent_{false}; // no record is told; changed under the lock
};

namespace cutroom {

// Makes an empty bin of one kind, whose `read` follows.
using FilterBinMaker = Kv::Ptr<FilterBinData> (*)();
// Has persisted bins of the type `typeID` made by `maker` (null: by nobody). Any thread.
CUTROOM_API void installFilterBinMaker(const LightweightString<char>& typeID, FilterBinMaker maker);

// Tells whether bins of that type are made by a maker of theirs when they are read again.
CUTROOM_API bool hasFilterBinMaker(const LightweightString<char>& typeID);
// Makes a bin by its "Type" and has it read the object; the failure says what is wrong.
CUTROOM_API Result<Kv::Ptr<FilterBinData>> readFilterBin(const JSON::Element& object,
                                                         const std::string& file);

// The cookie of a bin that a filter presents under that key, in every project and on every machine.
CUTROOM_API Cookie fixedFilterBinID(std::string_view key) noexcept;
// Tells whether a cookie is such a one.
CUTROOM_API bool isFixedFilterBinID(const Cookie& bin) noexcept;

} // namespace cutroom
