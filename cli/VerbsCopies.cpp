// Verbs that copy edits and logs, make sequences of them, and note parents.
#include "cli/Names.h"
#include "cli/Session.h"
#include "editops/AssetParent.h"
#include "editops/CopyKinds.h"
#include "editops/CopyLog.h"
#include "editops/CopyNames.h"
#include "editops/EditCopy.h"
#include "editops/RangeCopy.h"
#include "editops/SequenceMaking.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <optional>

namespace cutroom::cli {

namespace {

eLogType takeType(SessionWords& words) {
    return words.takeChoice<eLogType>("a type", {{"edit", kLogTypeEdit},
                                                 {"sync", kLogTypeSyncGhost},
                                                 {"print", kLogTypePrintGhost},
                                                 {"subclip", kLogTypeSubclip}});
}

std::wstring takeName(SessionWords& words) {
    return words.takeIf("named") ? toWide(words.take("a name")) : std::wstring();
}

// The same, and whether `flag` stands before or after it.
bool takeFlagAndName(SessionWords& words, std::string_view flag, std::wstring& name) {
    const bool first = words.takeIf(flag);
    name = takeName(words);
    return words.takeIf(flag) || first;
}

// Enters what was made in the project, so that the next line can name it, and tells its name,
// length, tracks, and what the configuration says of its kind and parent.
void sayMade(Session& session, const EditModifier& made) {
    if (!made)
        refuse(StatusCode::failed, "the copy", "could not be made");
    EditManager::instance().addToProject(made);
    std::string text = "  made \"" + toUtf8(made->getName()) + "\", " +
                       timeText(made->getEndTime() - made->getStartTime()) + ", tracks";
    for (const IdStamp& channel : made->getChans())
        text += ' ' + toUtf8(made->getChanDisplayName(channel));
    if (const auto kind = made->getConfig(kCopyKindKey))
        text += ", kind " + *kind;
    if (const auto parent = made->getConfig(kParentKey)) {
        const EditPtr source{Cookie(*parent)}; // none when it has been deleted since
        text += source ? ", from \"" + toUtf8(source->getName()) + '"' : ", from a deleted edit";
    }
    session.say(text);
}

EditModule moduleOf(Session& session) {
    session.edit(); // refuses without one
    return session.viewer()->getEditModule();
}

void copyWhole(Session& session, SessionWords& words) {
    std::wstring name;
    const bool ownStrips = takeFlagAndName(words, "own-strips", name);
    sayMade(session, copyEdit(moduleOf(session), name, ownStrips));
}

void copySequence(Session& session, SessionWords& words) {
    sayMade(session, copySequenceEdit(session.edit(), takeName(words)));
}

void basicCopy(Session& session, SessionWords& words) {
    sayMade(session, edcopy_basic_copy(require(findEditCookie(words.take("an edit or log")))));
}

void copyMarked(Session& session, SessionWords& words) {
    const eLogType type = takeType(words);
    sayMade(session, copyRange(moduleOf(session), type, words.takeIf("whole")));
}

void generalCopy(Session& session, SessionWords& words) {
    const Cookie source = require(findEditCookie(words.take("an edit or log")));
    const eLogType type = takeType(words);
    if (words.done()) {
        sayMade(session, edcopy_general_copy(source, type));
        return;
    }
    const double t1 = words.takeNumber("seconds");
    const double t2 = words.takeNumber("seconds");
    sayMade(session, edcopy_general_copy_range(source, type, takeName(words), t1, t2));
}

Cookie takeEditCookie(SessionWords& words) {
    const std::string& text = words.take("a cookie");
    const Cookie cookie(text);
    if (cookie.type() != 'E')
        refuse(StatusCode::wrongUsage, text, "not the cookie of an edit or log");
    return cookie;
}

void newLog(Session& session, SessionWords& words) {
    const eLogType type = takeType(words);
    std::wstring name;
    std::optional<Cookie> under;
    while (!words.done())
        if (words.takeOneOf("a word", {"under", "named"}) == "under")
            under = takeEditCookie(words);
        else
            name = toWide(words.take("a name"));
    const Cookie unused;
    const EditModule module = moduleOf(session);
    sayMade(session, under ? edcopy_general_copy_range(unused, *under, type, name, module)
                           : edcopy_general_copy_range(unused, type, name, module));
}

void makeKind(Session& session, SessionWords& words) {
    const auto& kind =
        words.takeOneOf("a kind", {"clip-section", "print-ghost", "subclip", "sync-ghost"});
    std::wstring name;
    const bool keepLabels = takeFlagAndName(words, "keep-labels", name);
    EditModifier edit = session.editForChange();
    if (kind == "clip-section")
        edcopy_make_clipsection(edit);
    else if (kind == "print-ghost")
        edcopy_make_print_ghost(edit, name);
    else if (kind == "subclip")
        edcopy_make_subclip(edit, name);
    else
        edcopy_make_sync_ghost(edit, name, keepLabels);
}

void flatCopy(Session& session, SessionWords&) { sayMade(session, ::flatten(moduleOf(session))); }

void fromClip(Session& session, SessionWords&) {
    sayMade(session, makeSequenceFromClip(moduleOf(session)));
}

void fromSource(Session& session, SessionWords& words) {
    sayMade(session, makeSequenceFromSource(moduleOf(session), takeName(words)));
}

void noteParent(Session& session, SessionWords& words) {
    const Cookie parent = require(findEditCookie(words.take("an edit or log")));
    EditModifier edit = session.editForChange();
    setAssetParent(edit, parent);
}

void suffix(Session& session, SessionWords& words) {
    if (words.takeIf("text"))
        session.say("  " + toUtf8(makeEditNameSuffix(static_cast<ResId>(
                               words.takeInt("a text's number", 1, 1'000'000)))));
    else
        session.say("  " + toUtf8(makeEditNameSuffix(toWide(words.take("a text")))));
}

void lastMessage(Session& session, SessionWords&) {
    session.say(std::string("  \"") + edcopy_get_log() + '"');
}

} // namespace

void addCopyVerbs(VerbTable& verbs) {
    verbs.heading("Copies");
    verbs.add({"copy-edit", "[own-strips] [named NAME]",
               "copies the edit with the tracks selected, a clip as a clip of its own", copyWhole});
    verbs.add({"copy-sequence", "[named NAME]", "copies the edit or log whole, as an edit",
               copySequence});
    verbs.add({"copy-basic", "EDIT", "copies an edit or log whole", basicCopy});
    verbs.add({"copy-range", "edit|sync|print|subclip [whole]",
               "copies what the viewer marks; of an edit the tracks selected", copyMarked});
    verbs.add({"copy-general", "EDIT edit|sync|print|subclip [T T [named NAME]]",
               "copies all, or between two times in seconds", generalCopy});
    verbs.add({"new-log", "edit|sync|print|subclip [under COOKIE] [named NAME]",
               "copies what the viewer marks, under a cookie of its own", newLog});
    verbs.add({"make-kind",
               "clip-section|print-ghost|subclip|sync-ghost [keep-labels] [named NAME]",
               "makes the edit itself that kind of copy", makeKind});
    verbs.add({"copy-flat", "", "copies the edit, the selected picture in one layer", flatCopy});
    verbs.add(
        {"sequence-from-clip", "", "makes an edit of what the viewer marks of a clip", fromClip});
    verbs.add({"sequence-from-source", "[named NAME]",
               "copies whole as an edit, with the tracks selected", fromSource});
    verbs.add({"parent", "EDIT", "notes what the edit was made from", noteParent});
    verbs.add({"name-suffix", "text N | TEXT", "tells the suffix of a name", suffix});
    verbs.add({"last-message", "", "tells what an operation on edits said last", lastMessage});
}

} // namespace cutroom::cli
