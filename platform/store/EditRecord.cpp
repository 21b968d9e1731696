#include "platform/store/EditRecord.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/project/MediaKind.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/EditFile.h"

#include <algorithm>

namespace cutroom {

namespace {

std::uint32_t countOf(const EditState& state, EditChanType type) {
    std::uint32_t count = 0;
    for (const EditChannel& channel : state.channels)
        count += channel.type == type && (channel.subType & kSubDerived) == 0;
    return count;
}

void addMarkers(projdb::Record& record, const CueList& cues) {
    for (const Cue& cue : cues.cues()) {
        record.markerTypes |= projdb::markerTypeBit(cue.getColour());
        for (const auto* text : {&cue.getName(), &cue.getDescription()})
            if (!text->empty())
                record.markerTexts.push_back(toUtf8(*text));
    }
}

// A clip whose only media are still pictures.
bool isImage(const projdb::Record& record) {
    return (record.kinds & projdb::kKindClip) != 0 && !record.mediaLocations.empty() &&
           std::all_of(record.mediaLocations.begin(), record.mediaLocations.end(), isStillImage);
}

Result<EditFile::Content> read(const std::string& path) {
    const auto bytes = readFile(path);
    return bytes ? EditFile::decode(*bytes, path) : Result<EditFile::Content>(bytes.status());
}

} // namespace

projdb::Record recordOf(const Cookie& cookie, const EditState& state) {
    projdb::Record record;
    record.cookie = cookie;
    record.logType = state.logType;
    record.kinds = projdb::recordKindOf(state.logType) |
                   (state.config->in("CLIPBOARD") ? projdb::kKindClipboard : 0u);
    if (!state.extents(record.start, record.end))
        record.start = record.end = 0;
    record.videoTracks = countOf(state, kChanVideo);
    record.audioTracks = countOf(state, kChanAudio);
    record.created = state.created;
    record.modified = state.modified;
    for (const auto& [key, value] : state.config->entries())
        if (LogAttribute::fromID(key))
            record.setField(key, value);
    record.setField(LogAttribute(LogAttribute::name).getID(), toUtf8(state.name));
    for (const auto& location : state.texts->mediaLocations)
        record.mediaLocations.push_back(toUtf8(location));
    if (isImage(record))
        record.kinds |= projdb::kKindImage;
    addMarkers(record, state.cues);
    return record;
}

// What cannot be read keeps the record that it has.
Status rebuildRecords() {
    const std::string folder = toUtf8(getProjectEditsDirectory());
    const std::string suffix = std::string(".") + kEditExtension;
    const auto names = listFiles(folder, suffix);
    if (!names)
        return names.status();
    for (const std::string& name : *names) {
        const auto cookie = Cookie::fromString(name.substr(0, name.size() - suffix.size()));
        if (!cookie || cookie->type() != 'E')
            continue;
        const std::string path = joinPath(folder, name);
        auto content = read(path);
        if (!content) {
            LogBoth("%s\n", content.status().text().c_str());
            if (!projdb::isPresent(*cookie)) // until it is mended, the version before tells of it
                content = read(path + ".bak");
        }
        if (!content)
            continue;
        if (Status status = projdb::put(recordOf(*cookie, content->state)); !status)
            return status;
    }
    return {};
}

} // namespace cutroom
