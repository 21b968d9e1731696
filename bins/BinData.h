// `BinData`: a bin: the user's ordered collection of references to assets, and how the gallery
// shows it.
//
// Held through `Kv::Ptr`, owned by the bin manager once it is managed. Any thread may call: each
// change holds the container's lock as a writer, from the look at the items to the telling of its
// record; queries and saves hold it as a reader. A caller that walks the items themselves while
// other threads may change the bin does so under a `BinData::Reading`.
//
// Where it says "tells N", a record of that type is told when something changed, and nothing when
// the bin was so already.
#pragma once

#include "bins/BinContents.h"
#include "bins/ContainerBase.h"
#include "bins/iCookieContainer.h"
#include "platform/base/LogType.h"
#include "platform/store/EditManager.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class Document;

namespace cutroom {
class BinIndex;
}

class CUTROOM_API BinData : public ContainerBase, public virtual iCookieContainer {
public:
    using Items = cutroom::BinContents::Items;

    using eVersion = cutroom::eBinVersion;
    // What viewers may do with a bin (bits 5 to 9; their meaning is the viewers').
    static constexpr unsigned kDefaultCaps = 992;
    // Asks for items of every type.
    static constexpr CookieType kAnyType = Cookie::kInvalidType;

    // Holds the lock as a reader while items are looked at. No change within it.
    class CUTROOM_API Reading {
    public:
        explicit Reading(const BinData& bin) : lock_(bin.lock_) {}

    private:
        SharedLock::Read lock_;
    };

    // --- making --------------------------------------------------------------------------------
    // Empty, under a fresh cookie.
    BinData();
    // The bin of that cookie, loaded from its file: not `valid` when there is none that can be
    // read.
    explicit BinData(const Cookie& id);
    explicit BinData(const LightweightString<wchar_t>& name);
    // One item for each cookie, at time 0.
    explicit BinData(const CookieVec& assets);
    // A copy under a fresh cookie: two bins never share a file.
    BinData(const BinData& other);
    // Takes over everything but the cookie and the times. Tells 768 and, when it differs, the name
    // and the external id.
    BinData& operator=(const BinData& other);
    ~BinData() override;

    // False after a load that could not read the file, until one can.
    bool valid() const;

    // --- items ---------------------------------------------------------------------------------
    // In the user's order. Changes through the reference are allowed only while one thread alone
    // uses the bin, and before its next call; nobody is told of them unless the caller does it.
    virtual Items& items();
    virtual const Items& items() const;
    Items::iterator begin();
    Items::iterator end();
    Items::const_iterator begin() const;
    Items::const_iterator end() const;
    unsigned numItems(CookieType type = kAnyType) const;
    bool anyItems(CookieType type = kAnyType) const;
    bool empty() const;
    // A copy; an item of no asset past the end.
    BinItem getItem(unsigned index) const;
    // The first item of an asset, or the item of an identity: its place (`end` when absent; the
    // item's asset is not to be changed there), its index (-1), a copy (an item of no asset). In
    // constant time.
    Items::iterator find(const Cookie& asset);
    Items::iterator find(const IdStamp& item);
    Items::const_iterator find(const Cookie& asset) const;
    Items::const_iterator find(const IdStamp& item) const;
    int findIndex(const Cookie& asset) const;
    int findIndex(const IdStamp& item) const;
    BinItem findItem(const Cookie& asset) const;
    BinItem findItem(const IdStamp& item) const;
    // Holds the asset (all of them); when `nested`, in itself or in a bin within it. The second
    // form holds for no assets.
    bool contains(const Cookie& asset, bool nested = false) const;
    bool contains(const CookieVec& assets, bool nested = false) const;

    // --- the file (docs/formats/bin.md) ----------------------------------------------------------
    // Reads a file in place of name, items, presentation and times: by its name, that of a cookie,
    // the bin's own. Items of documents and edits that are no longer there are left out, and so is
    // every later item of one asset. A file that cannot be read leaves everything but `valid` as it
    // was. Not dirty afterwards; nothing is told. The failure is given too.
    cutroom::Status load(const LightweightString<wchar_t>& fileName);
    virtual cutroom::Status load(const Cookie& id);
    cutroom::Status load();
    // Writes the bin's own file crash-safely, then it is no longer dirty; on failure it is as
    // before. A damaged file in its place is first moved to "<name>.damaged"; one that cannot be
    // looked at, or is of a later version, is left alone: the save fails. What the file holds
    // beyond what is known here is kept.
    cutroom::Status save() override;
    // Writes the bin's content into the file of another cookie; the bin stays as it is.
    cutroom::Status save(const Cookie& id);
    // A file and what is to stand in it.
    struct FileImage {
        std::string path;
        std::string bytes;
    };
    // What `save` would write now, for a group commit (a damaged file is moved aside here); the bin
    // counts as saved. A caller that fails to write it calls `setDirty(true)`.
    cutroom::Result<FileImage> takeForSaving();

