// `AssetMetadataSRTExporter`: the markers of an edit as SubRip subtitles.
//
// SubRip has no standard; the form written here is what players agree on: number, time line, text
// lines, empty line, UTF-8.
#pragma once

#include "export/AssetMetadataExporterBase.h"
#include "platform/base/IdStamp.h"
#include "platform/base/NumRange.h"

class CUTROOM_API AssetMetadataSRTExporter : public AssetMetadataExporterBase {
public:
    // What the times in the file count: the programme's timecode as a clock, or the time since its
    // first frame, which is what a player shows them by.
    enum class Clock { timecode, media };

    using AssetMetadataExporterBase::exportToFile;

    explicit AssetMetadataSRTExporter(Clock clock = Clock::timecode) noexcept : clock_(clock) {}
    ~AssetMetadataSRTExporter() override;

    LightweightString<wchar_t> getFormatName() override;
    LightweightString<wchar_t> getFileExtension() override;
    unsigned getSupportedSources() const override;

    // Writes each cue that has an end and a text, numbered by its place among `cues` (so what is
    // skipped leaves gaps). False without cues, or when saving failed.
    bool exportToFile(const EditPtr& edit, const std::vector<Cue>& cues,
                      const LightweightString<wchar_t>& path) const override;
    // Writes the texts of a subtitle channel, as they are at one moment under the edit's lock.
    // False for an unknown channel, one without texts, or when saving failed.
    static bool exportToFile(const EditPtr& edit, const IdStamp& channel,
                             const LightweightString<wchar_t>& path);
    static bool exportToFile(const EditPtr& edit, const IdStamp& channel,
                             const LightweightString<wchar_t>& path, Clock clock);

private:
    // The subtitles of a channel as the file has them; empty when there are none.
    static LightweightString<char> getSubtitles(const EditPtr& edit, const IdStamp& channel,
                                                Clock clock);
    // "HH:MM:SS,mmm" from a timecode of the form HH:MM:SS:FF (11 characters); any other timecode
    // text stays as it is.
    static LightweightString<char> getTimecodeString(const EditPtr& edit, double seconds);
    static LightweightString<char> getTimecodeRangeString(const EditPtr& edit,
                                                          const TimeRange& range);
    // The time line of a range by either clock.
    static LightweightString<char> getTimeLine(const EditPtr& edit, const TimeRange& range,
                                               Clock clock);
    // Description, else name, as one or two lines; line breaks and control characters become
    // blanks, since an empty line would end the subtitle.
    static LightweightVector<LightweightString<char>> getMarkerText(const Cue& cue);

    Clock clock_;
};
