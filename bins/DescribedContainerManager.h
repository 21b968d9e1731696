// What the managers of documents and asset groups have in common: a table of containers, an index
// into it, and their files.
//
// Any thread may call. What reads or writes files, and says so, is not to be called under a
// container's lock: so not from a listener either. The files are read when a project is entered, or
// when somebody asks for a container before the manager has heard of that, so every description is
// in memory. Without a project containers live in memory only, until the next one is entered.
#pragma once

#include "bins/ContainerManagerBase.h"
#include "bins/ContainerNotice.h"
#include "bins/DescribedContainer.h"
#include "bins/DescriptionFiles.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace cutroom {

class CUTROOM_API DescribedContainerManager : public ContainerManagerBase {
public:
    ~DescribedContainerManager() override;

    // Something changed since the last save, or a file waits to be removed by it.
    bool anyDirty() const;
    // What is wrong with the files that could not be read, with place and reason, in the order of
    // their names. They stay as they are; a save under the same cookie moves its file aside first
    // ("<name>.damaged").
    std::vector<Status> getDamaged() const;

    // Tells one notice (`reset`): what was in memory has gone, the project's files have been read.
    void handleProjectEntry() override;
    // Saves; a failure is logged and given by the project's close.
    void handleProjectExit() override;

protected:
    using ContainerPtr = Kv::Ptr<DescribedContainer>;

    // Files are "<project>/<folder>/<cookie>.<extension>"; `name` is for messages.
    DescribedContainerManager(const char* name, const char* folder, const char* extension);

    // A container without contents, for a description to be read into.
    virtual ContainerPtr makeEmpty() const = 0;
    // Tells whether containers of this kind have such cookies.
    virtual bool takes(const Cookie& id) const = 0;
    // Called with each container that was read, before anybody else knows it.
    virtual void afterReading(DescribedContainer& container) const;
    // Files below the project's folder (relative to it) that go with the container's own.
    virtual Result<std::vector<std::string>> filesOf(const Cookie& id) const;
    // Called when a container and its files have gone, for what may go without being asked for.
    virtual void afterDestruction(const Cookie& id) const;

    // Reads the files of the open project, if one is and they have not been read. Every look-up
    // begins with it. A constructor does not call it: it registers with the project, whose notices
    // take the change lock, and so must not hold that.
    void catchUp() const;
    // Called by heirs' destructors: no container belongs to the manager any longer.
    void letGo() noexcept;
    // Puts a container under management; false when its cookie is taken or not of the kind, or it
    // is managed already.
    bool enter(const ContainerPtr& container);
    ContainerPtr find(const Cookie& id) const;
    // In the order of the cookies.
    std::vector<ContainerPtr> all() const;
    // The number of those with cookies of that kind.
    std::size_t countOf(CookieType type) const;
    // Those that have the key, in the order of the cookies.
    std::vector<ContainerPtr> findByKey(const std::string& key) const;
    // Reads the files of containers that are not known yet; gives the new ones.
    Result<std::vector<ContainerPtr>> readFiles();
    // Writes what is dirty and removes what waits for it, all or nothing; then tells one notice
    // (`saved`) if there was anything.
    Status saveDirty();
    // Writes one, dirty or not.
    Status saveOne(DescribedContainer& container);
    // Takes containers out with their files, all or nothing, and tells one notice; those that are
    // not known are skipped, `notFound` when none is. On failure all stay.
    Status destroyAll(const CookieVec& ids, const LightweightString<char>& reason);
    // The same for one, with the files left to the next save: can be called by a listener.
    void dropLater(const ContainerPtr& container, const LightweightString<char>& reason);

    // Held while files are read, written and removed, so that none comes back behind a removal.
    mutable CriticalSection filesLock_{LockRank::saveAll};

private:
    friend class DescribedContainer;

    struct Entry {
        ContainerPtr container;
        std::vector<std::string> keys;
    };
    // For containers, which hold their lock as writers.
    bool insert(ContainerPtr container, std::vector<std::string> keys);
    void reindex(const Cookie& id, std::vector<std::string> keys);
    void erase(const Cookie& id);

    void removeKeys(const Cookie& id, const Entry& entry) CUTROOM_REQUIRES(mapsLock_);
    void addKeys(const Cookie& id, const Entry& entry) CUTROOM_REQUIRES(mapsLock_);
    void setUp();
    std::vector<ContainerPtr> held() const; // all that there are now
    std::vector<ContainerPtr> dirtyOnes() const;
    Status writeAll(const std::vector<ContainerPtr>& containers, const CookieVec& removals);
    // Forgets removals that a save has carried out, and those whose container has come back.
    void settleRemovals(const CookieVec& removed, const std::set<Cookie>& written);
    Status removeFiles(const std::vector<ContainerPtr>& containers);
    // `readFiles`, without the lock: for a project that nobody works on yet.
    Result<std::vector<ContainerPtr>> readUnknown();
    ContainerPtr readOne(const Cookie& id);

    const std::string name_;
    DescriptionFiles descriptions_;
    Cookie project_ CUTROOM_GUARDED_BY(mapsLock_); // whose files have been read
    std::map<Cookie, Entry> entries_ CUTROOM_GUARDED_BY(mapsLock_);
    std::set<std::pair<std::string, Cookie>> keys_ CUTROOM_GUARDED_BY(mapsLock_);
    // Containers that have gone and whose files go with the next save.
    std::set<Cookie> removals_ CUTROOM_GUARDED_BY(mapsLock_);
    Kv::Ptr<Guard> exited_;
    Kv::Ptr<Guard> saver_;
};

} // namespace cutroom
