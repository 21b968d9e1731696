// `iAssetMetadataExporter`: one file format in which the metadata or markers of assets leave the
// project.
#pragma once

#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "platform/store/Cue.h"
#include "platform/store/EditPtr.h"

#include <vector>

class BinData;

// Exporters are shared by count and never change; any thread that may use the asset may export.
// They show no message: false means nothing to write, or that the file could not be saved.
class CUTROOM_API iAssetMetadataExporter : public virtual iObject {
public:
    // Bits of `getSupportedSources`.
    enum eSource : unsigned { kSourceBin = 1, kSourceMarkers = 2 };

    ~iAssetMetadataExporter() override;

    // The name shown to the user.
    virtual LightweightString<wchar_t> getFormatName() = 0;
    // Without a dot.
    virtual LightweightString<wchar_t> getFileExtension() = 0;
    // The sources it can take, as bits.
    virtual unsigned getSupportedSources() const = 0;
    // Writes the given markers of the edit. False by default.
    virtual bool exportToFile(const EditPtr& edit, const std::vector<Cue>& cues,
                              const LightweightString<wchar_t>& path) const;
    // Writes the assets of a bin. False by default.
    virtual bool exportToFile(const Kv::Ptr<BinData>& bin,
                              const LightweightString<wchar_t>& path) const;
};
