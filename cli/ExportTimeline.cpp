// Edits as timelines for other programs: OTIO and edit lists.
#include "cli/Command.h"
#include "cli/ExportFormats.h"
#include "interchange/Exporter.h"

namespace cutroom::cli {

namespace {

Result<std::string> textOf(Result<ExportedFile> file) {
    if (!file)
        return file.status();
    for (const std::string& warning : file->warnings)
        note("warning: " + warning);
    return std::move(file->text);
}

} // namespace

Result<std::string> writeOtioEdit(const ExportWords&, const ExportSource& source) {
    return textOf(exportOtio(source.edit));
}

Result<std::string> writeEdlEdit(const ExportWords& words, const ExportSource& source) {
    return textOf(exportEdl(source.edit, words.track));
}

} // namespace cutroom::cli
