// A life of the process with edits and Vobs to try things on.
#pragma once

#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/LogLines.h"
#include "tests/support/RecorderClient.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace cutroom::test {

inline const Kv::FrameRate k25(25, 1);

// An edit of `video` and `audio` channels, 25 frames a second, black for `seconds`.
inline EditPtr makeEdit(double seconds = 10, unsigned char video = 1, unsigned char audio = 2) {
    return EditManager::instance().makeNewEdit(makeNewEditCookie(), video, audio, seconds, k25);
}

// Lays a clip of some material over [from, to) seconds of a channel.
inline void layClip(const EditPtr& edit, const IdStamp& channel, double from, double to,
                    std::uint64_t material = 7) {
    CelSegment clip;
    clip.start = toFlicks(from);
    clip.end = toFlicks(to);
    clip.material = Cookie('E', material);
    ASSERT_TRUE(edit->get_edit_cel_p(channel)->overwrite(clip).ok());
}

class VobFixture : public testing::Test {
protected:
    // Configuration and preferences that are read once are set here, before the first Vob.
    VobFixture() : host_(EmbeddedHost::repeatable()) {}

    Kv::Ptr<Vob> open(const EditPtr& edit) { return VobManager::instance().createVob(edit); }
    // A Vob whose edit can be neither opened nor made.
    static Kv::Ptr<Vob> openNothing() {
        return VobManager::instance().createVob(Cookie('G', 0x123));
    }

    LogLines log_;
    EmbeddedHost host_;
    Calls calls_;
};

} // namespace cutroom::test
