// cutroom sync PICTURE SOUND, cutroom sync --pictures BIN --sounds BIN
#include "bins/BinData.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/Filing.h"
#include "cli/Names.h"
#include "cli/Progress.h"
#include "cli/SyncWords.h"
#include "editops/CopyLog.h"
#include "editops/SyncUp.h"
#include "editops/SyncUpMatch.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

struct SyncWords {
    std::string picture, sound;
    std::string pictures, sounds; // bins
    std::string by = "label";
    std::optional<std::string> pictureAt, soundAt;
    std::string start = "common", end = "common";
    std::vector<std::string> part;
    std::string pictureLabel, soundLabel;
    int soundOffset = 0;
    bool ignoreDates = false;
    bool asEdit = false;
    bool allChannels = false;
    bool dryRun = false;
    std::string bin;

    bool batch() const { return !pictures.empty() || !sounds.empty(); }
};

Status checkWords(const SyncWords& words) {
    if (words.batch() && (words.pictures.empty() || words.sounds.empty() || !words.picture.empty()))
        return {StatusCode::wrongUsage, "sync",
                "give two shots, or --pictures BIN and --sounds BIN"};
    if (!words.batch() && words.sound.empty())
        return {StatusCode::wrongUsage, "sync", "name a picture shot and a sound shot"};
    const bool places = words.pictureAt || words.soundAt;
    if (places && words.by != "time")
        return {StatusCode::wrongUsage, "--picture-at", "places are for --by time"};
    if (words.batch() && (words.by != "label" || !words.part.empty()))
        return {StatusCode::wrongUsage, "--by",
                "whole bins are synchronised by their labels, and not in part"};
    return {};
}

Result<synchup_params> paramsOf(const SyncWords& words) {
    synchup_params params;
    params.startRule = syncRule(words.start);
    params.endRule = syncRule(words.end);
    params.soundOffset = words.soundOffset;
    params.dateCheckOff = words.ignoreDates;
    params.makeGhost = !words.asEdit;
    for (const auto& [text, label] : {std::pair{&words.pictureLabel, &params.pictureLabel},
                                      {&words.soundLabel, &params.soundLabel}}) {
        if (text->empty())
            continue;
        const auto spec = parseLabelSpec(*text);
        if (!spec)
            return spec.status();
        *label = *spec;
    }
    return params;
}

// One picture with its sound, what was made of them, or why nothing was.
struct Row {
    SyncMatch match;
    Cookie made;
    std::string reason;
};

std::string nameOf(const Cookie& cookie) {
    const EditPtr edit(cookie);
    return edit ? toUtf8(edit->getName()) : std::string();
}

void build(Row& row, const SyncWords& words, const synchup_params& params) {
    const SyncMatch& match = row.match;
    row.made = words.allChannels ? synchup_general_build_edit(match.sound, match.picture,
                                                              match.offset.seconds, params, true)
                                 : synchup_cookies_by_time(match.sound, match.picture, 0,
                                                           match.offset.seconds, params);
    if (!row.made.valid())
        row.reason = edcopy_get_log();
}

std::string rowText(const Row& row) {
    std::string text = oneLine(nameOf(row.match.picture), Tabs::drop) + '\t' +
                       oneLine(nameOf(row.match.sound), Tabs::drop) + '\t';
    if (row.match.sound.valid())
        text += format("%+.3f s", row.match.offset.seconds);
    return text + '\t' + (row.made.valid() ? row.made.asString() : row.reason) + '\n';
}

void addCookie(JSON::Builder& json, const char* key, const Cookie& cookie) {
    if (cookie.valid())
        json.add(key, cookie.asString());
    else
        json.addNull(key);
}

void addRow(JSON::Builder& json, const Row& row) {
    json.beginObject();
    addCookie(json, "picture", row.match.picture);
    json.add("picture_name", nameOf(row.match.picture));
    addCookie(json, "sound", row.match.sound);
    json.add("sound_name", nameOf(row.match.sound));
    if (row.match.sound.valid())
        json.add("offset", row.match.offset.seconds);
    else
        json.addNull("offset");
    addCookie(json, "id", row.made);
    json.add("name", nameOf(row.made));
    json.add("reason", row.reason);
    json.endObject();
}

void printRows(const Options& options, const std::vector<Row>& rows, const Cookie& bin) {
    if (!options.json) {
        std::string text;
        for (const Row& row : rows)
            text += rowText(row);
        print(text);
        return;
    }
    JSON::Builder json;
    json.beginObject();
    json.beginArray("shots");
    for (const Row& row : rows)
        addRow(json, row);
    json.endArray();
    addCookie(json, "bin", bin);
    json.endObject();
    print(json.take());
}

