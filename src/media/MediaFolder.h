#pragma once

#include <sys/stat.h>
#include <wx/string.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "base/Files.h"

class Database;

// The folder with the pictures and sounds of a store, "NAME.vlm.media" beside "NAME.vlm". It is
// flat, and no link in its place or in it is followed: a store may come from somebody else. The
// program changes no file in it, because several cards may name it: another one of its name gets
// another name. What somebody has changed with another program is exchanged as a change.
//
// Files that no card names any more wait for a month in the folder "unused" in it, in case that a
// backup which names them is restored. They come back as soon as they are asked for.

constexpr char kMediaSuffix[] = ".media";
constexpr int kUnusedDays = 30;
// A larger file is not taken.
constexpr int64_t kLargestMediaFile = int64_t{64} << 20;

struct MediaFile {
    wxString Name;
    int64_t Size = 0;
};

// Which files there are, and which the cards name.
struct MediaListing {
    std::vector<MediaFile> Used;
    std::vector<MediaFile> Unused;
    // Names that cards have and no file.
    std::vector<wxString> Missing;
};

// Main thread, or any one thread at a time. Copies are cheap.
class MediaFolder {
  public:
    // An empty path is a store without files.
    explicit MediaFolder(const wxString& storePath);

    const std::filesystem::path& GetPath() const { return mPath; }

    // Opens a file to read. Only a plain file in the folder itself counts. The descriptor is not
    // open when there is none; errno tells why.
    FileDescriptor Open(const wxString& name) const;

    // Calls the function for each plain file in the folder itself, whatever its name. Returns 0 or
    // the error's number, ENOENT without a folder.
    int Visit(
        const std::function<void(const std::string& name, const struct stat& status)>& visit) const;

    // Takes a file out of the folder for good, as another one has its bytes. Returns 0 or the
    // error's number.
    int Remove(const wxString& name) const;

    // Copies a file into the folder, which is made when it is missing. Gives the name that it has
    // there: that of a file with the same bytes, or else the nearest free one. Returns 0 or the
    // error's number.
    int Add(const std::filesystem::path& file, const wxString& wantedName, wxString& name) const;
    int AddBytes(const std::string& bytes, const wxString& wantedName, wxString& name) const;

    // Compares the folder with the names that cards have. Returns 0 or the error's number; a folder
    // that does not exist is empty.
    int List(const std::set<wxString>& used, MediaListing& listing) const;

    // Moves files to "unused". Returns 0 or the first error's number.
    int SetAside(const std::vector<MediaFile>& files, int64_t now) const;
    // Brings back what waits in "unused" under these names, and deletes what has waited there for
    // too long.
    void BringBack(const std::set<wxString>& used, int64_t now) const;

  private:
    friend class NewMediaFile;

    FileDescriptor OpenFolder() const;
    int Make() const;

    std::filesystem::path mPath;
};

// A file that is written piece by piece and then gets its name in the folder. It goes with the
// object unless it was kept.
class NewMediaFile {
  public:
    explicit NewMediaFile(const MediaFolder& folder);
    ~NewMediaFile();
    NewMediaFile(const NewMediaFile&) = delete;
    NewMediaFile& operator=(const NewMediaFile&) = delete;

    // Returns 0, or the error's number; later calls return it too.
    int GetError() const { return mError; }
    int Write(const char* bytes, size_t count);
    // Gives the file its name, as MediaFolder::Add does. Nothing is certain to be on the disk after
    // a power cut until Sync or a Keep that syncs.
    enum class Durability { kNow, kLater };
    int Keep(const wxString& wantedName, Durability durability, wxString& name);
    // Gives the file, whose bytes are on the disk then, this safe name and no other. EEXIST where
    // something has it, but for a file of the status in former, which is replaced: it was changed
    // on another computer. Fills in the status of the new file. The name itself may be lost in a
    // power cut until the folder is synced.
    int KeepAs(const wxString& name, const struct stat* former, struct stat& status);

  private:
    bool IsSameAs(int folder, const std::string& name) const;

    const MediaFolder& mFolder;
    FileDescriptor mDirectory;
    FileDescriptor mFile;
    std::string mTemporaryName;
    bool mIsNamed = false;
    int mError = 0;
};

// Writes all that was kept for later to the disk.
void SyncMedia(const MediaFolder& folder);

// Finds the names of all files that a card of the store names. Returns 0, or a negative value when
// the cards cannot be read; then the names are not all, and no file counts as unused.
int FindUsedMedia(Database& database, std::set<wxString>& names);

// Returns a sentence for who has made a backup of a store whose cards have files, which no backup
// holds; an empty text for other stores.
wxString HintOfMedia(Database& database);

// Moves the folder of a store that has moved; copies it where it cannot be renamed. Returns 0 or
// the error's number, and then the folder is where it was. A folder at the target has belonged to a
// store that is gone or replaced: what is in it goes to "unused".
int MoveMediaFolder(const std::filesystem::path& fromStore, const std::filesystem::path& toStore);

// The files of one store for another one, which is about to be made of it. They are copied at once,
// under another name beside the store, and go with the object unless they were kept. Nothing is
// copied where the first store has none, or where both are one.
class MediaFolderCopy {
  public:
    MediaFolderCopy(std::filesystem::path fromStore, std::filesystem::path toStore);
    ~MediaFolderCopy();
    MediaFolderCopy(const MediaFolderCopy&) = delete;
    MediaFolderCopy& operator=(const MediaFolderCopy&) = delete;

    // Returns 0 or the error's number.
    int GetError() const { return mError; }
    // Puts the folder into its place. What is in one that is there goes to "unused". Returns 0 or
    // the error's number.
    int Keep();

  private:
    const std::filesystem::path mTarget;
    std::filesystem::path mCopy;
    int mError = 0;
};
