#pragma once

#include <unistd.h>

#include <filesystem>
#include <string_view>
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
void SyncDirectory(const std::filesystem::path& file);

// Copies what is left of one open file to another, where both stand now, and makes it last. Returns
// 0 or the error's number.
int CopyBytes(int source, int target);

// Copies all bytes from one open file to another, which is empty, in the quickest way that the file
// systems offer, and makes them last. Returns 0 or the error's number.
int CopyWholeFile(int source, int target);

// Compares two open files from their first byte, the second as the disk has it. Returns 0 when they
// are equal, EIO when they differ, or another error's number.
int CompareBytes(int source, int target);

// Returns true when a file begins with these bytes; false for one that is shorter or cannot be
// read.
bool FileBeginsWith(const std::filesystem::path& file, std::string_view mark);
