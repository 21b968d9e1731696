#include "export/AssetMetadataSubtitlesExporter.h"

#include "export/CueTimecodes.h"
#include "export/SubtitleText.h"
#include "export/WideText.h"

AssetMetadataSubtitlesExporter::~AssetMetadataSubtitlesExporter() = default;

LightweightString<wchar_t> AssetMetadataSubtitlesExporter::getFormatName() { return L"Subtitles"; }

LightweightString<wchar_t> AssetMetadataSubtitlesExporter::getFileExtension() { return L"txt"; }

unsigned AssetMetadataSubtitlesExporter::getSupportedSources() const { return kSourceMarkers; }

std::optional<std::string>
AssetMetadataSubtitlesExporter::getText(const EditPtr& edit, const std::vector<Cue>& cues) const {
    if (!edit || cues.empty())
        return std::nullopt;
    const cutroom::CueTimecodes timecodes(edit);
    cutroom::SubtitleLine line;
    std::string file = "<begin subtitles>\n";
    for (const Cue& cue : cues) {
        if (!cue.hasEnd())
            continue;
        timecodes.append(file, cue.getRange().getStart());
        file += ' ';
        timecodes.append(file, cue.getRange().getEnd());
        file += '\n';
        cutroom::appendUtf8(file, line.of(cue.getDescription(), cue.getName()));
        file += "\n\n";
    }
    return file + "<end subtitles>\n";
}
