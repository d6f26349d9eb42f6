#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

// Owns a file descriptor and closes it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : mDescriptor(descriptor) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept
        : mDescriptor(std::exchange(other.mDescriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(mDescriptor, other.mDescriptor);
        return *this;
    }

    bool IsOpen() const { return mDescriptor >= 0; }
    int Get() const { return mDescriptor; }
    void Close() {
        if (IsOpen()) {
            ::close(std::exchange(mDescriptor, -1));
        }
    }

  private:
    int mDescriptor = -1;
};

// Writes the file's directory to the disk, so that a file created, renamed or removed there stays
// so after a power cut. A file system that cannot do this is no reason to fail.
inline void SyncDirectory(const std::filesystem::path& file) {
    const FileDescriptor directory(
        ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.IsOpen()) {
        ::fsync(directory.Get());
    }
}
