// Catches the log, for tests that ask what was logged.
#pragma once

#include "platform/base/Log.h"

#include <mutex>
#include <string>
#include <vector>

namespace cutroom::test {

// Takes the log's place for its own lifetime. Any thread may log meanwhile; `lines` is read when
// none does. Made before a host, it also catches what the end of the host logs.
class LogLines final : public iLogSink {
public:
    LogLines() : before_(installLogSink(this)) {}
    ~LogLines() override { installLogSink(before_); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    void write(std::string_view message) override {
        const std::scoped_lock lock(mutex_);
        lines.emplace_back(message);
    }

    // The messages, each as it was given to the log.
    std::vector<std::string> lines;

private:
    std::mutex mutex_; // guards lines
    iLogSink* const before_;
};

} // namespace cutroom::test