    // --- what the bin accepts ------------------------------------------------------------------
    // Edits and logs of every type, as far as 'E' is accepted.
    virtual bool canAccomodate(eLogType type) const;
    // False for no edit.
    virtual bool canAccomodate(const EditPtr& edit) const;
    // Of an acceptable type, and neither the bin itself nor a bin that it lies in.
    virtual bool canAccomodate(const Cookie& asset) const;
    // 'D' and 'E' always, 'G' and 'M' when nested bins are allowed, nothing else.
    virtual bool canAccomodate(CookieType type) const;
    // The start-up configuration "nested_bins" (not 0), else the preference "Behaviour : Nested
    // bins".
    static bool allowNestedBins();

    // --- order -----------------------------------------------------------------------------------
    // Puts the items in the order of a column and tells 2048, always. `take` and `numMarkers` by
    // their leading number; all others as text: numbers by their value and before other text, that
    // by lower-cased characters. Ties keep their order, descending too.
    virtual void sort(const LogAttribute& attribute, bool ascending);

    // --- adding: items and cookies whether the bin accepts them or not ---------------------------
    // Appends, whether the bin holds the asset or not. Tells 256.
    void add(const BinItem& item);
    // The same, with an item at time 0.
    void add(const Cookie& asset);
    // Does nothing for no assets. Clears all tags; appends an item for each asset that the bin does
    // not hold yet, each once; of an edit with its time and marks. Tells 1024 and 256.
    void add(const CookieVec& assets);
    // Clears all tags; appends copies of the items of `other`, in place of own items of the same
    // assets. Tells 1024, 512 with the assets displaced, 256.
    void add(const BinData& other);
    // Adds the assets that the bin accepts as the form for cookies does; a range becomes the marks.
    // True when any was added.
    bool add(const LightweightVector<AssetReference>& assets) override;
    // False, and nothing changes, when the bin does not hold `before`. Tells 256.
    bool insertBefore(const Cookie& before, const BinItem& item);
    // Replace all items. Tell 768, always.
    void setContents(Items items);
    void setLogs(Items items);
    // Adds what the container of that cookie holds (a bin, a filter's result bin, an asset group),
    // with marks and times, as far as it is accepted and not held yet. True when any was added.
    virtual bool import(const Cookie& container);

    // --- removing: true when anything went; tells 512 without cookies ----------------------------
    // The first item of the asset.
    bool remove(const Cookie& asset);
    bool remove(const IdStamp& item);
    // The first item of each.
    bool remove(const CookieVec& assets);
    void clear();

    // --- values of items -----------------------------------------------------------------------
    using ContainerBase::getAttribute;
    // The text of one column for one item, from the open edit, the project database, the document
    // or the bin's summary: places in the edit as its timecode (marks are the item's own), the
    // duration in seconds, dates as seconds since 1970. Empty for what is not known, and past the
    // end.
    virtual LightweightString<wchar_t> getAttribute(unsigned index,
                                                    const LogAttribute& attribute) const;

    // --- tags: what is selected; tells 1024 with the assets whose tag changed --------------------
    bool isTagged(const Cookie& asset) const;
    bool isTagged(const IdStamp& item) const;
    bool isTagged(unsigned index) const;
    unsigned getNumTagged(CookieType type = kAnyType) const;
    bool anyTagged(CookieType type = kAnyType) const;
    // From `first` to `last`, both included; a negative `first` is 0, a `last` that is negative or
    // past the end is the last item. True when any changed.
    bool setTags(bool tag, int first = 0, int last = -1);
    // By index; indexes past the end are passed over.
    bool setTags(const std::map<unsigned, bool>& tags);
    bool invertTags();
    bool resetSelections();
    // A new bin with copies of the tagged items.
    virtual Kv::Ptr<BinData> getSelectedItems() const;

    // --- presentation --------------------------------------------------------------------------
    eGalleryViews::eGalleryView getViewType() const;
    void setViewType(eGalleryViews::eGalleryView view); // tells 32
    virtual Kv::ImageSize::Presets::Preset getTileSize() const;
    void setTileSize(Kv::ImageSize::Presets::Preset size); // tells 32
    // Places tiles without position by itself.
    bool getAutoPosition() const;
    void setAutoPosition(bool on); // tells 32
    // What new bins begin with, a preference ("Gallery auto position", true when not set).
    static bool getAutoPositionDefault();
    static void setAutoPositionDefault(bool on);
    // Size of the gallery's panel as last used. Saved with the bin, told to nobody.
    XY<int> getDimensions() const;
    void setDimensions(const XY<int>& size);
    // Stays when the project is cleaned up.
    bool getPermanent() const;
    void setPermanent(bool on); // tells 64
    eVersion getVersion() const;
    unsigned getCaps() const;

