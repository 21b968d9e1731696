// What the lines of an edit list that are no events say about the event above them.
#pragma once

#include "interchange/EdlList.h"

#include <string>
#include <string_view>

namespace cutroom {

// Tells whether `text` (without asterisk) begins with a known keyword and so is a comment of its
// own, never the rest of a wrapped one; an old list has such lines without the asterisk.
bool isKnownEdlComment(std::string_view text);
// Tells whether `text` begins as those comments do that always stand without an asterisk.
bool isBareEdlComment(std::string_view text);

// Takes a whole comment: names, files and reels go to `event` (null before the first one, then all
// is kept in the header of `list`), LOC and table lines to the markers of `list`.
void takeEdlComment(EdlList& list, EdlEvent* event, const std::string& text, long line);

// "M2  REEL  SPEED  TIMECODE": gives the speed to the event at the end of `list` whose reel it
// names, or holds it back for the next event. False when the line has another shape.
bool takeEdlSpeed(EdlList& list, std::string_view text);
// Gives the speeds held back to the event line that has just been added where that has their reel.
// Once the next event, which may be the two lines of a transition, is over, the others go to the
// event above the speed line, whose reel may be written shorter there.
void settleEdlSpeedsAtEvent(EdlList& list);
// The same where no event line follows.
void settleEdlSpeeds(EdlList& list);

// Turns events whose note is "text |C:colour |M:name |D:frames" into markers.
void takeMarkerEvents(EdlList& list);

} // namespace cutroom
