// `EditManager`: the table of open edits, their files, their undo history, and the notices of
// change and deletion. One instance per process (from `Host::install` to `Host::uninstall`).
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/base/LogType.h"
#include "platform/base/Status.h"
#include "platform/messaging/Notifier.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditPtr.h"
#include "vob/notify/ValServer.h"

#include <functional>
#include <memory>
#include <vector>

namespace cutroom {
template <class T> class ProcessSingleton;
}

// Told with notices 20 and 21; the text of the message lists the cookies.
class CUTROOM_API EditDeletionNotice final : public iObject {
public:
    EditDeletionNotice(CookieVec edits, LightweightString<char> reason)
        : edits_(std::move(edits)), reason_(std::move(reason)) {}
    ~EditDeletionNotice() override;

    const CookieVec& edits() const noexcept { return edits_; }
    const LightweightString<char>& reason() const noexcept { return reason_; }

private:
    CookieVec edits_;
    LightweightString<char> reason_;
};

// Any thread may call; notices are delivered on the user-interface thread. The table has a lock of
// its own, never held while telling or while an edit's file is read.
class CUTROOM_API EditManager {
public:
    // A change of one edit, as handed to project listeners.
    struct Modification {
        Cookie edit;
        EditModifications changes;
    };
    // One step of an edit's history.
    struct HistoryStep {
        LightweightString<char> description;
        std::uint32_t when = 0; // seconds since 1970
        bool undone = false;    // can be redone
    };

    static EditManager& instance();

    // --- making, opening, saving ---------------------------------------------------------------
    // A new edit under `cookie` (kind 'E') with `video` and `audio` empty channels laid black to
    // `length` seconds. An invalid rate takes the project's default. Empty when the cookie is
    // taken or is not of kind 'E'.
    EditModifier makeNewEdit(const Cookie& cookie, unsigned char video, unsigned char audio,
                             double length, const Kv::FrameRate& rate);
    // The open edit, or the one read from its file. `*why` tells why it could not be opened.
    EditPtr open(const Cookie& cookie, cutroom::Status* why = nullptr);
    // Already in memory.
    bool isOpen(const Cookie& cookie) const;
    // The project has such an edit (in memory or on disk).
    bool exists(const Cookie& cookie) const;
    // Every edit and log of the project, in no order.
    CookieVec getAllEdits() const;
    // Writes every dirty edit and its history as one group: all or none, save that an edit which no
    // file can hold stays dirty and its error is given. With `all`, clean ones too. On any other
    // failure all stay dirty. Without a project edits live in memory only, until they are deleted
    // or the process ends: nothing is written, nothing fails. Not to be called under an edit's
    // lock.
    cutroom::Status flushChanges(bool all);
    cutroom::Status save(const EditPtr& edit);
    // The same for several: all or none. `progress`, if any, is told which share is written.
    cutroom::Status save(const std::vector<EditPtr>& edits,
                         const std::function<void(double)>& progress = {});
    // Takes back edits that were made and could not be completed or saved: removes them from
    // memory, and what a failed save left of them from database and folder (on failure the next
    // save does that first). Nothing is told of them. Handles that are still held keep their edit
    // alive outside the table.
    cutroom::Status discard(const CookieVec& edits);
    bool anyDirty() const;
    // Puts an edit under the open project (record in the project database, saved with the next
    // flush). Gives the edit as it stands in the project.
    EditPtr addToProject(const EditPtr& edit);
    // Deletes edits: first tells notice 20, then takes them out of the table, the database and the
    // disk, then tells notice 21. Those that do not exist are skipped.
    cutroom::Status deleteEdits(const CookieVec& edits, const LightweightString<char>& reason);
    // For writing commands: moves the file of an edit that cannot be read out of the way
    // ("<name>.damaged") and gives the new path. `wrongUsage` when the file is sound.
    cutroom::Result<std::string> setDamagedAside(const Cookie& edit);
    // For writing commands: puts the version before the last one in the place of a file that is no
    // longer there. `notFound` when there is none, `damaged` when that one is not sound either.
    cutroom::Status restoreBackup(const Cookie& edit);
    // Reads the edit's file and its history from the disk; tells what is wrong with them.
    cutroom::Status checkFiles(const Cookie& edit) const;
    // The edit that stands for the clipboard, made on first use.
    EditPtr getClipboard();

    // --- undo ----------------------------------------------------------------------------------
    // Puts a step into the edit's history: the state to which undo goes back. O(channels). When
    // nothing has changed since the last step, only its description is replaced.
    void makeBackup(const EditPtr& edit, const LightweightString<char>& description = {});
    // Takes the last step back when the change that it was made for did not happen: the history is
    // as it was, what could be redone too. Once a step; nothing when the edit has changed since.
    void dropBackup(const EditPtr& edit);
    // True when there was a step. Restores content, cues, configuration (but view state), mix and
    // name exactly, and tells kModRestored.
    bool undo(const EditPtr& edit);
    bool redo(const EditPtr& edit);
    bool canUndo(const EditPtr& edit) const;
    bool canRedo(const EditPtr& edit) const;
    // Oldest first.
    std::vector<HistoryStep> getHistory(const EditPtr& edit) const;
    static constexpr std::size_t kMaxSteps = 100;

    // --- notices -------------------------------------------------------------------------------
    // Calls `callback` on the user-interface thread for each notice of that number.
    Kv::Ptr<Guard> registerNotification(const Kv::Ptr<iCallbackBase<int, NotifyMsg>>& callback,
                                        int notice);
    // The same with a condition asked on delivery.
    Kv::Ptr<Guard> registerNotification(const Kv::Ptr<iCallbackBase<int, NotifyMsg>>& callback,
                                        int notice, std::function<bool(const NotifyMsg&)> filter);
    // Tells the project's exit, then drops every edit from memory (flushed before).
    cutroom::Status handleProjectExit();
    // The mixer bypass switch that audio components follow.
    ValServer<bool>& getMixerBypassServer();

private:
    friend class Edit;
    friend class EditPtr;
    friend class EditModifier;
    friend class ProjectListener;

    // Tells a change of an edit, when there is a manager. User-interface thread or any other.
    static void tellModifications(const Edit& edit, const NotifyMsg& message);
    // Called when a handle of the edit is dropped, which may be the last one.
    static void forget(Kv::Ptr<Edit> edit) noexcept;
    cutroom::Status removeFiles(const CookieVec& edits);
    cutroom::Status discardRest();
    bool restore(const EditPtr& edit, bool back);

    EditManager();
    ~EditManager();
    friend class cutroom::ProcessSingleton<EditManager>;

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// A fresh cookie of kind 'E', and one for a bin or group of kind 'G'.
CUTROOM_API Cookie makeNewEditCookie();
CUTROOM_API Cookie newContainerCookie();
// "Edit 1", "Edit 2" …: the first that no edit of the project has.
CUTROOM_API LightweightString<wchar_t> generateNewEditName();
// Applies a name: a text in parentheses is a suffix put behind the present name with a blank,
// replacing an equal one; any other text replaces the name. Empty does nothing.
CUTROOM_API void edit_modify_name(const EditPtr& edit, const LightweightString<wchar_t>& name);
// Initialises levels channels for the audio channels that have none.
class EditModule;
CUTROOM_API void autoInitAudioLevelsTracks(EditModule& module);
