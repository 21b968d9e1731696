#include "interchange/ImportEdits.h"

#include "interchange/ImportMarkers.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <new>

namespace cutroom {

namespace {

constexpr char kEditList[] = "CMX 3600";

std::string stemOf(const std::string& path) {
    std::string name = nameOf(path);
    if (const std::string extension = extensionOf(path);
        !extension.empty() && extension.size() + 1 < name.size())
        name.resize(name.size() - extension.size() - 1);
    return name;
}

std::string metadataOf(const Timeline& timeline, const std::string& path) {
    ImportedJson json;
    json.add(kImportedFormat, timeline.source == kEditList ? "edl" : "otio");
    json.add(kImportedSchema, timeline.source);
    json.add(kImportedFile, nameOf(path));
    json.add(kImportedRate, timeline.rate.literal);
    if (timeline.startFrame) {
        ImportedJson start;
        start.add(kImportedValue, timeline.startWritten);
        start.add(kImportedRate, timeline.startRate.literal);
        json.addRaw(kImportedStart, start.take());
    }
    json.add(kImportedOwner, timeline.owner);
    json.addRaw(kImportedMetadata, timeline.metadata);
    json.addRaw(kImportedExtra, timeline.extra);
    return json.take();
}

// Black from the end of what a channel holds to `end`.
Status extendWithBlack(const EditPtr& edit, const IdStamp& channel, Flicks end) {
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
    CelSegment black;
    black.start = cel->get_num_events() == 0 ? 0 : toFlicks(cel->getEndTime());
    black.end = end;
    return black.start < end ? cel->overwrite(black) : Status();
}

// The end of the last marker; a point takes a frame.
Flicks endOfMarkers(const Timeline& timeline, const Kv::FrameRate& rate) {
    Flicks end = 0;
    for (const Marker& marker : timeline.markers)
        end = std::max(end, marker.start + std::max(marker.duration, rate.frameToFlicks(1)));
    return end;
}

} // namespace

ImportedFile::~ImportedFile() {
    if (kept_)
        return;
    try {
        for (const EditModifier& edit : made_)
            takenBack_.push_back(edit.getCookie());
        if (const Status status = EditManager::instance().discard(takenBack_); !status)
            LogBoth("%s\n", status.text().c_str());
    } catch (const std::bad_alloc&) {
        LogBoth("no memory to remove what was imported; the next save does\n");
    }
}

void ImportedFile::noteSources(const Timeline& timeline, bool dropFrame) {
    ++timelines_;
    for (const Track& track : timeline.tracks) {
        todo_ += track.items.size();
        for (const Item& item : track.items)
            if (item.type == ItemType::clip && item.duration > 0)
                sources_.note(item, track.kind, importedChannel(item, track),
                              {timeline.rate.rate, dropFrame});
    }
    for (const Timeline& inside : timeline.nested)
        noteSources(inside, dropFrame);
}

void ImportedFile::tellDone(std::size_t more) {
    done_ += more;
    if (progress_ && todo_ > 0)
        progress_(static_cast<double>(done_) / static_cast<double>(todo_));
}

std::string ImportedFile::nameOfEdit(const Timeline& timeline, Level level) const {
    if (!timeline.name.empty())
        return timeline.name;
    return level == Level::root ? stemOf(path_) : "Nested";
}

void ImportedFile::describeEdit(const EditPtr& edit, const Timeline& timeline) const {
    const Kv::FrameRate rate = edit->getFrameRate();
    const bool dropFrame = timeline.dropFrame && rate.allowsDropFrame();
    edit->setLogType(kLogTypeEdit);
    edit->setDropFrame(dropFrame);
    edit->setImported(true);
    if (timeline.startFrame)
        edit->addLabel(
            EditLabel(kLabelVideoTimecode, {2, 1}, {rate, dropFrame}, *timeline.startFrame));
    edit->setImportedMetadata(metadataOf(timeline, path_));
    edit->setCues(importedCues(timeline), false);
}

Status ImportedFile::layContents(const EditPtr& edit, Timeline& timeline, const CookieVec& inside) {
    const ImportScene scene{sources_, inside, losses_};
    const auto laid = [this](const Track& track) { tellDone(track.items.size()); };
    if (Status status = layTracks(edit, timeline, scene, laid); !status)
        return status;
    Flicks end = timeline.duration;
    if (timeline.tracks.empty()) {
        edit->addChan(kChanVideo);
        end = std::max(end, endOfMarkers(timeline, edit->getFrameRate()));
    }
    if (end <= toFlicks(edit->getEndTime()))
        return {};
    return extendWithBlack(edit, edit->getId(0), end);
}

Status ImportedFile::makeEdit(Timeline& timeline, Level level, Cookie& made) {
    CookieVec inside;
    for (Timeline& nested : timeline.nested) {
        inside.emplace_back();
        if (Status status = makeEdit(nested, Level::nested, inside.back()); !status)
            return status;
    }
    const std::string name = nameOfEdit(timeline, level);
    const EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 0, 0, 0, timeline.rate.rate);
    if (!edit)
        return {StatusCode::failed, {}, "no edit could be made for \"" + name + "\""};
    made_.push_back(edit); // there is room: it is taken back whatever fails from here on
    made = edit.getCookie();
    (level == Level::root ? roots_ : nested_).push_back(made);
    edit->setName(toWide(name));
    describeEdit(edit, timeline);
    const Status laid = layContents(edit, timeline, inside);
    timeline.markers = std::vector<Marker>();
    return laid;
}

Status ImportedFile::make(std::vector<Timeline>& timelines,
                          const std::function<void(double)>& progress) {
    progress_ = progress;
    for (Timeline& timeline : timelines) {
        noteSources(timeline, timeline.dropFrame);
        if (timeline.tracks.empty() && !timeline.markers.empty())
            addWarning(timeline, "it holds markers only; its edit is black");
    }
    todo_ += sources_.count();
    made_.reserve(sources_.count() + timelines_);
    takenBack_.reserve(made_.capacity());
    if (Status status = sources_.makeLogs(made_, [this] { tellDone(1); }); !status)
        return status;
    logs_ = made_.size();
    for (Timeline& timeline : timelines) {
        Cookie made;
        if (Status status = makeEdit(timeline, Level::root, made); !status)
            return status;
    }
    return {};
}

CookieVec ImportedFile::logs() const {
    CookieVec logs;
    for (std::size_t i = 0; i < logs_; ++i)
        logs.push_back(made_[i].getCookie());
    return logs;
}

Status ImportedFile::save(const std::function<void(double)>& progress) {
    return EditManager::instance().save({made_.begin(), made_.end()}, progress);
}

std::vector<std::string> ImportedFile::warnings(const std::vector<Timeline>& timelines) const {
    Timeline all; // says each once
    for (const Timeline& timeline : timelines)
        for (const std::string& warning : timeline.warnings)
            addWarning(all, warning);
    const auto say = [&](long times, const char* what) {
        if (times > 0)
            addWarning(all, std::string(what) + ": " + toText(static_cast<long long>(times)));
    };
    say(losses_.withoutLength, "clips and gaps shorter than half a frame left out");
    say(losses_.transitions, "transitions that lie over no cut left out");
    say(losses_.disabledTracks, "disabled tracks, whose clips are disabled one by one");
    say(sources_.shortLogs(), "logs of the project that hold less of their media than the file");
    say(static_cast<long>(nested_.size()), "nested timelines, which became edits of their own");
    return std::move(all.warnings);
}

} // namespace cutroom
