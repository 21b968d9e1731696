#include "cli/SessionWords.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>

namespace cutroom::cli {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Reads a word in quotes whose opening quote is at `*at`; leaves `*at` behind the closing one.
std::string quotedWord(std::string_view line, std::size_t* at) {
    std::string word;
    for (++*at; *at < line.size(); ++*at) {
        char c = line[*at];
        if (c == '"') {
            ++*at;
            return word;
        }
        if (c == '\\') {
            ++*at;
            c = *at < line.size() ? line[*at] : '\0';
            if (c != '"' && c != '\\')
                refuse(StatusCode::wrongUsage, "\\", "inside quotes only \\\" and \\\\ are known");
        }
        word += c;
    }
    refuse(StatusCode::wrongUsage, "\"", "the quote is not closed");
}

} // namespace

void refuse(StatusCode code, const std::string& thing, const std::string& reason) {
    throw Refused{Status(code, thing, reason)};
}

void require(const Status& status) {
    if (!status)
        throw Refused{status};
}

SessionWords SessionWords::parse(std::string_view line) {
    SessionWords words;
    std::size_t at = 0;
    while (true) {
        while (at < line.size() && isBlank(line[at]))
            ++at;
        if (at == line.size() || line[at] == '#')
            return words;
        if (line[at] == '"') {
            words.words_.push_back(quotedWord(line, &at));
            continue;
        }
        const std::size_t from = at;
        while (at < line.size() && !isBlank(line[at]))
            ++at;
        words.words_.emplace_back(line.substr(from, at - from));
    }
}

std::vector<std::string> SessionWords::rest() const {
    return {words_.begin() + static_cast<std::ptrdiff_t>(next_), words_.end()};
}

std::vector<std::string> SessionWords::takeRest() {
    std::vector<std::string> taken = rest();
    next_ = words_.size();
    return taken;
}

const std::string& SessionWords::take(const char* what) {
    if (done())
        refuse(StatusCode::wrongUsage, what, "missing");
    return words_[next_++];
}

std::string SessionWords::takeOr(const std::string& otherwise) {
    return done() ? otherwise : words_[next_++];
}

const std::string& SessionWords::peek() const {
    static const std::string kNothing;
    return done() ? kNothing : words_[next_];
}

bool SessionWords::takeIf(std::string_view word) {
    if (done() || words_[next_] != word)
        return false;
    ++next_;
    return true;
}

bool SessionWords::takeAnywhere(std::string_view word) {
    const auto left = words_.begin() + static_cast<std::ptrdiff_t>(next_);
    const auto found = std::find(left, words_.end(), word);
    if (found == words_.end())
        return false;
    words_.erase(found);
    return true;
}

const std::string& SessionWords::takeOneOf(const char* what,
                                           const std::vector<std::string_view>& choices) {
    const std::string& word = take(what);
    if (std::find(choices.begin(), choices.end(), word) != choices.end())
        return word;
    std::string known;
    for (const std::string_view choice : choices)
        known += (known.empty() ? "" : ", ") + std::string(choice);
    refuse(StatusCode::wrongUsage, word, "not known here; there are " + known);
}

double SessionWords::takeNumber(const char* what) {
    const std::string& word = take(what);
    const auto number = parseDouble(word);
    if (!number || !std::isfinite(*number))
        refuse(StatusCode::wrongUsage, word, std::string("not a number (") + what + ")");
    return *number;
}

long long SessionWords::takeInt(const char* what, long long least, long long most) {
    const std::string& word = take(what);
    const auto number = parseInt(word);
    if (!number || *number < least || *number > most)
        refuse(StatusCode::wrongUsage, word,
               format("not a whole number from %lld to %lld (%s)", least, most, what));
    return *number;
}

bool SessionWords::takeOnOff(const char* what) { return takeOneOf(what, {"on", "off"}) == "on"; }

void SessionWords::expectEnd() const {
    if (!done())
        refuse(StatusCode::wrongUsage, words_[next_], "one word too many");
}

} // namespace cutroom::cli
