// The kinds of log and edit that the edit store knows.
#pragma once

// Bits, so that sets of kinds can be asked for. The numbers are persisted.
enum eLogType : unsigned {
    kLogTypeNone = 0,
    kLogTypeSource = 1,     // a log of source material
    kLogTypeEdit = 2,       // an edit or sequence
    kLogTypeSpecial = 3,    // a type of its own, not a set: edits whose extents follow any change
    kLogTypeSyncGhost = 4,  // picture and sound synchronised
    kLogTypePrintGhost = 8, // a print
    kLogTypeSubclip = 16,   // a marked range of another log
    kLogTypeFileCopy = 256, // copied file for file, like source material
    kLogTypeClipSection = 1024, // a section of a clip
};
