// cutroom marks EDIT
#include "cli/Command.h"
#include "cli/Names.h"
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

// Marks belong to how an edit is viewed: they are set on a viewer that has the role for the edit's
// kind, which keeps them with the edit when it closes.
Status setMarks(const MarksWords& words, const EditPtr& edit) {
    VobManager& manager = VobManager::instance();
    const Kv::Ptr<Vob> vob = manager.createVob(edit);
    if (edit->getLogType() == kLogTypeEdit)
        manager.setRecordMachine(vob.get(), 0);
    else
        manager.setSourceMachine(vob.get(), 0);
    Status outcome;
    if (words.clear) {
        vob->setMarkTime(IdStamp(), kNoTime, Kv::MarkTypes::In);
        vob->setMarkTime(IdStamp(), kNoTime, Kv::MarkTypes::Out);
    }
    for (const auto& [word, type] :
         {std::pair{&words.in, Kv::MarkTypes::In}, {&words.out, Kv::MarkTypes::Out}}) {
        if (!*word || !outcome)
            continue;
        const auto place = parsePlace(**word, edit);
        if (place)
            vob->setMarkTime(IdStamp(), *place, type);
        else
            outcome = place.status();
    }
    manager.closeVob(vob, true);
    return outcome;
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
        if ((*edit)->isReadOnly())
            return {StatusCode::failed, words.edit, "the edit is read-only"};
        if (const Status set = setMarks(words, *edit); !set)
            return set;
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
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options,
                               words->changes() ? Workspace::Use::write : Workspace::Use::read,
                               [&](Workspace&) { return perform(options, *words); });
        };
    });
}

} // namespace cutroom::cli
