#include "platform/embedded/EnglishTexts.h"

#include <algorithm>
#include <array>

namespace cutroom {

namespace {

struct Row {
    ResId id;
    const wchar_t* text;
};

// Ascending by number.
constexpr Row kRows[] = {
    {kResSubclip, L"Subclip"},
    {kResSequenceCopy, L"Sequence"},
    {kResFlattened, L"Flattened"},
    {kResSyncGhost, L"Sync"},
    {kResCopy, L"Copy"},
    {kResPrintGhost, L"Print"},
    {kResNoEdit, L"Untitled"},
    {kResEditFromCues, L"From markers"},
    {kResSequenceSection, L"Section"},
    {kResDefaultCueName, L"Marker"},
    {kResTransCentredHere, L"Centred on the cut"},
    {kResTransCurrentSection, L"Current section"},
    {kResTransSectionUnfolded, L"Current section, unfolded"},
    {kResTransFromHere, L"From the cut"},
    {kResTransMultipleSections, L"Several sections"},
    {kResTransToHere, L"To the cut"},
    {kResTransUseMark, L"Between mark and current time"},
    {kResTransPosition4, L"From the start"},
    {kResTransPosition5, L"To the end"},
    {kResSubframeError, L"$NAME$ has a cut off the frame boundary at $TIMECODE$"},
    {kResSearchResults, L"Search results"},
    {kResSetOperation0, L"In any of the bins"},
    {kResSetOperation1, L"In all of the bins"},
    {kResSetOperation2, L"In the first bin only"},
    {kResTransSelectedSegments, L"Selected segments"},
    {kResAssociationGroup, L"Related assets"},
    {kResTypeSource, L"Clip"},
    {kResTypeEdit, L"Sequence"},
    {kResTypeSyncGhost, L"Synced clip"},
    {kResTypePrintGhost, L"Print"},
    {kResTypeSubclip, L"Subclip"},
    {kResTypeFileCopy, L"Copied clip"},
    {kResTypeClipSection, L"Clip section"},
    {kResTypeOther, L"Log"},
    {kResTypeBin, L"Bin"},
    {kResTypeDocument, L"Document"},
    {kResTypeAsset, L"Asset"},
    {kResTypeSources, L"Clips"},
    {kResTypeEdits, L"Sequences"},
    {kResTypeSyncGhosts, L"Synced clips"},
    {kResTypePrintGhosts, L"Prints"},
    {kResTypeSubclips, L"Subclips"},
    {kResTypeFileCopies, L"Copied clips"},
    {kResTypeClipSections, L"Clip sections"},
    {kResTypeOthers, L"Logs"},
    {kResTypeBins, L"Bins"},
    {kResTypeDocuments, L"Documents"},
    {kResTypeAssets, L"Assets"},
    {kResFilterEverything, L"Everything"},
    {kResFilterLogs, L"Logs"},
    {kResFilterRecentLogs, L"Recent logs"},
    {kResFilterSubClips, L"Sub-clips"},
    {kResFilterConstituents, L"Constituents"},
    {kResFilterDocuments, L"Documents"},
    {kResFilterImages, L"Images"},
    {kResFilterEverything + kResFilterDescription, L"All edits, logs and documents"},
    {kResFilterLogs + kResFilterDescription, L"All logs, by kind"},
    {kResFilterRecentLogs + kResFilterDescription, L"Logs made lately"},
    {kResFilterSubClips + kResFilterDescription, L"Sub-clips of the edits being worked on"},
    {kResFilterConstituents + kResFilterDescription, L"What the current edit is cut from"},
    {kResFilterDocuments + kResFilterDescription, L"All documents"},
    {kResFilterImages + kResFilterDescription, L"All still images"},
    {kResFilterTag + kResFilterDescription, L"Everything tagged \"$NAME$\""},
    {kResFilterUser + kResFilterDescription, L"Made by hand"},
    {kResBinClips, L"Clips"},
    {kResBinSubclips, L"Subclips"},
    {kResBinSyncs, L"Synced clips"},
    {kResBinPrints, L"Prints"},
    {kResBinClipSections, L"Clip sections"},
    {kResBinLastDay, L"Last day"},
    {kResBinLastWeek, L"Last 7 days"},
    {kResBinLastMonth, L"Last 30 days"},
    {kResSearchEverything, L"Everything"},
    {kResSearchKinds, L"Kinds"},
    {kResSearchNoImages, L"no still images"},
    {kResSearchClipboard, L"Clipboard"},
    {kResSearchText, L"Text"},
    {kResSearchWholeWords, L"as whole words"},
    {kResSearchMatch, L"contains"},
    {kResSearchMatch + 1, L"does not contain"},
    {kResSearchMatch + 2, L"is"},
    {kResSearchMatch + 3, L"is not"},
    {kResSearchMatch + 4, L"starts with"},
    {kResSearchMatch + 5, L"ends with"},
    {kResSearchMatch + 6, L"is less than"},
    {kResSearchMatch + 7, L"is greater than"},
    {kResSearchMatch + 8, L"has the word"},
    {kResSearchOperators, L"and"},
    {kResSearchOperators + 1, L"or"},
    {kResSearchOperators + 2, L"and not"},
    {kResSearchOrEmpty, L"or is empty"},
    {kResSearchMarkers, L"Markers"},
    {kResSearchMarkerTypes, L"Marker colours"},
    {kResSearchNoMarkerTypes, L"No marker colours"},
    {kResSearchDrive, L"Media on"},
    {kResSearchTime, L"Contains the time"},
    {kResSearchVideo, L"Video tracks"},
    {kResSearchAudio, L"Audio tracks"},
    {kResSearchMedia, L"Media"},
    {kResSearchPresent, L"present"},
    {kResSearchAbsent, L"absent"},
    {kResSearchColours, L"red"},
    {kResSearchColours + 1, L"green"},
    {kResSearchColours + 2, L"blue"},
    {kResSearchColours + 3, L"cyan"},
    {kResSearchColours + 4, L"magenta"},
    {kResSearchColours + 5, L"yellow"},
    {kResSearchColours + 6, L"white"},
    {kResSearchColours + 7, L"black"},
    {kResSearchColours + 8, L"other"},
};

constexpr bool byId(const Row& a, const Row& b) { return a.id < b.id; }
static_assert(std::is_sorted(std::begin(kRows), std::end(kRows), byId));

} // namespace

std::optional<LightweightString<wchar_t>> EnglishTexts::find(ResId id) const {
    const auto row = std::lower_bound(std::begin(kRows), std::end(kRows), Row{id, nullptr}, byId);
    if (row == std::end(kRows) || row->id != id)
        return std::nullopt;
    return LightweightString<wchar_t>(row->text);
}

LightweightVector<ResId> EnglishTexts::ids() {
    LightweightVector<ResId> all;
    for (const Row& row : kRows)
        all.push_back(row.id);
    return all;
}

} // namespace cutroom
