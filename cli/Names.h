// How a person names things on the command line: edits by cookie or name, places by timecode,
// seconds or frames, colours by name.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/base/Status.h"
#include "platform/base/Timecode.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cutroom::cli {

// The edit or log of that cookie, or of that name when it is the only one; otherwise `notFound`
// with the candidates.
Result<Cookie> findEditCookie(std::string_view text);
// The same, opened; fails with what is wrong with its file.
Result<EditPtr> openEdit(std::string_view text);

// A place in seconds from the edit's time 0: "01:00:10:12" by the edit's timecode, on the day on
// which the edit shows it, "12.5" or "12.5s" seconds, "300f" frames of the edit.
Result<double> parsePlace(std::string_view text, const EditPtr& edit);
// The same; `wrongUsage` also for a place outside the edit.
Result<double> parsePlaceInside(std::string_view text, const EditPtr& edit);

// A frame rate as people say it, to three decimals: "29.97 fps".
std::string rateText(const Kv::FrameRate& rate);
// A length as hours, minutes, seconds and frames, which unlike a place counts on behind 24 hours.
std::string durationText(std::int64_t frames, const TimecodeFormat& format);

// A name to be given: UTF-8 text that is not empty.
Result<std::wstring> parseName(const std::string& text);

// 24 bits of colour, red high, from a marker colour's name or "#rrggbb".
Result<std::uint32_t> parseColour(std::string_view text);
// The colour's name, else "#rrggbb".
std::string colourText(std::uint32_t colour);

} // namespace cutroom::cli
