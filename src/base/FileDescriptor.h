#pragma once

#include <unistd.h>

#include <utility>

// Owns a file descriptor of the system and closes it.
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
