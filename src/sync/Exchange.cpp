// One exchange, from the look at the folder to the last file in it.
//
//     Prepare         opens the store and the file beside it, and sees who this computer is
//     List            what is in the folder, and which of it comes next (ExchangePlan)
//     Merge           collects, takes in and settles, in one transaction (CardMerge)
//     FinishLog       puts the reviews from elsewhere into the log
//     SendAll         writes what the folder lacks, and takes away what all have taken
//                     (pictures and sounds: MediaExchange)
//
// Whatever ends the program in between, the next exchange goes on: before the transaction nothing
// has happened, and after it all that is to be sent lies in the outbox and all reviews in Pending.

#include "sync/Exchange.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/intl.h>
#include <wx/thread.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>
#include <system_error>
#include <thread>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "base/Files.h"
#include "base/Process.h"
#include "base/Unicode.h"
#include "files/ExchangeFiles.h"
#include "files/StoreFiles.h"
#include "reviews/EditNotes.h"
#include "reviews/ReviewLog.h"
#include "reviews/ScheduleEvents.h"
#include "store/Database.h"
#include "sync/CardMerge.h"
#include "sync/CardUnions.h"
#include "sync/ExchangeFolder.h"
#include "sync/ExchangePlan.h"
#include "sync/MediaExchange.h"
#include "sync/Outgoing.h"
#include "sync/StoreScan.h"
#include "sync/WholeCopy.h"

namespace {

namespace fs = std::filesystem;

constexpr int64_t kYear = int64_t{365} * 86400 * 1000;
constexpr int64_t kHour = int64_t{3600} * 1000;
constexpr int64_t kManyRecords = 500;
// A file that is read, for as long as a kill leaves it.
constexpr char kFetchedSuffix[] = ".exchange-in";
// The least number of cards, and their share of all, about which an exchange asks.
constexpr int64_t kLeastLost = 20;
constexpr int64_t kLostShare = 10;
// How often an exchange begins again because a score is just being given.
constexpr int kMostTries = 5;
constexpr std::chrono::milliseconds kPause{100};

// What tells an event from all others.
using EventName = std::tuple<uint64_t, int64_t, bool>;
EventName NameOf(const ScheduleEvent& event) {
    return {event.Session, event.Number, event.IsSet};
}
struct EventNameHash {
    size_t operator()(const EventName& name) const {
        // The numbers of a session follow each other.
        return std::get<0>(name) + static_cast<uint64_t>(std::get<1>(name)) * 2 + std::get<2>(name);
    }
};

uint64_t RandomIdentity() {
    std::random_device source;
    uint64_t identity = 0;
    while (identity == 0) {
        identity = uint64_t{source()} << 32 | source();
    }
    return identity;
}

// Returns a text that no other computer and no other place of the store has. A folder that is
// reached by a link is the same place.
std::string PlaceOf(const wxString& storePath) {
    std::string computer;
    const FileDescriptor file(::open("/etc/machine-id", O_RDONLY | O_CLOEXEC));
    char buffer[64];
    const ssize_t count = file.IsOpen() ? ::read(file.Get(), buffer, sizeof buffer) : 0;
    computer.assign(buffer, static_cast<size_t>(std::max<ssize_t>(count, 0)));
    const fs::path store = ToPath(storePath);
    std::error_code error;
    const fs::path folder = fs::canonical(store.parent_path(), error);
    return computer + " " + (error ? store : folder / store.filename()).string();
}

class ExchangeRun {
  public:
    explicit ExchangeRun(const ExchangeOptions& options)
        : mOptions(options),
          mIsCancelled(options.IsCancelled == nullptr ? mNever : *options.IsCancelled),
          mFolder(ToPath(options.Folder)),
          mLogPath(ReviewLogPath(options.StorePath)),
          mMedia(mState, mFolder, options.StorePath, mIsCancelled,
                 [this](const wxString& sentence) { Say(sentence); }) {}

    ExchangeReport Run();

  private:
    int64_t Now() const { return mOptions.Time->Now().GetValue().GetValue(); }
    bool Lock();
    bool HasFolder();
    bool List();
    bool MakeStore();
    bool Prepare();
    void FindIdentity();
    void TakeNewIdentity();
    bool HasGoneBack();
    void TakeBackLosses();
    bool HasOwnChanges();
    void NoteMachines();
    enum class Outcome { kDone, kAgain, kStopped };
    Outcome FetchPlanned();
    Outcome Merge(bool hasOwnChanges);
    Outcome Ask(ExchangeQuestion question, int64_t count);
    int64_t LatestNews() const;
    bool ReadPlanned(CardMerge& merge);
    bool CompleteLog();
    bool NeedsBackup();
    void NoteTaken();
    void NoteReport(const CardMerge& merge, int64_t sent);
    void SendLookedAt(Outgoing& out);
    using EventNames = std::unordered_set<EventName, EventNameHash>;
    EventNames FindMissing(const std::vector<std::pair<int64_t, ScheduleEvent>>& events);
    bool MergePending(const std::map<CardUuid, CardUuid>& unions);
    void FinishLog();
    void NoteCounter();
    void SendAll();
    bool PutMissing();
    void PutWholeCopy();
    void RemoveTaken();
    ExchangeMachine* FindMachine(uint64_t id);
    ExchangeMachine& MachineOf(uint64_t id);
    int64_t TakenOf(uint64_t id);
    std::map<uint64_t, int64_t> Taken();
    void Say(const wxString& sentence);
    void Fail(ExchangeEnd end, const wxString& sentence);
    void FailStore();

