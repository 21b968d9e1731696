// Random listeners that come, go and tell while they are told, against a model that is a plain list
// walked by identity.
#include "platform/messaging/Notifier.h"
#include "tests/support/LogLines.h"
#include "tests/support/Scale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int kTypes = 2;
constexpr int kDeepest = 4;

// What is registered, in order, and what each telling that goes on must still reach.
class Model {
public:
    void add(int id, int type) { listeners_.push_back({id, type}); }
    void remove(int id) {
        std::erase_if(listeners_, [&](const Listener& each) { return each.id == id; });
        for (std::vector<int>& telling : tellings_)
            std::erase(telling, id);
    }
    void clear() {
        listeners_.clear();
        for (std::vector<int>& telling : tellings_)
            telling.clear();
    }
    void begin(int type) {
        std::vector<int>& due = tellings_.emplace_back();
        for (const Listener& each : listeners_) {
            if (each.type == type)
                due.push_back(each.id);
        }
    }
    // The listener that the innermost telling calls now; -1 when it should be over.
    int next() {
        if (tellings_.empty() || tellings_.back().empty())
            return -1;
        const int id = tellings_.back().front();
        tellings_.back().erase(tellings_.back().begin());
        return id;
    }
    // Tells whether the innermost telling reached everyone; ends it.
    bool end() {
        const bool complete = tellings_.back().empty();
        tellings_.pop_back();
        return complete;
    }
    std::size_t depth() const { return tellings_.size(); }
    std::size_t size() const { return listeners_.size(); }
    int idAt(std::size_t at) const { return listeners_[at].id; }

private:
    struct Listener {
        int id;
        int type;
    };
    std::vector<Listener> listeners_;
    std::vector<std::vector<int>> tellings_;
};

// One notifier and its model, driven by random steps; each listener takes steps when it is told.
class Play {
public:
    explicit Play(unsigned seed) : random_(seed) { renew(); }

    void step() {
        ++steps_;
        switch (pick(12)) {
        case 0:
        case 1:
        case 2:
            return add();
        case 3:
        case 4:
            return remove();
        case 5:
            if (pick(40) == 0)
                renew();
            return;
        default:
            return tell();
        }
    }
    long steps() const { return steps_; }
    long calls() const { return calls_; }
    long wrong() const { return wrong_; }

private:
    struct Kept {
        int id;
        Kv::Ptr<Guard> guard;
    };

    std::size_t pick(std::size_t below) { return random_() % below; }

    void add() {
        if (model_.size() > 40)
            return;
        const int id = nextId_++;
        const int type = static_cast<int>(pick(kTypes));
        auto callback = makeCallback<NotifyMsg>([this, id](const NotifyMsg&) { told(id); });
        kept_.push_back({id, notifier_->registerNotification(std::move(callback), type)});
        model_.add(id, type);
    }
    void remove() {
        if (kept_.empty())
            return;
        const std::size_t at = pick(kept_.size());
        const Kept gone = std::move(kept_[at]);
        kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(at));
        model_.remove(gone.id);
    }
    // Another notifier in place of this one, which may be telling; some guards outlive it.
    void renew() {
        model_.clear();
        notifier_ = std::make_unique<Notifier>();
        if (pick(2))
            kept_.clear();
    }
    void tell() {
        if (model_.depth() >= kDeepest)
            return;
        const int type = static_cast<int>(pick(kTypes));
        model_.begin(type);
        notifier_->call(NotifyMsg(), type);
        wrong_ += !model_.end();
        wrong_ += notifier_->numListeners() != model_.size();
    }
    void told(int id) {
        ++calls_;
        wrong_ += model_.next() != id;
        for (std::size_t more = pick(3); more > 0 && pick(3) == 0; --more)
            step();
    }

    std::mt19937 random_;
    std::unique_ptr<Notifier> notifier_;
    std::vector<Kept> kept_;
    Model model_;
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
