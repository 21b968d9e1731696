#include "interchange/Exporter.h"

#include "interchange/EdlWriter.h"
#include "interchange/ExportEdits.h"
#include "interchange/OtioWriter.h"

#include <utility>

namespace cutroom {

namespace {

template <class Written> ExportedFile fileOf(const Timeline& timeline, Written&& written) {
    ExportedFile file{std::move(written.text), timeline.warnings};
    file.warnings.insert(file.warnings.end(), written.warnings.begin(), written.warnings.end());
    return file;
}

} // namespace

Result<ExportedFile> exportOtio(const EditPtr& edit) {
    const auto timeline = describeForExport(edit);
    if (!timeline)
        return timeline.status();
    return fileOf(*timeline, writeOtio(*timeline));
}

Result<ExportedFile> exportEdl(const EditPtr& edit, const std::string& track) {
    const auto timeline = describeForExport(edit);
    if (!timeline)
        return timeline.status();
    auto written = writeEdl(*timeline, track);
    if (!written)
        return written.status();
    return fileOf(*timeline, std::move(*written));
}

} // namespace cutroom