    const ExchangeOptions& mOptions;
    const std::atomic<bool> mNever{false};
    const std::atomic<bool>& mIsCancelled;
    ExchangeReport mReport;
    FileDescriptor mLock;
    ExchangeFolder mFolder;
    std::vector<FoundFile> mFiles;
    const wxString mLogPath;
    SyncState mState;
    MediaExchange mMedia;
    uint64_t mMachine = 0;
    int64_t mNumber = 0;
    // That of the file that this exchange has made; 0 for none.
    int64_t mSent = 0;
    bool mIsJoining = false;
    std::vector<ExchangeMachine> mMachines;
    ExchangePlan mPlan;
    // The planned files, copied to this computer.
    std::vector<FileDescriptor> mFetched;
    // Files that turned out to be damaged when they were read.
    std::set<fs::path> mBroken;
    // The store's counter of changes before it was looked through.
    int64_t mCounter = -1;
    std::vector<EditNote> mNotes;
    bool mHasLookedAt = false;
    // True when the store is an earlier one than that of the last exchange.
    bool mHasGoneBack = false;
};

void ExchangeRun::Say(const wxString& sentence) {
    mReport.Message += (mReport.Message.empty() ? "" : " ") + sentence;
}

void ExchangeRun::Fail(ExchangeEnd end, const wxString& sentence) {
    mReport.End = end;
    mReport.Message = sentence;
}

void ExchangeRun::FailStore() {
    Fail(ExchangeEnd::kFailed,
         wxString::Format(_("The store could not be exchanged: %s"), mState.Sql().GetError()));
}

// Keeps other exchanges of this store out. The system gives the lock back when the program ends.
bool ExchangeRun::Lock() {
    const std::string path = ToUtf8(mOptions.StorePath) + kExchangeLockSuffix;
    mLock = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!mLock.IsOpen()) {
        Fail(ExchangeEnd::kFailed,
             wxString::Format(_("The store could not be exchanged: %s"), SystemErrorText(errno)));
        return false;
    }
    if (::flock(mLock.Get(), LOCK_EX | LOCK_NB) != 0) {
        Fail(ExchangeEnd::kFailed, _("Another program is exchanging this store just now."));
        return false;
    }
    return true;
}

// Nothing is made beside the store for a folder that is not there.
bool ExchangeRun::HasFolder() {
    std::error_code error;
    const bool isThere = fs::is_directory(ToPath(mOptions.Folder), error);
    if (!isThere) {
        Fail(ExchangeEnd::kNoFolder,
             wxString::Format(_("The folder \"%s\" cannot be used: %s"), mOptions.Folder,
                              SystemErrorText(error ? error.value() : ENOTDIR)));
    }
    return isThere;
}

bool ExchangeRun::List() {
    // Only changes that may be taken are read to their end. A whole copy is seldom needed, and
    // checked when it is read.
    const auto isWanted = [this](const ExchangeHeader& header) {
        return header.Machine != mMachine && !header.IsWhole &&
               header.Number > TakenOf(header.Machine);
    };
    mMedia.Remember();
    const int error = mFolder.List(mFiles, isWanted, &mIsCancelled);
    if (error != 0) {
        Fail(ExchangeEnd::kNoFolder, wxString::Format(_("The folder \"%s\" cannot be used: %s"),
                                                      mOptions.Folder, SystemErrorText(error)));
        return false;
    }
    for (const FoundFile& file : mFiles) {
        const wxString name = FromPath(file.Path.filename());
        if (file.State == FileState::kNewer) {
            Say(wxString::Format(
                _("The file \"%s\" is of a newer version of Velomind and was left."), name));
        } else if (file.State == FileState::kDamaged) {
            Say(wxString::Format(_("The file \"%s\" is damaged and was left."), name));
        } else if (file.State == FileState::kUnreadable) {
            Say(wxString::Format(_("The file \"%s\" cannot be read: %s"), name,
                                 SystemErrorText(file.Error)));
        }
    }
    return true;
}

// Makes an empty store, into which the cards of the folder come.
bool ExchangeRun::MakeStore() {
    const bool hasCards = std::any_of(mFiles.begin(), mFiles.end(), [](const FoundFile& file) {
        return file.State == FileState::kWhole && file.Header.IsWhole;
    });
    if (!hasCards) {
        Fail(ExchangeEnd::kFailed,
             _("There is no store, and no cards of another computer are in the folder yet."));
        return false;
    }
    QuietDatabase database;
    if (database.OpenQuietly(mOptions.StorePath) < 0) {
        Fail(ExchangeEnd::kFailed,
             wxString::Format(_("The store could not be exchanged: %s"), database.GetLastError()));
        return false;
    }
    return true;
}

bool ExchangeRun::Prepare() {
    if (!mState.Open(mOptions.StorePath)) {
        FailStore();
        return false;
    }
    mIsJoining = mState.GetFact("machine").empty();
    FindIdentity();
    mMachines = mState.ReadMachines();
    return true;
}

void ExchangeRun::FindIdentity() {
    ParseHexText(mState.GetFact("machine"), mMachine);
    mNumber = mState.GetNumber("number");
    const std::string place = PlaceOf(mOptions.StorePath);
    if (mIsJoining || mState.GetFact("place") != place) {
        // A store that was copied with the file beside it: the other one goes on as what it was.
        TakeNewIdentity();
    }
}

