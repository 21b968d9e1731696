// `CurrentProject`: the one open project, its identity, its defaults and its folder.
//
// The project folder is locked for one writing process; another may open it for reading only.
// Opening and closing happen on the user-interface thread; queries may come from any thread.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Guard.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/NotifyMsg.h"
#include "platform/project/LogAttribute.h"

#include <functional>
#include <string>
#include <vector>

// What new edits of a project begin with.
struct ProjectDefaults {
    Kv::FrameRate frameRate{25, 1};
    bool dropFrame = false;
    // File name of the mix configuration for new edits inside the project folder, without any
    // folder; empty: none.
    std::string mixConfiguration;

    friend bool operator==(const ProjectDefaults&, const ProjectDefaults&) = default;
};

class CUTROOM_API CurrentProject {
public:
    enum class Access { readWrite, readOnly };
    // How a project is opened that does not exist yet.
    enum class IfMissing { fail, create };

    // Opens the project in `folder` (UTF-8). Fails, with nothing open, when a project is open
    // (`wrongUsage`), when there is none (`notFound`), when another process writes it (`locked`),
    // when project.json, the marks or the database come from a later version, or when the system
    // refuses.
    // Creating makes the folder and those above it, names the project after the folder, and fails
    // (`wrongUsage`) when the folder holds other files and no project.json.
    //
    // What is damaged does not keep a project from opening: for writing it is moved aside and made
    // anew, for reading only it is replaced in memory and nothing is touched; `getWarnings` tells.
    // A database that is missing, damaged, or left behind by a process that ended in the midst of
    // its work is rebuilt. Tells "entered" at last.
    [[nodiscard]] static cutroom::Status open(const std::string& folder,
                                              Access access = Access::readWrite,
                                              IfMissing ifMissing = IfMissing::fail);
    // Tells "about to exit", closes the database, the marks and the folder lock, tells "exited".
    // All well when none is open. A failure to write what was due is given, and the project is
    // closed nevertheless.
    static cutroom::Status close();

    // What was found damaged, or left undone by a crash, when the project was opened.
    static std::vector<cutroom::Status> getWarnings();

    static bool isOpen() noexcept;
    static bool isReadOnly() noexcept;
    // True from the moment before "about to exit" is told until "exited" has been told.
    static bool isExiting() noexcept;

    // The identity, of kind 'P'; invalid without a project.
    static Cookie getCookie();
    static LightweightString<wchar_t> getName();
    // The folder as an absolute path in UTF-8; empty without a project.
    static std::string getFolder();
    static ProjectDefaults getDefaults();
    // Each writes project.json before it counts; fails without an open, writable project.
    [[nodiscard]] static cutroom::Status setName(const LightweightString<wchar_t>& name);
    [[nodiscard]] static cutroom::Status setDefaults(const ProjectDefaults& defaults);

    // The attributes that the project defines beyond the built-in ones, in the order of their
    // definition; never fewer, so numbers keep their meaning.
    static std::vector<LogAttribute> getCustomAttributes();
    // Defines one; gives the one that is there when `id` is defined already. Fails for an id that
    // is empty, over 64 bytes, ill-formed, built in, or means markers in saved searches.
    [[nodiscard]] static cutroom::Result<LogAttribute>
    addCustomAttribute(const std::string& id, const LightweightString<wchar_t>& displayName,
                       DBFieldTypes::eType fieldType);

    // The messages "projectEntered", "projectAboutToExit" and "projectExited", interned; the text
    // is the project's cookie. Told on the user-interface thread, listeners in the order of their
    // registration.
    static int enteredMsgType();
    static int aboutToExitMsgType();
    static int exitedMsgType();
    // Calls `callback` with each of the three, or with those of one type, until the guard is
    // dropped.
    [[nodiscard]] static Kv::Ptr<Guard> addListener(const CallbackPtr<NotifyMsg>& callback);
    [[nodiscard]] static Kv::Ptr<Guard> addListener(const CallbackPtr<NotifyMsg>& callback,
                                                    int msgType);

    // `rebuild` is called during `open`, before "entered" is told, when the database was missing,
    // damaged, behind or not closed; it puts a record of every edit and log found in the project's
    // folder. The database is open by then, one transaction is, and what has no file has no record.
    // At most one can be installed; it stays until the guard is dropped.
    [[nodiscard]] static Kv::Ptr<Guard>
    installDatabaseRebuilder(std::function<cutroom::Status()> rebuild);
    // Has the database rebuilt so, in one transaction; on failure it is as before.
    // `notFound` when no rebuilder is installed.
    [[nodiscard]] static cutroom::Status rebuildDatabase();

    CurrentProject() = delete;
};
