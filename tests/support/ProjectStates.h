// What a project holds, as text that two processes can compare.
#pragma once

#include "bins/BinData.h"
#include "bins/DescribedContainer.h"
#include "platform/base/Cookie.h"
#include "platform/store/EditPtr.h"
#include "tests/support/TempFolder.h"

#include <map>
#include <string>
#include <vector>

namespace cutroom::test {

// Key of what it holds ("name" for the project's own name) to a stamp of its content and history.
// The key is the cookie; asset groups, whose cookies are of the kind of bins', have "group."
// before.
using ProjectState = std::map<std::string, std::string>;

// Checksum of the edit's contents and its history's steps: descriptions, and which can be redone.
std::string stampOf(const EditPtr& edit);
std::string stampOf(const BinData& bin);
std::string stampOf(const DescribedContainer& container);
std::string groupKey(const Cookie& group);
// Of every edit, bin, document and asset group of the open project, each opened for it; one that
// cannot be has "-".
ProjectState stateOfProject();
// One line, without its end, and back.
std::string textOf(const ProjectState& state);
ProjectState stateOf(const std::string& text);
// What they differ in, one line each.
std::string differences(const ProjectState& a, const ProjectState& b);

// Imports two timelines of many tracks and gives the edits made; throws when they cannot be read.
CookieVec importTimelines();

// Path within `folder` to content, of every file below it.
std::map<std::string, std::string> filesBelow(const std::string& folder);
// Those of these names that only an interrupted write leaves.
std::vector<std::string> litterAmong(const std::map<std::string, std::string>& files);

// What the project database says wrongly of the edits in the project's folder; empty when all is
// right.
std::string databaseTrouble();
// Where the summary of a bin differs from the bin; empty when they agree.
std::string summaryTrouble();
// Undoes all there is and takes it back: empty when every state is sound and the last one is the
// first again.
std::string historyTrouble(const EditPtr& edit);

} // namespace cutroom::test
