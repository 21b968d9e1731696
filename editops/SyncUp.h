// Sync-up: a picture shot and a separately recorded sound shot become one synchronised log.
//
// Every operation makes a new log of the open project, saved with the next flush, and gives its
// cookie. On failure it gives the invalid cookie, leaves nothing behind, and the reason as
// `edcopy_get_log`: shots that cannot be opened, labels that do not agree
// (`synchup_get_CELtime_offset`), and with the text for labels that do not match whatever else
// cannot be joined: an offset that is no time, a stretch of no whole frame, no picture, no sound.
// Shots are left alone; their cookies may be those of their strips. Not to be called under an
// edit's lock; any thread otherwise.
//
// An offset is how many seconds the first shot's time 0 lies after that of the second:
//
//   first  (sound)         |=========|
//   second (picture)   |-----------|             offset > 0
//
// The second shot is the picture, the first the sound, unless the first alone has picture channels;
// then it is the other way round.
//
// What is made has the picture shot's frame rate, drop-frame counting and picture metadata, the
// sound shot's sound metadata, and the picture shot's name with a suffix. Its time 0 is the first
// whole frame of the stretch that the rules choose, its end the last. Cuts lie on frames; sound
// that does not is cut on the frame and played from as much later, so that it stays in sync to the
// sample. Labels are the picture's, moved so that each frame keeps its number, and those of the
// sound that the picture lacks or that the sound-label rule names, unless the picture-label rule
// names the same. It is no source material; it is a sync ghost (type 4) or, without `makeGhost`,
// an edit.
#pragma once

#include "editops/SyncUpLabels.h"
#include "editops/SyncUpParams.h"
#include "platform/base/Cookie.h"

// Joins the picture channels of the one with the sound channels of the other, with the groups of
// the sound channels; a stereoscopic picture's two eyes become a group. Takes the cues of both that
// a person placed, the keys that describe the picture, and sound reel and sample rate of the sound.
CUTROOM_API Cookie synchup_cookies_by_label(Cookie first, EditChanType firstType, Cookie second,
                                            EditChanType secondType, synchup_params params);
// The same, with what lies at `t1` of the first shot brought to `t2` of the second (seconds).
CUTROOM_API Cookie synchup_cookies_by_time(Cookie first, Cookie second, double t1, double t2,
                                           synchup_params params);

// Joins shots of any kind with all their channels: `synchup_general_build_edit` of them.
CUTROOM_API Cookie synchup_general_cookies_by_label(Cookie first, EditChanType firstType,
                                                    Cookie second, EditChanType secondType,
                                                    synchup_params params);
// The same by time. Part, sound offset and date check of `params` play no part.
CUTROOM_API Cookie synchup_general_cookies_by_time(Cookie first, Cookie second, double t1,
                                                   double t2, synchup_params params);
// Joins the picture channels of the one with the sound channels of the other; with `allChannels`
// also the picture shot's own sound (below the recorded one), the sound shot's picture, subtitles
// and others. No cues, keys or groups come along.
CUTROOM_API Cookie synchup_general_build_edit(Cookie first, Cookie second, double offset,
                                              synchup_params params, bool allChannels);
