#include "cli/CopyWords.h"

#include "cli/Command.h"
#include "cli/Names.h"
#include "editops/AssetParent.h"
#include "editops/CopyKinds.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

namespace cutroom::cli {

namespace {

std::string placeName(const Edit& edit, const IdStamp& channel) {
    return (edit.getChanType(channel) == kChanVideo ? "V" : "A") +
           std::to_string(edit.getIndexWithinType(channel) + 1);
}

// The picture or sound track of that name or place ("V1").
Result<IdStamp> findTrack(const Edit& edit, const std::string& name) {
    const auto tracks =
        edit.getChans(kChanVideo | kChanAudio, kSubAll & ~static_cast<unsigned>(kSubDerived));
    std::string known;
    for (const IdStamp& track : tracks) {
        const std::string place = placeName(edit, track);
        if (name == place || name == toUtf8(edit.getChanDisplayName(track)))
            return track;
        known += (known.empty() ? "" : ", ") + place;
    }
    return Status(StatusCode::notFound, name, "no such track; there are " + known);
}

// A place on a frame of the edit.
Result<double> framePlace(const std::string& text, const EditPtr& edit) {
    const auto place = parsePlaceInside(text, edit);
    if (!place)
        return place.status();
    const Kv::FrameRate rate = edit->getFrameRate();
    return toSeconds(rate.frameToFlicks(rate.flicksToFrameNearest(toFlicks(*place))));
}

// Where the range begins or ends: the word, else the stored mark where marks are asked for, else
// the edit's own start or end.
Result<double> rangeEnd(const CopyWords& words, const EditPtr& edit, Kv::MarkTypes::MarkType type) {
    const bool in = type == Kv::MarkTypes::In;
    if (const auto& word = in ? words.in : words.out)
        return framePlace(*word, edit);
    const double mark = words.marked ? edit->getStoredMark(type) : kNoTime;
    if (mark != kNoTime)
        return shownAt(mark, edit);
    return in ? edit->getStartTime() : edit->getEndTime();
}

Status markRange(const CopyWords& words, EditModule& module) {
    const EditPtr edit = module.getEdit();
    if (words.marked && edit->getStoredMark(Kv::MarkTypes::In) == kNoTime &&
        edit->getStoredMark(Kv::MarkTypes::Out) == kNoTime)
        return {StatusCode::wrongUsage, words.edit,
                "has neither in nor out mark; `cutroom marks` sets them"};
    const auto from = rangeEnd(words, edit, Kv::MarkTypes::In);
    if (!from)
        return from.status();
    const auto to = rangeEnd(words, edit, Kv::MarkTypes::Out);
    if (!to)
        return to.status();
    if (*to <= *from)
        return {StatusCode::wrongUsage, words.out.value_or(words.edit),
                "the range ends before it has begun"};
    module.markAllAt(TimeRange(*from, *to), true);
    return {};
}

std::string copyJson(const EditPtr& copy, const Cookie& bin) {
    JSON::Builder json;
    json.beginObject();
    json.add("id", copy.getCookie().asString());
    json.add("name", copy->getName());
    json.add("log_type", static_cast<unsigned>(copy->getLogType()));
    json.add("parent", copy->getConfig(kParentKey).value_or(std::string()));
    json.add("start_timecode", copy->getTimecode(0));
    json.add("duration_seconds", copy->getEndTime() - copy->getStartTime());
    if (bin.valid())
        json.add("bin", bin.asString());
    else
        json.addNull("bin");
    json.endObject();
    return json.take();
}

} // namespace

void declareCopyWords(CLI::App& command, CopyWords& words, CopyRanges ranges) {
    command.add_option("edit", words.edit, "Name or cookie")->required()->type_name("EDIT");
    if (ranges == CopyRanges::offered) {
        command.add_option("--in", words.in,
                           "Begin here: 01:00:10:12, 12.5 (seconds) or 300f (frames)");
        command.add_option("--out", words.out, "End here, likewise");
        command.add_flag("--marked", words.marked, "Between the edit's in and out marks");
    }
    command.add_option("--tracks", words.tracks, "Only these picture and sound tracks: V1 A1 ...")
        ->type_name("TRACK");
    command.add_option("--name", words.name, "Name of the copy");
    command.add_option("--bin", words.bin, "File it in this bin, made when it is missing")
        ->check(refuseEmpty)
        ->type_name("BIN");
}

double shownAt(double seconds, const EditPtr& edit) {
    if (!isStorableTime(seconds))
        return seconds;
    const Kv::FrameRate rate = edit->getFrameRate();
    return toSeconds(rate.frameToFlicks(rate.flicksToFrameFloor(toFlicks(seconds))));
}

Result<EditModule> readCopyWords(const CopyWords& words, const EditPtr& edit) {
    if (words.name && words.name->empty())
        return Status(StatusCode::wrongUsage, "--name", "not a name");
    EditModule module(edit);
    if (words.ranged())
        if (Status marked = markRange(words, module); !marked)
            return marked;
    if (words.tracks.empty())
        return module;
    module.selectAll(false);
    for (const std::string& name : words.tracks) {
        const auto track = findTrack(*edit, name);
        if (!track)
            return track.status();
        module.selectChan(*track, true);
    }
    return module;
}

Status keepCopy(const CopyWords& words, Filing& filing, EditModifier copy, const EditPtr& source,
                bool json) {
    if (words.name)
        copy->setName(toWide(*words.name));
    const Cookie made = copy.getCookie();
    if (Status kept = filing.keep({made}); !kept)
        return kept;
    setAssetParent(copy, source.getCookie());
    if (Status saved = EditManager::instance().save(EditPtr(copy)); !saved)
        return saved;
    print(json ? copyJson(copy, filing.bin())
               : made.asString() + '\t' + oneLine(toUtf8(copy->getName())) + '\n');
    return {};
}

} // namespace cutroom::cli
