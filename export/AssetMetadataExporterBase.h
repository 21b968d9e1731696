// What all exporters share: how assets, values, places and colours are written, and that a file is
// made whole as text before any of it is saved.
#pragma once

#include "bins/BinData.h"
#include "export/iAssetMetadataExporter.h"
#include "platform/project/LogAttribute.h"

#include <cstdint>
#include <optional>
#include <vector>

class CUTROOM_API AssetMetadataExporterBase : public iAssetMetadataExporter {
public:
    // The kinds of asset that a file tells apart, in the order in which it lists them.
    enum eAssetType : unsigned {
        kAssetClip,
        kAssetSubclip,
        kAssetSyncedClip,
        kAssetPrint,
        kAssetCopiedClip,
        kAssetClipSection,
        kAssetSequence,
        kAssetLog, // of any other kind
        kAssetBin,
        kAssetDocument,
        kAssetMixed, // assets of several kinds, or of none
    };
    enum eStringFormat { kStringAsIs, kStringLowerCase };

    ~AssetMetadataExporterBase() override;

    // --- exporting -----------------------------------------------------------------------------
    // What a file of these markers of the edit holds; nothing when there is nothing to write.
    virtual std::optional<std::string> getText(const EditPtr& edit,
                                               const std::vector<Cue>& cues) const;
    // The same of a bin: of its tagged items, or of all when none is tagged.
    virtual std::optional<std::string> getText(const Kv::Ptr<BinData>& bin) const;
    // Save that text, whole or not at all and without a backup of a file that was there.
    bool exportToFile(const EditPtr& edit, const std::vector<Cue>& cues,
                      const LightweightString<wchar_t>& path) const override;
    bool exportToFile(const Kv::Ptr<BinData>& bin,
                      const LightweightString<wchar_t>& path) const override;

    // --- assets --------------------------------------------------------------------------------
    // The kind that all items of the bin are of, else `kAssetMixed`; the kind of one item.
    // `kAssetMixed` also past the end and without bin.
    static eAssetType getAssetType(const Kv::Ptr<BinData>& bin);
    static eAssetType getAssetType(const Kv::Ptr<BinData>& bin, unsigned index);
    // The kind's name from the string table: "Clip", "Clips", "clips".
    static LightweightString<wchar_t> getDisplayString(eAssetType type, bool plural,
                                                       eStringFormat format = kStringAsIs);
    // What is written of edits, logs and bins: every built-in attribute in ascending order of
    // number, then the open project's own, save those of its markers.
    static std::vector<LogAttribute> getAssetAttributes();
    // What is written of documents: the attributes that they have.
    static std::vector<LogAttribute> getDocumentAttributes();
    // The value of an attribute as it is written: dates by `getDateString`, all else as it is
    // stored. Empty for what is not known, past the end and without bin.
    static LightweightString<char> getPersistableString(const Kv::Ptr<BinData>& bin, unsigned index,
                                                        const LogAttribute& attribute);
    static LightweightString<char> getPersistableString(const LogAttribute& attribute,
                                                        const LightweightString<wchar_t>& value);
    // "%d %b %Y, %H:%M" of a date with a time, "%d %b %Y" of a date, "%H:%M" of a time of day, as
    // strftime has them, with English months and in UTC wherever it runs. `value` in seconds since
    // 1970 or midnight. Empty for other types and beyond the years 1 to 9999.
    static LightweightString<char> getDateString(std::int64_t value, DBFieldTypes::eType type);

    // --- markers -------------------------------------------------------------------------------
    // The timecode of `seconds` in the edit. By the edit's video timecode label, without padding;
    // counted from zero when it has none or the configuration value "convert_marker_timecodes"
    // (default 1) is 0. Empty without edit and for a time that is no time.
    static LightweightString<char> getCueTimecode(const EditPtr& edit, double seconds);
    // The name of the cue's colour: "red", "green", "blue", "cyan", "magenta", "yellow", "white",
    // "black"; empty for any other.
    static LightweightString<char> getMarkerColour(const Cue& cue);

protected:
    // False without a text, and for a path that is no Unicode text.
    static bool save(const LightweightString<wchar_t>& path,
                     const std::optional<std::string>& text);
};
