// How platform and interchange operations report failure: a code, the file or thing concerned, the
// place in it, and a reason a person can act on. Nothing here throws.
#pragma once

#include "platform/base/Export.h"

#include <cassert>
#include <optional>
#include <string>
#include <utility>

namespace cutroom {

// What kind of failure it was; the command's exit codes follow these.
enum class StatusCode {
    ok,
    failed,      // the request cannot be met as asked
    wrongUsage,  // the request itself makes no sense
    notFound,    // the thing named is not there
    damaged,     // the input is not what it claims to be
    inputOutput, // the operating system refused
    locked,      // another process holds the project
};

// The outcome of an operation: all well, or one failure.
class [[nodiscard]] CUTROOM_API Status {
public:
    // All well.
    Status() = default;
    // A failure concerning `file` (a path or a thing's name; may be empty) with `message`.
    Status(StatusCode code, std::string file, std::string message, long line = 0)
        : code_(code), line_(line), file_(std::move(file)), message_(std::move(message)) {}

    bool ok() const noexcept { return code_ == StatusCode::ok; }
    explicit operator bool() const noexcept { return ok(); }
    StatusCode code() const noexcept { return code_; }
    const std::string& file() const noexcept { return file_; }
    const std::string& message() const noexcept { return message_; }
    // Line (from 1) for text, byte offset for binary input; 0 when no place is known.
    long line() const noexcept { return line_; }

    // "<file>[:<line>]: <reason>", one line; "ok" when all is well.
    std::string text() const;

private:
    StatusCode code_ = StatusCode::ok;
    long line_ = 0;
    std::string file_;
    std::string message_;
};

// A value, or the failure that kept it from being made.
template <class T> class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    // `status` must be a failure.
    Result(Status status) : status_(std::move(status)) { assert(!status_.ok()); }

    bool ok() const noexcept { return value_.has_value(); }
    explicit operator bool() const noexcept { return ok(); }
    const Status& status() const noexcept { return status_; }
    // Only when `ok()`.
    T& value() & { return *value_; }
    const T& value() const& { return *value_; }
    T&& value() && { return std::move(*value_); }
    T& operator*() & { return *value_; }
    const T& operator*() const& { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }

private:
    std::optional<T> value_;
    Status status_;
};

} // namespace cutroom
