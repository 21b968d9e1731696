// cutroom marks EDIT
#include "cli/Command.h"
#include "cli/Names.h"
#include "cli/Permission.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"
#include "vob/VobManager.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

struct MarksWords {
    std::string edit;
    std::optional<std::string> in;
    std::optional<std::string> out;
    bool clear = false;

    bool changes() const { return in || out || clear; }
};

// The places asked for, read before anything is changed.
struct Places {
    std::optional<double> in;
    std::optional<double> out;
};

Result<Places> readPlaces(const MarksWords& words, const EditPtr& edit) {
    Places places;
    for (const auto& [word, place] :
         {std::pair{&words.in, &places.in}, {&words.out, &places.out}}) {
        if (!*word)
            continue;
        const auto read = parsePlaceInside(**word, edit);
        if (!read)
            return read.status();
        *place = *read;
    }
    if (places.in && places.out && *places.out < *places.in)
        return Status(StatusCode::wrongUsage, *words.out, "the out mark lies before the in mark");
    return places;
}

// Marks belong to how an edit is viewed: they are set on a viewer that has the role for the edit's
// kind, which keeps them with the edit when it closes.
void setMarks(const Places& places, bool clear, const EditPtr& edit) {
    VobManager& manager = VobManager::instance();
    const Kv::Ptr<Vob> vob = manager.createVob(edit);
    if (edit->getLogType() == kLogTypeEdit)
        manager.setRecordMachine(vob.get(), 0);
    else
        manager.setSourceMachine(vob.get(), 0);
    if (clear) {
        vob->setMarkTime(IdStamp(), kNoTime, Kv::MarkTypes::In);
        vob->setMarkTime(IdStamp(), kNoTime, Kv::MarkTypes::Out);
    }
    if (places.in)
        vob->setMarkTime(IdStamp(), *places.in, Kv::MarkTypes::In);
    if (places.out)
        vob->setMarkTime(IdStamp(), *places.out, Kv::MarkTypes::Out);
    manager.closeVob(vob, true);
}

std::string markText(const EditPtr& edit, double seconds) {
    return seconds == kNoTime ? "none" : edit->getTimecode(seconds);
}

std::string marksJson(const EditPtr& edit) {
    JSON::Builder json;
    json.beginObject();
    for (const auto& [key, type] :
         {std::pair{"in", Kv::MarkTypes::In}, {"out", Kv::MarkTypes::Out}}) {
        const double seconds = edit->getStoredMark(type);
        if (seconds == kNoTime) {
            json.addNull(key);
            json.addNull(std::string(key) + "_timecode");
        } else {
            json.add(key, seconds);
            json.add(std::string(key) + "_timecode", edit->getTimecode(seconds));
        }
    }
    json.endObject();
    return json.take();
}

Status perform(const Options& options, const MarksWords& words) {
    const auto edit = openEdit(words.edit);
    if (!edit)
        return edit.status();
    if (words.changes()) {
        if (Status may = mayChange(*edit); !may)
            return may;
        const auto places = readPlaces(words, *edit);
        if (!places)
            return places.status();
        setMarks(*places, words.clear, *edit);
    }
    if (options.json)
        print(marksJson(*edit));
    else
        print("in   " + markText(*edit, (*edit)->getStoredMark(Kv::MarkTypes::In)) + "\nout  " +
              markText(*edit, (*edit)->getStoredMark(Kv::MarkTypes::Out)) + '\n');
    return {};
}

} // namespace

void addMarksCommand(Commands commands) {
    auto words = std::make_shared<MarksWords>();
    CLI::App* command =
        commands.app.add_subcommand("marks", "Show or set an edit's in and out marks");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--in", words->in, "In mark: 01:00:10:12, 12.5 (seconds) or 300f (frames)");
    command->add_option("--out", words->out, "Out mark, likewise");
    command->add_flag("--clear", words->clear, "Clear both first");
    command->footer("Marks belong to how an edit is viewed; setting them is no step of undo.\n\n"
                    "  cutroom marks \"Reel 1\"\n"
                    "  cutroom marks \"Reel 1\" --in 01:00:10:00 --out 01:00:20:00");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options,
                               words->changes() ? Workspace::Use::write : Workspace::Use::read,
                               [&](Workspace&) { return perform(options, *words); });
        };
    });
}

} // namespace cutroom::cli
