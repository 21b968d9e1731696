// Writes the markers of every edit of a project in every format that has been registered:
//
//   batch_export PROJECT FOLDER
//
// A program adds a format of its own by registering another `iAssetMetadataExporter`.
#include "bins/BinManager.h"
#include "export/MetadataExporters.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <cstdio>
#include <map>
#include <string>

namespace {

std::multimap<std::wstring, EditPtr> editsByName() {
    std::multimap<std::wstring, EditPtr> edits;
    for (const Cookie& cookie : EditManager::instance().getAllEdits())
        if (EditPtr edit(cookie); edit) // one that is damaged cannot be opened
            edits.emplace(edit->getName(), edit);
    return edits;
}

// Files are named after the edit's cookie, which no other edit has.
void exportMarkers(const EditPtr& edit, const std::wstring& folder) {
    const std::vector<Cue> markers = edit->getCues().cues();
    if (markers.empty())
        return;
    std::printf("%s, %zu markers\n", cutroom::toUtf8(edit->getName()).c_str(), markers.size());
    for (const auto& exporter : BinManager::instance().getMetadataExporters()) {
        if ((exporter->getSupportedSources() & iAssetMetadataExporter::kSourceMarkers) == 0)
            continue;
        const std::wstring file = folder + L'/' + cutroom::toWide(edit.getCookie().asString()) +
                                  L'.' + exporter->getFileExtension();
        const bool written = exporter->exportToFile(edit, markers, file);
        std::printf("  %s: %s\n", cutroom::toUtf8(exporter->getFormatName()).c_str(),
                    written ? "written" : "not written");
    }
}

} // namespace

int main(int count, char** words) {
    if (count != 3) {
        std::fprintf(stderr, "usage: batch_export PROJECT FOLDER\n");
        return 2;
    }
    cutroom::EmbeddedHost host;
    cutroom::EmbeddedProject project(host);
    const cutroom::Status opened =
        project.open(words[1], CurrentProject::Access::readOnly, CurrentProject::IfMissing::fail);
    if (!opened) {
        std::fprintf(stderr, "%s\n", opened.text().c_str());
        return 1;
    }
    cutroom::registerMetadataExporters();
    for (const auto& [name, edit] : editsByName())
        exportMarkers(edit, cutroom::toWide(words[2]));
}
