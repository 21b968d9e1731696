// The user's preferences: small values by key that outlive the program.
#pragma once

#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/host/ProcessLife.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Kept in memory, and, once `open` named a file, in that file: written by `flush` and at the end of
// the life. Keys are any UTF-8 text ("Behaviour : Advanced marks"). Any thread.
class CUTROOM_API EditorPreferences {
public:
    // The value of `key`; `otherwise` when it is not set or its text is no value of this type (a
    // number out of range included).
    static bool getPreference(std::string_view key, bool otherwise);
    static int getPreference(std::string_view key, int otherwise);
    static std::uint16_t getPreference(std::string_view key, std::uint16_t otherwise);
    static double getPreference(std::string_view key, double otherwise);
    static std::string getPreference(std::string_view key, const char* otherwise);
    static std::string getPreference(std::string_view key, const std::string& otherwise);

    // Setting a value equal to the present one changes nothing. Text that is not well-formed UTF-8
    // is kept with U+FFFD for each bad part.
    static void setPreference(std::string_view key, bool value);
    static void setPreference(std::string_view key, int value);
    static void setPreference(std::string_view key, std::uint16_t value);
    static void setPreference(std::string_view key, double value);
    static void setPreference(std::string_view key, const char* value);
    static void setPreference(std::string_view key, const std::string& value);
    // Takes the value away, so that the reader's default holds.
    static void removePreference(std::string_view key);

    // Grows whenever a value may have changed, never to come back: for those who ask so often that
    // they keep what they read. Never 0.
    static std::uint64_t changeCount();

    // Reads the file and keeps to it from now on; one that is not there is made at the first
    // `flush`. A damaged file is an error: nothing is taken from it, and it is never overwritten.
    static cutroom::Status open(const std::string& path);
    // Writes the file crash-safely when something changed since the last time. Without a file all
    // is well.
    static cutroom::Status flush();
    // Writes what is due, then keeps to no file, also when that fails: what changes from now on
    // stays in memory.
    static cutroom::Status close();
    // Tells whether something waits to be written.
    static bool isDirty();

private:
    friend class cutroom::ProcessSingleton<EditorPreferences>;
    EditorPreferences();
    ~EditorPreferences();
    static EditorPreferences& instance();

    struct State;
    std::unique_ptr<State> state_;
};
