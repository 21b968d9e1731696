// Bins, documents and groups whose listeners add, remove, destroy, re-order and change while they
// are told, against a simple model of who listens to what, and of what each container holds.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "tests/support/LogLines.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <utility>

using namespace cutroom;
using namespace cutroom::test;

// Listeners that change other containers lock notifiers in every order. The lock of changes lets
// one thread do so at a time (docs/threads.md), which the thread sanitizer does not know.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() { return "deadlock:World::"; }

namespace {

enum Kind : std::size_t { kBin, kDocument, kGroup, kKinds };
constexpr std::size_t kBoxes = 9;
constexpr std::size_t kListeners = 80;
constexpr std::size_t kDeepest = 4;

// A container and what it is to hold.
struct Box {
    Kind kind;
    Kv::Ptr<BinData> bin;
    Kv::Ptr<Document> document;
    Kv::Ptr<AssetAssociationGroup> group;
    std::wstring name, description;
    CookieVec held;
    std::size_t teller = 0; // its number among all that tell, after those of the managers

    ContainerBase& base() const {
        if (bin)
            return *bin;
        return document ? static_cast<ContainerBase&>(*document) : *group;
    }
    bool isAsModelled() const {
        CookieVec found = group ? group->getConstituents() : CookieVec();
        for (unsigned i = 0; bin && i < bin->numItems(); ++i)
            found.push_back(bin->getItem(i).asset);
        return found == held && base().getName() == name &&
               (!document || document->getDescription() == description);
    }
};

// One change under way: its manager's listeners are told, then its own.
struct Change {
    std::size_t manager;
    std::size_t container;
    bool tells = false;
    bool atManager = true;
    std::vector<int> due = {}; // those who are still to be told
};

// An operation on a box, done once its model has been changed, and whether it changes anything.
struct Deed {
    bool tells;
    std::function<void()> work;
};

class World {
public:
    explicit World(unsigned seed) : random_(seed) {
        for (std::size_t i = 0; i < kBoxes; ++i) {
            boxes_.emplace_back();
            make(i);
        }
    }

    void step() {
        ++steps;
        switch (pick(12)) {
        case 0:
        case 1:
        case 2:
            return listen();
        case 3:
        case 4:
            return leave();
        case 5:
            return replace(pick(kBoxes));
        default:
            return alter(*boxes_[pick(kBoxes)]);
        }
    }
    bool isAsModelled() {
        const Box& box = *boxes_[pick(kBoxes)];
        return wrong == 0 && box.isAsModelled();
    }

    long steps = 0;
    long calls = 0;
    long nested = 0;
    long wrong = 0; // told twice, out of turn or without a change, or never

private:
    struct Kept {
        int id;
        std::size_t teller;
        Kv::Ptr<Guard> guard;
    };

    std::size_t pick(std::size_t below) { return random_() % below; }
    Cookie anyAsset() { return {'E', 1 + pick(20)}; }
    static const ContainerManagerBase& manager(std::size_t kind) {
        if (kind == kBin)
            return BinManager::instance();
        return kind == kDocument ? static_cast<ContainerManagerBase&>(DocumentManager::instance())
                                 : AssetAssociationGroupManager::instance();
    }
    bool isChanging(const Box& box) const {
        return std::any_of(changes_.begin(), changes_.end(),
                           [&](const Change& each) { return each.container == box.teller; });
    }

    // --- who listens ---------------------------------------------------------------------------
    void listen() {
        if (kept_.size() == kListeners)
            return leave();
        const std::size_t at = pick(kKinds + kBoxes);
        const bool toManager = at < kKinds;
        const std::size_t teller = toManager ? at : boxes_[at - kKinds]->teller;
        const int id = ++lastId_;
        auto callback =
            makeCallback<NotifyMsg>([this, id, teller](const NotifyMsg&) { told(id, teller); });
        const Notifier* source = &manager(at);
        if (!toManager)
            source = &boxes_[at - kKinds]->base();
        const int type = toManager ? manager(at).changeMsgType()
                                   : NotifyMsgTypeDictionary::instance().generalChangeMsgType();
        kept_.push_back({id, teller, source->registerNotification(std::move(callback), type)});
        lists_[teller].push_back(id);
    }
    std::vector<int> listOf(std::size_t teller) const {
        const auto list = lists_.find(teller);
        return list == lists_.end() ? std::vector<int>() : list->second;
    }
    void leave() {
        if (kept_.empty())
            return;
        const std::size_t at = pick(kept_.size());
        const Kept gone = std::move(kept_[at]);
        kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(at));
        std::erase(lists_[gone.teller], gone.id);
        if (lists_[gone.teller].empty())
            lists_.erase(gone.teller);
        for (Change& change : changes_)
            std::erase(change.due, gone.id);
    }

    // --- what changes --------------------------------------------------------------------------
    void begin(std::size_t kind, std::size_t teller) { changes_.push_back({kind, teller}); }
    // From here on the change is told: to the manager's listeners unless they are being told.
    void tell() {
        const std::size_t kind = changes_.back().manager;
        const bool busy = std::any_of(changes_.begin(), changes_.end() - 1, [&](const Change& c) {
            return c.manager == kind && c.tells && c.atManager;
        });
        changes_.back().tells = true;
        if (!busy)
            changes_.back().due = listOf(kind);
    }
    void end() {
        const Change& change = changes_.back();
        wrong += !change.due.empty();
        wrong += change.tells && change.atManager && !listOf(change.container).empty();
        changes_.pop_back();
    }
    void told(int id, std::size_t teller) {
        ++calls;
        if (changes_.empty() || !changes_.back().tells) {
            ++wrong;
            return;
        }
        Change& change = changes_.back();
        if (change.atManager && teller == change.container) {
            wrong += !change.due.empty();
            change.atManager = false;
            change.due = listOf(teller);
        }
        if (change.due.empty() || change.due.front() != id)
            ++wrong;
        else
            change.due.erase(change.due.begin());
        if (changes_.size() < kDeepest && pick(4) == 0) {
            ++nested;
            step();
        }
    }

