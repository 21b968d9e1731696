#include "platform/files/RecordFile.h"

#include "platform/base/Strings.h"
#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>

namespace cutroom {

namespace {

constexpr unsigned kVersion = 1;
constexpr std::size_t kMaxFields = 64;
// Offsets of records are 32 bits wide, and what is written must be readable.
constexpr std::size_t kMaxBody = (std::size_t{1} << 31) - (std::size_t{1} << 24);

std::size_t maskSize(std::size_t fields) { return (fields + 7) / 8; }

std::uint64_t maskOf(const char* record, std::size_t bytes) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        mask |= std::uint64_t{static_cast<unsigned char>(record[i])} << (8 * i);
    return mask;
}

enum class Blanks { plain, escaped };

// Appends a name or text to a line of the head, without line feeds. Blanks are escaped where
// something follows on the line.
void appendHeadText(std::string& out, std::string_view text, Blanks blanks) {
    for (const char c : text) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == ' ' && blanks == Blanks::escaped)
            out += "\\s";
        else
            out += c;
    }
}

std::optional<std::string> readHeadText(std::string_view text) {
    if (text.find('\\') == std::string_view::npos) // as in most
        return std::string(text);
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            plain += text[i];
            continue;
        }
        const char escaped = ++i < text.size() ? text[i] : '\0';
        if (escaped == '\\')
            plain += '\\';
        else if (escaped == 'n')
            plain += '\n';
        else if (escaped == 's')
            plain += ' ';
        else
            return std::nullopt;
    }
    return plain;
}

// Takes the first word off `line`.
std::string_view takeWord(std::string_view& line) {
    const std::size_t space = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, space);
    line.remove_prefix(std::min(space + 1, line.size()));
    return word;
}

template <class List> auto named(List& list, std::string_view name) {
    return std::find_if(list.begin(), list.end(),
                        [&](const auto& one) { return one.name == name; });
}

const std::string* textNamed(const std::vector<RecordFile::Attribute>& list,
                             std::string_view name) {
    const auto at = named(list, name);
    return at == list.end() ? nullptr : &at->text;
}

void setNamed(std::vector<RecordFile::Attribute>& list, std::string_view name,
              std::string_view text) {
    const auto at = named(list, name);
    if (at == list.end())
        list.push_back({std::string(name), std::string(text)});
    else
        at->text = text;
}

// The rest of a varint after its first byte, which has 7 more bits to come. The caller has checked
// the bytes before.
std::uint64_t longVarint(const char*& at) noexcept {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        const auto byte = static_cast<unsigned char>(*at++);
        value |= std::uint64_t{byte & 0x7Fu} << shift;
        if (byte < 0x80)
            return value;
    }
}

std::uint64_t soundVarint(const char*& at) noexcept {
    const auto byte = static_cast<unsigned char>(*at);
    if (byte < 0x80) {
        ++at;
        return byte;
    }
    return longVarint(at);
}

double doubleAt(const char* at) noexcept {
    std::uint64_t bits = 0;
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(&bits, at, sizeof bits);
    else
        for (unsigned i = 0; i < 8; ++i)
            bits |= std::uint64_t{static_cast<unsigned char>(at[i])} << (8 * i);
    return std::bit_cast<double>(bits);
}

// The next two read a value before `end`; they give null when it is incomplete.
const char* afterNumber(const char* at, const char* end, RecordFile::Value& value) noexcept {
    if (end - at < 8)
        return nullptr;
    value.number = doubleAt(at);
    value.isNumber = true;
    return at + 8;
}

const char* afterText(const char* at, const char* end, RecordFile::Value& value) noexcept {
    ByteReader in({at, static_cast<std::size_t>(end - at)});
    value.text = in.text();
    return in.ok() ? at + in.position() : nullptr;
}

Status damagedLine() { return {StatusCode::damaged, {}, "a line of the head is damaged"}; }

