// Names that stand once among others.
#pragma once

#include <set>
#include <string>
#include <utility>

namespace cutroom {

class FreeNames {
public:
    explicit FreeNames(std::set<std::string> taken) : taken_(std::move(taken)) {}

    // The name, with the first number from 2 on behind it that makes it free. Taken from now on.
    std::string take(const std::string& name) {
        std::string free = name;
        for (int n = 2; !taken_.insert(free).second; ++n)
            free = name + ' ' + std::to_string(n);
        return free;
    }

private:
    std::set<std::string> taken_;
};

} // namespace cutroom
