// The markers of an edit written as JSON, XML and SubRip: the text of the file, without saving it.
#include "bench/limits/MarkerText.h"
#include "bench/support/Paired.h"
#include "editops/basics/EmptyEdit.h"
#include "export/AssetMetadataJSONExporter.h"
#include "export/AssetMetadataSRTExporter.h"
#include "export/AssetMetadataXMLExporter.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"

#ifdef CUTROOM_RIVAL_RAPIDJSON
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#endif
#ifdef CUTROOM_RIVAL_PUGIXML
#include <pugixml.hpp>
#endif

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace cutroom::bench {

namespace {

using Markers = std::vector<PlainMarker>;

// The same markers as cues of an edit.
struct MarkedEdit {
    explicit MarkedEdit(const Markers& markers)
        : edit(createEmptyEdit(Cookie(), L"Reel", 1, 0, kNoTime, Kv::FrameRate(25))) {
        static const std::pair<const char*, std::uint32_t> kColours[] = {
            {"red", 0xFF0000}, {"green", 0x00FF00}, {"white", 0xFFFFFF}, {"yellow", 0xFFFF00}};
        edit->addLabel(EditLabel(kLabelVideoTimecode, {2, 1}, {Kv::FrameRate(25), false}, 0));
        for (const PlainMarker& marker : markers) {
            Cue& cue = cues.emplace_back(TimeRange(marker.start, marker.end), toWide(marker.name));
            cue.setDescription(toWide(marker.description));
            for (const auto& [name, value] : kColours)
                if (marker.colour == name)
                    cue.setColour(value);
        }
    }

    EmbeddedHost host{EmbeddedHost::repeatable()};
    EditPtr edit;
    std::vector<Cue> cues;
};

std::string timecode(double seconds) {
    std::string text;
    appendTimecode(text, seconds);
    return text;
}

#ifdef CUTROOM_RIVAL_RAPIDJSON
void rapidJson(const Markers& markers) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.StartArray();
    for (const PlainMarker& marker : markers) {
        writer.StartObject();
        for (const auto& [key, value] : {std::pair<const char*, std::string>{"name", marker.name},
                                         {"description", marker.description},
                                         {"in", timecode(marker.start)},
                                         {"out", timecode(marker.end)},
                                         {"colour", marker.colour}}) {
            writer.Key(key);
            writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
        }
        writer.EndObject();
    }
    writer.EndArray();
    benchmark::DoNotOptimize(buffer.GetString());
}
#endif

#ifdef CUTROOM_RIVAL_PUGIXML
void pugiXml(const Markers& markers) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("markers");
    for (const PlainMarker& marker : markers) {
        pugi::xml_node node = root.append_child("marker");
        node.append_child("name").text().set(marker.name.c_str());
        node.append_child("description").text().set(marker.description.c_str());
        node.append_child("in").text().set(timecode(marker.start).c_str());
        node.append_child("out").text().set(timecode(marker.end).c_str());
        node.append_child("colour").text().set(marker.colour.c_str());
    }
    std::ostringstream out;
    document.save(out, "    ");
    benchmark::DoNotOptimize(out.str());
}
#endif

std::string printedTime(double seconds) {
    const int milliseconds = static_cast<int>(seconds * 1000 + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d,%03d", milliseconds / 3'600'000,
                  milliseconds / 60'000 % 60, milliseconds / 1000 % 60, milliseconds % 1000);
    return text;
}

void printedSrt(const Markers& markers) {
    std::string out;
    for (std::size_t i = 0; i < markers.size(); ++i) {
        char text[512];
        std::snprintf(text, sizeof text, "%zu\n%s --> %s\n%s\n\n", i + 1,
                      printedTime(markers[i].start).c_str(), printedTime(markers[i].end).c_str(),
                      markers[i].description.c_str());
        out += text;
    }
    benchmark::DoNotOptimize(out);
}

template <class Exporter> void ours(const MarkedEdit& marked) {
    const auto text = Exporter().getText(marked.edit, marked.cues);
    if (!text)
        std::abort();
    benchmark::DoNotOptimize(*text);
}

void asJson(benchmark::State& state) {
    const Markers markers = plainMarkers(static_cast<std::size_t>(state.range(0)));
    const MarkedEdit marked(markers);
    Paired paired(static_cast<double>(markers.size()));
    paired.add("appended", [&] { benchmark::DoNotOptimize(plainJson(markers)); });
    paired.add("exporter", [&] { ours<AssetMetadataJSONExporter>(marked); });
#ifdef CUTROOM_RIVAL_RAPIDJSON
    paired.add("RapidJSON", [&] { rapidJson(markers); });
#endif
    paired.run(state);
}

void asXml(benchmark::State& state) {
    const Markers markers = plainMarkers(static_cast<std::size_t>(state.range(0)));
    const MarkedEdit marked(markers);
    Paired paired(static_cast<double>(markers.size()));
    paired.add("appended", [&] { benchmark::DoNotOptimize(plainXml(markers)); });
    paired.add("exporter", [&] { ours<AssetMetadataXMLExporter>(marked); });
#ifdef CUTROOM_RIVAL_PUGIXML
    paired.add("pugixml", [&] { pugiXml(markers); });
#endif
    paired.run(state);
}

void asSrt(benchmark::State& state) {
    const Markers markers = plainMarkers(static_cast<std::size_t>(state.range(0)));
    const MarkedEdit marked(markers);
    if (AssetMetadataSRTExporter().getText(marked.edit, marked.cues) != plainSrt(markers))
        std::abort(); // both do the same
    Paired paired(static_cast<double>(markers.size()));
    paired.add("appended", [&] { benchmark::DoNotOptimize(plainSrt(markers)); });
    paired.add("exporter", [&] { ours<AssetMetadataSRTExporter>(marked); });
    paired.add("printf", [&] { printedSrt(markers); });
    paired.run(state);
}

BENCHMARK(asJson)->Arg(1000)->Arg(100'000)->UseManualTime();
BENCHMARK(asXml)->Arg(1000)->Arg(100'000)->UseManualTime();
BENCHMARK(asSrt)->Arg(1000)->Arg(100'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