void ExchangeRun::TakeNewIdentity() {
    mState.Begin();
    if (mMachine != 0) {
        ExchangeMachine former;
        former.Id = mMachine;
        former.Taken = mNumber;
        former.LastNews = Now();
        former.Name = mState.GetFact("name");
        mState.SaveMachine(former);
    }
    mMachine = mOptions.MakeIdentity ? mOptions.MakeIdentity() : RandomIdentity();
    mNumber = 0;
    mState.SetNumber("number", mNumber);
    if (!mIsJoining) {
        // A first exchange is one until it has ended.
        mState.SetFact("machine", HexText(mMachine));
    }
    mState.SetFact("place", PlaceOf(mOptions.StorePath));
    mState.Commit();
}

// Returns true for a store that is not the one of the last exchange, but an earlier one.
bool ExchangeRun::HasGoneBack() {
    if (mIsJoining || !mOptions.Rules.NoticesGoneBack) {
        return false;
    }
    if (fs::exists(ToPath(mOptions.StorePath + kRestoredSuffix))) {
        return true;
    }
    const int64_t counter = mState.GetNumber("counter", -1);
    const int64_t present = mState.ReadChangeCounter();
    if (present >= 0 && present < counter) {
        return true;
    }
    // Others have taken more of this computer than it has sent.
    const bool isKnownBetter =
        std::any_of(mFiles.begin(), mFiles.end(), [this](const FoundFile& file) {
            const auto own = file.Header.Taken.find(mMachine);
            return file.State == FileState::kWhole && own != file.Header.Taken.end() &&
                   own->second > mNumber;
        });
    if (isKnownBetter) {
        TakeNewIdentity();
        return true;
    }
    // A log that was deleted is no earlier one.
    const int64_t end = mState.GetNumber("log-end");
    const std::string last = mState.GetFact("last-event");
    if (last.empty() || ReviewLogLength(mLogPath) == 0 ||
        LogTailSum(mLogPath, end) == mState.GetFact("log-sum")) {
        return false;
    }
    bool isThere = false;
    VisitEvents(
        mLogPath, 0,
        [&](const ScheduleEvent& event) { isThere = isThere || FormatEventKey(event) == last; },
        mIsCancelled);
    return !isThere;
}

// The answer to the question about many cards takes back what was deleted or turned back here,
// although the user did it. In an earlier store the same notes tell of what was done since.
void ExchangeRun::TakeBackLosses() {
    for (EditNote& note : mNotes) {
        for (const EditedField field :
             {EditedField::kForward, EditedField::kReverse, EditedField::kDeletion}) {
            note.Fields.reset(static_cast<size_t>(field));
        }
    }
}

bool ExchangeRun::HasOwnChanges() {
    mNotes = TakeEditNotes(mOptions.StorePath);
    if (mOptions.Answer == ExchangeAnswer::kTakeNewer && !mHasGoneBack) {
        TakeBackLosses();
    }
    {
        Query looked(mState.Sql(), "SELECT 1 FROM beside.Conflicts WHERE Closed=2 LIMIT 1");
        mHasLookedAt = looked.Step();
    }
    mCounter = mState.ReadChangeCounter();
    const int64_t end = mState.GetNumber("log-end");
    return mMedia.MustGiveWay(mMachine) || mIsJoining || mHasLookedAt ||
           mOptions.Answer != ExchangeAnswer::kAsk || mCounter != mState.GetNumber("counter", -1) ||
           ReviewLogLength(mLogPath) != end ||
           LogTailSum(mLogPath, end) != mState.GetFact("log-sum") || mState.HasPending();
}

// Notes who was heard of, and what they have taken.
void ExchangeRun::NoteMachines() {
    for (const FoundFile& file : mFiles) {
        if (file.State != FileState::kWhole || file.Header.Machine == mMachine) {
            continue;
        }
        ExchangeMachine& known = MachineOf(file.Header.Machine);
        bool isNews = known.LastNews == 0;
        for (const auto& [machine, number] : file.Header.Taken) {
            int64_t& most = known.Acknowledged[machine];
            isNews = isNews || number > most;
            most = std::max(most, number);
        }
        int64_t& own = known.Acknowledged[known.Id];
        if (isNews || file.Header.Number > own) {
            own = std::max(own, file.Header.Number);
            known.Name = file.Header.Name;
            known.LastNews = Now();
            mState.SaveMachine(known);
        }
    }
}

ExchangeMachine* ExchangeRun::FindMachine(uint64_t id) {
    const auto known =
        std::find_if(mMachines.begin(), mMachines.end(),
                     [id](const ExchangeMachine& machine) { return machine.Id == id; });
    return known == mMachines.end() ? nullptr : &*known;
}

ExchangeMachine& ExchangeRun::MachineOf(uint64_t id) {
    ExchangeMachine* const known = FindMachine(id);
    if (known != nullptr) {
        return *known;
    }
    mMachines.push_back({});
    mMachines.back().Id = id;
    return mMachines.back();
}

int64_t ExchangeRun::TakenOf(uint64_t id) {
    const ExchangeMachine* const known = FindMachine(id);
    return known == nullptr ? 0 : known->Taken;
}

std::map<uint64_t, int64_t> ExchangeRun::Taken() {
    std::map<uint64_t, int64_t> taken;
    for (const ExchangeMachine& machine : mMachines) {
        if (machine.Taken > 0) {
            taken[machine.Id] = machine.Taken;
        }
    }
    return taken;
}

ExchangeRun::Outcome ExchangeRun::Ask(ExchangeQuestion question, int64_t count) {
    mState.RollBack();
    mReport.End = ExchangeEnd::kAsks;
    mReport.Question = question;
    mReport.Asked = count;
    return Outcome::kStopped;
}

