// What the managers of documents and asset groups have in common: a table of containers, an index
// into it, and their files.
//
// Any thread may call, but not from within a container's lock where an operation says that it reads
// or writes files. The files are read when a project is entered (or when the manager is made while
// one is open), so every description is in memory. Without a project containers live in memory
// until the next project is entered.
#pragma once

#include "bins/ContainerManagerBase.h"
#include "bins/ContainerNotice.h"
#include "bins/DescribedContainer.h"
#include "bins/DescriptionFiles.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace cutroom {

class CUTROOM_API DescribedContainerManager : public ContainerManagerBase {
public:
    ~DescribedContainerManager() override;

    // Something changed since the last save, or a removal waits for it.
    bool anyDirty() const;
    // The files that could not be read, one status each with place and reason, in the order of the
    // cookies. They stay as they are; a save under the same cookie moves its file aside first.
    std::vector<Status> getDamaged() const;

    void handleProjectEntry() override;
    // Saves; a failure is logged.
    void handleProjectExit() override;

protected:
    using ContainerPtr = Kv::Ptr<DescribedContainer>;

    // Files are "<project>/<folder>/<cookie>.<extension>".
    DescribedContainerManager(const char* folder, const char* extension);

    // A container without contents, for a description to be read into.
    virtual ContainerPtr makeEmpty() const = 0;
    // Tells whether containers of this kind have such cookies.
    virtual bool takes(const Cookie& id) const = 0;
    // Paths relative to the project, of files that go when the container goes, beside its own.
    virtual std::vector<std::string> filesOf(const Cookie& id) const;

    // Called by heirs' constructors and at the entry of a project.
    void setUp();
    // Puts a container under management; false when its cookie is taken or not of the kind.
    bool enter(const ContainerPtr& container);
    ContainerPtr find(const Cookie& id) const;
    // In the order of the cookies.
    std::vector<ContainerPtr> all() const;
    // Those that have the key, in the order of the cookies.
    std::vector<ContainerPtr> findByKey(const std::string& key) const;
    // Reads the files of containers that are not known yet; gives the new ones.
    Result<std::vector<ContainerPtr>> readFiles();
    // Writes what is dirty and removes what waits for it: all or nothing. Tells `saved` when
    // anything was written.
    Status saveDirty();
    Status saveOne(DescribedContainer& container);
    // Takes containers out, with their files, and tells; those that are not known are skipped. On
    // failure all stay.
    Status destroyAll(const CookieVec& ids, const LightweightString<char>& reason);
    // The same with the files left to the next save: can be called under locks.
    void dropLater(const Cookie& id, const LightweightString<char>& reason);
    // Tells `changes` of a managed container; for the heirs' handlers of modifications.
    void tellChange(const Cookie& id, const ContainerBase::Modifications& changes,
                    LightweightString<char> reason);

private:
    friend class DescribedContainer;

    struct Entry {
        ContainerPtr container;
        std::vector<std::string> keys; // sorted, each once
    };
    void reindex(const DescribedContainer& container, const Cookie& id,
                 std::vector<std::string> keys);
    void index(const Cookie& id, Entry& entry, std::vector<std::string> keys)
        CUTROOM_REQUIRES(mapsLock_);
    bool leave(const ContainerPtr& container);
    void leaveAll() noexcept;

    // Held while files are read, written and removed, so that none comes back behind a removal.
    CriticalSection files_{LockRank::saveAll};
    DescriptionFiles descriptions_;
    std::map<Cookie, Entry> entries_ CUTROOM_GUARDED_BY(mapsLock_);
    std::set<std::pair<std::string, Cookie>> keys_ CUTROOM_GUARDED_BY(mapsLock_);
    std::set<Cookie> removals_ CUTROOM_GUARDED_BY(mapsLock_); // files that go with the next save
    Kv::Ptr<Guard> exited_;
};

} // namespace cutroom
