#include "export/AssetMetadataJSONExporter.h"

#include "export/MetadataWriter.h"
#include "platform/files/JsonBuilder.h"

namespace {

// Entries of lists come without a key.
class JsonWriter final : public cutroom::iMetadataWriter {
public:
    void beginObject(std::string_view key) override {
        if (key.empty())
            json_.beginObject();
        else
            json_.beginObject(key);
    }
    void endObject() override { json_.endObject(); }
    void beginList(std::string_view key, std::string_view) override { json_.beginArray(key); }
    void endList() override { json_.endArray(); }
    void add(std::string_view key, std::string_view text) override { addAny(key, text); }
    void add(std::string_view key, std::wstring_view text) override { addAny(key, text); }
    std::string take() { return json_.take(); }

private:
    template <class Text> void addAny(std::string_view key, Text text) {
        if (key.empty())
            json_.add(text);
        else
            json_.add(key, text);
    }

    JSON::Builder json_;
};

} // namespace

AssetMetadataJSONExporter::~AssetMetadataJSONExporter() = default;

LightweightString<wchar_t> AssetMetadataJSONExporter::getFormatName() { return L"JSON"; }

LightweightString<wchar_t> AssetMetadataJSONExporter::getFileExtension() { return L"json"; }

unsigned AssetMetadataJSONExporter::getSupportedSources() const {
    return kSourceBin | kSourceMarkers;
}

std::optional<std::string> AssetMetadataJSONExporter::getText(const EditPtr& edit,
                                                              const std::vector<Cue>& cues) const {
    JsonWriter json;
    return cutroom::writeEdit(json, edit, cues) ? std::optional(json.take()) : std::nullopt;
}

std::optional<std::string> AssetMetadataJSONExporter::getText(const Kv::Ptr<BinData>& bin) const {
    JsonWriter json;
    return cutroom::writeBin(json, bin) ? std::optional(json.take()) : std::nullopt;
}
