// Parsing: the library's SAX interface fills our document; limits are kept here.
#include "platform/base/Characters.h"
#include "platform/files/JsonDocument.h"
#include "platform/files/TextFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <iterator>

using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace JSON {

namespace {

using detail::Document;
using detail::Node;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kMaxReason = 200;
constexpr std::uint64_t kMaxIndex = 0xFFFFFFF0u;

// A bare word that stands for a number: which of the text's numbers it is.
struct Word {
    std::size_t number;
    std::string_view text;
};

bool isWordByte(char c) {
    return cutroom::isDigit(c) || cutroom::isLetter(c) || c == '-' || c == '+' || c == '.' ||
           c == '_';
}

std::size_t endOfString(std::string_view text, std::size_t at) {
    for (++at; at < text.size() && text[at] != '"'; ++at)
        if (text[at] == '\\')
            ++at;
    return std::min(at + 1, text.size());
}

// Puts a plain number of the same length in the place of each bare word, so that the parser reads
// the text and still counts lines and columns of the original.
std::vector<Word> replaceWords(std::string_view text, std::string& changed) {
    std::vector<Word> words;
    std::size_t numbers = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '"') {
            at = endOfString(text, at);
        } else if (isWordByte(text[at])) {
            std::size_t end = at;
            while (end < text.size() && isWordByte(text[end]))
                ++end;
            const std::string_view word = text.substr(at, end - at);
            const bool named = word.find_first_of("0123456789") == std::string_view::npos &&
                               detail::asDouble(Kind::number, word).has_value();
            if (named) {
                if (changed.empty())
                    changed = text;
                const std::size_t sign = word.front() == '-' ? 1 : 0;
                std::fill(changed.begin() + static_cast<std::ptrdiff_t>(at + sign),
                          changed.begin() + static_cast<std::ptrdiff_t>(end), '0');
                changed[at + sign + 1] = '.';
                words.push_back({numbers, word});
            }
            numbers += named || word.front() == '-' || cutroom::isDigit(word.front());
            at = end;
        } else {
            ++at;
        }
    }
    return words;
}

// Feeds the parser and tells how far it has read.
class Feed {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    Feed(const char* at, const char** read) : at_(at), read_(read) {}
    reference operator*() const { return *at_; }
    Feed& operator++() {
        *read_ = ++at_;
        return *this;
    }
    Feed operator++(int) {
        Feed before = *this;
        ++*this;
        return before;
    }
    bool operator==(const Feed& other) const { return at_ == other.at_; }
    bool operator!=(const Feed& other) const { return at_ != other.at_; }

private:
    const char* at_;
    const char** read_;
};

// Takes the parser's events. False from one stops the parse; `reason` then tells why.
class Handler {
public:
    Handler(Document& document, const ReadOptions& options, const std::vector<Word>& words)
        : document_(document), options_(options), words_(words) {}

    bool null() { return leaf(Kind::null, 0); }
    bool boolean(bool value) { return leaf(Kind::boolean, value ? 1 : 0); }
    // The only negative integer that is given as 0 is "-0".
    bool number_integer(std::int64_t value) {
        return number(value ? cutroom::toText(static_cast<long long>(value)) : "-0");
    }
    bool number_unsigned(std::uint64_t value) {
        return number(cutroom::toText(static_cast<unsigned long long>(value)));
    }
    // The parser hands out the decimal point of the locale.
    bool number_float(double, const std::string& read) {
        std::string text = read;
        for (char& c : text)
            if (!cutroom::isDigit(c) && !std::strchr("+-eE", c))
                c = '.';
        return number(text);
    }
    bool string(const std::string& value) { return withText(Kind::string, value); }
    bool binary(std::vector<std::uint8_t>&) { return false; } // never called for a text
    bool start_object(std::size_t) { return open(Kind::object); }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open(Kind::array); }
    bool end_array() { return close(); }
    bool key(const std::string& text) {
        key_ = static_cast<std::uint32_t>(document_.texts.size());
        keySize_ = static_cast<std::uint32_t>(text.size());
        document_.texts += text;
        return true;
    }
    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& error) {
        // "[...] parse error at line 1, column 2: <reason>"
        reason = error.what();
        if (const std::size_t colon = reason.find(": "); colon != std::string::npos)
            reason.erase(0, colon + 2);
        else if (const std::size_t bracket = reason.find("] "); bracket != std::string::npos)
            reason.erase(0, bracket + 2);
        place = position;
        return false;
    }

    std::string reason;
    std::size_t place = 0; // bytes read; 0: ask the feed

