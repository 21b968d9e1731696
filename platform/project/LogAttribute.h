// `LogAttribute`: one attribute of an asset (a column of a bin, a field that can be searched or
// exported), built in or defined by the project.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/LogType.h"
#include "platform/base/Strings.h"
#include "platform/project/DBFieldTypes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A value: a number and, for an attribute of the project, its texts. Any thread, no lock.
class CUTROOM_API LogAttribute {
public:
    // The numbers are persisted. A change of `modified` or `externalID` alone does not count as a
    // modification of the asset; `take` and `numMarkers` sort by their leading number, all others
    // as text.
    enum eType : unsigned {
        invalid = 0,
        name = 1,
        cookie = 2,
        modified = 3,
        created = 4,
        type = 5,
        duration = 6,
        timecode = 7,
        endTimecode = 8,
        tracks = 9,
        frameRate = 10,
        markIn = 11,
        markOut = 12,
        externalID = 13,
        tags = 14,
        mediaLocation = 15,
        createdBy = 16,
        parent = 17,
        scene = 20,
        shot = 21,
        who = 22,
        description = 23,
        notes = 24,
        reel = 25,
        audioReel = 26,
        filmReel24P = 27,
        cameraReel = 28,
        cameraDate = 29,
        labReel = 30,
        compReel = 31,
        audioSampleRate = 32,
        compression = 33,
        frameBased = 34,
        pulldown = 35,
        sequence = 36,
        sourceFormat = 37,
        aspectRatio = 38,
        mediaDate = 39,
        sourceMedium = 40,
        take = 77,
        numMarkers = 121,
        firstCustom = 1000, // this and above: attributes of the project
    };

    // The invalid attribute.
    LogAttribute() = default;
    // The built-in attribute of that number; the invalid one when there is none.
    LogAttribute(eType number);
    // An attribute of the project: number `firstCustom` + `index`, persisted name `id`.
    LogAttribute(unsigned index, std::string id, LightweightString<wchar_t> displayName,
                 DBFieldTypes::eType fieldType);

    // Every built-in attribute, in ascending order of number.
    static const std::vector<LogAttribute>& builtIn();
    // The attribute with that persisted name (case matters): built in, else of the open project.
    static std::optional<LogAttribute> fromID(std::string_view id);
    // The attribute with that number: built in, else of the open project.
    static std::optional<LogAttribute> fromType(unsigned type);

    bool valid() const noexcept { return type_ != invalid; }
    eType getType() const noexcept { return type_; }
    bool isCustom() const noexcept { return type_ >= firstCustom; }
    // The persisted name, ASCII for the built-in ones ("scene", "cam_date"); empty when invalid.
    const std::string& getID() const noexcept;
    // The name shown to the user.
    const LightweightString<wchar_t>& getDisplayName() const noexcept;
    DBFieldTypes::eType getFieldType() const noexcept;
    // Tells whether assets of that kind have the attribute; custom ones apply to every kind.
    bool isApplicableTo(eLogType logType) const noexcept;
    // Tells whether values are put in order by their leading number: `take` and `numMarkers`.
    bool isNumeric() const noexcept { return type_ == take || type_ == numMarkers; }
    // False for `modified` and `externalID`: their change leaves the modification time alone.
    bool countsAsModification() const noexcept { return type_ != modified && type_ != externalID; }
    // Tells whether the user may change it (the others are worked out from the asset).
    bool isEditable() const noexcept;

    // By number and, for custom ones, persisted name.
    friend bool operator==(const LogAttribute& a, const LogAttribute& b) noexcept {
        return a.type_ == b.type_ && a.customID_ == b.customID_;
    }

private:
    eType type_ = invalid;
    DBFieldTypes::eType customFieldType_ = DBFieldTypes::text;
    std::string customID_;
    LightweightString<wchar_t> customName_;
};
