// The sources that the clips of a file play, and the logs that stand for them in the project.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace cutroom {

// What one source is and how the file uses it. Its identity is medium, reel, location and name.
struct ImportSource {
    std::string medium; // "file", "image sequence", "generator", "missing", "other"
    std::string reel;
    std::string location;
    std::string name;
    std::string raw;
    Kv::FrameRate rate;
    bool dropFrame = false;        // where the rate allows it
    std::optional<Span> available; // all that any clip says there is
    std::optional<Span> used;      // media time that clips play
    bool video = false;
    bool subtitle = false;
    bool other = false;
    std::uint64_t audio = 0; // bit i: sound channel i + 1
    CookieVec candidates;    // logs of the project with its identity and its channels
    Cookie log;
};

// Collects sources first, then finds or makes their logs, then gives clips their material. Used by
// one import on the user-interface thread.
//
// The time of a strip is media time: the log begins at 0 with a strip time of the media's start,
// its timecode label shows that start, and the source range of a clip stays what the file says.
//
//   media      01:00:00:00 |------ available ------|
//   log                  0 |-----------------------|   strip time 01:00:00:00 on
//   clip                          |----|               strip time 01:00:04:00, say
class ImportSources {
public:
    // Takes note of a clip on a track of `kind`; `record` counts where the clip does not say how.
    void note(const Item& item, TrackKind kind, int channel, const TimecodeFormat& record);
    std::size_t count() const noexcept { return sources_.size(); }
    // Gives each source its log: one that the project has with all channels that are needed, else
    // a new one, appended to `made`. `done` is called after each.
    Status makeLogs(std::vector<EditModifier>& made, const std::function<void()>& done);
    // The material of a noted clip: a strip of its log, or the log itself on tracks that are
    // neither picture nor sound.
    Cookie materialOf(const Item& item, TrackKind kind, int channel) const;

    // Logs used again that stand for less of their media than the file tells of.
    long shortLogs() const noexcept { return shortLogs_; }

private:
    static ImportSource describe(const Item& item);
    void findLogs();
    Status chooseLog(ImportSource& source);

    long shortLogs_ = 0;
    std::vector<ImportSource> sources_;
    std::unordered_map<std::string, std::size_t> byKey_;
};

// The sound channel of its source that a clip plays: an edit list names it; 1 otherwise.
int importedChannel(const Item& item, const Track& track);

// What is laid where a clip plays backwards: the end of its source range, read towards its start.
Flicks importedStripStart(const Item& item);

} // namespace cutroom
