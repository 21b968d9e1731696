// A locale in which numbers have a decimal comma and grouped thousands, made on the spot, so that a
// test needs no language package.
#pragma once

#include "tests/support/TempFolder.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace cutroom::test {

// In force for its own lifetime. Not for tests with several threads.
class CommaLocale {
public:
    CommaLocale() {
        putBytes(folder_ / "source", "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                     "grouping 3;3\nEND LC_NUMERIC\n");
        // The categories left out are warned of, and the tool's result says so.
        const std::string make =
            "cd " + folder_.path() + " && localedef -c -i ./source ./comma >/dev/null 2>&1";
        made_ = std::system(make.c_str());
        ::setenv("LOCPATH", folder_.path().c_str(), 1);
        active_ = std::setlocale(LC_NUMERIC, "comma") != nullptr;
    }
    ~CommaLocale() {
        std::setlocale(LC_NUMERIC, "C");
        ::unsetenv("LOCPATH");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    // True when a number printed by the C library has a comma.
    bool active() const {
        char text[16] = {};
        std::snprintf(text, sizeof text, "%.1f", 1.5);
        return active_ && std::string(text) == "1,5";
    }

private:
    TempFolder folder_;
    int made_ = 0;
    bool active_ = false;
};

} // namespace cutroom::test
