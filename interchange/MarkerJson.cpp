// Markers in JSON: a list of them, an object with a list "markers", or what the exporter writes: an
// object with lists of assets, each with such a list.
#include "interchange/MarkerReaders.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonElement.h"

#include <algorithm>

namespace cutroom {

namespace {

using JSON::Cursor;
using JSON::Kind;

// The lines at which the objects of a JSON text begin, in its order.
class ObjectLines {
public:
    explicit ObjectLines(std::string_view text) : text_(text) {}

    // The line of the object at which `wanted` stands below `root`.
    long of(const Cursor& root, const std::vector<std::size_t>& wanted) const {
        std::size_t before = 0;
        Cursor at = root;
        for (const std::size_t index : wanted) {
            before += at.kind() == Kind::object ? 1 : 0;
            Cursor child = Cursor::childrenOf(at);
            for (std::size_t i = 0; i < index; ++i, child.next())
                before += objectsIn(child);
            at = child;
        }
        return lineOf(before);
    }

private:
    static std::size_t objectsIn(const Cursor& value) {
        std::size_t count = value.kind() == Kind::object ? 1 : 0;
        if (value.kind() == Kind::object || value.kind() == Kind::array)
            for (Cursor child = Cursor::childrenOf(value); child; child.next())
                count += objectsIn(child); // as deep as the reader lets it be
        return count;
    }

    long lineOf(std::size_t object) const {
        long line = 1;
        bool quoted = false;
        for (std::size_t i = 0; i < text_.size(); ++i) {
            const char c = text_[i];
            if (c == '\n')
                ++line;
            else if (quoted && c == '\\')
                ++i;
            else if (c == '"')
                quoted = !quoted;
            else if (!quoted && c == '{' && object-- == 0)
                return line;
        }
        return line;
    }

    std::string_view text_;
};

// A list of markers and the way to it, as places among the children.
struct MarkerList {
    Cursor list;
    std::vector<std::size_t> way;
    Cursor asset; // at no place: the list is of no asset
};

// Adds the lists that are members of `object`; `asset` is the asset that they belong to, if any.
void addMarkersOf(const Cursor& object, const std::vector<std::size_t>& way, const Cursor& asset,
                  std::vector<MarkerList>& lists) {
    std::size_t index = 0;
    for (Cursor member = Cursor::childrenOf(object); member; member.next(), ++index)
        if (member.key() == "markers" && member.kind() == Kind::array) {
            MarkerList& list = lists.emplace_back();
            list.list = member;
            list.way = way;
            list.way.push_back(index);
            list.asset = asset;
        }
}

std::vector<MarkerList> listsIn(const Cursor& root) {
    std::vector<MarkerList> lists;
    if (root.kind() == Kind::array) {
        lists.emplace_back().list = root;
        return lists;
    }
    addMarkersOf(root, {}, Cursor(), lists);
    std::size_t group = 0;
    for (Cursor member = Cursor::childrenOf(root); member; member.next(), ++group) {
        if (member.kind() != Kind::array || member.key() == "markers")
            continue;
        std::size_t index = 0;
        for (Cursor asset = Cursor::childrenOf(member); asset; asset.next(), ++index)
            if (asset.kind() == Kind::object)
                addMarkersOf(asset, {group, index}, asset, lists);
    }
    return lists;
}

// The one list that there is, else that of the edit by its cookie, else by its name.
const MarkerList* chosen(const std::vector<MarkerList>& lists, const MarkerTarget& target) {
    if (lists.size() == 1)
        return &lists.front();
    const auto isOf = [](const MarkerList& list, const char* key, const std::string& value) {
        return list.asset && list.asset.getText(key) == value;
    };
    for (const auto& [key, value] : {std::pair{"cookie", target.cookie}, {"name", target.name}}) {
        const MarkerList* found = nullptr;
        int count = 0;
        for (const MarkerList& list : lists)
            if (isOf(list, key, value)) {
                found = &list;
                ++count;
            }
        if (count == 1)
            return found;
    }
    return nullptr;
}

// The texts of one marker. Its members may also have the names of `markers --json`; there an end
// that is null or missing means a marker without end.
Result<MarkerTexts> textsOf(const Cursor& object,
                            const std::map<std::string, std::string>& fields) {
    static constexpr std::pair<std::string_view, std::optional<std::string> MarkerTexts::*>
        kKnown[] = {{"name", &MarkerTexts::name},       {"description", &MarkerTexts::description},
                    {"in", &MarkerTexts::in},           {"out", &MarkerTexts::out},
                    {"colour", &MarkerTexts::colour},   {"start_timecode", &MarkerTexts::in},
                    {"end_timecode", &MarkerTexts::out}};
    if (object.kind() != Kind::object)
        return Status(StatusCode::damaged, {}, "a marker is an object");
    MarkerTexts texts;
    for (Cursor member = Cursor::childrenOf(object); member; member.next()) {
        const auto field = fields.find(std::string(member.key()));
        const auto known = std::find_if(std::begin(kKnown), std::end(kKnown),
                                        [&](const auto& one) { return one.first == member.key(); });
        if ((known == std::end(kKnown) && field == fields.end()) || member.kind() == Kind::null)
            continue;
        if (member.kind() != Kind::string)
            return Status(StatusCode::damaged, {},
                          '"' + std::string(member.key()) + "\" is not text");
        if (field != fields.end()) // none has one of the exporter's five names
            texts.fields.emplace_back(field->second, member.text());
        else
            texts.*known->second = std::string(member.text());
    }
    return texts;
}

Result<MarkerFile> readList(const MarkerList& list, const Cursor& root, const ObjectLines& lines,
                            const std::string& file, const MarkerTarget& target) {
    const auto fields = markerFieldKeys();
    MarkerFile markers;
    std::vector<std::size_t> way = list.way;
    way.push_back(0);
    for (Cursor one = Cursor::childrenOf(list.list); one; one.next(), ++way.back()) {
        const auto line = [&] { return lines.of(root, way); };
        const auto failed = [&](const Status& why) {
            return Status(StatusCode::damaged, file, why.message(), line());
        };
        const auto texts = textsOf(one, fields);
        if (!texts)
            return failed(texts.status());
        const std::size_t warnings = markers.warnings.size();
        auto marker = markerOf(*texts, 0, target, markers.warnings);
        if (!marker)
            return failed(marker.status());
        // Finding a line takes a walk over the whole text, so it is done only where the line is
        // used.
        if (markers.markers.empty())
            marker->line = line();
        for (std::size_t i = warnings; i < markers.warnings.size(); ++i)
            markers.warnings[i].insert(0, "line " + std::to_string(line()) + ": ");
        markers.markers.push_back(std::move(*marker));
    }
    return markers;
}

} // namespace

Result<MarkerFile> readJsonMarkers(std::string_view text, const std::string& file,
                                   const MarkerTarget& target) {
    JSON::ReadOptions options;
    options.maxElements = kMostMarkers * 16;
    const auto document = JSON::Element::parse(text, file, options);
    if (!document)
        return document.status();
    const Cursor root = Cursor::at(**document);
    const std::vector<MarkerList> lists = listsIn(root);
    const MarkerList* const list = chosen(lists, target);
    if (lists.empty())
        return Status(StatusCode::damaged, file, "holds no markers", 1);
    if (!list)
        return Status(
            StatusCode::damaged, file,
            "holds markers of " + std::to_string(lists.size()) +
                " assets, of which none is this edit by its ID, nor one alone by its name");
    return readList(*list, root, ObjectLines(text), file, target);
}

} // namespace cutroom
