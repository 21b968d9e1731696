// The numbers of the texts that the library asks of the string table.
#pragma once

// A resource number.
using ResId = unsigned;

namespace cutroom {

// Suffixes of the names of copies; they are put in parentheses.
inline constexpr ResId kResSubclip = 10015; // a subclip, and kinds without a suffix of their own
inline constexpr ResId kResSequenceCopy = 10016; // a copy as an edit; a sequence made from a clip
inline constexpr ResId kResFlattened = 10017;
inline constexpr ResId kResSyncGhost = 10018;
inline constexpr ResId kResCopy = 10019; // a copy of a whole edit
inline constexpr ResId kResPrintGhost = 10020;
inline constexpr ResId kResEditFromCues = 10413;    // an edit made from a log's cues
inline constexpr ResId kResSequenceSection = 10833; // a copy of a range, as an edit

inline constexpr ResId kResNoEdit = 10054;         // name of a viewer without edit
inline constexpr ResId kResDefaultCueName = 11093; // a number follows after a blank
// A cut off the frame boundary; "$NAME$" and "$TIMECODE$" are replaced.
inline constexpr ResId kResSubframeError = 11806;
inline constexpr ResId kResSearchResults = 11983;
// Ways of combining bins.
inline constexpr ResId kResSetOperation0 = 12036;
inline constexpr ResId kResSetOperation1 = 12037;
inline constexpr ResId kResSetOperation2 = 12038;
inline constexpr ResId kResAssociationGroup = 13009; // name of a new asset group

// Where a transition is placed.
inline constexpr ResId kResTransCentredHere = 11687;
inline constexpr ResId kResTransCurrentSection = 11690;
inline constexpr ResId kResTransSectionUnfolded = 11691;
inline constexpr ResId kResTransFromHere = 11692;
inline constexpr ResId kResTransMultipleSections = 11693;
inline constexpr ResId kResTransToHere = 11695;
inline constexpr ResId kResTransUseMark = 11696;
inline constexpr ResId kResTransPosition4 = 11697;
inline constexpr ResId kResTransPosition5 = 11698;
inline constexpr ResId kResTransSelectedSegments = 12713;

// Names of the kinds of asset, numbered here.
inline constexpr ResId kResTypeSource = 20001;
inline constexpr ResId kResTypeEdit = 20002;
inline constexpr ResId kResTypeSyncGhost = 20003;
inline constexpr ResId kResTypePrintGhost = 20004;
inline constexpr ResId kResTypeSubclip = 20005;
inline constexpr ResId kResTypeFileCopy = 20006;
inline constexpr ResId kResTypeClipSection = 20007;
inline constexpr ResId kResTypeOther = 20008;
inline constexpr ResId kResTypeBin = 20009;
inline constexpr ResId kResTypeDocument = 20010;
inline constexpr ResId kResTypeAsset = 20011; // of any kind
// The same in the plural.
inline constexpr ResId kResTypeSources = 20021;
inline constexpr ResId kResTypeEdits = 20022;
inline constexpr ResId kResTypeSyncGhosts = 20023;
inline constexpr ResId kResTypePrintGhosts = 20024;
inline constexpr ResId kResTypeSubclips = 20025;
inline constexpr ResId kResTypeFileCopies = 20026;
inline constexpr ResId kResTypeClipSections = 20027;
inline constexpr ResId kResTypeOthers = 20028;
inline constexpr ResId kResTypeBins = 20029;
inline constexpr ResId kResTypeDocuments = 20030;
inline constexpr ResId kResTypeAssets = 20031;

} // namespace cutroom
