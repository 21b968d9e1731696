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

// Project filters: a name each, numbered here, and 20 above it what the filter shows; then the
// names of their bins. The last two are named by the user; "$NAME$" is replaced.
inline constexpr ResId kResFilterEverything = 20101;
inline constexpr ResId kResFilterLogs = 20102;
inline constexpr ResId kResFilterRecentLogs = 20103;
inline constexpr ResId kResFilterSubClips = 20104;
inline constexpr ResId kResFilterConstituents = 20105;
inline constexpr ResId kResFilterDocuments = 20106;
inline constexpr ResId kResFilterImages = 20107;
inline constexpr ResId kResFilterTag = 20108;
inline constexpr ResId kResFilterUser = 20109;
inline constexpr ResId kResFilterDescription = 20; // added to the number of a name
inline constexpr ResId kResBinClips = 20141;
inline constexpr ResId kResBinSubclips = 20142;
inline constexpr ResId kResBinSyncs = 20143;
inline constexpr ResId kResBinPrints = 20144;
inline constexpr ResId kResBinClipSections = 20145;
inline constexpr ResId kResBinLastDay = 20146;
inline constexpr ResId kResBinLastWeek = 20147;
inline constexpr ResId kResBinLastMonth = 20148;

// Words of searches, numbered here.
inline constexpr ResId kResSearchEverything = 20201; // name of a search without conditions
inline constexpr ResId kResSearchKinds = 20202;
inline constexpr ResId kResSearchNoImages = 20203;
inline constexpr ResId kResSearchClipboard = 20204;
inline constexpr ResId kResSearchText = 20205;
inline constexpr ResId kResSearchWholeWords = 20206;
inline constexpr ResId kResSearchMatch = 20210;     // and the next 8: the ways of matching
inline constexpr ResId kResSearchOperators = 20220; // and the next 2: how patterns are joined
inline constexpr ResId kResSearchOrEmpty = 20223;
inline constexpr ResId kResSearchMarkers = 20230;
inline constexpr ResId kResSearchMarkerTypes = 20231;
inline constexpr ResId kResSearchNoMarkerTypes = 20232;
inline constexpr ResId kResSearchDrive = 20240;
inline constexpr ResId kResSearchTime = 20241;
inline constexpr ResId kResSearchVideo = 20242;
inline constexpr ResId kResSearchAudio = 20243;
inline constexpr ResId kResSearchMedia = 20244;
inline constexpr ResId kResSearchPresent = 20245;
inline constexpr ResId kResSearchAbsent = 20246;
inline constexpr ResId kResSearchColours = 20250; // and the next 8: marker types by bit

} // namespace cutroom
