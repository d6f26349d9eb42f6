#include "formats/MediaSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/filename.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Unicode.h"

namespace {

// Somebody is asked beyond these.
constexpr int64_t kMostFiles = 100000;
constexpr int64_t kMostBytes = int64_t{4} << 30;

wxString SizeText(int64_t bytes) {
    return wxFileName::GetHumanReadableSize(static_cast<unsigned long long>(bytes), wxString(), 0);
}

}  // namespace

wxString MediaSource::NameOf(MediaKind kind, const wxString& source) {
    const auto known = mFiles.find(source);
    if (known != mFiles.end()) {
        return known->second.Name;
    }
    File& file = mFiles[source];
    const wxString safe = MakeSafeMediaName(source);
    const bool isShown = kind == MediaKind::kPicture ? HasPictureName(safe) : HasSoundName(safe);
    const int64_t size = isShown ? Find(source) : -1;
    if (size >= 0 && size <= kLargestMediaFile) {
        file.Name = safe;
        mWanted.insert(source);
        mBytes += size;
    } else if (mMissing == Missing::kKept && isShown && size < 0 && IsSafeMediaName(source)) {
        file.Name = source;
    }
    return file.Name;
}

wxString MediaSource::FindPassedBound() const {
    if (mMayBeMany) {
        return wxString();
    }
    if (CountFiles() > kMostFiles) {
        return wxString::Format(_("More than %lld pictures and sounds come along."),
                                static_cast<long long>(kMostFiles));
    }
    return mBytes > kMostBytes
               ? wxString::Format(_("The pictures and sounds that come along take more than %s."),
                                  SizeText(kMostBytes))
               : wxString();
}

int MediaSource::CountMissing(const MediaFolder& folder) const {
    return static_cast<int>(std::count_if(mFiles.begin(), mFiles.end(), [&](const auto& known) {
        return !known.second.IsBrought && !known.second.Name.empty() &&
               !folder.Open(known.second.Name).IsOpen();
    }));
}

bool MediaSource::Bring(const MediaFolder& folder, const std::atomic<bool>& isCancelled,
                        std::atomic<float>& progress, wxString& message) {
    if (mWanted.empty()) {
        return true;
    }
    message = FindPassedBound();
    if (!message.empty()) {
        return false;
    }
    std::error_code error;
    const auto room = std::filesystem::space(folder.GetPath().parent_path(), error);
    if (!error && room.available < static_cast<uintmax_t>(mBytes)) {
        message = wxString::Format(_("The pictures and sounds take %s, for which the disk has no "
                                     "room."),
                                   SizeText(mBytes));
        return false;
    }
    Sink sink(*this, folder, isCancelled, progress);
    ReadAll(mWanted, sink);
    SyncMedia(folder);
    if (sink.GetError() != 0) {
        message = wxString::Format(_("The pictures and sounds could not be written (%s)."),
                                   SystemErrorText(sink.GetError()));
    }
    return sink.GoesOn();
}

bool MediaSource::Sink::Begin(const wxString& source) {
    mFile.reset();
    const auto known = mSource.mFiles.find(source);
    if (!GoesOn() || known == mSource.mFiles.end() || known->second.Name.empty() ||
        known->second.IsBrought) {
        return false;
    }
    mName = source;
    mFileBytes = 0;
    mFile = std::make_unique<NewMediaFile>(mFolder);
    mError = mFile->GetError();
    return GoesOn();
}

bool MediaSource::Sink::Write(const char* bytes, size_t count) {
    mFileBytes += static_cast<int64_t>(count);
    mBytes += static_cast<int64_t>(count);
    // The sizes that a package tells of its members may be wrong.
    const bool isTooMuch = !mSource.mMayBeMany && mBytes > kMostBytes;
    if (!GoesOn() || mFile == nullptr || mFileBytes > kLargestMediaFile) {
        mFile.reset();
        return false;
    }
    mError = isTooMuch ? EFBIG : mFile->Write(bytes, count);
    mProgress = std::min(
        static_cast<float>(mBytes) / static_cast<float>(std::max<int64_t>(mSource.mBytes, 1)),
        1.0f);
    return GoesOn();
}

void MediaSource::Sink::End() {
    if (mFile != nullptr && GoesOn()) {
        File& file = mSource.mFiles[mName];
        wxString name;
        mError = mFile->Keep(file.Name, NewMediaFile::Durability::kLater, name);
        if (mError == 0) {
            file.Name = name;
            file.IsBrought = true;
        }
    }
    mFile.reset();
}

namespace {

// Opens a plain file below a directory.
FileDescriptor OpenBelow(const std::filesystem::path& directory, const wxString& source) {
    FileDescriptor folder(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string rest = ToUtf8(source);
    std::replace(rest.begin(), rest.end(), '\\', '/');
    while (folder.IsOpen()) {
        const size_t slash = rest.find('/');
        const std::string part = rest.substr(0, slash);
        if (part.empty() || part == ".." || part.find('\0') != std::string::npos) {
            return FileDescriptor();
        }
        const int kind = slash == std::string::npos ? O_NONBLOCK : O_DIRECTORY;
        FileDescriptor next(
            ::openat(folder.Get(), part.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | kind));
        if (slash == std::string::npos) {
            struct stat status {};
            const bool isPlain =
                next.IsOpen() && ::fstat(next.Get(), &status) == 0 && S_ISREG(status.st_mode);
            return isPlain ? std::move(next) : FileDescriptor();
        }
        rest.erase(0, slash + 1);
        folder = std::move(next);
    }
    return FileDescriptor();
}

}  // namespace

DirectoryMedia::DirectoryMedia(std::filesystem::path directory, Missing missing)
    : MediaSource(missing), mDirectories{std::move(directory)} {
    std::error_code error;
    std::filesystem::directory_iterator entry(mDirectories.front(), error);
    for (; missing == Missing::kKept && !error && entry != std::filesystem::directory_iterator();
         entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        std::error_code unknown;
        if (path.extension() == kMediaSuffix &&
            entry->symlink_status(unknown).type() == std::filesystem::file_type::directory &&
            !std::filesystem::exists(path.parent_path() / path.stem(), unknown)) {
            mDirectories.push_back(path);
        }
    }
    std::sort(mDirectories.begin() + 1, mDirectories.end());
}

FileDescriptor DirectoryMedia::Open(const wxString& source) const {
    for (const std::filesystem::path& directory : mDirectories) {
        FileDescriptor file = OpenBelow(directory, source);
        if (file.IsOpen()) {
            return file;
        }
    }
    return FileDescriptor();
}

int64_t DirectoryMedia::Find(const wxString& source) {
    const FileDescriptor file = Open(source);
    struct stat status {};
    return file.IsOpen() && ::fstat(file.Get(), &status) == 0 ? int64_t{status.st_size} : -1;
}

void DirectoryMedia::ReadAll(const std::set<wxString>& wanted, Sink& sink) {
    std::vector<char> block(size_t{1} << 16);
    for (const wxString& source : wanted) {
        const FileDescriptor file = Open(source);
        if (!file.IsOpen() || !sink.Begin(source)) {
            continue;
        }
        ssize_t count = 0;
        while ((count = ::read(file.Get(), block.data(), block.size())) > 0) {
            if (!sink.Write(block.data(), static_cast<size_t>(count))) {
                break;
            }
        }
        if (count == 0) {
            sink.End();
        } else {
            sink.Drop();
        }
    }
}
