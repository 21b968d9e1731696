// Configuration values: numbers by which an installation is tuned, read by name, each with a
// default and a range. What is set lasts for one life of the process (`Host::install` to
// `Host::uninstall`).
#pragma once

#include "platform/base/Status.h"
#include "platform/host/ProcessLife.h"

#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// The value of `key`; `otherwise` when none is set or its text is no such number. What is set is
// held within [min, max], `otherwise` is given as it is. Any thread.
CUTROOM_API int configInt(std::string_view key, int otherwise,
                          int min = std::numeric_limits<int>::min(),
                          int max = std::numeric_limits<int>::max());
CUTROOM_API double configDouble(std::string_view key, double otherwise,
                                double min = std::numeric_limits<double>::lowest(),
                                double max = std::numeric_limits<double>::max());

// Where the values come from. Any thread; readers that read once per life see only what was set
// before.
class CUTROOM_API Configuration {
public:
    // The one of this life; empty at its beginning.
    static Configuration& instance();

    // Sets one value for the rest of the life; empty text takes it away.
    void set(std::string_view key, std::string_view text);
    // Takes over the keys of the section "config" of an ini file. A file that is not there is fine;
    // on another failure nothing is taken over.
    Status load(const std::string& path);
    // The text set for `key`; empty when none is.
    std::string get(std::string_view key) const;
    // The keys asked for so far in this life, sorted: what an installation can tune.
    std::vector<std::string> keysAsked() const;

private:
    friend class ProcessSingleton<Configuration>;
    Configuration();
    ~Configuration();

    struct State;
    std::unique_ptr<State> state_;
};

// A configuration value that is read once in each life, at its first use; made once and never
// destroyed, since static objects may ask for it at the very end of the program. Any thread.
//
//     static const auto& quantise = *new cutroom::ConfigValue<int>("check_quantise", 1);
//     if (quantise.get() != 0) …
template <class T> class ConfigValue {
public:
    ConfigValue(std::string key, T otherwise, T min = std::numeric_limits<T>::lowest(),
                T max = std::numeric_limits<T>::max())
        : value_([key = std::move(key), otherwise, min, max]() -> T {
              if constexpr (std::is_floating_point_v<T>)
                  return static_cast<T>(configDouble(key, otherwise, min, max));
              else
                  return static_cast<T>(configInt(key, otherwise, min, max));
          }) {
        static_assert(std::is_same_v<T, int> || std::is_same_v<T, double>);
    }

    // The value of this life.
    T get() const { return value_.get(); }
    operator T() const { return value_.get(); }

private:
    OncePerProcess<T> value_;
};

} // namespace cutroom
