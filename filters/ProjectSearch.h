// `ProjectSearch`: finds the assets of the open project that meet criteria, and gives them as a new
// bin.
//
// The project database only preselects: what is found is what `satisfiesCriteria` says of each
// record. Text is compared by simple lower-casing as Unicode has it, whatever the locale.
#pragma once

#include "bins/BinData.h"
#include "filters/SearchConditions.h"
#include "platform/base/Export.h"
#include "platform/base/Ptr.h"
#include "platform/base/Status.h"
#include "platform/base/Time.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"
#include "platform/host/ProcessLife.h"
#include "platform/project/MediaStatus.h"
#include "platform/project/SearchCriteria.h"
#include "platform/store/EditPtr.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// One object; any thread, no lock of its own. A search sees changes that are made while it runs as
// if they had been made before or after it.
class CUTROOM_API ProjectSearch {
public:
    using eItemPresence = cutroom::eItemPresence;
    using AttributeValuePair = projdb::AttributeValuePair;

    // What a search or a dynamic bin asks for: what the database answers (kinds, options, free
    // text, attributes, markers) and what is asked of time, media and tracks. A value.
    class CUTROOM_API Criteria : public projdb::SearchCriteria {
    public:
        Criteria();
        Criteria(const Criteria&);
        Criteria(Criteria&&) noexcept;
        Criteria& operator=(const Criteria&);
        Criteria& operator=(Criteria&&) noexcept;
        ~Criteria() override;

        DriveID mediaLocation;         // the drive that a result's media must lie on; empty: any
        double requiredTime = kNoTime; // seconds; a time that a result must contain
        eItemPresence clipVTracks = eItemPresence::any; // asked of shots, as the next two
        eItemPresence clipATracks = eItemPresence::any;
        eItemPresence clipMedia = eItemPresence::any;

        bool hasRequiredTime() const noexcept { return requiredTime != kNoTime; }
        // A time or a drive is asked for, or something of shots.
        bool needsMoreThanText() const noexcept;

        // The pairs of the base, then "RequiredTime", "MediaLocation", "ClipVTracks",
        // "ClipATracks" and "ClipMedia", each only when set.
        void saveTo(std::vector<AttributeValuePair>& pairs) const override;
        void restoreFrom(const std::vector<AttributeValuePair>& pairs) override;

        // Adds the criteria's members to the object that is being written
        // (docs/formats/criteria.md).
        void addTo(JSON::Builder& object) const;
        // Reads the members of an object, others are passed over. `damaged`, with the place inside
        // the object, for a value of the wrong kind or an unknown word; then nothing is given.
        static cutroom::Result<Criteria> from(const JSON::Element& object, const std::string& file);
        // The same as a file of its own, at most 1 MiB: `failed` for more.
        cutroom::Result<std::string> asText() const;
        cutroom::Status save(const std::string& path) const;
        static cutroom::Result<Criteria> load(const std::string& path);

        friend bool operator==(const Criteria&, const Criteria&) = default;
    };

    // How far a search is. A watcher is told of some hundred finds at a time, and from time to time
    // where there are none.
    struct Progress {
        double share;                             // 0 to 1 of the records looked at
        std::size_t found;                        // so far
        const std::vector<projdb::Summary>& last; // found since the call before
    };
    // Answers whether to go on. Called on the searching thread, without a lock.
    using Watcher = std::function<bool(const Progress&)>;

    static ProjectSearch& instance();

    // A new bin named by `makeName` with each asset that meets the criteria, in the order in which
    // they came into the project, at its start and with its extent as marks. Nobody manages it.
    // Without a project it is empty; no bin when the records cannot be read (logged). The first
    // search of a project reads all its texts; later ones find free text in memory. Whether media
    // is there is asked anew by each search, once a place. On the user-interface thread the records
    // of edits that are not saved yet are brought up to date first, and told of; so no listener of
    // the filters' manager may search.
    Kv::Ptr<BinData> perform(const Criteria& criteria);
    // The same, watched; no bin when the watcher stopped it.
    Kv::Ptr<BinData> perform(const Criteria& criteria, const Watcher& watcher);
    // The items of that bin: what fills others. False, and `items` stays, where `perform` gives no
    // bin.
    bool find(const Criteria& criteria, BinData::Items& items, const Watcher& watcher = {});

    // The item of one asset as its record has it; nothing when it does not meet the criteria.
    std::optional<BinItem> findItem(const Cookie& asset, const Criteria& criteria);

    // Tells whether one asset meets the criteria: kind and tracks as they are in the open edit, all
    // else as its record says, brought up to date as by `perform`. False for no edit; without a
    // record only when nothing is asked of it.
    bool satisfiesCriteria(const EditPtr& edit, const Criteria& criteria);

    // Tells whether `pattern` occurs in `text`. Without `caseSensitive` both are lower-cased. With
    // `wholeWords` the first occurrence alone decides: the characters beside it must be punctuation
    // or white space. The narrow texts are UTF-8.
    static bool compareStrings(const LightweightString<char>& text,
                               const LightweightString<char>& pattern, bool wholeWords,
                               bool caseSensitive);
    static bool compareStrings(const LightweightString<wchar_t>& text,
                               const LightweightString<wchar_t>& pattern, bool wholeWords,
                               bool caseSensitive);

    // A name for the results, in the words of the string table: the texts that are looked for;
    // when there are none, or with `allConditions`, every condition, joined by ", ". Never empty.
    static LightweightString<wchar_t> makeName(const Criteria& criteria, bool allConditions);
    // Each condition as its name and what it asks for (UTF-8), in the order of the criteria's
    // members. Kinds stand first, and only when some are not wanted.
    static std::vector<AttributeValuePair> getDescription(const Criteria& criteria);

private:
    friend class cutroom::ProcessSingleton<ProjectSearch>;
    ProjectSearch() = default;
};
