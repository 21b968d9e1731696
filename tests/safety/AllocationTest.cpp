// Every allocation failing in turn under loading, saving, telling and exporting: `bad_alloc` may
// pass, nothing else does; what failed leaves everything as it was, and the next try succeeds.
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "export/MetadataExporters.h"
#include "interchange/Exporter.h"
#include "interchange/Importer.h"
#include "platform/store/EditFile.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/Allocations.h"
#include "tests/support/Scale.h"
#include "vob/VobManager.h"

#include <new>
#include <set>

using namespace cutroom;
using namespace cutroom::test;

namespace {

// A client that allocates nothing when it is told.
class CountingClient : public VobClient {
public:
    explicit CountingClient(Vob* vob) : VobClient(vob, kClientPriorityLowest, kClientUnmanaged) {}
    void handleModifications(const EditModifications&, const VobModification&) override { ++told; }
    long told = 0;
};

class AllocationTest : public CrashFixture {
protected:
    struct Work {
        std::function<void()> prepare;
        std::function<bool()> work;         // false: it says that it failed
        std::function<std::string()> state; // of all that the work may change
        std::string between = {}; // how it may also end when no memory is left for what is decided
    };

    void SetUp() override {
        CrashFixture::SetUp();
        begin();
        registerMetadataExporters();
        bin_ = BinManager::instance().newBin()->getID();
        fill(L"a bin");
        ASSERT_TRUE(BinManager::instance().saveAll().ok());
    }
    // Lets allocation 0, 1, 2 … fail in long runs, and a sample of them in everyday ones: each
    // alone, and with all that follow it.
    void sweep(const Work& work) {
        work.prepare();
        const std::string before = work.state();
        work.prepare(); // what the state was taken of may be loaded
        ASSERT_TRUE(work.work());
        const std::string done = work.state();
        const long stride = rounds(strideOf(work), 1);
        for (const Failing span : {Failing::once, Failing::forEver})
            for (long at = 0; !HasFailure(); at += stride, ++strikes_) {
                SCOPED_TRACE(at);
                work.prepare();
                const std::optional<bool> result = strike(at, work.work, span);
                const bool struck = failNone();
                const std::string now = work.state();
                if (span == Failing::once || work.between.empty() || !now.ends_with(work.between)) {
                    EXPECT_EQ(now, result.value_or(false) ? done : before);
                }
                // Without memory, such files stay until the project is opened again.
                EXPECT_TRUE(span == Failing::forEver || litter().empty());
                if (!struck)
                    break;
                EXPECT_TRUE(result.value_or(false) || work.work()) << "the second try";
                EXPECT_EQ(work.state(), done) << "the second try";
            }
        RecordProperty("strikes", strikes_);
    }
    // Nothing when `bad_alloc` came out.
    static std::optional<bool> strike(long at, const std::function<bool()>& work,
                                      Failing span = Failing::once) {
        failAllocation(at, span);
        try {
            const bool result = work();
            failNone();
            return result;
        } catch (const std::bad_alloc&) {
            failNone();
            return {};
        }
    }
    // So that 15 to 30 allocations of the work fail.
    static long strideOf(const Work& work) {
        long high = 1;
        for (bool struck = true; struck; high *= 2) {
            work.prepare();
            strike(high, work.work);
            struck = failNone();
        }
        return std::max(1L, high / 60);
    }

    void fill(const std::wstring& name) const {
        const auto bin = BinManager::instance().getData(bin_);
        bin->setName(name);
        bin->setContents({BinItem(edits_[0], 1), BinItem(edits_[1], 2)});
    }
    // The names of an edit and of the bin in their files, and whether they wait to be saved.
    std::string savedEdit(const EditPtr& edit) const {
        const std::string file = fileOf(edit.getCookie());
        const auto read = EditFile::decode(bytesOf(file), file);
        return (read ? toUtf8(read->state.name) : read.status().text()) +
               (edit->isDirty() ? " dirty" : " clean");
    }
    std::string savedBin() const {
        const bool dirty = BinManager::instance().getData(bin_)->isDirty();
        return toUtf8(BinData(bin_).getName()) + (dirty ? " dirty" : " clean");
    }
    std::string project() { return CurrentProject::isOpen() ? textOf(stateOfProject()) : "closed"; }

