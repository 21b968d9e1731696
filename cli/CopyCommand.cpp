// cutroom copy, flatten EDIT
#include "cli/Command.h"
#include "cli/CopyWords.h"
#include "cli/Names.h"
#include "editops/CopyNames.h"
#include "editops/EditCopy.h"
#include "editops/RangeCopy.h"
#include "editops/SequenceMaking.h"
#include "platform/store/Edit.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>

namespace cutroom::cli {

namespace {

struct CopyCommandWords : CopyWords {
    std::string as;
};

const std::map<std::string, eLogType> kLogKinds = {
    {"subclip", kLogTypeSubclip}, {"sync", kLogTypeSyncGhost}, {"print", kLogTypePrintGhost}};

Status checkWords(const CopyCommandWords& words) {
    if (words.marked && (words.in || words.out))
        return {StatusCode::wrongUsage, "--marked", "give either the marks or places"};
    if (!words.tracks.empty() && kLogKinds.count(words.as) != 0)
        return {StatusCode::wrongUsage, "--tracks", "a " + words.as + " copy has every track"};
    return {};
}

EditModifier makeCopy(const CopyCommandWords& words, const EditModule& source) {
    if (const auto kind = kLogKinds.find(words.as); kind != kLogKinds.end())
        return copyRange(source, kind->second, false);
    if (words.as == "sequence")
        return makeSequenceFromClip(source);
    if (words.as == "edit" && !words.ranged())
        return makeSequenceFromSource(source, makeEditNameSuffix(kResCopy));
    return copyRange(source, kLogTypeEdit, !words.ranged());
}

// Opens the edit, makes a copy with `make` and keeps it.
template <class Words, class Make>
int runCopy(const Options& options, const Words& words, const Make& make) {
    return withProject(options, Workspace::Use::write, [&](Workspace&) -> Status {
        const auto edit = openEdit(words.edit);
        if (!edit)
            return edit.status();
        const auto source = readCopyWords(words, *edit);
        if (!source)
            return source.status();
        auto filing = Filing::into(words.bin);
        if (!filing)
            return filing.status();
        EditModifier copy = make(*source);
        if (!copy)
            return {StatusCode::failed, words.edit, "no copy could be made"};
        return keepCopy(words, *filing, std::move(copy), *edit, options.json);
    });
}

int runCopyCommand(const Options& options, const CopyCommandWords& words) {
    if (const Status checked = checkWords(words); !checked)
        return fail(checked);
    return runCopy(options, words,
                   [&](const EditModule& source) { return makeCopy(words, source); });
}

} // namespace

void addCopyCommand(Commands commands) {
    auto words = std::make_shared<CopyCommandWords>();
    CLI::App* command =
        commands.app.add_subcommand("copy", "Copy an edit or log, whole or in part");
    declareCopyWords(*command, *words, CopyRanges::offered);
    command
        ->add_option("--as", words->as,
                     "What the copy is to be: edit, subclip, sync, print or sequence")
        ->check(CLI::IsMember({"edit", "subclip", "sync", "print", "sequence"}));
    command->footer(
        "Without --as an edit is copied as an edit, and a whole clip as a clip of its own. The "
        "copy\n"
        "begins at 0 and keeps the timecode of its frames, where the edit was given one; it is "
        "noted\n"
        "with what it was made from.\n"
        "--as sequence makes an edit at the project's rate with the clip cut into it.\n\n"
        "  cutroom copy \"Reel 1\"\n"
        "  cutroom copy \"Reel 1\" --in 01:00:10:00 --out 01:00:20:00 --as subclip --bin Selects\n"
        "  cutroom copy \"Reel 1\" --marked --tracks V1 A1 A2 --name \"Trailer\"");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return runCopyCommand(options, *words);
        };
    });
}

void addFlattenCommand(Commands commands) {
    auto words = std::make_shared<CopyWords>();
    CLI::App* command =
        commands.app.add_subcommand("flatten", "Copy an edit with its picture in one layer");
    declareCopyWords(*command, *words, CopyRanges::none);
    command->footer("The copy shows what is seen: the topmost clip that is not black. Tracks that\n"
                    "are not named stay as they are.\n\n"
                    "  cutroom flatten \"Reel 1\"\n"
                    "  cutroom flatten \"Reel 1\" --tracks V1 V2 --name \"Reel 1 for grading\"");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return runCopy(options, *words,
                           [](const EditModule& source) { return ::flatten(source); });
        };
    });
}

} // namespace cutroom::cli
