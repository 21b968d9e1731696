// cutroom list [edits|logs|bins|groups|documents|filters]
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/FilterWords.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/files/JsonBuilder.h"
#include "platform/project/ProjDb.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace cutroom::cli {

namespace {

bool isLog(const projdb::Record& record) { return record.logType == kLogTypeSource; }

std::vector<projdb::Record> records(bool logs) {
    std::vector<projdb::Record> found;
    projdb::forEach([&](const projdb::Record& record) {
        if (isLog(record) == logs)
            found.push_back(record);
        return true;
    });
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.name() < b.name(); });
    return found;
}

double lengthOf(const projdb::Record& record) {
    return std::max(record.start, record.end) - std::min(record.start, record.end);
}

std::string listJson(const std::vector<projdb::Record>& found) {
    JSON::Builder json;
    json.beginArray();
    for (const auto& record : found) {
        json.beginObject();
        json.add("id", record.cookie.asString());
        json.add("name", record.name());
        json.add("log_type", static_cast<unsigned>(record.logType));
        json.add("duration_seconds", lengthOf(record));
        json.add("video_tracks", record.videoTracks);
        json.add("audio_tracks", record.audioTracks);
        json.beginArray("media");
        for (const auto& location : record.mediaLocations)
            json.add(location);
        json.endArray();
        json.endObject();
    }
    json.endArray();
    return json.take();
}

// H:MM:SS.mmm
std::string clockText(double seconds) {
    const auto milliseconds = static_cast<long long>(seconds * 1000 + 0.5);
    return format("%lld:%02lld:%02lld.%03lld", milliseconds / 3'600'000, milliseconds / 60'000 % 60,
                  milliseconds / 1000 % 60, milliseconds % 1000);
}

std::string listText(const std::vector<projdb::Record>& found) {
    std::string text;
    for (const auto& record : found)
        text += record.cookie.asString() +
                format("  %14s  V%-2u A%-2u  ", clockText(lengthOf(record)).c_str(),
                       record.videoTracks, record.audioTracks) +
                oneLine(record.name()) + '\n';
    return text;
}

std::string listed(const std::string& what, bool json) {
    if (what == "bins")
        return listBins(json);
    if (what == "groups")
        return listGroups(json);
    if (what == "documents")
        return listDocuments(json);
    if (what == "filters")
        return listFilters(json);
    const auto found = records(what == "logs");
    return json ? listJson(found) : listText(found);
}

} // namespace

void addListCommand(Commands commands) {
    auto what = std::make_shared<std::string>("edits");
    CLI::App* command = commands.app.add_subcommand("list", "Show what the project holds");
    command
        ->add_option("what", *what, "edits (the default), logs, bins, groups, documents or filters")
        ->check(CLI::IsMember({"edits", "logs", "bins", "groups", "documents", "filters"}));
    command->footer("One line each: cookie, then length, picture and sound tracks of edits and "
                    "logs, the number of\nitems of bins and groups, the size of documents, who "
                    "made a filter and when it is shown;\nand the name.\n"
                    "Logs are the sources that clips play; subclips and other pieces that were cut "
                    "from them\nare listed among the edits.");
    command->callback([commands, what] {
        commands.action = [&options = commands.options, what] {
            return withProject(options, Workspace::Use::read, [&](Workspace&) {
                print(listed(*what, options.json));
                return Status();
            });
        };
    });
}

} // namespace cutroom::cli