// `record` counts from 1.
Status recordDamage(const std::string& file, std::size_t offset, std::size_t record) {
    return {StatusCode::damaged, file, format("record %zu is damaged", record),
            static_cast<long>(offset)};
}

} // namespace

// What the head says about the body, and where both are.
struct RecordFile::Layout {
    const std::string& file;
    std::size_t offset = 0;   // of the payload in the file
    std::size_t headSize = 0; // with the empty line
    std::uint64_t records = 0;
    bool counted = false;
};

const std::string* RecordFile::property(std::string_view word) const noexcept {
    return textNamed(properties_, word);
}
void RecordFile::setProperty(std::string_view word, std::string_view text) {
    setNamed(properties_, word, text);
}
const std::string* RecordFile::attribute(std::string_view name) const noexcept {
    return textNamed(attributes_, name);
}
void RecordFile::setAttribute(std::string_view name, std::string_view text) {
    setNamed(attributes_, name, text);
}

int RecordFile::findField(std::string_view name) const noexcept {
    const auto at = named(fields_, name);
    return at == fields_.end() ? -1 : static_cast<int>(at - fields_.begin());
}

void RecordFile::appendField(std::string name, char type) {
    if (fields_.size() < kMaxFields) // of one too many no record will be written
        doubles_ |= std::uint64_t{type == kDoubleField} << fields_.size();
    fields_.push_back({std::move(name), type});
}

int RecordFile::addField(std::string_view name, char type) {
    assert(starts_.empty());
    tooLarge_ = tooLarge_ || fields_.size() >= kMaxFields;
    appendField(std::string(name), type);
    return static_cast<int>(fields_.size()) - 1;
}

void RecordFile::reserve(std::size_t records, std::size_t bytes) {
    starts_.reserve(starts_.size() + records);
    body_.reserve(body_.size() + bytes);
}

void RecordFile::addRecord() {
    assert(!fields_.empty());
    tooLarge_ = tooLarge_ || body_.size() > kMaxBody;
    if (tooLarge_)
        return;
    starts_.push_back(static_cast<std::uint32_t>(body_.size()));
    body_.append(maskSize(fields_.size()), '\0');
    lastField_ = -1;
}

// Marks the field as present in the record begun last.
bool RecordFile::beginField(int field, char type) {
    if (tooLarge_)
        return false;
    const bool rising = field > lastField_ && static_cast<std::size_t>(field) < fields_.size();
    assert(rising && !starts_.empty());
    if (!rising ||
        (fields_[static_cast<std::size_t>(field)].type == kDoubleField) != (type == kDoubleField))
        return false;
    char& mask = body_[starts_.back() + static_cast<std::size_t>(field) / 8];
    mask = static_cast<char>(static_cast<unsigned char>(mask) | (1u << (field % 8)));
    lastField_ = field;
    return true;
}

void RecordFile::setText(int field, std::string_view text) {
    if (text.size() > kMaxBody) {
        tooLarge_ = true;
        return;
    }
    if (!beginField(field, kTextField))
        return;
    std::uint64_t size = text.size();
    for (; size >= 0x80; size >>= 7)
        body_.push_back(static_cast<char>(static_cast<unsigned char>(size | 0x80)));
    body_.push_back(static_cast<char>(size));
    body_.append(text);
}

void RecordFile::setDouble(int field, double value) {
    if (!beginField(field, kDoubleField))
        return;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    char bytes[8];
    for (std::size_t i = 0; i < 8; ++i)
        bytes[i] = static_cast<char>(bits >> (8 * i));
    body_.append(bytes, 8);
}

