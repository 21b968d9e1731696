// cutroom export EDIT --format F
#include "cli/Command.h"
#include "cli/Names.h"
#include "export/AssetMetadataSRTExporter.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace cutroom::cli {

namespace {

struct ExportWords {
    std::string edit;
    std::string format;
    std::string output;
};

// The exporters write files; without -o the file is a temporary one that is printed and removed.
class Target {
public:
    explicit Target(std::string path) : path_(std::move(path)) {}
    ~Target() {
        if (temporary_) {
            std::error_code ignored;
            std::filesystem::remove(path_, ignored);
        }
    }
    Status prepare() {
        if (!path_.empty())
            return {};
        std::error_code failure;
        path_ = (std::filesystem::temp_directory_path(failure) / "cutroom-XXXXXX").string();
        const int made = failure ? -1 : ::mkstemp(path_.data());
        if (made < 0)
            return {StatusCode::inputOutput, path_, "a temporary file cannot be made"};
        ::close(made);
        temporary_ = true;
        return {};
    }
    const std::string& path() const { return path_; }
    bool temporary() const { return temporary_; }

private:
    std::string path_;
    bool temporary_ = false;
};

Status printFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    if (!file)
        return {StatusCode::inputOutput, path, "cannot be read"};
    char buffer[65536];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        print({buffer, count});
    return std::ferror(file.get()) ? Status(StatusCode::inputOutput, path, "cannot be read")
                                   : Status();
}

Status exportSrt(const ExportWords& words) {
    const auto edit = openEdit(words.edit);
    if (!edit)
        return edit.status();
    const std::vector<Cue> cues = (*edit)->getCues().cues();
    if (cues.empty())
        return {StatusCode::failed, words.edit, "has no markers to export"};
    const auto wide = toWideStrict(words.output);
    if (!wide)
        return {StatusCode::wrongUsage, words.output, "not a UTF-8 path"};
    Target target(words.output);
    if (const Status ready = target.prepare(); !ready)
        return ready;
    if (!AssetMetadataSRTExporter().exportToFile(*edit, cues, toWide(target.path())))
        return {StatusCode::inputOutput, target.path(), "cannot be written"};
    const auto ranges =
        std::count_if(cues.begin(), cues.end(), [](const Cue& cue) { return cue.hasEnd(); });
    if (ranges == 0)
        note("none of the markers has an end, so no subtitle was written; "
             "`cutroom markers EDIT change N --end T` gives one");
    return target.temporary() ? printFile(target.path()) : Status();
}

} // namespace

void addExportCommand(Commands commands) {
    auto words = std::make_shared<ExportWords>();
    CLI::App* command = commands.app.add_subcommand("export", "Write an edit's markers to a file");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--format", words->format, "srt: markers with an end become subtitles")
        ->required()
        ->check(CLI::IsMember({"srt"}));
    command->add_option("-o,--output", words->output, "The file (default: standard output)")
        ->type_name("FILE");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options, Workspace::Use::read,
                               [&](Workspace&) { return exportSrt(*words); });
        };
    });
}

} // namespace cutroom::cli
