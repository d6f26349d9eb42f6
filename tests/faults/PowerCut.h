#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

// Records what this program does to the files of one directory tree while it lives, and makes of it
// what a disk may hold when the power goes. It stands in for the system's own calls, so that it
// sees the engine, the copies and the renames alike. One at a time.
//
// A write is on the disk for certain once its file was synced after it, and a name once its
// directory was. Until then a write may be there, be missing or be torn, whatever became of those
// before it; changes of names keep their order.
class DiskRecording {
  public:
    // Fails a call that changes files, as on a full disk, once so many have been made: that one, or
    // all from there on. 0 for none. Returns how many were made since the last call of this.
    static int FailCall(int position, bool lasting);

    // What is in the directory so far counts as synced.
    explicit DiskRecording(const std::filesystem::path& directory);
    ~DiskRecording();
    DiskRecording(const DiskRecording&) = delete;
    DiskRecording& operator=(const DiskRecording&) = delete;

    // How the disk takes the copy of a whole file: shares its blocks, copies them by itself, or
    // leaves that to the program.
    enum class Copies { kShared, kByTheSystem, kByTheProgram };
    void SetCopies(Copies copies) { mCopies = copies; }

    // Notes that the program has told of a success.
    void Mark();
    void Stop();
    // How many calls and marks there were.
    size_t CountCalls() const { return mCalls.size(); }
    // Makes the target hold what a power cut after so many calls leaves, and returns how many marks
    // were among them. Fate 0 loses all that was not synced, fate 1 keeps it, and each other one
    // stands for an outcome between.
    size_t Replay(size_t calls, unsigned fate, const std::filesystem::path& target) const;

    // The system's calls, as they come in.
    void OnOpen(int descriptor, const std::string& path, bool truncate);
    void OnWrite(int descriptor, const void* bytes, size_t count, int64_t offset);
    void OnTruncate(int descriptor, int64_t size);
    void OnSync(int descriptor);
    void OnUnlink(const std::string& path);
    void OnMakeDirectory(const std::string& path);
    Copies GetCopies() const { return mCopies; }
    void OnRename(const std::string& from, const std::string& to);

  private:
    enum class Kind {
        kName,
        kUnlink,
        kRename,
        kMakeDirectory,
        kWrite,
        kTruncate,
        kSync,
        kSyncDirectory,
        kMark
    };
    struct Call {
        Kind What;
        // The file that is written; names are relative to the directory.
        int File = -1;
        std::string Name = {};
        std::string NewName = {};
        std::string Bytes = {};
        int64_t Offset = 0;
        bool ChangesNames() const { return What <= Kind::kMakeDirectory; }
        std::string Directory() const;
    };
    using Names = std::map<std::string, int>;

    bool IsInside(const std::string& path) const;
    std::string NameOf(const std::string& path) const;
    static void Rename(Names& names, const Call& call);
    enum class Outcome { kLost, kTorn, kWhole };
    std::vector<Outcome> Outcomes(size_t calls, unsigned fate) const;

    const std::filesystem::path mDirectory;
    Copies mCopies = Copies::kByTheProgram;
    // Those that were there from the start, by their names.
    std::set<std::string> mFirstDirectories = {""};
    std::vector<std::string> mFirstContents;
    Names mFirstNames;
    // As they are now.
    Names mNames;
    int mFileCount = 0;
    std::map<int, int> mDescriptors;
    std::map<int, std::string> mDirectories;
    std::vector<Call> mCalls;
};