std::string RecordFile::bytes(std::string_view kind) const {
    std::string payload;
    payload.reserve(body_.size() - bodyStart_ + 1024);
    for (const Attribute& one : properties_) {
        payload.append(one.name).push_back(' ');
        appendHeadText(payload, one.text, Blanks::plain);
        payload += '\n';
    }
    for (const Attribute& one : attributes_) {
        payload += "attribute ";
        appendHeadText(payload, one.name, Blanks::escaped);
        payload += ' ';
        appendHeadText(payload, one.text, Blanks::plain);
        payload += '\n';
    }
    for (const Field& field : fields_) {
        payload.append("field ").append(1, field.type).append(" ");
        appendHeadText(payload, field.name, Blanks::plain);
        payload += '\n';
    }
    payload += "records " + toText(static_cast<unsigned long long>(starts_.size())) + "\n\n";
    payload.append(body_, bodyStart_);
    return CheckedFile::wrap(kind, kVersion, payload);
}

Status RecordFile::check(const std::string& path) const {
    if (tooLarge_ || body_.size() > kMaxBody)
        return {StatusCode::failed, path, "is too large to be saved"};
    return {};
}

Status RecordFile::save(const std::string& path, std::string_view kind, Backup backup) const {
    const Status fits = check(path);
    return fits ? writeFile(path, bytes(kind), backup) : fits;
}

Status RecordFile::load(const std::string& path, std::string_view kind, Access access) {
    Result<std::string> content = readFile(path);
    return content ? parse(std::move(*content), kind, path, access) : content.status();
}

Status RecordFile::parse(std::string bytes, std::string_view kind, const std::string& file,
                         Access access) {
    const Result<CheckedFile::View> view = CheckedFile::open(bytes, kind, kVersion, file);
    if (!view)
        return view.status();
    RecordFile read;
    Layout layout{file, view->offset};
    Status status = read.parseHead(view->payload, layout);
    if (status.ok()) {
        read.body_ = std::move(bytes);
        read.bodyStart_ = layout.offset + layout.headSize;
        status = read.countRecords(layout);
    }
    if (status.ok() && access == Access::any)
        status = read.indexRecords(layout);
    if (status.ok())
        *this = std::move(read);
    return status;
}

Status RecordFile::parseHead(std::string_view payload, Layout& layout) {
    properties_.reserve(4); // more than most have of each: few lists grow
    attributes_.reserve(16);
    fields_.reserve(8);
    for (std::size_t from = 0; from < payload.size();) {
        const std::size_t end = payload.find('\n', from);
        if (end == std::string_view::npos)
            break;
        const std::string_view line = payload.substr(from, end - from);
        if (line.empty()) {
            layout.headSize = end + 1;
            if (layout.counted)
                return {};
            break;
        }
        if (Status read = parseLine(line, layout); !read)
            return {read.code(), layout.file, read.message(),
                    static_cast<long>(layout.offset + from)};
        from = end + 1;
    }
    return {StatusCode::damaged, layout.file, "the head has no end",
            static_cast<long>(layout.offset + payload.size())};
}

Status RecordFile::parseLine(std::string_view line, Layout& layout) {
    const std::string_view word = takeWord(line);
    if (word == "records") {
        const std::optional<unsigned long long> count = parseUnsigned(line);
        layout.records = count.value_or(0);
        layout.counted = true;
        return count && (fields_.size() > 0 || *count == 0) ? Status() : damagedLine();
    }
    if (word == "field") {
        const std::string_view type = takeWord(line);
        std::optional<std::string> name = readHeadText(line);
        if (type.size() != 1 || !name || fields_.size() == kMaxFields || layout.counted)
            return damagedLine();
        appendField(*std::move(name), type.front());
        return {};
    }
    std::optional<std::string> name(std::string{word});
    if (word == "attribute")
        name = readHeadText(takeWord(line));
    std::optional<std::string> text = readHeadText(line);
    if (!name || !text)
        return damagedLine();
    (word == "attribute" ? attributes_ : properties_)
        .push_back({*std::move(name), *std::move(text)});
    return {};
}

// Takes the count that the head gives, which the body must have room for.
Status RecordFile::countRecords(const Layout& layout) {
    const std::size_t maskBytes = maskSize(fields_.size());
    if (maskBytes && layout.records > (body_.size() - bodyStart_) / maskBytes)
        return recordDamage(layout.file, bodyStart_, 1);
    unindexed_ = static_cast<std::size_t>(layout.records);
    return {};
}

