// Random listeners that come, go and tell while they are told, against a model that is a plain list
// walked by identity.
#include "platform/messaging/Notifier.h"
#include "tests/support/LogLines.h"
#include "tests/support/Scale.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kTypes = 2;
constexpr std::size_t kDeepest = 4;

// One notifier and what it should do, driven by random steps; each listener takes steps when it is
// told.
class Play {
public:
    explicit Play(unsigned seed) : random_(seed) {}

    void step() {
        ++steps_;
        const std::size_t what = pick(480);
        if (what < 120)
            add();
        else if (what < 200)
            remove();
        else if (what == 200)
            renew();
        else if (what >= 240)
            tell();
    }
    long steps() const { return steps_; }
    long calls() const { return calls_; }
    long wrong() const { return wrong_; }

private:
    struct Listener {
        int id;
        int type;
        Kv::Ptr<Guard> guard;
    };

    std::size_t pick(std::size_t below) { return random_() % below; }

    void add() {
        if (listeners_.size() > 40)
            return;
        const int id = nextId_++;
        const int type = static_cast<int>(pick(kTypes));
        auto callback = makeCallback<NotifyMsg>([this, id](const NotifyMsg&) { told(id); });
        listeners_.push_back({id, type, notifier_->registerNotification(callback, type)});
    }
    void remove() {
        if (listeners_.empty())
            return;
        const std::size_t at = pick(listeners_.size());
        const Listener gone = std::move(listeners_[at]);
        listeners_.erase(listeners_.begin() + static_cast<std::ptrdiff_t>(at));
        for (std::vector<int>& due : tellings_)
            std::erase(due, gone.id);
    }
    // Another notifier in place of this one, which may be telling; some guards outlive it.
    void renew() {
        for (std::vector<int>& due : tellings_)
            due.clear();
        outlived_ = std::exchange(listeners_, {});
        if (pick(2))
            outlived_.clear();
        notifier_ = std::make_unique<Notifier>();
    }
    void tell() {
        if (tellings_.size() >= kDeepest)
            return;
        const int type = static_cast<int>(pick(kTypes));
        std::vector<int>& due = tellings_.emplace_back();
        for (const Listener& each : listeners_)
            if (each.type == type)
                due.push_back(each.id);
        notifier_->call(NotifyMsg(), type);
        wrong_ += !tellings_.back().empty();
        tellings_.pop_back();
        wrong_ += notifier_->numListeners() != listeners_.size();
    }
    void told(int id) {
        ++calls_;
        std::vector<int>& due = tellings_.back();
        const bool expected = !due.empty() && due.front() == id;
        wrong_ += !expected;
        if (expected)
            due.erase(due.begin());
        for (std::size_t more = pick(3); more > 0 && pick(3) == 0; --more)
            step();
    }

    std::mt19937 random_;
    std::unique_ptr<Notifier> notifier_ = std::make_unique<Notifier>();
    std::vector<Listener> listeners_;        // in the order of registration
    std::vector<Listener> outlived_;         // of a notifier that is gone
    std::vector<std::vector<int>> tellings_; // whom each one under way must still reach
    int nextId_ = 0;
    long steps_ = 0;
    long calls_ = 0;
    long wrong_ = 0;
};

TEST(NotifierModel, NobodyIsMissedOrToldTwice) {
    const cutroom::test::LogLines log;
    const long rounds = cutroom::test::rounds(100, 10'000);
    RecordProperty("steps", std::to_string(rounds * 1000));
    long calls = 0;
    for (unsigned seed = 1; seed <= static_cast<unsigned>(rounds); ++seed) {
        Play play(seed);
        while (play.steps() < 1000)
            play.step();
        ASSERT_EQ(play.wrong(), 0) << "seed " << seed;
        calls += play.calls();
    }
    EXPECT_GT(calls, rounds * 1000);
    EXPECT_TRUE(log.lines.empty());
}

} // namespace
