// A folder for one test, removed with all it holds; and the bytes of files.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace cutroom::test {

class TempFolder {
public:
    explicit TempFolder(const std::filesystem::path& in = std::filesystem::temp_directory_path()) {
        std::string name = (in / "cutroom-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // In memory where the system has such a place: for tests that flush often and cut no power.
    static std::filesystem::path inMemory() {
        const std::filesystem::path memory = "/dev/shm";
        return ::access(memory.c_str(), W_OK) == 0 ? memory
                                                   : std::filesystem::temp_directory_path();
    }

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Empty when there is no such file.
inline std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
inline void putBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace cutroom::test
