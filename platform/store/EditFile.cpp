#include "platform/store/EditFile.h"

#include "platform/files/CheckedFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/EditCodec.h"
#include "platform/store/HistorySteps.h"

#include <algorithm>
#include <set>

namespace cutroom {

namespace {

constexpr char kHistoryKind[] = "edit-undo";
constexpr unsigned kHistoryVersion = 2; // 1 has no "SAME"
// The most segments that the lists of one file have together (700 megabytes in memory), and those
// that a history is written with.
constexpr std::size_t kMaxSegments = 5'000'000;
constexpr std::size_t kMaxHistorySegments = 4'000'000;

std::string identity(const Cookie& cookie, std::uint64_t historyId, std::size_t position) {
    ByteWriter out;
    out.text(cookie.asString());
    out.u64(historyId);
    out.varint(position);
    return out.take();
}

// The sections before the states: whose file it is, and the storages of the lists.
struct Preface {
    bool known = false;
    std::uint64_t historyId = 0;
    std::uint64_t position = 0;
    CelChunks chunks;
    std::size_t segments = 0; // of all chunks

    // Takes a section of the preface; sets `mine` to false, and gives true, for any other. False
    // when the section is damaged.
    bool take(const Section& section, DecodeTrouble& trouble, bool& mine) {
        ByteReader in(section.bytes);
        mine = true;
        if (section.tag == "ID  ") {
            if (!Cookie::fromString(in.text()))
                in.fail();
            historyId = in.u64();
            position = in.varint();
            known = true;
            return trouble.finished(in, section.bytes, "the file's identity");
        }
        if (section.tag == "CELS" || section.tag == "DIFF") {
            auto storage = section.tag == "CELS" ? decodeStorage(in) : decodeDifference(in, chunks);
            segments += storage ? storage->segments() : 0;
            if (segments > kMaxSegments)
                in.fail();
            if (storage)
                chunks.emplace_back(std::move(*storage));
            return trouble.finished(in, section.bytes, "a cut event list");
        }
        mine = false;
        return true;
    }
};

std::string assemble(std::string_view kind, unsigned version, std::string_view identityBytes,
                     const CelChunkWriter& chunks, std::string_view rest) {
    SectionWriter out;
    out.add("ID  ", identityBytes);
    for (const CelChunkWriter::Chunk& chunk : chunks.chunks())
        out.add(chunk.tag, chunk.bytes);
    return CheckedFile::wrap(kind, version, out.take().append(rest));
}

// Walks the sections of a payload. `other` takes those that are not of the preface.
template <class Other>
bool walk(std::string_view payload, Preface& preface, DecodeTrouble& trouble, const Other& other) {
    SectionReader sections(payload);
    Section section;
    while (sections.next(section)) {
        bool mine = false;
        if (!preface.take(section, trouble, mine) || (!mine && !other(section)))
            return false;
    }
    if (!sections.ok())
        return trouble.at(payload.data() + sections.position(), "a section is cut off");
    return preface.known ||
           trouble.at(payload.data() + payload.size(), "the file's identity is missing");
}

} // namespace

namespace {

// Counts the segments of lists. A storage that several lists share is counted once.
class SegmentCount {
public:
    void add(const EditState& state) {
        for (const EditChannel& channel : state.channels) {
            const Shared<CelStorage>& storage = CelAccess::storage(*channel.cel);
            if (known_.insert(storage.identity()).second)
                count_ += storage->segments();
        }
    }
    std::size_t get() const noexcept { return count_; }

private:
    std::set<const void*> known_;
    std::size_t count_ = 0;
};

// The first step to be stored. When all steps together are too large, the oldest are left out.
std::size_t firstStored(const EditHistory& history) {
    SegmentCount segments;
    for (std::size_t step = history.steps.size(); step > 0; --step) {
        segments.add(history.steps[step - 1].state);
        if (segments.get() > kMaxHistorySegments)
            return step;
    }
    return 0;
}

} // namespace

Result<std::string> EditFile::encode(const Cookie& cookie, std::uint64_t historyId,
                                     const EditState& state) {
    SegmentCount segments;
    segments.add(state);
    if (segments.get() > kMaxSegments)
        return Status(StatusCode::failed, name(cookie),
                      format("has %zu segments, more than a file may hold", segments.get()));
    CelChunkWriter chunks;
    SectionWriter sections;
    encodeState(sections, state, chunks);
    return assemble(kEditKind, kEditVersion, identity(cookie, historyId, 0), chunks,
                    sections.take());
}

std::string EditFile::encodeHistory(const Cookie& cookie, std::uint64_t historyId,
                                    const EditHistory& history) {
    const std::size_t count = history.steps.size();
    std::size_t first = std::min(firstStored(history), history.position);
    while (true) {
        StepWriter writer;
        std::size_t end = first;
        while (end < count && writer.add(history.steps[end]))
            ++end;
        if (end == count || first == history.position) // then the last that could be redone go
            return assemble(kHistoryKind, kHistoryVersion,
                            identity(cookie, historyId, history.position - first), writer.chunks(),
                            writer.take());
        // About so many fit: the newest ones.
        first = std::min(history.position, std::max(first + 1, count - (end - first)));
    }
}

Result<EditFile::Content> EditFile::decode(std::string_view bytes, const std::string& file) {
    const auto view = CheckedFile::open(bytes, kEditKind, kEditVersion, file);
    if (!view)
        return view.status();
    DecodeTrouble trouble(file, bytes.data());
    Preface preface;
    StateReader reader(preface.chunks, trouble);
    if (!walk(view->payload, preface, trouble,
              [&](const Section& section) { return reader.take(section); }))
        return trouble.status();
    auto state = reader.finish(view->payload.data() + view->payload.size());
    if (!state)
        return trouble.status();
    return Content{std::move(*state), preface.historyId};
}

Result<EditHistory> EditFile::decodeHistory(std::string_view bytes, const std::string& file,
                                            std::uint64_t historyId) {
    const auto view = CheckedFile::open(bytes, kHistoryKind, kHistoryVersion, file);
    if (!view)
        return view.status();
    DecodeTrouble trouble(file, bytes.data());
    Preface preface;
    EditHistory history;
    StepReader steps(preface.chunks, trouble, history);
    const bool whole = walk(view->payload, preface, trouble, [&](const Section& section) {
        return section.tag != "HIST" || steps.take(section.bytes);
    });
    if (!whole)
        return trouble.status();
    if (preface.position > history.steps.size()) {
        trouble.at(view->payload.data(), "the position lies past the last step");
        return trouble.status();
    }
    if (preface.historyId != historyId)
        return EditHistory();
    history.position = static_cast<std::size_t>(preface.position);
    history.fileId = historyId;
    return history;
}

std::string EditFile::path(const Cookie& cookie) { return toUtf8(getFilenameForCookie(cookie)); }

std::string EditFile::historyPath(const Cookie& cookie) {
    const std::string edit = path(cookie);
    const std::size_t extension = edit.size() - std::min(edit.size(), sizeof(kEditExtension) - 1);
    return edit.empty() ? edit : edit.substr(0, extension) + "undo";
}

std::string EditFile::name(const Cookie& cookie) {
    return "edits/" + cookie.asString(false) + "." + kEditExtension;
}

std::string EditFile::historyName(const Cookie& cookie) {
    return "edits/" + cookie.asString(false) + ".undo";
}

} // namespace cutroom
