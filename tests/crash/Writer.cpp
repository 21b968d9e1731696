// The other process; the tests' main begins it.
#include "tests/crash/Writer.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "interchange/Importer.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/EditManager.h"
#include "sync/SyncGroupData.h"
#include "tests/crash/RandomWork.h"
#include "tests/support/LogLines.h"
#include "tests/support/ProjectStates.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <functional>
#include <map>

namespace cutroom::test {

namespace {

void say(std::string line) {
    line += '\n';
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        _exit(3);
}

// What a user does with one kind of container.
struct ContainerWork {
    std::string prefix, types; // of its keys in the project's state, and of its cookies
    Cookie (*make)();
    std::string (*change)(const Cookie&, RandomWork&); // gives the stamp
    Status (*destroy)(const Cookie&);
    Status (*save)();

    std::string keyOf(const Cookie& id) const { return prefix + id.asString(); }
    CookieVec allIn(const ProjectState& state) const {
        CookieVec ids;
        for (const auto& [key, stamp] : state)
            if (key.starts_with(prefix) && types.find(key[prefix.size()]) != types.npos)
                ids.push_back(Cookie(key.substr(prefix.size())));
        return ids;
    }
};

std::wstring anyName(RandomWork& work) { return L"name " + std::to_wstring(work.number(1000)); }

Cookie anyAsset(RandomWork& work) { return {'G', static_cast<std::uint64_t>(1 + work.number(50))}; }

std::string changeBin(const Cookie& id, RandomWork& work) {
    const Kv::Ptr<BinData> bin = BinManager::instance().getData(id);
    bin->setName(anyName(work));
    if (const Cookie asset = anyAsset(work); !bin->remove(asset))
        bin->add(BinItem(asset, work.number(100)));
    if (auto* const group = dynamic_cast<SyncGroupData*>(bin.get()))
        group->storeRelationships({{anyAsset(work), work.number(100)}});
    return stampOf(*bin);
}

std::string changeDocument(const Cookie& id, RandomWork& work) {
    const Kv::Ptr<Document> document = DocumentManager::instance().getDocument(id);
    document->setName(anyName(work));
    document->setDescription(anyName(work));
    document->setLocations({L"/outside/" + anyName(work), L"/other.pdf"});
    return stampOf(*document);
}

std::string changeGroup(const Cookie& id, RandomWork& work) {
    const auto group = AssetAssociationGroupManager::instance().getGroup(id);
    group->setName(anyName(work));
    if (const Cookie asset = anyAsset(work); !group->remove({asset}))
        group->add(asset);
    return stampOf(*group);
}

// Makes a bin or, every other time, a sync group.
Cookie makeBin() {
    static bool synced = true;
    synced = !synced;
    return synced ? SyncGroupData::make(L"new")->getID() : BinManager::instance().newBin()->getID();
}

Status removeGroup(const Cookie& id) {
    auto& groups = AssetAssociationGroupManager::instance();
    return groups.removeGroup(groups.getGroup(id), "test");
}

const std::map<std::string, ContainerWork>& containerWorks() {
    static const std::map<std::string, ContainerWork> works = {
        {"bins",
         {"", "GM", makeBin, changeBin,
          [](const Cookie& id) { return BinManager::instance().destroy(id, "test"); },
          [] { return BinManager::instance().saveAll(); }}},
        {"documents",
         {"", "D",
          [] { return DocumentManager::instance().createDocument(L"/x.pdf", 'D')->getID(); },
          changeDocument,
          [](const Cookie& id) { return DocumentManager::instance().destroy(id, "test"); },
          [] { return DocumentManager::instance().saveAll(); }}},
        {"groups",
         {"group.", "G",
          [] { return AssetAssociationGroupManager::instance().createGroup(L"new", {})->getID(); },
          changeGroup, removeGroup,
          [] { return AssetAssociationGroupManager::instance().flushChanges(); }}},
    };
    return works;
}

class Worker {
public:
    Worker(const std::string& work, unsigned seed)
        : work_(seed), state_(stateOfProject()), edits_(EditManager::instance().getAllEdits()) {
        if (const auto kind = containerWorks().find(work); kind != containerWorks().end()) {
            kind_ = &kind->second;
            containers_ = kind_->allIn(state_);
        }
    }