// Returns the latest time that another computer has told, in seconds.
int64_t ExchangeRun::LatestNews() const {
    int64_t latest = -1;
    for (const FoundFile& file : mFiles) {
        if (file.State == FileState::kWhole && file.Header.Machine != mMachine) {
            latest = std::max(latest, file.Header.Time / 1000);
        }
    }
    return latest < 0 ? kLastTimeStamp : latest;
}

// The log has gone back together with its store. The folder has the reviews that it lost, also
// those of this computer: whatever the user has answered, none of them may be missing in the log,
// or the schedules here would not be those of the others. Returns false when that fails.
bool ExchangeRun::CompleteLog() {
    // Until the exchange has ended the store stays an earlier one, though its log is complete.
    const FileDescriptor mark(::open(ToUtf8(mOptions.StorePath + kRestoredSuffix).c_str(),
                                     O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!mark.IsOpen()) {
        Fail(ExchangeEnd::kFailed,
             wxString::Format(_("The store could not be exchanged: %s"), SystemErrorText(errno)));
        return false;
    }
    EventNames logged;
    VisitEvents(
        mLogPath, 0, [&](const ScheduleEvent& event) { logged.insert(NameOf(event)); },
        mIsCancelled);
    EventNames told;
    std::vector<ScheduleEvent> events;
    for (const FoundFile& file : mFiles) {
        const ExchangeVisit visit = [&](const ExchangeFields& record) {
            ScheduleEvent event;
            if (record[0] == "r" && record.size() >= 3 && ParseEvent(record[1], record[2], event) &&
                told.insert(NameOf(event)).second && logged.count(NameOf(event)) == 0) {
                events.push_back(std::move(event));
            }
            return true;
        };
        ExchangeHeader header;
        if (file.State == FileState::kWhole && !file.Header.Media) {
            // A damaged one is none of those that were taken.
            ReadExchangeFile(file.Path, header, &visit, &mIsCancelled);
        }
    }
    const bool isAllTold =
        std::all_of(logged.begin(), logged.end(),
                    [&told](const EventName& name) { return told.count(name) > 0; });
    const auto setEnd = [this](int64_t end) {
        mState.SetNumber("log-end", end);
        mState.SetFact("log-sum", LogTailSum(mLogPath, end));
    };
    mState.Begin();
    for (const ScheduleEvent& event : events) {
        mState.AddPending(FormatEvent(event));
        mReport.Received += event.IsSet ? 0 : 1;
        mReport.HasChanged = true;
    }
    setEnd(ReviewLogLength(mLogPath));
    if (mIsCancelled) {
        mState.RollBack();
        return false;
    }
    if (!mState.Commit()) {
        FailStore();
        mState.RollBack();
        return false;
    }
    // Tells a failure itself.
    FinishLog();
    if (!isAllTold) {
        // Lines that are told again do no harm.
        setEnd(0);
    }
    return !mState.HasPending();
}

// Copies the planned files to beside the store. A folder of a network may stop to answer in the
// middle of a file, which must not happen while the store is locked.
ExchangeRun::Outcome ExchangeRun::FetchPlanned() {
    mFetched.clear();
    const std::string path = ToUtf8(mOptions.StorePath) + kFetchedSuffix;
    for (const FoundFile* const file : mPlan.Files) {
        int error = 0;
        const FileDescriptor source = OpenPlainFile(AT_FDCWD, file->Path.c_str(), error);
        struct stat status {};
        if (!source.IsOpen() || ::fstat(source.Get(), &status) != 0) {
            mBroken.insert(file->Path);
            return Outcome::kAgain;
        }
        FileDescriptor copy(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
        error = copy.IsOpen() ? CopyPart(source.Get(), 0, status.st_size, copy.Get()) : errno;
        ::unlink(path.c_str());
        const bool isOwn = !copy.IsOpen() || error == ENOSPC || error == EDQUOT;
        if (error != 0 && !isOwn) {
            // The folder's disk or network failed.
            mBroken.insert(file->Path);
            return Outcome::kAgain;
        }
        if (error != 0) {
            Fail(ExchangeEnd::kFailed, wxString::Format(_("The store could not be exchanged: %s"),
                                                        SystemErrorText(error)));
            return Outcome::kStopped;
        }
        mFetched.push_back(std::move(copy));
    }
    return Outcome::kDone;
}

bool ExchangeRun::ReadPlanned(CardMerge& merge) {
    for (size_t i = 0; i < mPlan.Files.size(); ++i) {
        const FoundFile* const file = mPlan.Files[i];
        CardMerge::Sender sender;
        sender.Machine = file->Header.Machine;
        sender.IsWhole = file->Header.IsWhole;
        sender.LatestElsewhere = Now() / 1000;
        for (const FoundFile& other : mFiles) {
            if (other.State == FileState::kWhole && other.Header.Machine != sender.Machine) {
                sender.LatestElsewhere = std::max(sender.LatestElsewhere, other.Header.Time / 1000);
            }
        }
        const ExchangeVisit visit = [&](const ExchangeFields& record) {
            merge.Apply(sender, record);
            return !mState.Sql().HasFailed();
        };
        ExchangeHeader header;
        const FileState state =
            ReadExchangeFile(mFetched[i].Get(), true, header, &visit, &mIsCancelled);
        merge.EndFile();
        if (state != FileState::kWhole) {
            mBroken.insert(file->Path);
            return false;
        }
    }
    return true;
}

void ExchangeRun::NoteTaken() {
    for (const auto& [machine, number] : mPlan.Taken) {
        ExchangeMachine& known = MachineOf(machine);
        if (machine != mMachine && known.Taken != number) {
            known.Taken = number;
            mState.SaveMachine(known);
        }
    }
}

void ExchangeRun::SendLookedAt(Outgoing& out) {
    if (!mHasLookedAt) {
        return;
    }
    for (const LostText& text : mState.ReadLostTexts(true)) {
        if (text.IsLookedAt && text.IsToldNext) {
            out.AddLookedAt(text.Card, text.Field, text.Lost);
        }
    }
    mState.Sql().Execute("UPDATE beside.Conflicts SET Closed=1 WHERE Closed=2");
}

// Returns true unless a backup of the last hour has nearly all that the planned files may spoil.
bool ExchangeRun::NeedsBackup() {
    int64_t records = 0;
    bool hasWhole = false;
    for (const FoundFile* const file : mPlan.Files) {
        records += file->Records;
        hasWhole = hasWhole || file->Header.IsWhole;
    }
    const int64_t age = Now() - mState.GetNumber("backup", -kHour);
    return mIsJoining || mOptions.Answer != ExchangeAnswer::kAsk || hasWhole ||
           records > kManyRecords || age < 0 || age >= kHour;
}

ExchangeRun::Outcome ExchangeRun::Merge(bool hasOwnChanges) {
    const bool startsAnew = mIsJoining && mPlan.Files.empty();
    const bool hasNews = std::any_of(
        mPlan.Files.begin(), mPlan.Files.end(),
        [](const FoundFile* file) { return file->Header.IsWhole || file->Records > 0; });
    std::vector<CardUuid> differing;
    if (hasOwnChanges && !FindDifferences(mState, mIsJoining, differing, mIsCancelled)) {
        if (mIsCancelled) {
            return Outcome::kAgain;
        }
        FailStore();
        return Outcome::kStopped;
    }
    const Outcome fetched = FetchPlanned();
    if (fetched != Outcome::kDone) {
        return fetched;
    }
    const bool backsUp = hasNews && mOptions.BackUp && NeedsBackup();
    if (backsUp) {
        const int error = mOptions.BackUp();
        if (error != 0) {
            Fail(ExchangeEnd::kFailed,
                 wxString::Format(_("No backup could be made before the exchange: %s"),
                                  SystemErrorText(error)));
            return Outcome::kStopped;
        }
    }
    ExchangeHeader header;
    header.Machine = mMachine;
    header.Name = ToUtf8(mOptions.Name);
    header.Number = mNumber + 1;
    header.Time = Now();
    header.Taken = mPlan.Taken;
    std::string bytes;
    // A first whole copy holds all that there is.
    const ExchangeSink nowhere = [](std::string_view) { return 0; };
    Outgoing out(header, startsAnew ? nowhere : SinkTo(bytes));
    HybridClock time(mState.GetNumber("clock"));
    if (!mState.Begin()) {
        FailStore();
        return Outcome::kStopped;
    }
    mMedia.GiveWay(mMachine, differing);
    const int64_t counter = mState.ReadChangeCounter();
    const CardMerge::Context context = {mState,
                                        out,
                                        time,
                                        mMachine,
                                        Now(),
                                        LatestNews(),
                                        mIsJoining,
                                        mOptions.Answer,
                                        mOptions.Rules,
                                        mLogPath,
                                        static_cast<size_t>(std::max(mOptions.MostInMemory, 1)),
                                        mIsCancelled};
    CardMerge merge(context, mNotes);
    int64_t logEnd = mState.GetNumber("log-end");
    if (hasOwnChanges) {
        merge.CollectCategories();
        const bool isFound = !mIsJoining && logEnd <= ReviewLogLength(mLogPath) &&
                             LogTailSum(mLogPath, logEnd) == mState.GetFact("log-sum");
        logEnd = merge.ReadOwnEvents(isFound ? logEnd : 0, !isFound);
        for (const CardUuid& id : differing) {
            merge.Collect(id);
        }
        merge.ExplainSchedules();
        if (merge.LeavesSomething()) {
            mState.RollBack();
            return Outcome::kAgain;
        }
        SendLookedAt(out);
    }
    const auto isMany = [this](int64_t lost) {
        return lost >= kLeastLost && lost * kLostShare >= mState.CountCopy();
    };
    const bool mayAsk = mOptions.Answer == ExchangeAnswer::kAsk && !mIsJoining;
    if (mayAsk && mOptions.Rules.NoticesGoneBack && isMany(merge.CountLostHere())) {
        mReport.IsLostHere = true;
        return Ask(ExchangeQuestion::kManyLost, merge.CountLostHere());
    }
    if (!ReadPlanned(merge)) {
        mState.RollBack();
        if (mState.Sql().HasFailed()) {
            FailStore();
            return Outcome::kStopped;
        }
        return Outcome::kAgain;
    }
    if (mayAsk && mOptions.Rules.NoticesGoneBack && isMany(merge.CountLostThere())) {
        return Ask(ExchangeQuestion::kManyLost, merge.CountLostThere());
    }
    const bool meets = std::any_of(
        mPlan.Files.begin(), mPlan.Files.end(),
        [this](const FoundFile* file) { return mIsJoining || TakenOf(file->Header.Machine) == 0; });
    if (meets) {
        const std::string known = mState.GetFact("joins");
        std::optional<bool> answer = mOptions.JoinsEqualCards;
        const bool isAnswered = answer.has_value();
        if (!known.empty()) {
            answer = known == "yes";
        }
        const int64_t pairs = merge.JoinEqualCards(answer);
        if (pairs > 0 && !answer) {
            return Ask(ExchangeQuestion::kEqualCards, pairs);
        }
        if (known.empty() && isAnswered && pairs > 0) {
            const Stamp at = {time.Next(Now()), mMachine};
            mState.SetFact("joins", *answer ? "yes" : "no");
            mState.SetFact("joins-at", FormatStamp(at, mState.Numbers()));
            out.AddAnswer(*answer, at);
        }
    }
    merge.Settle();
    if (mIsCancelled) {
        // The log may not have been read to its end.
        mState.RollBack();
        return Outcome::kAgain;
    }
    NoteTaken();
    const int64_t sent = out.GetChanges();
    const bool sends = (out.GetRecords() > 0 && !startsAnew) || hasNews;
    if (sends || startsAnew) {
        ++mNumber;
    }
    if (startsAnew) {
        mState.SetNumber("whole-only", mNumber);
    }
    const int sealed = out.Finish();
    if (sealed != 0) {
        mState.RollBack();
        Fail(ExchangeEnd::kFailed,
             wxString::Format(_("The store could not be exchanged: %s"), SystemErrorText(sealed)));
        return Outcome::kStopped;
    }
    if (sends) {
        mState.AddSent({mMachine, mNumber, false}, bytes);
        mSent = mNumber;
    }
    // That of a store without cards was none.
    if (backsUp && !mIsJoining) {
        mState.SetNumber("backup", Now());
    }
    mState.SaveNumbers();
    mState.SetFact("machine", HexText(mMachine));
    mState.SetFact("name", ToUtf8(mOptions.Name));
    mState.SetNumber("number", mNumber);
    mState.SetNumber("clock", time.GetLast());
    mState.SetNumber("log-end", logEnd);
    mState.SetFact("log-sum", LogTailSum(mLogPath, logEnd));
    if (!merge.GetLastEvent().empty()) {
        mState.SetFact("last-event", merge.GetLastEvent());
    }
    if (hasOwnChanges && mCounter == counter) {
        mState.SetNumber("counter", counter);
    }
    const int64_t version = mState.ReadDataVersion();
    if (!mState.Commit()) {
        FailStore();
        mState.RollBack();
        return Outcome::kStopped;
    }
    // What somebody else writes from here on is looked for next time.
    const int64_t after = mState.ReadChangeCounter();
    if (mCounter == counter && mState.ReadDataVersion() == version) {
        mState.SetNumber("counter", after);
    }
    NoteReport(merge, sent);
    DropEditNotes(mOptions.StorePath);
    FinishLog();
    if ((merge.ChangesStore() || mMedia.HasChangedCards()) && mOptions.AfterChange) {
        mOptions.AfterChange();
    }
    if (!mOptions.Rules.KeepsCopy) {
        mState.MirrorAll();
    }
    std::error_code error;
    fs::remove(ToPath(mOptions.StorePath + kRestoredSuffix), error);
    mIsJoining = false;
    return Outcome::kDone;
}

void ExchangeRun::NoteReport(const CardMerge& merge, int64_t sent) {
    mReport.Sent += sent;
    mReport.Received += merge.CountReceived();
    mReport.Conflicts += merge.CountConflicts();
    mReport.HasChanged = mReport.HasChanged || merge.ChangesStore();
    if (merge.CountAhead() > 0) {
        Say(wxString::Format(
            wxPLURAL("%i review is dated in the future: the clock of a computer is wrong.",
                     "%i reviews are dated in the future: the clock of a computer is wrong.",
                     static_cast<unsigned>(merge.CountAhead())),
            static_cast<int>(merge.CountAhead())));
    }
}

// Returns which of the events the log does not have.
ExchangeRun::EventNames ExchangeRun::FindMissing(
    const std::vector<std::pair<int64_t, ScheduleEvent>>& events) {
    EventNames missing;
    for (const auto& [number, event] : events) {
        missing.insert(NameOf(event));
    }
    VisitEvents(
        mLogPath, 0, [&](const ScheduleEvent& event) { missing.erase(NameOf(event)); },
        mIsCancelled);
    return missing;
}

// Puts the reviews from elsewhere into the log, some at a time.
void ExchangeRun::FinishLog() {
    const std::map<CardUuid, CardUuid> unions = CardUnions(mState.ReadUnions()).GetGone();
    const bool isRenamed = mState.GetNumber("united") == static_cast<int64_t>(unions.size());
    bool isToDo = !isRenamed || mState.HasPending();
    while (isToDo) {
        isToDo = MergePending(unions) && mState.HasPending();
    }
}

// The log and the file beside the store cannot be changed in one step: what is about to be put in
// is written down first, so that whoever finds all of it in the log knows where the lines end that
// others were told. Returns false on failure.
bool ExchangeRun::MergePending(const std::map<CardUuid, CardUuid>& unions) {
    int64_t last = 0;
    std::vector<std::pair<int64_t, ScheduleEvent>> pending =
        mState.ReadPending(mOptions.MostInMemory, last);
    const EventNames missing = FindMissing(pending);
    int64_t end = mState.GetNumber("log-end");
    if (mState.GetNumber("merging") == 1) {
        // What is there by now has come in since it was written down.
        int64_t bytes = 0;
        for (const auto& [number, event] : pending) {
            bytes += missing.count(NameOf(event)) == 0
                         ? static_cast<int64_t>(FormatEvent(event).size())
                         : 0;
        }
        end += bytes +
               (end == 0 && bytes > 0 ? static_cast<int64_t>(std::strlen(kReviewLogHeading)) : 0);
    }
    mState.Begin();
    std::vector<ScheduleEvent> events;
    EventNames left = missing;
    for (auto& [number, event] : pending) {
        if (left.erase(NameOf(event)) > 0) {
            events.push_back(std::move(event));
        } else {
            mState.DropPending(number);
        }
    }
    mState.SetNumber("merging", 1);
    mState.SetNumber("log-end", end);
    mState.SetFact("log-sum", LogTailSum(mLogPath, end));
    if (!mState.Commit()) {
        // What is not written down must not come into the log.
        return false;
    }
    const int error = MergeEvents(mLogPath, std::move(events), unions, end);
    if (error != 0) {
        Say(wxString::Format(_("The log of reviews could not be written: %s"),
                             SystemErrorText(error)));
        return false;
    }
    mState.Begin();
    mState.DropPendingTo(last);
    mState.SetNumber("merging", 0);
    mState.SetNumber("united", static_cast<int64_t>(unions.size()));
    mState.SetNumber("log-end", end);
    mState.SetFact("log-sum", LogTailSum(mLogPath, end));
    return mState.Commit();
}

void ExchangeRun::SendAll() {
    if (PutMissing()) {
        PutWholeCopy();
        RemoveTaken();
    }
    if (mReport.End == ExchangeEnd::kDone) {
        ExchangeHeader own;
        own.Machine = mMachine;
        own.Name = ToUtf8(mOptions.Name);
        own.Time = Now();
        mReport.HasChanged = mMedia.Run(own) || mReport.HasChanged;
    }
}

// Returns false when the folder takes nothing, which is told.
bool ExchangeRun::PutMissing() {
    for (const ExchangeFileId& id : mState.ListSent()) {
        const auto found = std::find_if(mFiles.begin(), mFiles.end(), [&](const FoundFile& file) {
            return file.State == FileState::kWhole && IdOf(file.Header) == id;
        });
        const bool isNew = id.Machine == mMachine && id.Number == mSent;
        if (found != mFiles.end() || (!mOptions.Rules.SendsAgain && !isNew)) {
            continue;
        }
        const std::string bytes = mState.ReadSent(id);
        const int error = mFolder.Put(id, bytes);
        if (error != 0) {
            mReport.End = ExchangeEnd::kNoFolder;
            Say(wxString::Format(_("The folder \"%s\" cannot be used: %s"), mOptions.Folder,
                                 SystemErrorText(error)));
            return false;
        }
        FoundFile file;
        file.State = FileState::kWhole;
        file.Header.Machine = id.Machine;
        file.Header.Number = id.Number;
        file.Bytes = static_cast<int64_t>(bytes.size());
        mFiles.push_back(std::move(file));
    }
    return true;
}

void ExchangeRun::PutWholeCopy() {
    const std::map<uint64_t, int64_t> taken = Taken();
    int64_t changes = 0;
    int64_t newest = -1;
    bool isNeeded = false;
    for (const FoundFile& file : mFiles) {
        if (file.State != FileState::kWhole) {
            continue;
        }
        if (!file.Header.IsWhole) {
            changes += file.Bytes;
        } else if (newest < 0 || Covers(CoverageOf(file.Header), taken)) {
            newest = std::max(newest, file.Bytes);
        }
    }
    // What a first whole copy had stands in no file of changes.
    const int64_t wholeOnly = mState.GetNumber("whole-only");
    isNeeded = wholeOnly > 0 && !IsInFolder(mFiles, mMachine, wholeOnly) &&
               std::any_of(mMachines.begin(), mMachines.end(), [&](const ExchangeMachine& each) {
                   const auto known = each.Acknowledged.find(mMachine);
                   return known == each.Acknowledged.end() || known->second < wholeOnly;
               });
    // Somebody waits for changes that the folder does not have any more.
    for (const auto& [machine, number] : taken) {
        const bool isLacked =
            std::any_of(mMachines.begin(), mMachines.end(), [&](const ExchangeMachine& each) {
                const auto known = each.Acknowledged.find(machine);
                return each.Id != machine && each.LastNews >= Now() - kYear &&
                       (known == each.Acknowledged.end() || known->second < number);
            });
        isNeeded = isNeeded || (isLacked && !IsInFolder(mFiles, machine, number));
    }
    if (newest >= 0 && changes <= newest && !isNeeded) {
        return;
    }
    ExchangeHeader header;
    header.IsWhole = true;
    header.Machine = mMachine;
    header.Name = ToUtf8(mOptions.Name);
    header.Number = mNumber;
    header.Time = Now();
    header.Taken = taken;
    const bool isThere = std::any_of(mFiles.begin(), mFiles.end(), [&](const FoundFile& file) {
        return file.State == FileState::kWhole && IdOf(file.Header) == IdOf(header);
    });
    if (isThere || mNumber == 0) {
        return;
    }
    const fs::path made = ToPath(ExchangeStatePath(mOptions.StorePath) + "-whole");
    int error = WriteWholeCopy(mState, header, mLogPath, made, mIsCancelled);
    if (error == 0) {
        error = mFolder.PutFrom(IdOf(header), made);
    }
    if (error == ECANCELED) {
        std::error_code ignored;
        fs::remove(made, ignored);
        return;
    }
    FoundFile file;
    file.State = FileState::kWhole;
    file.Header = header;
    std::error_code ignored;
    file.Bytes = static_cast<int64_t>(fs::file_size(made, ignored));
    fs::remove(made, ignored);
    if (error != 0) {
        mReport.End = ExchangeEnd::kNoFolder;
        Say(wxString::Format(_("The folder \"%s\" cannot be used: %s"), mOptions.Folder,
                             SystemErrorText(error)));
        return;
    }
    mFiles.push_back(std::move(file));
}

// Takes files of this computer away that nobody needs any more.
void ExchangeRun::RemoveTaken() {
    std::vector<ExchangeFileId> gone;
    const auto isCovered = [this](const ExchangeFileId& id) {
        return std::any_of(mFiles.begin(), mFiles.end(), [&](const FoundFile& file) {
            const std::map<uint64_t, int64_t> covered = CoverageOf(file.Header);
            const auto number = covered.find(id.Machine);
            const bool isOther = !id.IsWhole || !(IdOf(file.Header) == id);
            return file.State == FileState::kWhole && file.Header.IsWhole && isOther &&
                   number != covered.end() && number->second >= id.Number;
        });
    };
    for (const ExchangeFileId& id : mState.ListSent()) {
        const bool isTaken =
            std::all_of(mMachines.begin(), mMachines.end(), [&](const ExchangeMachine& machine) {
                const auto number = machine.Acknowledged.find(id.Machine);
                return machine.LastNews < Now() - kYear ||
                       (number != machine.Acknowledged.end() && number->second >= id.Number);
            });
        if (isTaken && isCovered(id)) {
            gone.push_back(id);
            mState.DropSent(id);
        }
    }
    for (const FoundFile& file : mFiles) {
        const ExchangeFileId id = IdOf(file.Header);
        if (file.State != FileState::kWhole || !id.IsWhole || id.Machine != mMachine) {
            continue;
        }
        const bool isOlder = std::any_of(mFiles.begin(), mFiles.end(), [&](const FoundFile& other) {
            return other.State == FileState::kWhole && other.Header.IsWhole &&
                   !(IdOf(other.Header) == id) &&
                   Covers(CoverageOf(other.Header), CoverageOf(file.Header));
        });
        if (isOlder) {
            gone.push_back(id);
        }
    }
    // What cannot be removed now will be later.
    mFolder.Remove(gone);
}

ExchangeReport ExchangeRun::Run() {
    const bool hasStore = fs::exists(ToPath(mOptions.StorePath));
    if (!Lock() || !HasFolder() ||
        !(hasStore ? Prepare() && List() : List() && MakeStore() && Prepare())) {
        return mReport;
    }
    if (mState.HasPending() && !mIsJoining) {
        FinishLog();
    }
    NoteMachines();
    mHasGoneBack = HasGoneBack();
    if (mHasGoneBack && mOptions.Answer == ExchangeAnswer::kAsk) {
        Ask(ExchangeQuestion::kGoneBack, 0);
        return mReport;
    }
    if (mHasGoneBack && !CompleteLog()) {
        return mReport;
    }
    for (int attempt = 0;; ++attempt) {
        mPlan =
            MakePlan(mFiles, mBroken, mMachine, Taken(), mIsJoining, mOptions.Rules.WaitsForOthers);
        const bool hasOwnChanges = HasOwnChanges();
        if (!hasOwnChanges && mPlan.Files.empty()) {
            break;
        }
        const Outcome outcome = Merge(hasOwnChanges);
        if (outcome == Outcome::kStopped) {
            return mReport;
        }
        if (outcome == Outcome::kDone) {
            break;
        }
        if (attempt >= kMostTries || mIsCancelled) {
            // A score is being given, or a file changes: the next exchange takes it.
            mReport.End = ExchangeEnd::kDone;
            return mReport;
        }
        std::this_thread::sleep_for(kPause);
    }
    mReport.End = ExchangeEnd::kDone;
    SendAll();
    for (const ExchangeMachine& machine : mMachines) {
        if (mPlan.WaitsFor.count(machine.Id) > 0) {
            Say(wxString::Format(_("Changes of \"%s\" are still on their way."),
                                 FromUtf8(machine.Name)));
        }
    }
    if (mState.Sql().HasFailed()) {
        FailStore();
    }
    mReport.Machines = mState.ReadMachines();
    return mReport;
}

}  // namespace

ExchangeReport RunExchange(const ExchangeOptions& options) {
    ExchangeRun run(options);
    return run.Run();
}

bool TakesPart(const wxString& storePath) {
    return fs::exists(ToPath(ExchangeStatePath(storePath)));
}

int LeaveExchange(const wxString& storePath) {
    std::error_code error;
    int result = 0;
    for (const char* const suffix :
         {kExchangeSuffix, ".exchange-journal", kExchangeLockSuffix, kFetchedSuffix,
          kEditNotesSuffix, kTakenEditNotesSuffix, kRestoredSuffix}) {
        fs::remove(ToPath(storePath + suffix), error);
        result = error ? error.value() : result;
    }
    return result;
}

void FollowMovedExchange(const wxString& formerPath, const wxString& storePath) {
    SyncState state;
    if (!fs::exists(ToPath(formerPath)) && TakesPart(storePath) && state.OpenAlone(storePath) &&
        state.GetFact("place") == PlaceOf(formerPath)) {
        state.SetFact("place", PlaceOf(storePath));
    }
}

std::vector<ExchangeMachine> ReadExchangeMachines(const wxString& storePath) {
    SyncState state;
    return TakesPart(storePath) && state.OpenAlone(storePath) ? state.ReadMachines()
                                                              : std::vector<ExchangeMachine>();
}

std::vector<LostText> ReadLostTexts(const wxString& storePath) {
    SyncState state;
    return TakesPart(storePath) && state.OpenAlone(storePath) ? state.ReadLostTexts(false)
                                                              : std::vector<LostText>();
}

int CloseLostText(const wxString& storePath, const LostText& text) {
    SyncState state;
    if (!TakesPart(storePath) || !state.OpenAlone(storePath)) {
        return -1;
    }
    state.CloseLostTextHere(text);
    return state.Sql().HasFailed() ? -1 : 0;
}