    Cookie bin_;
    int strikes_ = 0; // of all sweeps of the test
};

// --- loading ---------------------------------------------------------------------------------

TEST_F(AllocationTest, openingAProject) {
    sweep({[&] {
               end();
               host_.reset();
           },
           [&] { return tryBegin().ok(); }, [&] { return project(); }});
}

TEST_F(AllocationTest, openingAnEdit) {
    EditPtr edit;
    sweep({[&] { edit = EditPtr(); },
           [&] { return bool(edit = EditManager::instance().open(edits_[0])); },
           [&] { return stampOf(EditPtr(edits_[0])); }});
}

TEST_F(AllocationTest, goingBackAndForth) {
    end();
    sweep({[&] {
               end();
               begin();
               (void)EditManager::instance().redo(EditPtr(edits_[0]));
           },
           [&] { return EditManager::instance().undo(EditPtr(edits_[0])); },
           [&] { return stampOf(EditPtr(edits_[0])); }});
    sweep({[&] { (void)EditManager::instance().undo(EditPtr(edits_[0])); },
           [&] { return EditManager::instance().redo(EditPtr(edits_[0])); },
           [&] { return stampOf(EditPtr(edits_[0])); }});
}

TEST_F(AllocationTest, loadingABin) {
    Kv::Ptr<BinData> bin;
    sweep({[&] {
               bin = {};
               BinManager::instance().reInit();
           },
           [&] { return (bin = BinManager::instance().getData(bin_)) && bin->valid(); },
           [&] { return stampOf(*BinManager::instance().getData(bin_)); }});
}

TEST_F(AllocationTest, importing) {
    const CookieVec before = EditManager::instance().getAllEdits();
    const std::set<Cookie> kept(before.begin(), before.end());
    const auto edits = [&] {
        CookieVec made;
        for (const Cookie& cookie : EditManager::instance().getAllEdits())
            if (!kept.contains(cookie))
                made.push_back(cookie);
        return made;
    };
    const std::string file = CUTROOM_TEST_DATA "/corpus/otio/nested_example.otio";
    const auto clear = [&] { // and what deleted edits leave, or folders grow with every strike
        const CookieVec made = edits();
        EXPECT_TRUE(EditManager::instance().deleteEdits(made, "again").ok());
        for (const Cookie& cookie : made)
            std::filesystem::remove(EditFile::path(cookie) + ".bak");
    };
    sweep({clear, [&] { return importFile(file).ok(); },
           [&] {
               return std::to_string(edits().size()) +
                      (databaseTrouble().empty() ? "" : " and files") +
                      (EditManager::instance().anyDirty() ? " dirty" : " clean");
           },
           " clean"}); // what the next save or import removes
}

// --- saving ----------------------------------------------------------------------------------

TEST_F(AllocationTest, savingEdits) {
    const EditPtr edit(edits_[1]);
    sweep({[&] {
               edit->setName(L"old");
               EXPECT_TRUE(EditManager::instance().save(edit).ok());
               EditManager::instance().makeBackup(edit, "to new");
               edit->setName(L"new");
           },
           [&] { return EditManager::instance().flushChanges(false).ok(); },
           [&] { return savedEdit(edit); }, "new dirty"});
    EXPECT_EQ(databaseTrouble(), "");
    EXPECT_EQ(historyTrouble(edit), "");
}

TEST_F(AllocationTest, savingBins) {
    sweep({[&] {
               fill(L"old");
               EXPECT_TRUE(BinManager::instance().saveAll().ok());
               fill(L"new");
           },
           [&] { return BinManager::instance().saveAll().ok(); }, [&] { return savedBin(); },
           "new dirty"});
    EXPECT_EQ(summaryTrouble(), "");
}

TEST_F(AllocationTest, savingDocuments) {
    DocumentManager& documents = DocumentManager::instance();
    const Cookie id = documents.createDocument(L"/outside/x.pdf", 'D')->getID();
    const auto named = [&](const wchar_t* name) { documents.getDocument(id)->setName(name); };
    sweep({[&] {
               named(L"old");
               EXPECT_TRUE(documents.saveAll().ok());
               named(L"new");
           },
           [&] { return documents.saveAll().ok(); },
           [&] {
               const std::string bytes = bytesOf(path("documents/" + id.asString() + ".KvDoc"));
               return std::string(bytes.find("\"new\"") == bytes.npos ? "old" : "new") +
                      (documents.anyDirty() ? " dirty" : " clean");
           },
           "new dirty"});
}

// --- telling ---------------------------------------------------------------------------------

struct Telling {
    const char* name;
    void (*change)(Vob&); // is told
};
void PrintTo(const Telling& telling, std::ostream* out) { *out << telling.name; }

class TellingAllocations : public AllocationTest, public testing::WithParamInterface<Telling> {
protected:
    // The state of a Vob, its edit and its selections.
    static std::string stateOf(const Vob& vob) {
        const EditPtr edit = vob.getEdit();
        std::string text = toText(vob.getCurrentTime()) + " " + toText(vob.getMarkTime(0)) + " " +
                           edit->checkConsistency() + std::to_string(vob.getNumClients());
        for (const IdStamp& channel : edit->getChans())
            text += vob.getSelected(channel) ? '1' : '0';
        return text + edit->canonicalContents();
    }
};

const IdStamp kId(1, 2, 3); // of what is made: the same each time

INSTANTIATE_TEST_SUITE_P(
    Changes, TellingAllocations,
    testing::Values(Telling{"Time", [](Vob& vob) { vob.setCurrentTime(2); }},
                    Telling{"Mark", [](Vob& vob) { vob.setMarkTime(0, 3, Kv::MarkTypes::In); }},
                    Telling{"Cue",
                            [](Vob& vob) {
                                Cue cue(2.0, L"a cue");
                                cue.setExtID(kId);
                                vob.addCue(cue);
                            }},
                    Telling{"Name", [](Vob& vob) { EditModifier(vob.getEdit())->setName(L"b"); }},
                    Telling{"Channel",
                            [](Vob& vob) {
                                EditModifier(vob.getEdit())->addChan(kChanVideo, kSubNormal, kId);
                            }},
                    Telling{"Cut",
                            [](Vob& vob) {
                                const EditModifier edit(vob.getEdit());
                                const IdStamp channel = edit->getFirstChan(kChanVideo);
                                (void)edit->get_edit_cel_p(channel)->lift(TimeRange(0, 1));
                            }}),
    [](const auto& test) { return test.param.name; });

TEST_P(TellingAllocations, leaveItAsItWasOrDoneAndTold) {
    const auto vob = VobManager::instance().createVob(edits_[0]);
    CountingClient first(vob.get()), second(vob.get());
    sweep({[&] {
               vob->setCurrentTime(1);
               vob->setMarkTime(0, 1, Kv::MarkTypes::In);
               while (EditManager::instance().undo(vob->getEdit())) {
               }
               EditManager::instance().makeBackup(vob->getEdit(), "before");
           },
           [&] {
               GetParam().change(*vob);
               return true;
           },
           [&] { return stateOf(*vob); }});
    EXPECT_EQ(first.told, second.told);
    EXPECT_GT(first.told, 0);
}

// --- exporting -------------------------------------------------------------------------------

TEST_F(AllocationTest, exportingTimelines) {
    const EditPtr edit(edits_[1]);
    const auto contents = [&] { return edit->canonicalContents(); };
    sweep({[] {}, [&] { return exportOtio(edit).ok(); }, contents});
    sweep({[] {}, [&] { return exportEdl(edit, "V1").ok(); }, contents});
}

TEST_F(AllocationTest, exportingMarkersAndBins) {
    const EditPtr edit(edits_[0]);
    edit->addCue(Cue(TimeRange(1, 2), L"a range"));
    const std::vector<Cue> cues = edit->getCues().cues();
    const auto bin = BinManager::instance().getData(bin_);
    const std::string file = temp_ / "exported";
    for (const auto& exporter : BinManager::instance().getMetadataExporters()) {
        const bool markers =
            exporter->getSupportedSources() & iAssetMetadataExporter::kSourceMarkers;
        SCOPED_TRACE(toUtf8(exporter->getFormatName()));
        sweep({[&] { putBytes(file, "before"); },
               [&] {
                   return markers ? exporter->exportToFile(edit, cues, toWide(file))
                                  : exporter->exportToFile(bin, toWide(file));
               },
               [&] { return bytesOf(file); }});
    }
}

} // namespace
