// Any bytes as subtitles: what is read is in order and has a length; written and read again it
// has the same times.
#include "editops/basics/EmptyEdit.h"
#include "export/AssetMetadataSRTExporter.h"
#include "fuzz/Require.h"
#include "interchange/SrtReader.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;

void check(const SrtFile& file) {
    Flicks last = 0;
    for (const SrtCue& cue : file.cues) {
        require(cue.start >= last && cue.end > cue.start && !cue.lines.empty());
        last = cue.start;
    }
}

// An edit of an hour, for all inputs.
const EditPtr& programme() {
    static const EmbeddedHost host{EmbeddedHost::repeatable()};
    static const EditPtr edit(createEmptyEdit(Cookie(), L"Reel", 1, 0, 3600, Kv::FrameRate(25)));
    return edit;
}

std::string written(const SrtFile& file) {
    std::vector<Cue> cues;
    for (const SrtCue& from : file.cues) {
        LightweightString<wchar_t> text;
        for (const auto& line : from.lines)
            text += (text.empty() ? L"" : L" ") + line;
        Cue& cue = cues.emplace_back(toSeconds(from.start), text);
        cue.setEndTime(toSeconds(from.end));
    }
    using Exporter = AssetMetadataSRTExporter;
    return Exporter(Exporter::Clock::media).getText(programme(), cues).value();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = readSrt(bytes, "fuzz.srt");
    if (!read.ok() || read->cues.empty())
        return 0;
    check(*read);
    const auto again = readSrt(written(*read), "again.srt");
    if (!isPlain(bytes))
        return 0;
    require(again.ok());
    require(std::equal(read->cues.begin(), read->cues.end(), again->cues.begin(), again->cues.end(),
                       [](const SrtCue& was, const SrtCue& is) {
                           return was.start == is.start && was.end == is.end;
                       }));
    return 0;
}
