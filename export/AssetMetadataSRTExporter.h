// `AssetMetadataSRTExporter`: the markers of an edit as SubRip subtitles.
//
// SubRip has no standard; the form written here is what players agree on: number, time line, text
// lines, empty line, UTF-8. Texts have no line breaks inside (each becomes a blank) and none reads
// as a time line ("-->" at a number becomes "->"), since either would begin another subtitle.
#pragma once

#include "export/AssetMetadataExporterBase.h"
#include "platform/base/IdStamp.h"
#include "platform/base/NumRange.h"

namespace cutroom {
class CueTimecodes;
}

class CUTROOM_API AssetMetadataSRTExporter : public AssetMetadataExporterBase {
public:
    // What the times in the file count: the programme's timecode as a clock, or the time since its
    // first frame, which is what a player shows them by.
    enum class Clock { timecode, media };

    using AssetMetadataExporterBase::exportToFile;
    using AssetMetadataExporterBase::getText;

    explicit AssetMetadataSRTExporter(Clock clock = Clock::timecode) noexcept : clock_(clock) {}
    ~AssetMetadataSRTExporter() override;

    LightweightString<wchar_t> getFormatName() override;
    LightweightString<wchar_t> getFileExtension() override;
    unsigned getSupportedSources() const override;

    // Each cue that has an end and a text, numbered by its place among `cues` (so what is skipped
    // leaves gaps). Nothing without cues; empty when all are skipped.
    std::optional<std::string> getText(const EditPtr& edit,
                                       const std::vector<Cue>& cues) const override;
    // The texts of a subtitle channel, as they are at one moment under the edit's lock. Nothing for
    // an unknown channel and for one without texts.
    static std::optional<std::string> getText(const EditPtr& edit, const IdStamp& channel,
                                              Clock clock);
    // Writes the texts of a subtitle channel by its timecode. False when there are none, or when
    // saving failed.
    static bool exportToFile(const EditPtr& edit, const IdStamp& channel,
                             const LightweightString<wchar_t>& path);

private:
    struct MarkerText;
    class Writer;

    // "HH:MM:SS,mmm" from a timecode of the form HH:MM:SS:FF (11 characters), the milliseconds
    // rounded down; any other timecode text stays as it is.
    static void getTimecodeString(std::string& out, const cutroom::CueTimecodes& edit,
                                  double resolution, double seconds);
    static void getTimecodeRangeString(std::string& out, const cutroom::CueTimecodes& edit,
                                       double resolution, const TimeRange& range);
    // Description, else name, as one or two lines; none when there is nothing but blanks.
    static void getMarkerText(const Cue& cue, MarkerText& text);

    Clock clock_;
};
