#include "interchange/Importer.h"

#include "interchange/EdlReader.h"
#include "interchange/ImportEdits.h"
#include "interchange/OtioReader.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace cutroom {

namespace {

constexpr std::uint64_t kMaxBytes = std::uint64_t{512} << 20;
// Shares of the whole work at whose end reading and making lie.
constexpr double kRead = 0.3;
constexpr double kMade = 0.5;
constexpr double kWritten = 0.9;

bool isOtioName(const std::string& path) {
    const std::string extension = toLowerUtf8(extensionOf(path));
    return extension == "otio" || extension == "json";
}

// JSON begins with a brace; everything else may be an edit list. A file that begins with nothing is
// what its name says.
bool isOtio(std::string_view bytes, const std::string& path) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    const auto first = bytes.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || bytes[first] == '[')
        return isOtioName(path);
    return bytes[first] == '{';
}

Result<std::vector<Timeline>> readTimelines(const std::string& path, const ImportOptions& options) {
    const bool folder = toLowerUtf8(extensionOf(path)) == "otiod";
    auto bytes = readFile(folder ? joinPath(path, "content.otio") : path, kMaxBytes);
    if (!bytes)
        return bytes.status();
    if (std::string_view(*bytes).substr(0, 4) == "PK\x03\x04")
        return Status(StatusCode::damaged, path,
                      "a zip archive; unpack it and import its content.otio");
    if (isOtio(*bytes, path))
        return readOtio(*bytes, path);
    return readEdl(*bytes, path, options.rate);
}

ImportReport reportOf(const ImportedFile& file, const std::vector<Timeline>& timelines) {
    ImportReport report;
    for (const Cookie& cookie : file.roots())
        report.edits.push_back({cookie, EditPtr(cookie)->getName()});
    for (const Cookie& cookie : file.nested())
        report.nested.push_back({cookie, EditPtr(cookie)->getName()});
    report.newLogs = file.logs();
    report.logs = report.newLogs.size();
    report.warnings = file.warnings(timelines);
    return report;
}

Status writable(const std::string& path) {
    if (!CurrentProject::isOpen())
        return {StatusCode::failed, path, "no project is open to import into"};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, path, "the project is open for reading only"};
    // Removes what an earlier import could not take back, so that its logs are not taken for the
    // project's.
    return EditManager::instance().discard({});
}

// A failure that names no file concerns the one that is imported.
Status about(const std::string& path, const Status& status) {
    return status.file().empty() ? Status(status.code(), path, status.message()) : status;
}

} // namespace

Result<ImportReport> importFile(const std::string& path, const ImportOptions& options) {
    const auto tell = [&](double done) {
        if (options.progress)
            options.progress(done);
    };
    if (Status status = writable(path); !status)
        return status;
    tell(0);
    auto timelines = readTimelines(path, options);
    if (!timelines)
        return timelines.status();
    tell(kRead);
    ImportedFile file(path);
    const auto making = [&](double done) { tell(kRead + done * (kMade - kRead)); };
    if (const Status status = file.make(*timelines, making); !status)
        return about(path, status);
    ImportReport report = reportOf(file, *timelines);
    std::vector<FileInProject> others;
    if (options.alongside) {
        auto given = options.alongside(report);
        if (!given)
            return given.status();
        others = std::move(*given);
    }
    const SaveAlongside alongside(std::move(others));
    const auto saving = [&](double done) { tell(kMade + done * (kWritten - kMade)); };
    if (const Status status = file.save(saving); !status)
        return about(path, status);
    file.keep();
    tell(1);
    return report;
}

} // namespace cutroom