private:
    bool refuse(std::string why) {
        reason = std::move(why);
        return false;
    }

    bool append(Kind kind, std::uint32_t value, std::uint32_t size) {
        if (document_.nodes.size() >= std::min<std::uint64_t>(options_.maxElements, kMaxIndex))
            return refuse("holds too many values");
        if (!open_.empty())
            ++document_.nodes[open_.back()].size;
        const auto next = static_cast<std::uint32_t>(document_.nodes.size() + 1);
        document_.nodes.push_back({key_, keySize_, value, size, next, kind});
        key_ = keySize_ = 0;
        return true;
    }
    bool leaf(Kind kind, std::uint32_t size) { return append(kind, 0, size); }
    bool withText(Kind kind, std::string_view text) {
        const auto at = static_cast<std::uint32_t>(document_.texts.size());
        document_.texts += text;
        return append(kind, at, static_cast<std::uint32_t>(text.size()));
    }
    bool number(std::string_view text) {
        if (nextWord_ < words_.size() && words_[nextWord_].number == numbers_)
            text = words_[nextWord_++].text;
        ++numbers_;
        return withText(Kind::number, text);
    }
    bool open(Kind kind) {
        if (open_.size() >= static_cast<std::size_t>(std::max(options_.maxDepth, 0)))
            return refuse(cutroom::format("is nested more than %d deep", options_.maxDepth));
        if (!append(kind, 0, 0))
            return false;
        open_.push_back(static_cast<std::uint32_t>(document_.nodes.size() - 1));
        return true;
    }
    bool close() {
        const std::uint32_t parent = open_.back();
        open_.pop_back();
        document_.nodes[parent].next = static_cast<std::uint32_t>(document_.nodes.size());
        document_.index(parent);
        return true;
    }

    Document& document_;
    const ReadOptions& options_;
    const std::vector<Word>& words_;
    std::size_t nextWord_ = 0;
    std::size_t numbers_ = 0;
    std::vector<std::uint32_t> open_;
    std::uint32_t key_ = 0;
    std::uint32_t keySize_ = 0;
};

Status failureAt(std::string_view text, std::size_t read, const std::string& file,
                 std::string reason) {
    const std::size_t at = std::min(read ? read - 1 : 0, text.size());
    const std::string_view before = text.substr(0, at);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t column = at - (before.rfind('\n') + 1) + 1; // npos + 1 is the beginning
    if (reason.size() > kMaxReason)
        reason = reason.substr(0, kMaxReason) + "...";
    if (!cutroom::isUtf8(reason))
        reason = cutroom::toUtf8(cutroom::toWide(reason));
    return {StatusCode::damaged, file, cutroom::format("column %zu: ", column) + reason, line};
}

Status checkInput(std::string_view& text, const std::string& file, const ReadOptions& options) {
    if (text.size() > std::min(options.maxBytes, kMaxIndex))
        return {StatusCode::damaged, file, "is too large"};
    if (text.starts_with(kByteOrderMark)) {
        if (!options.tolerant)
            return failureAt(text, 1, file, "begins with a byte order mark");
        text.remove_prefix(kByteOrderMark.size());
    }
    // The parser takes a null for the end of the text.
    if (const std::size_t null = text.find('\0'); null != std::string_view::npos)
        return failureAt(text, null + 1, file, "holds a null character");
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        return failureAt(text, 1, file, "is empty");
    return {};
}

} // namespace

Result<Kv::Ptr<Element>> Element::parse(std::string_view text, const std::string& file,
                                        const ReadOptions& options) {
    if (Status sound = checkInput(text, file, options); !sound)
        return sound;
    std::string changed;
    std::vector<Word> words;
    if (options.tolerant)
        words = replaceWords(text, changed);
    const std::string_view input = changed.empty() ? text : std::string_view(changed);
    const auto document = std::make_shared<Document>();
    document->texts.reserve(text.size());
    Handler handler(*document, options, words);
    const char* read = input.data();
    const bool whole = nlohmann::json::sax_parse(
        Feed(input.data(), &read), Feed(input.data() + input.size(), &read), &handler);
    if (!whole) {
        const auto consumed = static_cast<std::size_t>(read - input.data());
        return failureAt(text, handler.place ? handler.place : consumed, file, handler.reason);
    }
    return Kv::Ptr<Element>(new Element(document, 0));
}

Result<Kv::Ptr<Element>> Element::load(const std::string& path, const ReadOptions& options) {
    const Result<std::string> content = cutroom::readFile(path, options.maxBytes);
    return content ? parse(*content, path, options) : content.status();
}

} // namespace JSON
