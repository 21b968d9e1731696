// Picture and sound shots for the tests of sync-up.
#pragma once

#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "tests/support/Edits.h"
#include "tests/support/LogLines.h"

#include <gtest/gtest.h>

#include <string>

namespace cutroom::test {

inline const Kv::FrameRate kPal(25);
inline constexpr MediumRoll kPictureRoll{2, 1};
inline constexpr MediumRoll kSoundRoll{4, 1};

// A shot to be made: a log of one material from end to end, labelled at its time 0.
struct Take {
    const char* start = "00:00:10:00"; // "": no label
    int frames = 1500;
    Kv::FrameRate rate = kPal;
    bool drop = false;
    int type = kLabelVideoTimecode;
    eLogType logType = kLogTypeSource;
    const char* date = "";
};

inline EditModifier makeShot(const Take& take, int video, int audio, const std::wstring& name) {
    EditModifier shot = makeEdit(video, audio, take.rate, name);
    shot->setLogType(take.logType);
    for (const IdStamp& channel : shot->getChans()) {
        CelSegment piece;
        piece.end = take.rate.frameToFlicks(take.frames);
        piece.material = convertCookie(shot.getCookie(), video ? 'V' : 'S', 1);
        piece.detail.name = name;
        EXPECT_TRUE(shot->get_edit_cel_p(channel)->setSegments({piece}));
    }
    const TimecodeFormat format{take.rate, take.drop};
    if (*take.start)
        for (const MediumRoll& roll : {kPictureRoll, kSoundRoll})
            shot->addLabel(EditLabel(static_cast<eLabelType>(take.type), roll, format,
                                     parseTimecode(take.start, format).value()));
    if (*take.date)
        shot->setConfig("cam_date", take.date);
    return shot;
}
inline EditModifier makePicture(const Take& take = {}, const std::wstring& name = L"Picture") {
    return makeShot(take, 1, 0, name);
}
inline EditModifier makeSound(const Take& take = {}, const std::wstring& name = L"Sound") {
    return makeShot(take, 0, 2, name);
}

// "-0+50 Sound@25+100": name, first frame of the material, frames.
inline std::string piecesOf(const EditPtr& edit, const IdStamp& channel) {
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
    const Kv::FrameRate rate = edit->getFrameRate();
    std::string text;
    for (std::uint32_t i = 0; i < cel->numSegments(); ++i) {
        const CelSegment piece = cel->getSegment(i);
        EXPECT_TRUE(rate.isOnFrame(piece.start) && rate.isOnFrame(piece.end));
        text += (i ? " " : "") + (piece.material.valid() ? toUtf8(piece.detail.name) : "-") + "@" +
                std::to_string(rate.flicksToFrameNearest(piece.stripStart)) + "+" +
                std::to_string(rate.flicksToFrameNearest(piece.end - piece.start));
    }
    return text;
}
inline std::string piecesOf(const EditPtr& edit, EditChanType type, std::size_t index = 0) {
    return piecesOf(edit, edit->getChans(type, kSubNormal).at(index));
}

class ShotsFixture : public testing::Test {
protected:
    ShotsFixture() : host_(EmbeddedHost::repeatable()) {}
    static std::size_t edits() { return EditManager::instance().getAllEdits().size(); }

    LogLines log_;
    EmbeddedHost host_;
};

} // namespace cutroom::test