Status finish(const Options& options, std::vector<Row>& rows, Filing& filing) {
    CookieVec made;
    for (const Row& row : rows)
        if (row.made.valid())
            made.push_back(row.made);
    if (Status kept = filing.keep(made); !kept)
        return kept;
    printRows(options, rows, filing.bin());
    return {};
}

// The moment to line up: as said, else the in mark, else the start.
Result<double> momentOf(const std::optional<std::string>& place, const EditPtr& shot) {
    if (place)
        return parsePlaceInside(*place, shot);
    const double mark = shot->getStoredMark(Kv::MarkTypes::In);
    return mark == kNoTime ? shot->getStartTime() : mark;
}

Status readPart(const SyncWords& words, const EditPtr& picture, synchup_params& params) {
    if (words.part.empty())
        return {};
    params.part = true;
    for (const auto& [text, time] : {std::pair{&words.part.front(), &params.partStart},
                                     {&words.part.back(), &params.partEnd}}) {
        const auto place = parsePlaceInside(*text, picture);
        if (!place)
            return place.status();
        *time = *place;
    }
    if (params.partStart >= params.partEnd)
        return {StatusCode::wrongUsage, words.part.back(), "the part ends before it begins"};
    return {};
}

Result<double> offsetOf(const SyncWords& words, const EditPtr& picture, const EditPtr& sound,
                        const synchup_params& params) {
    if (words.by == "label") {
        const double offset = synchup_get_CELtime_offset(sound.getCookie(), kChanAudio,
                                                         picture.getCookie(), kChanVideo, params);
        if (offset == kNoTime)
            return Status(StatusCode::failed, words.picture + " and " + words.sound,
                          edcopy_get_log());
        return offset;
    }
    const auto pictureAt = momentOf(words.pictureAt, picture);
    if (!pictureAt)
        return pictureAt.status();
    const auto soundAt = momentOf(words.soundAt, sound);
    if (!soundAt)
        return soundAt.status();
    return *pictureAt - *soundAt;
}

Status syncPair(const Options& options, const SyncWords& words, synchup_params params,
                Filing& filing) {
    const auto picture = openEdit(words.picture);
    if (!picture)
        return picture.status();
    const auto sound = openEdit(words.sound);
    if (!sound)
        return sound.status();
    if ((*picture)->getNumChans(kChanVideo) == 0 && !words.allChannels)
        return {StatusCode::failed, words.picture, "has no picture channel"};
    if ((*sound)->getNumChans(kChanAudio) == 0 && !words.allChannels)
        return {StatusCode::failed, words.sound, "has no sound channel"};
    if (Status part = readPart(words, *picture, params); !part)
        return part;
    const auto offset = offsetOf(words, *picture, *sound, params);
    if (!offset)
        return offset.status();
    std::vector<Row> rows(1);
    rows[0].match = {picture->getCookie(), sound->getCookie(), {*offset, nullptr}};
    if (!words.dryRun)
        build(rows[0], words, params);
    if (!rows[0].reason.empty())
        return {StatusCode::failed, words.picture + " and " + words.sound, rows[0].reason};
    return finish(options, rows, filing);
}

// The shots of a bin that have channels of that type.
Result<CookieVec> shotsOf(const std::string& bin, EditChanType type) {
    const auto opened = openBin(bin);
    if (!opened)
        return opened.status();
    CookieVec shots;
    for (const BinItem& item : (*opened)->items())
        if (const EditPtr edit(item.getAssetID()); edit && edit->getNumChans(type) > 0)
            shots.push_back(item.getAssetID());
    if (shots.empty())
        return Status(StatusCode::notFound, bin,
                      type == kChanVideo ? "holds no shot with picture"
                                         : "holds no shot with sound");
    return shots;
}

// From one bin: a camera's own sound is not what it is to be synchronised with.
void dropPictures(CookieVec& sounds) {
    std::erase_if(sounds,
                  [](const Cookie& shot) { return EditPtr(shot)->getNumChans(kChanVideo) > 0; });
}

