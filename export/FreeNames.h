// Keeps names unique.
#pragma once

#include <set>
#include <string>
#include <utility>

namespace cutroom {

class FreeNames {
public:
    explicit FreeNames(std::set<std::string> taken) : taken_(std::move(taken)) {}

    // Gives the name if it is free, else the name with the lowest number from 2 on that is free
    // behind it ("name 2"). What it gives is taken from then on.
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
