#include "tests/crash/Writer.h"

#include "bins/BinManager.h"
#include "interchange/Importer.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/EditManager.h"
#include "tests/crash/RandomWork.h"
#include "tests/support/LogLines.h"

#include <unistd.h>

#include <functional>

namespace cutroom::test {

namespace {

void say(std::string line) {
    line += '\n';
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        _exit(3);
}

class Worker {
public:
    explicit Worker(unsigned seed) : work_(seed), state_(stateOfProject()) {
        for (const auto& [key, stamp] : state_)
            if (const Cookie cookie(key); cookie.valid())
                (cookie.type() == 'E' ? edits_ : bins_).push_back(cookie);
    }

    // One thing a user does with bins, and saves.
    Status turnOfBins() {
        if (bins_.size() > 8 && work_.number(3) == 0)
            return destroyBin();
        if (bins_.size() < 6 || work_.number(4) == 0)
            bins_.push_back(BinManager::instance().newBin()->getID());
        for (int i = 1 + work_.number(5); i > 0; --i)
            changeBin();
        return saved([] { return BinManager::instance().saveAll(); });
    }
    // One thing a user does with edits, and saves.
    Status turn() {
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

private:
    // Announces the state that `save` is to bring about, and that it has.
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
        const std::size_t which = edits_.size() - 1;
        const Cookie gone = edits_[which];
        edits_.pop_back();
        state_.erase(gone.asString());
        return saved([&] { return EditManager::instance().deleteEdits({gone}, "test"); });
    }
    Status workOnSome() {
        std::vector<EditPtr> changed;
        for (int i = 1 + work_.number(3); i > 0; --i) {
            const int which = work_.number(static_cast<int>(edits_.size()));
            changed.emplace_back(edits_[static_cast<std::size_t>(which)]);
            for (int changes = 1 + work_.number(4); changes > 0; --changes)
                if (Status status = work_.change(changed.back()); !status)
                    return status;
        }
        return save(changed);
    }
    void changeBin() {
        const auto which = static_cast<std::size_t>(work_.number(static_cast<int>(bins_.size())));
        const Kv::Ptr<BinData> bin = BinManager::instance().getData(bins_[which]);
        bin->setName(L"bin " + std::to_wstring(work_.number(1000)));
        const Cookie asset('G', static_cast<std::uint64_t>(1 + work_.number(50)));
        if (!bin->remove(asset))
            bin->add(BinItem(asset, work_.number(100)));
        for (const Cookie& changed : {bins_[which], bins_.back()}) // the last one may be new
            state_[changed.asString()] = stampOf(*BinManager::instance().getData(changed));
    }
    Status destroyBin() {
        const Cookie gone = bins_.back();
        bins_.pop_back();
        state_.erase(gone.asString());
        return saved([&] { return BinManager::instance().destroy(gone, "test"); });
    }
    Status save(const std::vector<EditPtr>& edits) {
        for (const EditPtr& edit : edits)
            if (edit->isDirty()) // a step alone, with no change after it, is nothing to save
                state_[edit.getCookie().asString()] = stampOf(edit);
        return saved([] { return EditManager::instance().flushChanges(false); });
    }

    RandomWork work_;
    ProjectState state_;
    CookieVec edits_;
    CookieVec bins_;
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

} // namespace

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
        for (Worker worker(seed); status;)
            status = work == "bins" ? worker.turnOfBins() : worker.turn();
    say("failed " + status.text());
    return 1;
}

} // namespace cutroom::test