// Finds each record and checks all of it, so that looking up a field needs no check.
Status RecordFile::indexRecords(const Layout& layout) {
    Walk walk(*this);
    starts_.reserve(unindexed_);
    for (const char* at = walk.at_; walk.next(); at = walk.at_)
        starts_.push_back(static_cast<std::uint32_t>(at - body_.data()));
    unindexed_ = 0;
    return walk.status(layout.file);
}

const char* RecordFile::locate(std::size_t record, int field) const noexcept {
    const auto wanted = static_cast<std::size_t>(field);
    if (record >= starts_.size() || field < 0 || wanted >= fields_.size())
        return nullptr;
    const std::size_t maskBytes = maskSize(fields_.size());
    const char* at = body_.data() + starts_[record];
    std::uint64_t mask = maskOf(at, maskBytes);
    if (!(mask >> wanted & 1))
        return nullptr;
    at += maskBytes;
    for (mask &= (std::uint64_t{1} << wanted) - 1; mask; mask &= mask - 1) {
        const auto before = static_cast<std::size_t>(std::countr_zero(mask));
        const std::uint64_t size = fields_[before].type == kDoubleField ? 8 : soundVarint(at);
        at += size;
    }
    return at;
}

std::string_view RecordFile::text(std::size_t record, int field,
                                  std::string_view otherwise) const noexcept {
    const char* at = locate(record, field);
    if (!at || fields_[static_cast<std::size_t>(field)].type == kDoubleField)
        return otherwise;
    const std::uint64_t size = soundVarint(at);
    return {at, static_cast<std::size_t>(size)};
}

double RecordFile::number(std::size_t record, int field, double otherwise) const noexcept {
    const char* at = locate(record, field);
    if (!at || fields_[static_cast<std::size_t>(field)].type != kDoubleField)
        return otherwise;
    return doubleAt(at);
}

// --- walking -------------------------------------------------------------------------------------

RecordFile::Walk::Walk(const RecordFile& table)
    : table_(table), records_(table.size()), at_(table.body_.data() + table.bodyStart_),
      end_(table.body_.data() + table.body_.size()), values_(table.fields_.size()) {}

const RecordFile::Value* RecordFile::Walk::next() noexcept {
    if (damaged_ || begun_ == records_)
        return nullptr;
    ++begun_;
    const std::size_t maskBytes = maskSize(values_.size());
    damaged_ = static_cast<std::size_t>(end_ - at_) < maskBytes;
    if (damaged_)
        return nullptr;
    const std::uint64_t mask = maskOf(at_, maskBytes);
    at_ += maskBytes;
    // Most records have the same fields as the one before: each is overwritten.
    if (mask != mask_)
        std::fill(values_.begin(), values_.end(), Value());
    mask_ = mask;
    const char* const end = afterFields(mask);
    damaged_ = !end;
    if (!damaged_)
        at_ = end;
    return damaged_ ? nullptr : values_.data();
}

// Reads the fields of the mask; gives where they end, null when one is incomplete or unknown.
const char* RecordFile::Walk::afterFields(std::uint64_t mask) noexcept {
    const char* at = at_;
    for (; mask && at; mask &= mask - 1) {
        const auto field = static_cast<std::size_t>(std::countr_zero(mask));
        if (field >= values_.size())
            return nullptr;
        const bool isNumber = table_.doubles_ >> field & 1;
        at = isNumber ? afterNumber(at, end_, values_[field]) : afterText(at, end_, values_[field]);
    }
    return at;
}

Status RecordFile::Walk::status(const std::string& file) const {
    if (!damaged_ && begun_ == records_ && at_ == end_)
        return {};
    return recordDamage(file, static_cast<std::size_t>(at_ - table_.body_.data()),
                        std::max<std::size_t>(begun_, 1));
}

} // namespace cutroom
