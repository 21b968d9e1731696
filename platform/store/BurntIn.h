// Burnt-in timecode: which labels an edit shows over its picture, and the layouts they follow.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "platform/store/EditLabel.h"
#include "platform/store/EditPtr.h"

#include <optional>
#include <vector>

// One burnt-in label: which label, where on the picture. Fractions of the picture from its top
// left; size as a fraction of its height; colour 24 bits, red high.
struct CUTROOM_API BITCLabel {
    eLabelType type = kLabelVideoTimecode;
    MediumRoll mediumRoll{2, 1};
    float x = 0.5F;
    float y = 0.9F;
    float size = 0.06F;
    std::uint32_t colour = 0xFFFFFF;
    LightweightString<wchar_t> prefix;

    friend bool operator==(const BITCLabel&, const BITCLabel&) = default;
};

// The burnt-in timecode set of an edit. A value, guarded by the edit's lock.
class CUTROOM_API BITCEffect {
public:
    const std::vector<BITCLabel>& labels() const noexcept { return labels_; }
    void addLabel(const BITCLabel& label) { labels_.push_back(label); }
    void clear() noexcept { labels_.clear(); }
    bool empty() const noexcept { return labels_.empty(); }
    bool enabled() const noexcept { return enabled_; }
    void setEnabled(bool on) noexcept { enabled_ = on; }

    friend bool operator==(const BITCEffect&, const BITCEffect&) = default;

private:
    std::vector<BITCLabel> labels_;
    bool enabled_ = false;
};

// Named layouts of burnt-in timecode, kept in the user's preferences under "BITC layout : NAME",
// and which of them new edits begin with ("BITC layout default : PROJECT"). Holds nothing itself;
// any thread.
class CUTROOM_API BITCLayoutsManager {
public:
    // A layout as text, one label a line, and back; nothing for a text of another shape.
    static LightweightString<char> asString(const BITCEffect& layout);
    static std::optional<BITCEffect> fromString(const LightweightString<char>& text);

    // In the order of their making.
    static std::vector<LightweightString<wchar_t>> getLayoutNames();
    // Empty set for an unknown name.
    static BITCEffect getLayout(const LightweightString<wchar_t>& name);
    // False for an empty name or one that holds a line break.
    static bool setLayout(const LightweightString<wchar_t>& name, const BITCEffect& layout);
    // False when there is none of that name.
    static bool removeLayout(const LightweightString<wchar_t>& name);
    // The open project's default layout; empty: none.
    static LightweightString<wchar_t> getProjectDefault();
    static void setProjectDefault(const LightweightString<wchar_t>& name);
    // Gives the edit the project's default layout; nothing without a default.
    static void applyProjectDefault(const EditPtr& edit);

    BITCLayoutsManager() = delete;
};
