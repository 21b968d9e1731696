// The operating system's files, with what is written counted. Every byte of the library's files
// goes through here, save those of the project database.
#pragma once

#include "platform/files/Files.h"
#include "platform/host/FileSystem.h"

class CountedFiles : public cutroom::iFileSystem {
public:
    long writes = 0;
    long flushes = 0;

    cutroom::Result<std::size_t> write(Handle file, const char* data, std::size_t size) override {
        ++writes;
        return system_.write(file, data, size);
    }
    cutroom::Status flush(Handle file) override {
        ++flushes;
        return system_.flush(file);
    }

    // --- as the system has it ------------------------------------------------------------------
    cutroom::Result<Handle> open(const std::string& path, cutroom::OpenMode mode) override {
        return system_.open(path, mode);
    }
    cutroom::Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override {
        return system_.read(file, buffer, size);
    }
    cutroom::Status truncate(Handle file, std::uint64_t size) override {
        return system_.truncate(file, size);
    }
    cutroom::Status lock(Handle file) override { return system_.lock(file); }
    cutroom::Status close(Handle file) override { return system_.close(file); }
    cutroom::Result<Handle> openFolder(const std::string& path) override {
        return system_.openFolder(path);
    }
    cutroom::Status flushAll(Handle folder) override { return system_.flushAll(folder); }
    cutroom::Result<cutroom::FileInfo> stat(const std::string& path) override {
        return system_.stat(path);
    }
    cutroom::Result<cutroom::FileInfo> stat(Handle file) override { return system_.stat(file); }
    cutroom::Status rename(const std::string& from, const std::string& to) override {
        return system_.rename(from, to);
    }
    cutroom::Status remove(const std::string& path) override { return system_.remove(path); }
    cutroom::Status link(const std::string& from, const std::string& to) override {
        return system_.link(from, to);
    }
    cutroom::Status makeFolder(const std::string& path) override {
        return system_.makeFolder(path);
    }
    cutroom::Result<std::vector<std::string>> list(const std::string& path) override {
        return system_.list(path);
    }

private:
    cutroom::iFileSystem& system_ = cutroom::systemFiles();
};
