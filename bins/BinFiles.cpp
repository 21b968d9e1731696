// A bin and its file.
#include "bins/BinData.h"
#include "bins/BinFile.h"
#include "bins/BinIndex.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"

#include <utility>

using cutroom::BinFile;
using cutroom::BinFileWriter;
using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

LightweightString<wchar_t> fileNameOf(const Cookie& bin) {
    return getFileNameForLogGroup(bin, nullptr, Cookie());
}

} // namespace

LightweightString<wchar_t> BinData::getLocation() const { return fileNameOf(getID()); }

Status BinData::load() { return load(fileNameOf(getID())); }

Status BinData::load(const Cookie& id) { return load(fileNameOf(id)); }

Status BinData::load(const LightweightString<wchar_t>& fileName) {
    Result<BinFile> file = BinFile::read(fileName);
    const Change change(*this);
    const CriticalSection::Lock whole(writing_);
    const bool own = !fileName.empty() && fileName == fileNameOf(getID());
    if (own) {
        fileState_ = FileState::unknown;
        fileOf_ = getID();
    }
    contents_.valid = file.ok();
    if (file) {
        setStoredNames(std::move(file->name), std::move(file->externalId));
        setCreationTime(file->created);
        setModificationTime(file->modified);
        std::swap(contents_, file->contents);
        index_->drop();
        if (own)
            fileState_ = file->holdsUnknown ? FileState::withUnknown : FileState::plain;
    }
    setDirty(false);
    return file ? Status() : file.status();
}

// Writes the file of `file`, or with `image` only says what is to be written.
Status BinData::write(const Cookie& file, FileImage* image) const {
    const SharedLock::Read lock(lock_);
    const CriticalSection::Lock whole(writing_);
    const std::string path = cutroom::toUtf8(fileNameOf(file));
    if (path.empty())
        return {StatusCode::notFound, file.asString(), "there is no such bin in an open project"};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, path, "the project is open for reading only"};
    const bool own = file == getID();
    BinFileWriter writer;
    if (file != fileOf_ || fileState_ != FileState::plain)
        if (Status ready = writer.replace(path); !ready)
            return ready;
    writer.fill(cutroom::toUtf8(getName()), cutroom::toUtf8(getExternalID()), getCreationTime(),
                getModificationTime(), contents_);
    if (image) {
        Result<std::string> bytes = writer.bytes(path);
        if (!bytes)
            return bytes.status();
        *image = {path, std::move(*bytes)};
    } else if (Status saved = writer.save(path); !saved)
        return saved;
    if (own) {
        fileState_ = writer.keepsUnknown() ? FileState::withUnknown : FileState::plain;
        fileOf_ = file;
    }
    return {};
}

// A change that waits for the lock makes the bin dirty again.
Status BinData::save() {
    const SharedLock::Read lock(lock_);
    const Status saved = write(getID(), nullptr);
    if (saved)
        setDirty(false);
    return saved;
}

Status BinData::save(const Cookie& id) { return id == getID() ? save() : write(id, nullptr); }

Result<BinData::FileImage> BinData::takeForSaving() {
    const SharedLock::Read lock(lock_);
    FileImage image;
    if (Status taken = write(getID(), &image); !taken)
        return taken;
    setDirty(false);
    return image;
}
