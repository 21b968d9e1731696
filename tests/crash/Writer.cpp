#include "tests/crash/Writer.h"

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
            if (key != "name")
                edits_.push_back(Cookie::fromString(key).value());
    }

    // One thing a user does and saves.
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
    Status save(const std::vector<EditPtr>& edits) {
        for (const EditPtr& edit : edits)
            if (edit->isDirty()) // a step alone, with no change after it, is nothing to save
                state_[edit.getCookie().asString()] = stampOf(edit);
        return saved([] { return EditManager::instance().flushChanges(false); });
    }

    RandomWork work_;
    ProjectState state_;
    CookieVec edits_;
};

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
    if (status)
        for (Worker worker(seed); status;)
            status = worker.turn();
    say("failed " + status.text());
    return 1;
}

} // namespace cutroom::test
