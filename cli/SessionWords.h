// The words of one line of the session language, taken one after the other.
//
// A line is a verb and its words, separated by blanks. A word in double quotes may hold blanks;
// \" and \\ stand for themselves in it. From a word that begins with # on, the line is a comment.
#pragma once

#include "platform/base/Status.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom::cli {

// Thrown by what a verb calls when it cannot do what the line says; ends the line.
struct Refused {
    Status status;
};
// Refuses a line: `thing` is the word concerned.
[[noreturn]] void refuse(StatusCode code, const std::string& thing, const std::string& reason);
// Refuses the line when `status` is a failure.
void require(const Status& status);
template <class T> T require(Result<T> result) {
    if (!result)
        throw Refused{result.status()};
    return std::move(result).value();
}

class SessionWords {
public:
    // Refuses an open quote and an unknown escape.
    static SessionWords parse(std::string_view line);

    bool done() const noexcept { return next_ == words_.size(); }
    std::size_t left() const noexcept { return words_.size() - next_; }
    // The words that are left.
    std::vector<std::string> rest() const;
    // Takes them all.
    std::vector<std::string> takeRest();
    // The next word; refuses when there is none, naming what is missing.
    const std::string& take(const char* what);
    // The next word, or `otherwise` at the end.
    std::string takeOr(const std::string& otherwise);
    const std::string& peek() const;
    // Takes the next word when it is `word`.
    bool takeIf(std::string_view word);
    // Takes `word` wherever it stands among the words that are left; for flags that cannot be taken
    // for another word's value.
    bool takeAnywhere(std::string_view word);
    // One of the given words.
    const std::string& takeOneOf(const char* what, const std::vector<std::string_view>& choices);
    // What one of the given words stands for.
    template <class T>
    T takeChoice(const char* what, std::initializer_list<std::pair<std::string_view, T>> choices) {
        std::vector<std::string_view> names;
        for (const auto& [name, value] : choices)
            names.push_back(name);
        const auto chosen = std::find(names.begin(), names.end(), takeOneOf(what, names));
        return (choices.begin() + (chosen - names.begin()))->second;
    }
    double takeNumber(const char* what);
    long long takeInt(const char* what, long long least, long long most);
    bool takeOnOff(const char* what);
    // Refuses words that nothing took.
    void expectEnd() const;

private:
    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

} // namespace cutroom::cli