Status syncBins(const Options& options, const SyncWords& words, const synchup_params& params,
                Filing& filing) {
    const auto pictures = shotsOf(words.pictures, kChanVideo);
    if (!pictures)
        return pictures.status();
    auto sounds = shotsOf(words.sounds, kChanAudio);
    if (!sounds)
        return sounds.status();
    if (words.pictures == words.sounds)
        dropPictures(*sounds);
    std::vector<Row> rows;
    Progress progress("sync");
    for (const SyncMatch& match : matchSounds(*pictures, *sounds, params)) {
        Row& row = rows.emplace_back(Row{match, {}, {}});
        progress.show(static_cast<double>(rows.size()) / static_cast<double>(pictures->size()));
        if (!row.match.sound.valid())
            row.reason = row.match.offset.refusal;
        else if (!words.dryRun)
            build(row, words, params);
    }
    if (Status finished = finish(options, rows, filing); !finished)
        return finished;
    const bool any = std::any_of(rows.begin(), rows.end(), [&](const Row& row) {
        return words.dryRun ? row.match.sound.valid() : row.made.valid();
    });
    return any ? Status() : Status(StatusCode::failed, words.pictures, "no shot found its sound");
}

int run(const Options& options, const SyncWords& words) {
    if (const Status checked = checkWords(words); !checked)
        return fail(checked);
    const auto params = paramsOf(words);
    if (!params)
        return fail(params.status());
    const auto use = words.dryRun ? Workspace::Use::read : Workspace::Use::write;
    return withProject(options, use, [&](Workspace&) -> Status {
        auto filing = Filing::into(words.bin);
        if (!filing)
            return filing.status();
        return words.batch() ? syncBins(options, words, *params, *filing)
                             : syncPair(options, words, *params, *filing);
    });
}

void addShotWords(CLI::App& command, SyncWords& words) {
    command.add_option("picture", words.picture, "Picture shot")->type_name("EDIT");
    command.add_option("sound", words.sound, "Sound shot")->type_name("EDIT");
    command.add_option("--pictures", words.pictures, "All shots with picture of this bin")
        ->type_name("BIN");
    command.add_option("--sounds", words.sounds, "Their sounds")->type_name("BIN");
    command.add_option("--by", words.by, "label (timecode, the default) or time")
        ->check(CLI::IsMember({"label", "time"}));
    command
        .add_option("--picture-at", words.pictureAt,
                    "The moment to line up in the picture (the in mark, or the start)")
        ->type_name("PLACE");
    command.add_option("--sound-at", words.soundAt, "The same moment in the sound")
        ->type_name("PLACE");
    command.add_option("--bin", words.bin, "File what is made in this bin, made when missing")
        ->check(refuseEmpty)
        ->type_name("BIN");
    command.add_flag("--dry-run", words.dryRun, "Tell what goes together, make nothing");
}

void addRuleWords(CLI::App& command, SyncWords& words) {
    const CLI::IsMember rules(syncRuleNames());
    command
        .add_option("--start", words.start,
                    "Where the result starts: picture, common, union, sound")
        ->check(rules);
    command.add_option("--end", words.end, "Where it ends, likewise")->check(rules);
    command.add_option("--part", words.part, "Only from one place of the picture to another")
        ->expected(2)
        ->type_name("PLACE");
    command.add_option("--picture-label", words.pictureLabel,
                       "Which label is the picture's timecode (3.2.1: type, medium, roll)");
    command.add_option("--sound-label", words.soundLabel, "Which is the sound's (3.4.1)");
    command.add_option("--sound-offset", words.soundOffset,
                       "Frames to add to the sound's label; negative: to take from it");
    command.add_flag("--ignore-dates", words.ignoreDates, "Join shots of different camera dates");
    command.add_flag("--all-channels", words.allChannels,
                     "Keep the picture's own sound and all other channels");
    command.add_flag("--as-edit", words.asEdit, "Make edits, not synced clips");
}

} // namespace

void addSyncCommand(Commands commands) {
    auto words = std::make_shared<SyncWords>();
    CLI::App* command = commands.app.add_subcommand(
        "sync", "Join picture shots with their sound, by timecode or by hand");
    addShotWords(*command, *words);
    addRuleWords(*command, *words);
    command->footer(
        "Prints for each shot: picture, sound, how far the sound lies behind, and what was made\n"
        "or why nothing was.\n\n"
        "  cutroom sync A001C003 T07 --bin Synced\n"
        "  cutroom sync A001C003 T07 --by time --picture-at 01:00:04:12 --sound-at 3.2\n"
        "  cutroom sync --pictures \"Day 1 camera\" --sounds \"Day 1 sound\" --bin Synced");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] { return run(options, *words); };
    });
}

} // namespace cutroom::cli
