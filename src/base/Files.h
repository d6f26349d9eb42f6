#pragma once

#include <unistd.h>
#include <wx/string.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

// What the program needs of any file: names, reasons, copies.

// Returns a path as the system has it, in UTF-8, and the way back.
std::filesystem::path ToPath(const wxString& path);
wxString FromPath(const std::filesystem::path& path);

// Returns what an error's number of the system means, for the user. 0 has no reason to give. The
// numbers that the program gives a sense of its own, such as EILSEQ for what is no whole store,
// have texts of their own.
wxString SystemErrorText(int error);

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

// Copies the rest of one open file to another, from their present positions, durably. Returns 0 or
// the error's number.
int CopyBytes(int source, int target);

// Copies all bytes from one open file to another, empty one, in the quickest way that the file
// systems offer, durably. Returns 0 or the error's number.
int CopyWholeFile(int source, int target);

// Copies so many bytes from the beginning of one open file to another, which is empty, and makes
// them last. Returns 0 or the error's number; EIO where the first file is shorter.
int CopyFirstBytes(int source, int target, int64_t bytes);

// Copies the bytes of an open file from one place up to another to the present place in another
// file, in the quickest way that the file systems offer, and does not wait for the disk. Returns 0
// or the error's number; EIO where the first file is shorter.
int CopyPart(int source, int64_t begin, int64_t end, int target);

// Writes all bytes at the present place in an open file. Returns 0 or the error's number.
int WriteAll(int target, std::string_view bytes);

// Compares two open files from their first byte, the second as the disk has it. Returns 0 when they
// are equal, EIO when they differ, or another error's number.
int CompareBytes(int source, int target);

// Returns true when a file begins with these bytes; false for one that is shorter or cannot be
// read.
bool FileBeginsWith(const std::filesystem::path& file, std::string_view mark);

// Copies a plain file to a path where nothing is, and makes it last. Returns 0 or the error's
// number; a part may be left at the path.
int CopyToNewFile(const std::filesystem::path& from, const std::filesystem::path& to);

// Returns the system's directory for temporary files.
std::filesystem::path TemporaryPlace();

// A new directory for what is not finished or is needed for a moment only. It goes with the object,
// with all that is in it.
class TemporaryDirectory {
  public:
    // The name is the stem and some letters that are free. The stem tells where the directory lies.
    explicit TemporaryDirectory(const std::filesystem::path& stem = TemporaryPlace() / "velomind");
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    // Returns 0, or why there is no directory as the system's number.
    int GetError() const { return mError; }
    // Returns the path of a file in it.
    wxString Path(const wxString& name) const;

  private:
    std::string mPath;
    int mError = 0;
};