    void alter(Box& box) {
        if (isChanging(box))
            return;
        begin(box.kind, box.teller);
        if (const std::size_t deeds = pick(6); deeds < 3) {
            bool tells = false;
            box.base().beginModifications();
            for (std::size_t i = 0; i <= deeds; ++i) {
                const Deed deed = anyDeed(box);
                deed.work();
                tells |= deed.tells;
            }
            if (tells)
                tell();
            box.base().endModifications("together");
        } else {
            const Deed deed = anyDeed(box);
            if (deed.tells)
                tell();
            deed.work();
        }
        end();
    }
    Deed anyDeed(Box& box) {
        const std::wstring text = L"name " + std::to_wstring(pick(5));
        if (pick(4) == 0)
            return {std::exchange(box.name, text) != text, [=, &box] { box.base().setName(text); }};
        if (box.document)
            return {std::exchange(box.description, text) != text,
                    [=, &box] { box.document->setDescription(text); }};
        const Cookie asset = anyAsset();
        const auto at = std::find(box.held.begin(), box.held.end(), asset);
        const bool there = at != box.held.end();
        switch (box.held.size() > 12 ? 1 : pick(3)) {
        case 0:
            return add(box, asset, there);
        case 1:
            if (there)
                box.held.erase(at);
            return {there, [=, this, &box] {
                        wrong += there !=
                                 (box.bin ? box.bin->remove(asset) : box.group->remove({asset}));
                    }};
        default:
            return turnRound(box);
        }
    }
    // A group holds an asset once.
    Deed add(Box& box, const Cookie& asset, bool there) {
        const bool adds = box.bin || !there;
        if (adds)
            box.held.push_back(asset);
        return {adds, [=, this, &box] {
                    if (box.bin)
                        box.bin->add(asset);
                    else
                        wrong += adds != box.group->add(asset);
                }};
    }
    // A bin tells of contents that are the same, too.
    Deed turnRound(Box& box) {
        const CookieVec before = box.held;
        std::reverse(box.held.begin(), box.held.end());
        return {box.bin || box.held != before, [&box] {
                    if (box.group)
                        return box.group->setConstituents(box.held);
                    BinData::Items items = std::as_const(*box.bin).items();
                    std::reverse(items.begin(), items.end());
                    box.bin->setContents(std::move(items));
                }};
    }

    // --- what comes and goes -------------------------------------------------------------------
    // Bins may be replaced at any time; the others, which their managers make, only while nothing
    // is told.
    void replace(std::size_t at) {
        const Box& box = *boxes_[at];
        if (isChanging(box) || (!box.bin && !changes_.empty()))
            return alter(*boxes_[at]);
        if (!box.bin) {
            begin(box.kind, ~std::size_t{0});
            tell();
            auto& groups = AssetAssociationGroupManager::instance();
            const Status gone =
                box.document ? DocumentManager::instance().destroy(box.document->getID(), "test")
                             : groups.removeGroup(box.group, "test");
            wrong += !gone.ok();
            end();
        }
        make(at);
    }
    // The new one at that place; nobody listens to it yet.
    void make(std::size_t at) {
        auto box = std::make_unique<Box>();
        box->kind = static_cast<Kind>(at % kKinds);
        box->teller = ++lastTeller_ + kKinds;
        begin(box->kind, box->teller);
        if (box->kind == kBin) {
            box->bin = Kv::makePtr<BinData>();
        } else {
            tell();
            if (box->kind == kDocument)
                box->document =
                    DocumentManager::instance().createDocument(Cookie::make('D')).getContainer();
            else
                box->group = AssetAssociationGroupManager::instance().createGroup(L"", {});
        }
        end();
        boxes_[at] = std::move(box);
    }

    std::mt19937 random_;
    std::vector<std::unique_ptr<Box>> boxes_;
    std::map<std::size_t, std::vector<int>> lists_; // of each that tells, in order
    std::vector<Kept> kept_;
    std::vector<Change> changes_; // under way, the innermost last
    std::size_t lastTeller_ = 0;
    int lastId_ = 0;
};

TEST(ContainerModel, HoldsWhateverListenersDoWhileTheyAreTold) {
    const LogLines log;
    EmbeddedHost host(EmbeddedHost::repeatable());
    DocumentManager::instance();
    AssetAssociationGroupManager::instance();
    BinManager::instance();
    World world(20'261'122);
    const long steps = rounds(50'000, 10'000'000);
    while (world.steps < steps) {
        world.step();
        ASSERT_TRUE(world.isAsModelled()) << "step " << world.steps;
    }
    RecordProperty("steps", std::to_string(world.steps));
    EXPECT_GT(world.calls, steps / 2);
    EXPECT_GT(world.nested, steps / 20);
    EXPECT_THAT(log.lines, testing::IsEmpty());
}

} // namespace
