// Verbs for the project and the session itself.
#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "cli/EditView.h"
#include "cli/MarkersIn.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "editops/basics/EmptyEdit.h"
#include "export/AssetMetadataSRTExporter.h"
#include "export/MetadataExporters.h"
#include "export/MetadataWriter.h"
#include "interchange/Exporter.h"
#include "interchange/Importer.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/host/DebugCommands.h"
#include "platform/host/Host.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace cutroom::cli {

namespace {

void importOne(Session& session, SessionWords& words) {
    const ImportReport report = require(importFile(words.take("a file")));
    for (const auto& made : report.edits)
        session.say("imported " + toUtf8(made.name));
    for (const auto& warning : report.warnings)
        session.say("warning: " + warning);
}

void makeEdit(Session& session, SessionWords& words) {
    const std::wstring name = require(parseName(words.take("a name")));
    unsigned char video = 1, audio = 2;
    double length = kNoTime;
    Kv::FrameRate rate;
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"video", "audio", "length", "rate"});
        if (word == "length") {
            const std::string text = words.peek();
            length = words.takeNumber("seconds");
            if (length < 0)
                refuse(StatusCode::wrongUsage, text, "a length is not negative");
        } else if (word == "rate") {
            const std::string& text = words.take("a rate");
            const auto parsed = Kv::FrameRate::fromString(text);
            if (!parsed)
                refuse(StatusCode::wrongUsage, text, "not a frame rate");
            rate = *parsed;
        } else {
            const auto channels =
                static_cast<unsigned char>(words.takeInt("a number of channels", 0, 255));
            if (word == "video")
                video = channels;
            else
                audio = channels;
        }
    }
    const EditPtr edit = createEmptyEdit(Cookie(), name, video, audio, length, rate);
    if (!edit)
        refuse(StatusCode::failed, toUtf8(name), "cannot be made");
    // Saved so that the next line finds it by name. Only its own failure counts, not that of
    // another edit.
    if (Status saved = EditManager::instance().flushChanges(false); edit->isDirty())
        require(saved);
    session.say("made " + toUtf8(edit->getName()) + ", " +
                timeText(edit->getEndTime() - edit->getStartTime()) + " s");
}

void show(Session& session, SessionWords& words) {
    constexpr int kColumns = 80;
    constexpr bool kColour = false;
    const EditView view = describe(session.edit());
    std::string text = words.takeIf("json") ? toJson(view) : draw(view, kColumns, kColour);
    while (text.ends_with('\n'))
        text.pop_back();
    session.say(text);
}

void rename(Session& session, SessionWords& words) {
    const std::wstring name = toWide(words.take("a name"));
    const EditModifier modifier = session.editForChange();
    edit_modify_name(modifier, name);
}

void removeAssets(Session&, SessionWords& words) {
    require(deleteAssets(words.takeRest(), "deleted in a session"));
}

void exportSrt(Session& session, SessionWords& words) {
    const EditPtr edit = session.edit();
    const std::string& path = words.take("a file");
    std::optional<std::string> text;
    if (words.done()) {
        text = AssetMetadataSRTExporter().getText(edit, edit->getCues().cues());
        if (!text)
            refuse(StatusCode::failed, toUtf8(edit->getName()), "has no markers to write");
    } else {
        using Clock = AssetMetadataSRTExporter::Clock;
        text = AssetMetadataSRTExporter::getText(edit, session.takeChannel(words), Clock::timecode);
        if (!text)
            refuse(StatusCode::failed, path, "the channel has no texts to write");
    }
    require(writeOutput(path, *text));
}

void saveTimeline(Session& session, const std::string& path, const Result<ExportedFile>& file) {
    require(file.status());
    for (const std::string& warning : file->warnings)
        session.say("warning: " + warning);
    require(writeOutput(path, file->text));
}

void exportOtioFile(Session& session, SessionWords& words) {
    const std::string path = words.take("a file");
    saveTimeline(session, path, exportOtio(session.edit()));
}

