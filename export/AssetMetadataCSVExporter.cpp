#include "export/AssetMetadataCSVExporter.h"

#include "export/CsvBuilder.h"
#include "export/CueTimecodes.h"
#include "export/MarkerFields.h"
#include "export/MetadataWriter.h"

namespace {

cutroom::CsvBuilder tableOf(AssetMetadataCSVExporter::Cells cells) {
    using Cells = cutroom::CsvBuilder::Cells;
    return cutroom::CsvBuilder(cells == AssetMetadataCSVExporter::Cells::guarded ? Cells::guarded
                                                                                 : Cells::exact);
}

std::string colourOf(const Cue& cue) {
    const std::string name = AssetMetadataExporterBase::getMarkerColour(cue);
    return name.empty() ? cutroom::format("#%06x", cue.getColour()) : name;
}

} // namespace

AssetMetadataCSVExporter::~AssetMetadataCSVExporter() = default;

LightweightString<wchar_t> AssetMetadataCSVExporter::getFormatName() { return L"CSV"; }

LightweightString<wchar_t> AssetMetadataCSVExporter::getFileExtension() { return L"csv"; }

unsigned AssetMetadataCSVExporter::getSupportedSources() const {
    return kSourceBin | kSourceMarkers;
}

std::optional<std::string> AssetMetadataCSVExporter::getText(const EditPtr& edit,
                                                             const std::vector<Cue>& cues) const {
    if (!edit || cues.empty())
        return std::nullopt;
    const auto fields = cutroom::markerFields();
    const cutroom::CueTimecodes timecodes(edit);
    cutroom::CsvBuilder table = tableOf(cells_);
    for (const std::string_view column : {"name", "description", "in", "out", "colour"})
        table.add(column);
    for (const auto& field : fields)
        table.add(field.name);
    table.endRow();
    for (const Cue& cue : cues) {
        table.add(cue.getName());
        table.add(cue.getDescription());
        for (const double place : {cue.getRange().getStart(), cue.getRange().getEnd()}) {
            std::string timecode;
            timecodes.append(timecode, place);
            table.add(timecode);
        }
        table.add(colourOf(cue));
        for (const auto& field : fields)
            table.add(cue.getCustomMetadata(field.key));
        table.endRow();
    }
    return table.take();
}

std::optional<std::string> AssetMetadataCSVExporter::getText(const Kv::Ptr<BinData>& bin) const {
    if (!bin)
        return std::nullopt;
    const Kv::Ptr<BinData> snapshot(new BinData(*bin));
    const std::vector<unsigned> items = cutroom::exportedItems(*snapshot);
    if (items.empty())
        return std::nullopt;
    const auto attributes = getAssetAttributes();
    cutroom::CsvBuilder table = tableOf(cells_);
    for (const LogAttribute& attribute : attributes)
        table.add(attribute.getID());
    table.endRow();
    for (const unsigned item : items) {
        const EditPtr edit = snapshot->openEdit(item); // stays open until all is said
        for (const LogAttribute& attribute : attributes)
            table.add(getPersistableString(snapshot, item, attribute));
        table.endRow();
    }
    return table.take();
}