    Status turn() { return kind_ ? turnOfContainers() : turnOfEdits(); }

private:
    // One thing a user does with containers, and saves.
    Status turnOfContainers() {
        if (containers_.size() > 8 && work_.number(3) == 0)
            return destroyContainer();
        if (containers_.size() < 6 || work_.number(4) == 0) {
            containers_.push_back(kind_->make());
            changeContainer(containers_.back());
        }
        for (int i = 1 + work_.number(5); i > 0; --i)
            changeContainer(work_.anyOf(containers_));
        return saved(kind_->save);
    }
    // One thing a user does with edits, and saves.
    Status turnOfEdits() {
        switch (work_.number(12)) {
        case 0:
            return rename();
        case 1:
            return edits_.size() < 20 ? makeEdit() : Status();
        case 2:
            return edits_.size() > 12 ? deleteEdit() : Status();
        default:
            return workOnSome();
        }
    }
    // Announces the state that `save` is to bring about, and afterwards that it did.
    Status saved(const std::function<Status()>& save) {
        say("try " + textOf(state_));
        const Status status = save();
        if (status)
            say("done");
        return status;
    }
    Status rename() {
        state_["name"] = "film" + std::to_string(work_.number(1000));
        return saved([&] { return CurrentProject::setName(toWide(state_["name"])); });
    }
    Status makeEdit() {
        const EditModifier edit = EditManager::instance().makeNewEdit(
            makeNewEditCookie(), 2, 2, 20.0, Kv::FrameRate(30000, 1001));
        edits_.push_back(edit.getCookie());
        return save({EditPtr(edit)});
    }
    Status deleteEdit() {
        const Cookie gone = edits_.back();
        edits_.pop_back();
        state_.erase(gone.asString());
        return saved([&] { return EditManager::instance().deleteEdits({gone}, "test"); });
    }
    Status workOnSome() {
        std::vector<EditPtr> changed;
        for (int i = 1 + work_.number(3); i > 0; --i) {
            changed.emplace_back(work_.anyOf(edits_));
            for (int changes = 1 + work_.number(4); changes > 0; --changes)
                if (Status status = work_.change(changed.back()); !status)
                    return status;
        }
        return save(changed);
    }
    void changeContainer(const Cookie& id) { state_[kind_->keyOf(id)] = kind_->change(id, work_); }
    Status destroyContainer() {
        const Cookie gone = containers_.back();
        containers_.pop_back();
        state_.erase(kind_->keyOf(gone));
        return saved([&] { return kind_->destroy(gone); });
    }
    Status save(const std::vector<EditPtr>& edits) {
        for (const EditPtr& edit : edits)
            if (edit->isDirty()) // a step without a change after it needs no save
                state_[edit.getCookie().asString()] = stampOf(edit);
        return saved([] { return EditManager::instance().flushChanges(false); });
    }

    RandomWork work_;
    ProjectState state_;
    CookieVec edits_;
    const ContainerWork* kind_ = nullptr; // none: edits
    CookieVec containers_;
};

// Imports the timeline beside the project, telling each hundredth of it.
Status importTold(const std::string& folder) {
    int told = -1;
    ImportOptions options;
    options.progress = [&](double share) {
        const int hundredths = static_cast<int>(share * 100);
        if (hundredths != told)
            say("at " + std::to_string(told = hundredths));
    };
    const auto report = importFile(folder + "/../timeline.otio", options);
    if (report)
        say("done");
    return report.status();
}

// Works on the project until it is killed; gives its exit status.
int runWriter(const std::string& work, const std::string& folder, unsigned seed) {
    const LogLines quiet;
    EmbeddedHost host;
    EmbeddedProject project(host);
    Status status =
        project.open(folder, CurrentProject::Access::readWrite, CurrentProject::IfMissing::fail);
    if (status)
        say("ready");
    while (status && work == "hold")
        pause();
    if (status && work == "import") {
        status = importTold(folder);
        if (status)
            status = project.close();
        if (status)
            return 0;
    }
    if (status)
        for (Worker worker(work, seed); status;)
            status = worker.turn();
    say("failed " + status.text());
    return 1;
}

} // namespace

} // namespace cutroom::test

int main(int argc, char** argv) {
    if (argc == 5 && std::string(argv[1]) == "--writer")
        return cutroom::test::runWriter(argv[2], argv[3],
                                        static_cast<unsigned>(std::stoul(argv[4])));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
