// Logs made of an edit's cues: one for each region that they mark.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/LogType.h"
#include "platform/store/Cue.h"
#include "platform/store/EditModule.h"

#include <vector>

// Makes a log of type `logType` (2 an edit, 4 a sync ghost, 8 a print ghost, 16 a subclip) of each
// region of the module's edit (`getRegionsFromCues`), over all its channels whatever the module
// selects or marks. Gives the cookies in the order of the regions; a region that no log can be made
// of is left out. Silent; empty without edit or regions.
//
// A log carries no cues. It is called after its cue, blanks at both ends cut off, unless that name
// is empty or begins the default cue name ("m", "MARKER"); then it keeps the name that `copyRange`
// gave it. What the run changes in the project database is told and written in one go. Not to be
// called under an edit's lock.
CUTROOM_API CookieVec makeLogsUsingCuePoints(eLogType logType, const EditModule& module);
// The same with the regions of `cues`, times on `edit`.
CUTROOM_API CookieVec makeLogsUsingCuePoints(eLogType logType, const EditPtr& edit,
                                             const std::vector<Cue>& cues);
