// A process that is killed while it saves: what it has acknowledged is there, whole.
#include "StoreFixture.h"
#include "tests/support/Scale.h"

#include <atomic>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace cutroom;

namespace {

class EditKillTest : public cutroom::test::StoredFixture {
protected:
    // Renames and saves the edit without end; writes a byte after each save.
    [[noreturn]] void saveForEver(const Cookie& cookie, int acknowledge) {
        if (!CurrentProject::open(folder()).ok())
            ::_exit(1);
        const EditPtr edit(cookie);
        for (;;) {
            manager().makeBackup(edit, toUtf8(edit->getName()));
            edit->setName(std::to_wstring(std::stoi(edit->getName()) + 1));
            const char done = manager().save(edit).ok() ? 'y' : 'n';
            if (::write(acknowledge, &done, 1) != 1 || done == 'n')
                ::_exit(1);
        }
    }
    // Starts such a process, lets it save `saves` times and kills it; gives the saves acknowledged.
    int killAfter(const Cookie& cookie, int saves) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(ends[0]);
            saveForEver(cookie, ends[1]);
        }
        ::close(ends[1]);
        int acknowledged = 0;
        char done = 0;
        while (acknowledged < saves && ::read(ends[0], &done, 1) == 1)
            acknowledged += done == 'y';
        std::atomic<int> spin{0}; // so that the end falls anywhere in the next save
        while (spin.fetch_add(1) < saves * 40'000) {
        }
        ::kill(child, SIGKILL);
        while (::read(ends[0], &done, 1) == 1)
            acknowledged += done == 'y';
        ::close(ends[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the process gave up by itself";
        return acknowledged;
    }
};

TEST_F(EditKillTest, everyAcknowledgedSaveIsThereWithItsHistory) {
    EditModifier fresh = this->fresh();
    const Cookie cookie = fresh.getCookie();
    fresh->setName(L"0");
    fresh.release();
    ASSERT_TRUE(CurrentProject::close().ok());
    int saved = 0;
    const long kills = test::rounds(15, 2000);
    RecordProperty("kills", std::to_string(kills));
    for (long round = 0; round < kills; ++round) {
        saved += killAfter(cookie, 1 + static_cast<int>(round % 7));
        const Status opened = CurrentProject::open(folder());
        ASSERT_TRUE(opened.ok()) << opened.text();
        {
            const EditPtr edit(cookie);
            ASSERT_TRUE(edit) << round;
            const int name = std::stoi(edit->getName());
            EXPECT_TRUE(name == saved || name == saved + 1) << name << " after " << saved;
            saved = name;
            const auto history = manager().getHistory(edit);
            ASSERT_FALSE(history.empty());
            EXPECT_EQ(history.back().description, std::to_string(name - 1));
        }
        ASSERT_TRUE(CurrentProject::close().ok());
    }
    EXPECT_TRUE(log_.lines.empty()) << log_.lines.front();
}

} // namespace
