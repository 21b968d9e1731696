// The corpus of real files and what an independent reader found in them.
#pragma once

#include "platform/base/Time.h"
#include "platform/files/Files.h"
#include "platform/files/JsonElement.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace corpus {

inline std::string folder() { return CUTROOM_TEST_DATA "/corpus/"; }

// Names of all files below `kind` ("otio", "edl"), as facts.json has them.
inline std::vector<std::string> files(const std::string& kind) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder().append(kind)))
        names.push_back(kind + "/" + entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The facts of one file; empty when nobody wrote any.
inline Kv::Ptr<JSON::Element> facts(const std::string& name) {
    static const auto all = JSON::Element::load(folder() + "facts.json");
    return all.ok() ? all.value()->find(name) : Kv::Ptr<JSON::Element>();
}

// A test's name from a file's: letters and digits only.
inline std::string testName(std::string name) {
    name = name.substr(name.find('/') + 1);
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

} // namespace corpus
