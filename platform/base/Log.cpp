#include "platform/base/Log.h"

#include "platform/base/CLocale.h"

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace cutroom {

iLogSink::~iLogSink() = default;

namespace {

struct LogState {
    std::mutex mutex;
    iLogSink* sink = nullptr; // guarded by mutex
};

// Never destroyed: objects that die after main may still log.
LogState& logState() noexcept {
    static LogState& state = *new LogState;
    return state;
}

void hand(std::string_view message) {
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    try {
        if (state.sink)
            return state.sink->write(message);
    } catch (const std::exception&) {
        // The log is the last place to complain; a sink that fails leaves standard error.
    }
    std::fwrite(message.data(), 1, message.size(), stderr);
}

} // namespace

iLogSink* installLogSink(iLogSink* sink) noexcept {
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    return std::exchange(state.sink, sink);
}

} // namespace cutroom

void LogBoth(const char* pattern, ...) {
    // Most messages fit here, so that a shortage of memory can still be logged.
    char inPlace[1024];
    va_list args;
    va_start(args, pattern);
    va_list again;
    va_copy(again, args);
    const int length = cutroom::formatInC(inPlace, sizeof inPlace, pattern, args);
    va_end(args);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof inPlace) {
        cutroom::hand({inPlace, static_cast<std::size_t>(length)});
    } else if (length >= 0) {
        std::string text;
        try {
            text.resize(static_cast<std::size_t>(length) + 1);
            cutroom::formatInC(text.data(), text.size(), pattern, again);
            text.pop_back();
        } catch (const std::bad_alloc&) {
            text.clear();
        }
        cutroom::hand(text.empty() ? std::string_view(inPlace) : std::string_view(text));
    }
    va_end(again);
}