    // --- its file's place, its columns, what its items open --------------------------------------
    // The path of the bin's file; empty without a project.
    virtual LightweightString<wchar_t> getLocation() const;
    // Columns of the table view; saved by nobody. No columns: the default ones again.
    virtual std::vector<LogAttribute> getTableColumns() const;
    virtual void setDefaultTableColumns(const std::vector<LogAttribute>& columns);
    // Name, start, end, duration, tracks, type, date of modification.
    static const std::vector<LogAttribute>& defaultTableColumns();
    // The edit of an item; empty when it is none, cannot be opened, or the index is past the end.
    virtual EditPtr openEdit(unsigned index) const;
    virtual Kv::Ptr<Document> openDocument(unsigned index) const;
    // All items are there. A plain bin always is; heirs may still be filling.
    virtual bool isComplete() const;

    // --- told by the managers ------------------------------------------------------------------
    // Tells changes of items of this bin.
    virtual void handleModifications(const std::vector<EditManager::Modification>& changes);
    // Takes out every item of the assets; tells 512 with them, and the reason.
    virtual void handleDeletions(const CookieVec& assets, const LightweightString<char>& reason);
    // Pass on what concerns items of this bin: one record of type 128 (the bin itself is not
    // modified) with the assets concerned.
    void handleLogsModified(const std::vector<EditManager::Modification>& changes);
    void handleDocumentsModified(const CookieVec& documents);

    // --- as a container of cookies ---------------------------------------------------------------
    LightweightString<wchar_t> getName() const override { return ContainerBase::getName(); }
    Cookie getContainerID() const override { return getID(); }
    // A range where both marks are set.
    LightweightVector<AssetReference> getCookies() const override;
    bool containsType(CookieType type) const override;

protected:
    // Tells the bin manager first, then the bin's own listeners.
    void issueModificationNotification(const Modifications& changes,
                                       LightweightString<char> reason) override;
    void setCaps(unsigned caps);
    // What a sync group says of its clips; saved with it, told to nobody.
    std::string getSyncedSources() const;
    void setSyncedSources(std::string text);

private:
    friend class Reading;
    // Whether the bin's own file holds what is not known here.
    enum class FileState { unknown, plain, withUnknown };

    template <class Key> int indexOf(const Key& key) const CUTROOM_REQUIRES_SHARED(lock_);
    template <class Key> BinItem itemOf(const Key& key) const;
    template <class Key> bool taggedOf(const Key& key) const;
    template <class Key> bool removeFirst(const Key& key);
    template <class Test> unsigned count(const Test& test) const;
    // Gives each item the tag that `tagOf` says for index and item; records what changed.
    template <class TagOf> bool changeTags(const TagOf& tagOf);
    // Takes out the items for which `goes` is true; gives their assets.
    template <class Test> CookieVec takeOut(const Test& goes) CUTROOM_REQUIRES(lock_);
    void takeOver(const BinData& other);
    Items copyOfItems() const;
    CookieVec missing(const CookieVec& assets) const;
    void replaceItems(Items items);
    void append(Items items) CUTROOM_REQUIRES(lock_);
    // Clears the tags and appends what is not there yet; true when anything was.
    bool appendMissing(Items items);
    bool holdsNested(const Cookie& asset, std::set<Cookie>& visited) const;
    bool isWithin(const Cookie& bin) const;
    void tellAssetsChanged(CookieVec assets);
    cutroom::Status write(const Cookie& file, FileImage* image) const;

    cutroom::BinContents contents_ CUTROOM_GUARDED_BY(lock_);
    unsigned caps_ CUTROOM_GUARDED_BY(lock_) = kDefaultCaps;
    std::vector<LogAttribute> columns_ CUTROOM_GUARDED_BY(lock_);
    // Where items are found; made when it is asked, dropped or kept up by every change. Has a lock
    // of its own.
    const std::unique_ptr<cutroom::BinIndex> index_;
    // Held while the file is written.
    mutable CriticalSection writing_;
    mutable FileState fileState_ CUTROOM_GUARDED_BY(writing_) = FileState::unknown;
    mutable Cookie fileOf_ CUTROOM_GUARDED_BY(writing_); // the bin whose file it describes
};