void exportEdlFile(Session& session, SessionWords& words) {
    const std::string path = words.take("a file");
    saveTimeline(session, path, exportEdl(session.edit(), words.takeOr("")));
}

// Those of the library, unless others are registered.
std::vector<Kv::Ptr<iAssetMetadataExporter>> exporters() {
    if (BinManager::instance().getMetadataExporters().empty())
        registerMetadataExporters();
    return BinManager::instance().getMetadataExporters();
}

Kv::Ptr<iAssetMetadataExporter> takeExporter(SessionWords& words) {
    const std::string name = words.take("a format");
    for (const auto& exporter : exporters())
        if (equalNoCase(toUtf8(exporter->getFormatName()), name))
            return exporter;
    refuse(StatusCode::notFound, name, "no such exporter; `exporters` tells them all");
}

void offerExporters(Session& session, SessionWords& words) {
    if (words.takeIf("without"))
        BinManager::instance().deRegisterMetadataExporter(takeExporter(words)->getFormatName());
    else if (words.takeIf("all"))
        registerMetadataExporters();
    for (const auto& exporter : exporters()) {
        const unsigned sources = exporter->getSupportedSources();
        session.say("  " + toUtf8(exporter->getFormatName()) + " ." +
                    toUtf8(exporter->getFileExtension()) +
                    (sources & iAssetMetadataExporter::kSourceMarkers ? " markers" : "") +
                    (sources & iAssetMetadataExporter::kSourceBin ? " bin" : ""));
    }
}

void exportAny(Session& session, SessionWords& words) {
    const auto exporter = takeExporter(words);
    const std::wstring path = toWide(words.take("a file"));
    const EditPtr edit = words.done() ? session.edit() : EditPtr();
    const Kv::Ptr<BinData> bin = edit ? nullptr : require(openBin(words.take("a bin")));
    if (!(edit ? exporter->exportToFile(edit, edit->getCues().cues(), path)
               : exporter->exportToFile(bin, path)))
        refuse(StatusCode::failed, toUtf8(path),
               "nothing that this exporter writes, or the file cannot be written");
    using Base = AssetMetadataExporterBase;
    if (!bin)
        return;
    const auto count = exportedItems(*bin).size();
    session.say(toUtf8(Base::getDisplayString(Base::getAssetType(bin), count != 1,
                                              Base::kStringLowerCase)) +
                " written: " + toText(static_cast<unsigned long long>(count)));
}

void importMarkers(Session& session, SessionWords& words) {
    MarkersInWords in;
    in.file = words.take("a file");
    if (!words.done())
        in.conflict = words.takeOneOf("a word", {"keep", "replace", "both"});
    const auto report = require(addMarkers(in, session.editForChange()));
    for (const std::string& warning : report.warnings)
        session.say("warning: " + warning);
    session.say(textOf(report.plan));
}

void defineAttribute(Session&, SessionWords& words) {
    const std::string id = words.take("an ID");
    const std::wstring name = toWide(words.take("a name"));
    static constexpr std::pair<const char*, DBFieldTypes::eType> kTypes[] = {
        {"text", DBFieldTypes::text},
        {"number", DBFieldTypes::number},
        {"date-time", DBFieldTypes::dateTime},
        {"date", DBFieldTypes::date},
        {"time", DBFieldTypes::time}};
    DBFieldTypes::eType type = DBFieldTypes::text;
    if (!words.done()) {
        const std::string word =
            words.takeOneOf("a type", {"text", "number", "date-time", "date", "time"});
        for (const auto& [known, value] : kTypes)
            if (word == known)
                type = value;
    }
    const bool isNew = !LogAttribute::fromID(id);
    require(CurrentProject::addCustomAttribute(id, name, type));
    if (isNew) { // the records of edits hold no texts under it yet
        require(EditManager::instance().flushChanges(false));
        require(CurrentProject::rebuildDatabase());
    }
}

