#include "interchange/SrtReader.h"

#include "platform/base/Characters.h"

#include <algorithm>
#include <optional>
#include <set>

namespace cutroom {

namespace {

constexpr std::size_t kMostCues = 1'000'000;
constexpr std::size_t kMostWarnings = 100;
constexpr Flicks kDay = 86400 * kFlicksPerSecond;

struct TextLine {
    std::string_view text;
    long number = 0;
};

// The lines of a text whose lines end in LF, CRLF or CR.
std::vector<TextLine> linesOf(std::string_view text) {
    std::vector<TextLine> lines;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("\r\n");
        lines.push_back({text.substr(0, end), static_cast<long>(lines.size()) + 1});
        if (end == text.npos)
            break;
        const bool pair = text.substr(end).starts_with("\r\n");
        text.remove_prefix(end + (pair ? 2 : 1));
    }
    return lines;
}

// Takes digits from the front; nothing when there are none or too many.
std::optional<std::int64_t> takeDigits(std::string_view& text, std::size_t most) {
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    if (count == 0 || count > most)
        return std::nullopt;
    const auto value = parseInt(text.substr(0, count));
    text.remove_prefix(count);
    return value;
}

bool takeChar(std::string_view& text, std::string_view oneOf) {
    if (text.empty() || oneOf.find(text.front()) == oneOf.npos)
        return false;
    text.remove_prefix(1);
    return true;
}

// "HH:MM:SS,mmm" from the front.
std::optional<Flicks> takeTime(std::string_view& text) {
    std::string_view rest = text;
    const auto hours = takeDigits(rest, 6);
    if (!hours || !takeChar(rest, ":"))
        return std::nullopt;
    const auto minutes = takeDigits(rest, 2);
    if (!minutes || !takeChar(rest, ":"))
        return std::nullopt;
    const auto seconds = takeDigits(rest, 2);
    if (!seconds || !takeChar(rest, ",."))
        return std::nullopt;
    const std::size_t before = rest.size();
    const auto fraction = takeDigits(rest, 3);
    if (!fraction || *minutes > 59 || *seconds > 59)
        return std::nullopt;
    std::int64_t milliseconds = *fraction;
    for (std::size_t digits = before - rest.size(); digits < 3; ++digits)
        milliseconds *= 10;
    text = rest;
    const std::int64_t whole = (*hours * 60 + *minutes) * 60 + *seconds;
    return whole * kFlicksPerSecond + milliseconds * (kFlicksPerSecond / 1000);
}

// A time line; what stands behind the times (positions of old players) is passed over.
std::optional<SrtCue> timeLine(const TextLine& line) {
    std::string_view text = trim(line.text);
    SrtCue cue;
    const auto start = takeTime(text);
    text = trim(text);
    if (!start || !text.starts_with("-->"))
        return std::nullopt;
    text = trim(text.substr(3));
    const auto end = takeTime(text);
    if (!end || !(text.empty() || text.front() == ' ' || text.front() == '\t'))
        return std::nullopt;
    cue.start = *start;
    cue.end = *end;
    cue.line = line.number;
    return cue;
}

// Tells whether a line holds times in another form ("01:00:00;12 --> 01:00:02;00"): it is not text,
// though the times cannot be read.
bool looksLikeTimes(std::string_view text) {
    const auto arrow = text.find("-->");
    if (arrow == text.npos)
        return false;
    const auto isClock = [](std::string_view part) {
        part = trim(part);
        return !part.empty() && isDigit(part.front()) && part.find(':') != part.npos;
    };
    return isClock(text.substr(0, arrow)) && isClock(text.substr(arrow + 3));
}

bool isNumber(std::string_view text) {
    text = trim(text);
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

class Reader {
public:
    explicit Reader(std::string_view text) : lines_(linesOf(text)) {}

    SrtFile read() {
        while (at_ < lines_.size() && file_.cues.size() < kMostCues) {
            if (const auto cue = timeLine(lines_[at_])) {
                noteNumber();
                ++at_;
                takeText(*cue);
            } else if (looksLikeTimes(lines_[at_].text)) {
                warn("times of no known form, their subtitle is left out", lines_[at_].number);
                ++at_;
                textLines();
            } else {
                ++at_;
            }
        }
        std::stable_sort(file_.cues.begin(), file_.cues.end(),
                         [](const SrtCue& a, const SrtCue& b) { return a.start < b.start; });
        return std::move(file_);
    }

private:
    void warn(const std::string& text, long line) {
        if (file_.warnings.size() < kMostWarnings)
            file_.warnings.push_back("line " + std::to_string(line) + ": " + text);
    }

    void noteNumber() {
        if (at_ == 0 || !isNumber(lines_[at_ - 1].text))
            return;
        const std::string number(trim(lines_[at_ - 1].text));
        if (!numbers_.insert(number).second)
            warn("the number " + number + " stands twice", lines_[at_ - 1].number);
    }

    bool isTimes(std::size_t at) const {
        return at < lines_.size() && (timeLine(lines_[at]) || looksLikeTimes(lines_[at].text));
    }

    // Lines up to the number or the times of the next subtitle. Empty ones between them are left
    // out, as players do, and a number that a cut file ends with.
    std::vector<std::wstring> textLines() {
        std::vector<std::wstring> text;
        bool afterEmpty = false;
        for (; at_ < lines_.size(); ++at_) {
            const std::string_view line = trim(lines_[at_].text);
            const bool last = at_ + 1 == lines_.size();
            if (isTimes(at_) || (isNumber(line) && (isTimes(at_ + 1) || (last && afterEmpty))))
                break;
            afterEmpty = line.empty();
            if (!afterEmpty)
                text.push_back(toWide(line));
        }
        return text;
    }

    void takeText(SrtCue cue) {
        cue.lines = textLines();
        if (cue.start - cue.end > kDay / 2) // over midnight, where timecode begins again
            cue.end += kDay;
        if (cue.lines.empty())
            warn("a subtitle without text is left out", cue.line);
        else if (cue.end <= cue.start)
            warn("a subtitle that does not end after its start is left out", cue.line);
        else
            file_.cues.push_back(std::move(cue));
    }

    const std::vector<TextLine> lines_;
    std::size_t at_ = 0;
    std::set<std::string> numbers_;
    SrtFile file_;
};

// The line of the first byte that is not UTF-8; 0 when there is none.
long firstBadLine(std::string_view text) {
    for (const TextLine& line : linesOf(text))
        if (!isUtf8(line.text))
            return line.number;
    return 0;
}

} // namespace

Result<SrtFile> readSrt(std::string_view text, const std::string& file) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    if (const long line = firstBadLine(text))
        return Status(StatusCode::damaged, file,
                      "not UTF-8 text; say which encoding it has with --encoding (CP1250, GB18030)",
                      line);
    SrtFile read = Reader(text).read();
    if (read.cues.empty()) {
        const std::string why =
            read.warnings.empty() ? "" : " that can be taken (" + read.warnings.front() + ")";
        return Status(StatusCode::damaged, file,
                      "holds no subtitle" + why +
                          "; SubRip has a line of two times, 00:00:01,000 --> 00:00:02,000, above "
                          "each");
    }
    return read;
}

} // namespace cutroom
