#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "media/MediaFolder.h"
#include "store/CardUuid.h"
#include "sync/ExchangeFolder.h"
#include "sync/MediaTables.h"
#include "sync/SyncState.h"

// The pictures and sounds of the cards, which travel as files of their own beside the changes. The
// part of an exchange that sends and takes them, within the same run and the same thread:
//
//     Remember       tells the folder what earlier exchanges have found there
//     MustGiveWay    looks whether two computers have different files of one name
//     GiveWay        renames this computer's file and the lines that name it
//     Run            sends and takes, and takes away what no card needs
//
// A name stands for one content on all computers. A file that somebody has changed tells which
// contents it takes the place of, so that the new one wins everywhere. Of two files that have
// nothing to do with each other, the one of the smaller machine keeps the name. The other gets one
// with the begin of its sum in it, on each computer that has it, and each computer changes the
// lines that it was the last to write: those mean the file that it had. The change travels like any
// other.

// A larger file stays where it is.
constexpr int64_t kMostMediaBytes = int64_t{100} << 20;

class MediaExchange {
  public:
    MediaExchange(SyncState& state, ExchangeFolder& folder, const wxString& storePath,
                  const std::atomic<bool>& isCancelled, std::function<void(const wxString&)> say);

    void Remember();

    // Returns true when a file that cards name has to get another name.
    bool MustGiveWay(uint64_t machine);
    // Does so within the transaction of the merge, before anything is collected, and adds the cards
    // that it has changed.
    void GiveWay(uint64_t machine, std::vector<CardUuid>& changed);
    // Returns true when GiveWay has changed the store.
    bool HasChangedCards() const { return mHasChangedCards; }

    // Sends and takes in the name of a machine. Needs the merge to be over. Returns true when cards
    // look otherwise than before. What fails is told and done by the next exchange.
    bool Run(const ExchangeHeader& own);

  private:
    // What becomes of a name.
    enum class Step { kNone, kSend, kTake, kGiveWay };
    struct Decision {
        Step What = Step::kNone;
        // What is taken, or what has the name now.
        const FoundFile* pWith = nullptr;
    };
    using Offers = std::vector<const FoundFile*>;

    bool IsUnconcerned();
    bool IsAsItWas();
    void ReadLocalFolder();
    bool Load(uint64_t machine);
    bool FindContent(const std::string& name, LocalMedia& file);
    Offers FindAlive(const std::string& name, const LocalMedia* pLocal);
    Decision Decide(const std::string& name, const LocalMedia* pLocal);
    void FindGivingWay();
    struct Hit;
    std::vector<Hit> FindOwnLines();
    bool IsOwnLine(const Hit& hit, const std::string& name);
    std::map<std::string, wxString> MakeWay(const std::vector<Hit>& hits);
    bool ReadUsed();
    std::string FindSums();
    void Handle(const std::string& name, const ExchangeHeader& own);
    void Send(const std::string& name, LocalMedia& file, const ExchangeHeader& own);
    void Take(const std::string& name, const FoundFile& file, const LocalMedia* pFormer);
    void DropGivenUp();
    void RemoveOwn();
    void SaveLocal();
    void Save();
    void Tell(const wxString& sentence);

    SyncState& mState;
    ExchangeFolder& mFolder;
    MediaFolder mMediaFolder;
    MediaTables mTables;
    const std::atomic<bool>& mIsCancelled;
    const std::function<void(const wxString&)> mSay;
    uint64_t mMachine = 0;

    bool mIsListed = false;
    // What is in the store's folder, in no order.
    std::vector<std::pair<std::string, struct stat>> mPresent;
    uint64_t mLocalSum = 0;
    LocalMediaFiles mLocal;
    std::set<std::string> mChanged;
    // The files of the exchange's folder by the names that they are for.
    std::map<std::string, Offers> mOffers;
    std::set<std::string> mUsed;
    // The store's counter of changes before mUsed was read.
    int64_t mUsedCounter = -1;
    // That of this computer's last file.
    int64_t mNumber = 0;
    // Files that have to give way, and that cards name.
    std::set<std::string> mGivingWay;
    bool mHasChangedCards = false;
    // Nothing more is written to a place that has failed.
    bool mCanSend = true;
    bool mCanTake = true;
    bool mHasTaken = false;
    // True when there was something to do or to tell, so that the next exchange looks again.
    bool mIsUnsettled = false;
    int mTold = 0;
};
