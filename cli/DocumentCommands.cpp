// cutroom document ...
#include "bins/DocumentManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/Names.h"
#include "platform/base/Strings.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

namespace fs = std::filesystem;

struct DocumentWords {
    std::vector<std::string> documents; // or files
    std::vector<std::string> locations;
    std::optional<std::string> name, description, externalId;
    bool localise = false;
};

DocumentManager& manager() { return DocumentManager::instance(); }

// A location is good from every folder, so paths are made absolute; what is no path of this machine
// ("https://...") stays.
std::optional<std::wstring> absolutePath(const std::string& path) {
    if (path.find("://") != path.npos)
        return toWideStrict(path);
    std::error_code failure;
    const fs::path whole = fs::absolute(path, failure);
    return failure ? std::nullopt : toWideStrict(whole.lexically_normal().string());
}

void describe(Document& document, const DocumentWords& words) {
    if (words.name)
        document.setName(toWide(*words.name));
    if (words.description)
        document.setDescription(toWide(*words.description));
    if (words.externalId)
        document.setExternalID(toWide(*words.externalId));
}

using Made = std::vector<Kv::Ptr<Document>>;

Status makeOne(const DocumentWords& words, const std::string& file, Made& all) {
    std::error_code ignored;
    const fs::file_status there = fs::status(file, ignored);
    if (fs::exists(there) && !fs::is_regular_file(there))
        return {StatusCode::inputOutput, file, "is a folder, a device or a pipe, not a file"};
    if (!fs::is_regular_file(there))
        return {StatusCode::notFound, file, "no such file"};
    const auto path = absolutePath(file);
    if (!path)
        return {StatusCode::wrongUsage, file, "the path is not UTF-8"};
    if (const auto known = manager().findDocumentReferringToFile(*path))
        return {StatusCode::failed, file,
                "document " + known->getID().asString() + " stands for it already"};
    const auto made = manager().createDocument(*path, 'D');
    if (!made)
        return {StatusCode::failed, file, "no document can be made"};
    describe(*made, words);
    const Kv::Ptr<Document> document = made.getContainer();
    if (words.localise)
        if (Status copied = document->localise(); !copied) {
            const Status destroyed = manager().destroy(document->getID(), "not localised");
            return destroyed ? copied : destroyed;
        }
    all.push_back(document);
    return {};
}

std::string allMadeText(const Made& all, bool json) {
    JSON::Builder out;
    std::string text;
    out.beginArray();
    for (const auto& document : all) {
        text += madeText(document->getID(), document->getName(), false);
        out.beginObject();
        out.add("id", document->getID().asString());
        out.add("name", document->getName());
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : text;
}

Status checkName(const DocumentWords& words) {
    return words.name ? parseName(*words.name).status() : Status();
}

// Like an import: each file for itself.
Status makeAll(const Options& options, const DocumentWords& words) {
    if (words.name && words.documents.size() > 1)
        return {StatusCode::wrongUsage, *words.name, "--name is for a single file"};
    if (Status named = checkName(words); !named)
        return named;
    Made made;
    Status worst;
    for (const std::string& file : words.documents)
        if (Status one = makeOne(words, file, made); !one) {
            if (!worst)
                fail(worst);
            worst = std::move(one);
        }
    const Status saved = manager().saveAll();
    if (saved)
        print(allMadeText(made, options.json));
    return worst.ok() ? saved : worst;
}

Status show(const Options& options, const DocumentWords& words) {
    const auto document = openDocument(words.documents.front());
    if (document)
        print(showDocument(**document, options.json));
    return document.status();
}

Status set(const Options&, const DocumentWords& words) {
    const auto document = openDocument(words.documents.front());
    if (!document)
        return document.status();
    if (!words.name && !words.description && !words.externalId && words.locations.empty())
        return {StatusCode::wrongUsage, words.documents.front(), "say what to change"};
    if (Status named = checkName(words); !named)
        return named;
    LightweightVector<LightweightString<wchar_t>> locations;
    for (const std::string& location : words.locations) {
        const auto path = absolutePath(location);
        if (!path)
            return {StatusCode::wrongUsage, location, "the path is not UTF-8"};
        locations.push_back(*path);
    }
    const ContainerModifier<Document> change(*document, "set by command");
    describe(*change, words);
    if (!locations.empty())
        change->setLocations(locations);
    return {};
}

Status localise(const Options&, const DocumentWords& words) {
    for (const std::string& text : words.documents) {
        const auto document = openDocument(text);
        if (!document)
            return document.status();
        if (Status copied = (*document)->localise(); !copied)
            return copied;
    }
    return {};
}

} // namespace

void addDocumentCommand(Commands commands) {
    const auto words = std::make_shared<DocumentWords>();
    CLI::App* const whole = commands.app.add_subcommand(
        "document", "Keep outside files with the project: scripts, notes, stills");
    whole->require_subcommand(1);
    whole->footer("  cutroom document new script.pdf --description \"Shooting script, blue\"\n"
                  "  cutroom document localise script.pdf\n"
                  "  cutroom bin add Dailies script.pdf");
    addNamingCommands(commands, *whole, "DOCUMENT", kDocuments);
    const auto sub = [&](const char* name, const char* about, Workspace::Use use,
                         Status (*body)(const Options&, const DocumentWords&)) {
        CLI::App* const command = whole->add_subcommand(name, about);
        runsWithProject(commands, command, use,
                        [words, body](const Options& options) { return body(options, *words); });
        return command;
    };
    const auto withDocuments = [&](CLI::App* command, int most) {
        command->add_option("document", words->documents, "Name or cookie")
            ->required()
            ->expected(1, most)
            ->type_name("DOCUMENT");
        return command;
    };
    const auto withDescription = [&](CLI::App* command) {
        command->add_option("--name", words->name, "Its name (default: the file's)");
        command->add_option("--description", words->description, "What it is");
        command->add_option("--external-id", words->externalId, "Its name in another system");
    };
    constexpr auto kRead = Workspace::Use::read;
    constexpr auto kWrite = Workspace::Use::write;
    constexpr int kMany = CLI::detail::expected_max_vector_size;
    sub("list", "Show the project's documents", kRead,
        [](const Options& options, const DocumentWords&) {
            print(listDocuments(options.json));
            return Status();
        });
    withDocuments(sub("show", "Show a document and where its file is found", kRead, show), 1);
    CLI::App* command = sub("new", "Make a document for each outside file", kWrite, makeAll);
    command->add_option("files", words->documents, "The files")->required()->type_name("FILE");
    command->add_flag("--localise", words->localise, "Copy them into the project");
    withDescription(command);
    command = withDocuments(
        sub("set", "Change what a document says, or where its file is found", kWrite, set), 1);
    command->add_option("--location", words->locations, "Where the file is, the best place first")
        ->type_name("FILE");
    withDescription(command);
    withDocuments(sub("localise", "Copy the outside files into the project", kWrite, localise),
                  kMany);
}

} // namespace cutroom::cli
