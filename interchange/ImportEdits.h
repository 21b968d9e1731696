// Makes the edits and logs of one file in memory.
#pragma once

#include "interchange/ImportTracks.h"
#include "interchange/Timeline.h"

#include <functional>
#include <string>
#include <vector>

namespace cutroom {

// Everything that one file becomes. What it made is known to the edit manager and saved by nobody
// yet; unless `keep` was called, its end takes all of it back. User-interface thread.
class ImportedFile {
public:
    explicit ImportedFile(std::string path) : path_(std::move(path)) {}
    ~ImportedFile();
    ImportedFile(const ImportedFile&) = delete;
    ImportedFile& operator=(const ImportedFile&) = delete;

    // Makes logs and edits; `progress` is told from 0 to 1. Items and markers leave `timelines` as
    // they are laid.
    Status make(std::vector<Timeline>& timelines, const std::function<void(double)>& progress);
    // Writes all that was made as one group; `progress` is told from 0 to 1.
    Status save(const std::function<void(double)>& progress);
    // Lets it stay.
    void keep() { kept_ = true; }

    const CookieVec& roots() const { return roots_; }
    const CookieVec& nested() const { return nested_; }
    // Those that were made.
    CookieVec logs() const;
    std::vector<std::string> warnings(const std::vector<Timeline>& timelines) const;

private:
    void tellDone(std::size_t more);
    // `dropFrame`: how the outermost timeline counts.
    void noteSources(const Timeline& timeline, bool dropFrame);
    enum class Level { root, nested };
    Status makeEdit(Timeline& timeline, Level level, Cookie& made);
    void describeEdit(const EditPtr& edit, const Timeline& timeline) const;
    Status layContents(const EditPtr& edit, Timeline& timeline, const CookieVec& inside);
    std::string nameOfEdit(const Timeline& timeline, Level level) const;

    const std::string path_;
    ImportSources sources_;
    ImportLosses losses_;
    std::vector<EditModifier> made_; // keep everything open until it is saved
    CookieVec takenBack_;            // has room for all of them
    std::size_t timelines_ = 0;
    CookieVec roots_;
    CookieVec nested_;
    std::size_t logs_ = 0;
    std::size_t todo_ = 0; // items and sources
    std::size_t done_ = 0;
    std::function<void(double)> progress_;
    bool kept_ = false;
};

} // namespace cutroom
