// Edits in memory for tests, with channels laid from short descriptions.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <string>
#include <vector>

namespace cutroom::test {

// A piece of a channel: name, length in frames, first frame of its source; an empty name is black.
struct Piece {
    std::wstring name;
    int frames = 0;
    int sourceStart = 0;
};

// An edit of log type 2 with empty channels.
EditModifier makeEdit(int video, int audio, const Kv::FrameRate& rate = Kv::FrameRate(25),
                      const std::wstring& name = L"Test");
// Lays pieces one after the other on a channel; each name gets a material of its own, the same for
// the same name.
void layPieces(const EditPtr& edit, const IdStamp& channel, const std::vector<Piece>& pieces);
// The material that `layPieces` gives a name.
Cookie materialOf(const std::wstring& name);
// Gives the edit a timecode that starts at `start`.
void setStartTimecode(const EditPtr& edit, const std::string& start, bool dropFrame = false);

} // namespace cutroom::test
