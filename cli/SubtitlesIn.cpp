#include "cli/SubtitlesIn.h"

#include "cli/Permission.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <cerrno>
#include <filesystem>
#include <memory>

#include <iconv.h>

namespace cutroom::cli {

namespace {

constexpr std::uint64_t kMaxBytes = std::uint64_t{64} << 20;

std::string encodingOf(std::string_view bytes, const std::string& asked) {
    if (!asked.empty())
        return asked;
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return "UTF-16";
    return "UTF-8";
}

struct CloseConverter {
    void operator()(void* converter) const { ::iconv_close(converter); }
};

Result<std::string> toUtf8From(std::string bytes, const std::string& encoding,
                               const std::string& file) {
    const iconv_t opened = ::iconv_open("UTF-8", encoding.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1))
        return Status(StatusCode::wrongUsage, encoding, "no encoding of this name is known");
    const std::unique_ptr<void, CloseConverter> converter(opened);
    std::string out;
    char* in = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        char buffer[16384];
        char* to = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t done = ::iconv(opened, &in, &left, &to, &room);
        out.append(buffer, sizeof buffer - room);
        if (done == static_cast<std::size_t>(-1) && errno != E2BIG)
            return Status(StatusCode::damaged, file,
                          "not " + encoding + " text at byte " +
                              std::to_string(bytes.size() - left));
    }
    return out;
}

} // namespace

Result<std::string> readText(const std::string& file, const std::string& asked) {
    auto bytes = readFile(file, kMaxBytes);
    if (!bytes)
        return bytes.status();
    const std::string encoding = encodingOf(*bytes, asked);
    return encoding == "UTF-8" ? std::move(bytes) : toUtf8From(std::move(*bytes), encoding, file);
}

Result<SubtitleReport> addSubtitles(const SubtitleWords& words, const EditPtr& edit) {
    const auto text = readText(words.file, words.encoding);
    if (!text)
        return text.status();
    const auto file = readSrt(*text, words.file);
    if (!file)
        return file.status();
    if (Status may = mayChange(edit); !may)
        return may;
    EditManager::instance().makeBackup(edit, "Add subtitles");
    const std::string name = std::filesystem::path(words.file).stem().string();
    return importSubtitles(EditModifier(edit, "Add subtitles"), *file, toWide(name), words.clock);
}

} // namespace cutroom::cli
