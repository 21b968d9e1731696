#include "cli/VerbUsage.h"

#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <utility>

namespace cutroom::cli {

struct VerbUsage::Part {
    enum class Kind { words, sequence, choice };
    Kind kind = Kind::sequence;
    bool optional = false;
    bool repeated = false;
    std::vector<std::string> alternatives; // of kind words
    std::vector<Part> parts;               // of the others
};

namespace {

using Part = VerbUsage::Part;
using Places = std::set<std::size_t>; // numbers of words taken so far

bool isPlaceholder(const std::string& word) {
    return std::all_of(word.begin(), word.end(), [](char c) { return isCapital(c) || c == '-'; });
}

// --- reading -------------------------------------------------------------------------------------

class Reader {
public:
    explicit Reader(std::string_view text) {
        std::string spaced;
        for (const char c : text)
            spaced += std::string_view("[]()").find(c) == std::string_view::npos
                          ? std::string(1, c)
                          : std::string{' ', c, ' '};
        for (std::string& word : split(spaced, ' '))
            if (!word.empty())
                words_.push_back(std::move(word));
    }

    Part choice() {
        Part all;
        all.kind = Part::Kind::choice;
        do
            all.parts.push_back(sequence());
        while (takeIf("|"));
        return all;
    }

    bool done() const { return next_ == words_.size(); }

private:
    bool takeIf(std::string_view word) {
        if (done() || words_[next_] != word)
            return false;
        ++next_;
        return true;
    }

    Part sequence() {
        Part all;
        while (!done() && words_[next_] != "|" && words_[next_] != "]" && words_[next_] != ")") {
            all.parts.push_back(item());
            all.parts.back().repeated = takeIf("...");
        }
        return all;
    }

    Part item() {
        const bool optional = takeIf("[");
        if (optional || takeIf("(")) {
            Part inner = choice();
            [[maybe_unused]] const bool closed = takeIf(optional ? "]" : ")");
            assert(closed);
            inner.optional = optional;
            return inner;
        }
        Part word;
        word.kind = Part::Kind::words;
        word.alternatives = split(words_[next_++], '|');
        return word;
    }

    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

// --- matching ------------------------------------------------------------------------------------

class Matcher {
public:
    explicit Matcher(const std::vector<std::string>& words) : words_(words) {}

    // Where the words may have got to after `part`, from each of `from`.
    Places match(const Part& part, const Places& from) {
        Places after = once(part, from);
        if (part.repeated)
            for (std::size_t before = 0; before != after.size();) {
                before = after.size();
                after.merge(once(part, after));
            }
        if (part.optional)
            after.insert(from.begin(), from.end());
        return after;
    }

    // The farthest that any reading of the words got, and the words that could have followed there.
    std::size_t reached() const { return reached_; }
    const std::vector<std::string>& wanted() const { return wanted_; }

private:
    Places once(const Part& part, const Places& from) {
        if (part.kind == Part::Kind::words)
            return word(part, from);
        if (part.kind == Part::Kind::sequence)
            return sequence(part.parts, from);
        Places after;
        for (const Part& side : part.parts)
            after.merge(match(side, from));
        return after;
    }

    Places word(const Part& part, const Places& from) {
        Places after;
        for (const std::size_t at : from)
            for (const std::string& one : part.alternatives) {
                if (at == reached_)
                    wanted_.push_back(one);
                if (at < words_.size() && (isPlaceholder(one) || one == words_[at]))
                    after.insert(at + 1);
            }
        if (!after.empty() && *after.rbegin() > reached_) {
            reached_ = *after.rbegin();
            wanted_.clear();
        }
        return after;
    }

    Places sequence(const std::vector<Part>& parts, Places at) {
        for (std::size_t i = 0; i < parts.size();) {
            std::size_t end = i;
            while (end < parts.size() && parts[end].optional)
                ++end;
            if (end == i)
                at = match(parts[i++], at);
            else
                at = anyOrder({parts.begin() + static_cast<std::ptrdiff_t>(i),
                               parts.begin() + static_cast<std::ptrdiff_t>(end)},
                              at);
            i = std::max(i, end);
        }
        return at;
    }

    // Tries each of the parts that were not used on the way to a place, until nothing new is found.
    Places anyOrder(const std::vector<Part>& parts, const Places& from) {
        std::set<std::pair<std::size_t, std::size_t>> seen; // place, used parts as bits
        std::vector<std::pair<std::size_t, std::size_t>> open;
        Places after = from;
        for (const std::size_t at : from)
            open.emplace_back(at, 0);
        while (!open.empty()) {
            const auto [at, used] = open.back();
            open.pop_back();
            for (std::size_t i = 0; i < parts.size(); ++i) {
                if (used >> i & 1)
                    continue;
                const std::size_t usedNow = parts[i].repeated ? used : used | std::size_t{1} << i;
                for (const std::size_t next : match(parts[i], {at}))
                    if (next != at && seen.emplace(next, usedNow).second) {
                        open.emplace_back(next, usedNow);
                        after.insert(next);
                    }
            }
        }
        return after;
    }

    const std::vector<std::string>& words_;
    std::size_t reached_ = 0;
    std::vector<std::string> wanted_;
};

} // namespace

VerbUsage::VerbUsage(std::string_view text) : text_(text) {
    Reader reader(text);
    whole_ = std::make_unique<Part>(reader.choice());
    assert(reader.done());
}

VerbUsage::~VerbUsage() = default;
VerbUsage::VerbUsage(VerbUsage&&) noexcept = default;
VerbUsage& VerbUsage::operator=(VerbUsage&&) noexcept = default;

Status VerbUsage::check(const std::string& verb, const std::vector<std::string>& words) const {
    Matcher matcher(words);
    if (matcher.match(*whole_, {0}).contains(words.size()))
        return {};
    const std::string usage = verb + (text_.empty() ? "" : " ") + text_;
    const std::size_t at = matcher.reached();
    if (at == words.size())
        return {StatusCode::wrongUsage, verb, "a word is missing: " + usage};
    return {StatusCode::wrongUsage, words[at],
            (matcher.wanted().empty() ? "one word too many: " : "not known here: ") + usage};
}

} // namespace cutroom::cli
