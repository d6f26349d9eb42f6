#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "sync/ExchangeFile.h"

// What tells one file of an exchange from all others.
struct ExchangeFileId {
    uint64_t Machine = 0;
    int64_t Number = 0;
    bool IsWhole = false;
    // A picture or a sound.
    bool IsMedia = false;
};
bool operator<(const ExchangeFileId& one, const ExchangeFileId& other);
bool operator==(const ExchangeFileId& one, const ExchangeFileId& other);
ExchangeFileId IdOf(const ExchangeHeader& header);
// Returns the name under which its machine writes it.
std::string ExchangeFileName(const ExchangeFileId& id);

// A file in the folder, under whatever name.
struct FoundFile : ExchangeSurvey {
    std::filesystem::path Path;
    int64_t Bytes = 0;
    // All of it was read, not only its header and its last line.
    bool IsChecked = false;
    // Another whole file of this machine, number and kind says something else: two machines have
    // one identity.
    bool IsDisputed = false;
};

// Returns a number that a file of another name or status hardly has.
uint64_t StatusSum(const std::string& name, const struct stat& status);

// What a look at a file has found out, as long as the file has this status.
struct KnownFile {
    struct stat Status {};
    FoundFile File;
};
using KnownFiles = std::map<std::string, KnownFile>;

// The folder that somebody else carries between the computers. Each machine puts files of its own
// there, which it never changes, and takes those away again. Names are not trusted, links not
// followed, sub-directories and hidden names not looked at. Belongs to one thread. A program that
// goes on keeps the object: it remembers what it read of whole files that have not changed since.
class ExchangeFolder {
  public:
    explicit ExchangeFolder(std::filesystem::path path) : mPath(std::move(path)) {}

    const std::filesystem::path& GetPath() const { return mPath; }

    // Lists what is there, by machine, number and kind, but for whole pictures and sounds, which
    // are not read beyond their ends unless all is wanted. What is no exchange file is left out,
    // and so is each further copy, a damaged one as well, of a file that is there whole. A file is
    // checked as a whole where isWanted is empty or returns true for its header; else its ends
    // alone, in a few microseconds. Returns 0, or the system's number and no file: what cannot be
    // listed to its end is not listed. ECANCELED when it was cancelled.
    int List(std::vector<FoundFile>& files,
             const std::function<bool(const ExchangeHeader&)>& isWanted = {},
             const std::atomic<bool>* cancelled = nullptr);

    // Brings along what an earlier program knew of the pictures and sounds, of which there may be
    // thousands. As long as the names and states of such files come to the same sum they are not
    // looked at before they are asked for, and the function is called for what is known of each.
    void RememberMedia(uint64_t sum, std::function<KnownFiles()> load);
    bool HasMedia() const { return !mLeft.empty() || !mMedia.empty() || mHasSpoiled; }
    // Returns the whole ones that List has found, in its order.
    const std::vector<FoundFile>& GetMedia();
    uint64_t GetMediaSum() const { return mMediaSum; }
    // Returns true when one is not whole, which has to be looked at again.
    bool HasSpoiledMedia() const { return mHasSpoiled; }
    // Returns what is known of all files. Notes that one is damaged between its ends.
    const KnownFiles& GetKnown() const { return mKnown; }
    void NoteDamaged(const FoundFile& file);

    // Put a machine's own file into the folder and make it last: the bytes of a whole file, or a
    // file with them, which stays. The same file may be there already; a cut or damaged one is
    // replaced. Return 0 or the system's number, with nothing changed in the folder: EEXIST when a
    // whole file of this machine, number and kind is there with other bytes.
    int Put(const ExchangeFileId& id, std::string_view bytes);
    int PutFrom(const ExchangeFileId& id, const std::filesystem::path& file);

    // The same for a picture or a sound, whose bytes are those of an open file, which is read once.
    // ESTALE when they are not those of the header. As there may be thousands, a name is certain to
    // last after a power cut only once the folder is synced.
    int PutMedia(const ExchangeHeader& header, int source, const std::atomic<bool>& isCancelled);

    // Takes files of one's own away, with the whole copies that a service made of them under other
    // names. What is gone already is no failure. Returns 0 or the first number of the system.
    int Remove(const std::vector<ExchangeFileId>& own);

  private:
    int Scan(std::vector<FoundFile>& files,
             const std::function<bool(const ExchangeHeader&)>& isWanted,
             const std::atomic<bool>* cancelled);
    int TakeUp(const std::string& name, const struct stat& status, std::vector<FoundFile>& files,
               const std::function<bool(const ExchangeHeader&)>& isWanted,
               const std::atomic<bool>* cancelled);
    int LookAtMedia(std::vector<FoundFile>& files,
                    const std::function<bool(const ExchangeHeader&)>& isWanted,
                    const std::atomic<bool>* cancelled);
    FoundFile Look(const std::string& name, const struct stat& status,
                   const std::function<bool(const ExchangeHeader&)>& isWanted,
                   const std::atomic<bool>* cancelled) const;
    int PutBy(const ExchangeFileId& id, const std::function<int(int)>& write);
    void Sort(std::vector<FoundFile>& files);

    std::filesystem::path mPath;
    KnownFiles mKnown;
    std::vector<FoundFile> mMedia;
    // Files that were not looked at yet, as their names and the sum tell what they are.
    std::map<std::string, struct stat> mLeft;
    uint64_t mMediaSum = 0;
    bool mHasSpoiled = false;
    uint64_t mRememberedSum = 0;
    std::function<KnownFiles()> mLoad;
};
