// Any bytes as one of the short texts that are stored or typed: what is read is written again, and
// must then be read as the same. The first byte chooses.
#include "bins/BinFileText.h"
#include "bins/BinHandle.h"
#include "editops/SyncUpParams.h"
#include "editops/basics/CutTypes.h"
#include "platform/aud/SimpleMixState.h"
#include "platform/base/FrameRate.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Timecode.h"
#include "platform/store/BurntIn.h"
#include "sync/SyncGroupData.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;
using Text = LightweightString<char>;

const TimecodeFormat kFormats[] = {
    {{24}, false}, {{25}, false}, {{30000, 1001}, true}, {{60000, 1001}, true}, {{120}, false}};

// `read` gives something that tells whether there is a value, `write` its text.
template <class Read, class Write>
void tryForm(const std::string& text, const Read& read, const Write& write) {
    const auto value = read(text);
    if (!value)
        return;
    const std::string once = write(*value);
    const auto again = read(once);
    if (!again || write(*again) != once)
        __builtin_trap();
}

template <class Value> std::optional<Value> some(Value value) { return value; }

void tryTimecode(const std::string& text, const TimecodeFormat& format) {
    tryForm(
        text, [&](const std::string& from) { return parseTimecode(from, format); },
        [&](std::int64_t frame) { return timecodeText(frame, format); });
}

constexpr void (*kForms[])(const std::string&) = {
    [](const std::string& text) {
        tryForm(text, Cookie::fromString,
                [](const Cookie& cookie) { return cookie.asString(true); });
    },
    [](const std::string& text) {
        tryForm(text, IdStamp::fromString, [](const IdStamp& id) { return id.asString(); });
    },
    [](const std::string& text) {
        tryForm(text, Kv::FrameRate::fromString,
                [](const Kv::FrameRate& rate) { return rate.asString(); });
    },
    [](const std::string& text) {
        for (const TimecodeFormat& format : kFormats)
            tryTimecode(text, format);
    },
    [](const std::string& text) {
        tryForm(
            text, [](const Text& from) { return some(BinHandle(from)); },
            [](const BinHandle& handle) { return handle.asString(); });
    },
    [](const std::string& text) {
        tryForm(
            text, [](const Text& from) { return some(stringToCutType(from)); }, cutTypeToString);
    },
    [](const std::string& text) {
        tryForm(
            text, [](const Text& from) { return some(stringToTransPosn(from)); },
            transPosnToString);
    },
    [](const std::string& text) {
        tryForm(
            text, [](const std::string& from) { return some(readPosition(from)); },
            [](const XY<float>& position) {
                std::string written;
                appendPosition(written, position);
                return written;
            });
    },
    [](const std::string& text) { tryForm(text, readSize, sizeText); },
    [](const std::string& text) {
        tryForm(text, Aud::SimpleMixState::fromString,
                [](const Aud::SimpleMixState& mix) { return mix.asString(); });
    },
    [](const std::string& text) {
        tryForm(text, BITCLayoutsManager::fromString, BITCLayoutsManager::asString);
    },
    [](const std::string& text) {
        tryForm(text, UserLabelSpec::fromString,
                [](const UserLabelSpec& label) { return label.asString(); });
    },
    [](const std::string& text) {
        tryForm(
            text, [](const std::string& from) { return some(readRelationships(from)); },
            relationshipsText);
    },
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    kForms[data[0] % std::size(kForms)](text);
    return 0;
}
