#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sync/ExchangeFolder.h"
#include "sync/SyncState.h"
#include "sync/SyncedCard.h"

// What the file beside the store keeps of pictures and sounds, in tables that come into being with
// the first of them:
//
//     Media        the files of the store's folder: their status and what they were then
//     MediaSeen    the files of the exchange's folder, likewise
//     MediaUsed    the names that the cards have
//
// A status that is as it was spares reading the file.

// A file of the store's folder.
struct LocalMedia {
    struct stat Status {};
    // False for a file that was written to since the content was found out.
    bool IsRead = false;
    // The SHA-256 of the bytes; empty until the file was read once.
    std::string Content;
    int64_t Edition = 1;
    // Contents that it had before, the last one first.
    std::vector<std::string> Before;
    enum State : int {
        // It came into being here, or was changed here.
        kOwn,
        // Another computer has sent this content.
        kTaken,
        // It has got another name, and goes under this one.
        kGivenUp
    };
    State What = kOwn;
    // The machine that has sent the content; 0 for this one.
    uint64_t Origin = 0;
    // That of this computer's last file with it.
    int64_t Number = 0;
};
using LocalMediaFiles = std::map<std::string, LocalMedia>;

// Returns true for one file that nobody has written to in between.
bool IsSameStatus(const struct stat& one, const struct stat& other);

class MediaTables {
  public:
    explicit MediaTables(SyncState& state) : mState(state) {}

    // The names by which the two folders were known when there was nothing left to do, and the
    // store's counter of changes when its cards were last looked through; -1 for never.
    std::string GetSums() { return mState.GetFact("media-sums"); }
    void SetSums(const std::string& sums);
    int64_t GetCounter() { return mState.GetNumber("media-counter", -1); }

    // Makes the tables where there are none.
    bool Make();
    bool AreThere();

    LocalMediaFiles ReadLocal();
    void SaveLocal(const std::string& name, const LocalMedia& file);
    void DropLocal(const std::string& name);
    KnownFiles ReadSeen();
    // Writes what has changed since ReadSeen.
    void SaveSeen(const KnownFiles& files);
    std::set<std::string> ReadUsed();
    void SaveUsed(const std::set<std::string>& names, int64_t counter);

  private:
    SyncState& mState;
    KnownFiles mSeen;
    std::set<std::string> mUsed;
};

// Is given a text of a card that may name files.
using MediaTextVisit =
    std::function<void(const std::string& cardId, CardField field, std::u16string_view text)>;

// Looks through the texts of the store, a few thousand cards at a time, so that study does not wait
// for it. Returns false on failure, or when it was cancelled.
bool VisitMediaTexts(SyncState& state, const MediaTextVisit& visit,
                     const std::atomic<bool>& isCancelled);
// Gives a field of a card another text.
void WriteText(SyncState& state, const std::string& cardId, CardField field,
               const std::string& text);
