// What tools/mutants puts into the code that it changes: each change is compiled in beside the
// original, and an environment variable says which one a process runs.
#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace mutants {

inline constexpr std::size_t kMost = 65536;

// The change that is made in this process, and a file in which each change that is reached is
// noted, a byte for each.
struct Process {
    int active = -1;
    unsigned char* reached = nullptr;

    Process() {
        if (const char* const number = std::getenv("CUTROOM_MUTANT"))
            active = std::atoi(number);
        const char* const path = std::getenv("CUTROOM_MUTANTS_REACHED");
        const int file = path ? open(path, O_RDWR | O_CLOEXEC) : -1;
        if (file < 0)
            return;
        void* const place = mmap(nullptr, kMost, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        reached = place == MAP_FAILED ? nullptr : static_cast<unsigned char*>(place);
        close(file);
    }
};

inline bool isMade(int number) {
    static const Process process;
    if (process.reached)
        process.reached[number] = 1;
    return process.active == number;
}

// `value`, or `other` when the change is made.
template <class T> T either(int number, T value, T other) { return isMade(number) ? other : value; }

// An operator at work: `a < infix<7> < b` is `a < b`, or `a <= b` when change 7 is made. It binds
// as the operator does, so nobody has to find where its operands end.
template <int number> struct Infix {};
template <int number> inline constexpr Infix<number> infix;

template <int number, class Left> struct Half { Left&& left; };

#define MUTANT_INFIX(original, changed)                                                            \
    template <class Left, int number>                                                              \
    Half<number, Left> operator original(Left&& left, Infix<number>) {                             \
        return {std::forward<Left>(left)};                                                         \
    }                                                                                              \
    template <int number, class Left, class Right>                                                 \
    auto operator original(Half<number, Left>&& half, Right&& right)                               \
        ->decltype(std::forward<Left>(half.left) original std::forward<Right>(right)) {            \
        if (isMade(number))                                                                        \
            return std::forward<Left>(half.left) changed std::forward<Right>(right);               \
        return std::forward<Left>(half.left) original std::forward<Right>(right);                  \
    }
MUTANT_INFIX(<, <=)
MUTANT_INFIX(<=, <)
MUTANT_INFIX(>, >=)
MUTANT_INFIX(>=, >)
MUTANT_INFIX(==, !=)
MUTANT_INFIX(!=, ==)
MUTANT_INFIX(+, -)
MUTANT_INFIX(-, +)
#undef MUTANT_INFIX

// `a += infix<7> += b`.
template <int number, class Right> struct Added { Right&& right; };
template <int number, class Right> Added<number, Right> operator+=(Infix<number>, Right&& right) {
    return {std::forward<Right>(right)};
}
template <int number, class Left, class Right>
Left& operator+=(Left& left, Added<number, Right>&& added) {
    if (isMade(number))
        left -= std::forward<Right>(added.right);
    else
        left += std::forward<Right>(added.right);
    return left;
}

// `infix<7>->*x` is `!x`, or `x`.
template <int number, class Operand> bool operator->*(Infix<number>, Operand&& operand) {
    return static_cast<bool>(std::forward<Operand>(operand)) == isMade(number);
}

// `step<7>(x)` is `++x`, or `--x`.
template <int number, class Operand> Operand& step(Operand& operand) {
    return isMade(number) ? --operand : ++operand;
}
template <int number, class Operand> Operand stepAfter(Operand& operand) {
    return isMade(number) ? operand-- : operand++;
}

} // namespace mutants
