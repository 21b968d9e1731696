#include "interchange/CsvReader.h"

#include "platform/base/Strings.h"

#include <algorithm>

namespace cutroom {

namespace {

constexpr std::size_t kMostCells = 20'000'000;

// Counted outside quotes.
char separatorOf(std::string_view text) {
    constexpr std::string_view kSeparators = ",;\t";
    std::size_t counts[kSeparators.size()] = {};
    bool quoted = false;
    for (const char c : text) {
        if (c == '"')
            quoted = !quoted;
        if (quoted)
            continue;
        if (c == '\r' || c == '\n')
            break;
        if (const auto at = kSeparators.find(c); at != kSeparators.npos)
            ++counts[at];
    }
    return kSeparators[static_cast<std::size_t>(
        std::max_element(std::begin(counts), std::end(counts)) - std::begin(counts))];
}

class Reader {
public:
    Reader(std::string_view text, const std::string& file)
        : text_(text), file_(file), separator_(separatorOf(text)) {}

    Result<std::vector<CsvRow>> read() {
        while (at_ < text_.size()) {
            if (const Status row = readRow(); !row)
                return row;
        }
        return std::move(rows_);
    }

private:
    Status failure(const char* reason, long line) const {
        return {StatusCode::damaged, file_, reason, line};
    }
    bool atEnd() const { return at_ == text_.size(); }
    bool atBreak() const { return atEnd() || text_[at_] == '\r' || text_[at_] == '\n'; }

    // Takes a line break; a pair counts as one.
    void takeBreak() {
        at_ += text_.substr(at_).starts_with("\r\n") ? 2 : 1;
        ++line_;
    }

    Status readRow() {
        CsvRow row{line_, {}};
        bool any = false;
        for (bool more = true; more;) {
            std::string cell;
            if (const Status read = readCell(cell); !read)
                return read;
            if (++cells_ > kMostCells)
                return failure("larger than any list of markers", line_);
            any = any || !trim(cell).empty();
            row.cells.push_back(std::move(cell));
            more = !atBreak();
            if (more)
                ++at_; // the separator
        }
        if (!atEnd())
            takeBreak();
        if (any)
            rows_.push_back(std::move(row));
        return {};
    }

    Status readCell(std::string& cell) {
        if (atEnd() || text_[at_] != '"') {
            const std::size_t begin = at_;
            while (!atBreak() && text_[at_] != separator_)
                ++at_;
            cell = text_.substr(begin, at_ - begin);
            return {};
        }
        return readQuoted(cell);
    }

    Status readQuoted(std::string& cell) {
        const long begun = line_;
        for (++at_; !atEnd();) {
            const std::size_t begin = at_;
            if (text_[at_] == '"') {
                ++at_; // one that closes, or the first of two that stand for one
                if (atBreak() || text_[at_] == separator_)
                    return {};
                if (text_[at_] != '"')
                    return failure("text behind a closing quote", line_);
                ++at_;
                cell += '"';
                continue;
            }
            if (atBreak())
                takeBreak();
            else
                ++at_;
            cell += text_.substr(begin, at_ - begin);
        }
        return failure("a quote is never closed", begun);
    }

    std::string_view text_;
    const std::string& file_;
    const char separator_;
    std::size_t at_ = 0;
    long line_ = 1;
    std::size_t cells_ = 0;
    std::vector<CsvRow> rows_;
};

} // namespace

Result<std::vector<CsvRow>> readCsv(std::string_view text, const std::string& file) {
    if (!isUtf8(text)) {
        long line = 1;
        for (; !text.empty(); ++line) {
            const auto end = std::min(text.find('\n'), text.size() - 1);
            if (!isUtf8(text.substr(0, end + 1)))
                break;
            text.remove_prefix(end + 1);
        }
        return Status(StatusCode::damaged, file, "not UTF-8 text", line);
    }
    return Reader(text, file).read();
}

} // namespace cutroom
