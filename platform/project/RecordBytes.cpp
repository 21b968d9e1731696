#include "platform/project/RecordBytes.h"

#include "platform/base/Strings.h"
#include "platform/files/CheckedFile.h"

#include <utility>

namespace cutroom {

namespace {

constexpr char kVersion = 1;

void putNumber(std::string& out, std::size_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        out += static_cast<char>((value >> shift) & 0xFF);
}

void putText(std::string& out, std::string_view text) {
    putNumber(out, text.size());
    out += text;
}

void putList(std::string& out, const std::vector<std::string>& texts) {
    putNumber(out, texts.size());
    for (const std::string& text : texts)
        putText(out, text);
}

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    bool atEnd() const { return rest_.empty(); }
    bool number(std::size_t& value) {
        if (rest_.size() < 4)
            return false;
        value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value |= std::size_t{static_cast<unsigned char>(rest_[i])} << (8 * i);
        rest_.remove_prefix(4);
        return true;
    }
    bool text(std::string& value) {
        std::size_t size = 0;
        if (!number(size) || size > rest_.size())
            return false;
        value.assign(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return true;
    }
    // A count of texts, each of which takes at least four bytes.
    bool count(std::size_t& value) { return number(value) && value <= rest_.size() / 4; }
    bool list(std::vector<std::string>& texts) {
        std::size_t size = 0;
        if (!count(size))
            return false;
        texts.resize(size);
        for (std::string& one : texts)
            if (!text(one))
                return false;
        return true;
    }

private:
    std::string_view rest_;
};

} // namespace

std::string recordBytes(const projdb::Record& record) {
    std::string out(1, kVersion);
    putNumber(out, record.attributes.size() * 2);
    for (const auto& [id, text] : record.attributes) {
        putText(out, id);
        putText(out, text);
    }
    putList(out, record.mediaLocations);
    putList(out, record.markerTexts);
    return out;
}

bool readRecordBytes(std::string_view bytes, projdb::Record& record) {
    if (bytes.empty() || bytes.front() != kVersion)
        return false;
    Reader reader(bytes.substr(1));
    std::vector<std::string> pairs;
    std::vector<std::string> locations;
    std::vector<std::string> markers;
    if (!reader.list(pairs) || pairs.size() % 2 != 0 || !reader.list(locations) ||
        !reader.list(markers) || !reader.atEnd())
        return false;
    record.attributes.clear();
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        record.attributes.emplace_hint(record.attributes.end(), std::move(pairs[i]),
                                       std::move(pairs[i + 1]));
    record.mediaLocations = std::move(locations);
    record.markerTexts = std::move(markers);
    return true;
}

std::uint32_t recordChecksum(const projdb::Record& record, std::string_view bytes) {
    std::string head = record.cookie.asString();
    for (const std::size_t number :
         {std::size_t{record.kinds}, std::size_t{record.logType}, std::size_t{record.videoTracks},
          std::size_t{record.audioTracks}, std::size_t{record.created},
          std::size_t{record.modified}, std::size_t{record.markerTypes}})
        putNumber(head, number);
    // Adding 0 turns -0 into 0, since SQLite does not keep a negative zero.
    putText(head, toText(record.start + 0.0));
    putText(head, toText(record.end + 0.0));
    return checksum(bytes, checksum(head));
}

} // namespace cutroom