void preference(Session& session, SessionWords& words) {
    const std::string key = words.take("a key");
    if (words.done())
        session.say("  " + key + " = " + EditorPreferences::getPreference(key, ""));
    else
        EditorPreferences::setPreference(key, words.take("a value"));
}

void debugCommand(Session& session, SessionWords& words) {
    if (words.done()) {
        for (const auto& name : Host::debugCommands().names())
            session.say("  " + name);
        return;
    }
    const std::string name = words.take("a name");
    if (!Host::debugCommands().run(name))
        refuse(StatusCode::notFound, name, "no such debug command");
}

void check(Session& session, SessionWords&) {
    const EditPtr edit = session.edit();
    const std::string wrong = edit->checkConsistency();
    session.say(wrong.empty() ? "consistent" : "inconsistent: " + wrong);
}

} // namespace

void addProjectVerbs(VerbTable& verbs) {
    verbs.heading("The project and the session");
    verbs.add({"import", "FILE", "takes a timeline file into the project", importOne});
    verbs.add({"make", "NAME [video N] [audio N] [length SECONDS] [rate R]", "makes an empty edit",
               makeEdit});
    verbs.add({"show", "[json]", "draws the edit of the viewer", show});
    verbs.add({"srt", "FILE [CHANNEL]", "writes the markers, or a subtitle channel, as SubRip",
               exportSrt});
    verbs.add({"import-markers", "FILE [keep|replace|both]",
               "takes the markers of a file; where one of the same time and name is, as said",
               importMarkers});
    verbs.add({"define", "ID NAME [text|number|date-time|date|time]",
               "defines an attribute of the project; cue.KEY is a field of markers",
               defineAttribute});
    verbs.add(
        {"otio", "FILE", "writes the edit, with what is nested in it, as OTIO", exportOtioFile});
    verbs.add({"edl", "FILE [TRACK]",
               "writes the edit as an edit list: its picture track, or the one named, with sound",
               exportEdlFile});
    verbs.add({"exporters", "[without FORMAT | all]",
               "tells what markers and bins can be written as; offers one less, or all again",
               offerExporters});
    verbs.add({"export", "FORMAT FILE [BIN]", "writes the markers, or a bin, with an exporter",
               exportAny});
    verbs.add({"rename", "NAME", "renames the edit; a name in parentheses is a suffix", rename});
    verbs.add(
        {"delete", "ASSET ...", "deletes edits, logs, bins, groups or documents", removeAssets});
    verbs.add({"save", "", "writes what has changed", [](Session&, SessionWords&) {
                   require(EditManager::instance().flushChanges(false));
               }});
    verbs.add({"consistent?", "", "checks everything that always holds of the edit", check});
    verbs.add({"configure", "KEY VALUE", "sets a configuration value for the session",
               [](Session&, SessionWords& words) {
                   const std::string key = words.take("a key");
                   Configuration::instance().set(key, words.take("a value"));
               }});
    verbs.add({"preference", "KEY [VALUE]", "tells or sets a user preference", preference});
    verbs.add({"debug", "", "writes every viewer and its clients to the log",
               [](Session&, SessionWords&) { VobManager::instance().debugVobs(); }});
    verbs.add({"debug-command", "[NAME]", "runs a debug command, or lists them", debugCommand});
    verbs.add({"say", "[TEXT] ...", "prints a text", [](Session& session, SessionWords& words) {
                   std::string text = words.takeOr("");
                   while (!words.done())
                       text += ' ' + words.take("a word");
                   session.say(text);
               }});
    verbs.add({"help", "[VERB]", "tells the verbs, or one of them",
               [](Session& session, SessionWords& words) {
                   const std::string name = words.takeOr("");
                   if (!name.empty() && !session.verbs().find(name))
                       refuse(StatusCode::wrongUsage, name, "no such verb; `help` tells them all");
                   std::string text = session.verbs().help(name);
                   text.pop_back(); // its last line end is added
                   session.say(text);
               }});
    verbs.add(
        {"quit", "", "ends the session", [](Session& session, SessionWords&) { session.end(); }});
}

} // namespace cutroom::cli
