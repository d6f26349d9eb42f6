#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/Files.h"
#include "reviews/EventScan.h"
#include "reviews/LogFile.h"
#include "reviews/LogLines.h"
#include "reviews/ScheduleEvents.h"

// The events of other computers come into the log in one pass that reads it and one that copies it
// to a file aside, both without a lock: study goes on and adds lines. The lock is held only while
// those lines are copied too and the file aside takes the name of the log. What is known of the
// whole is no more than the new events and their places.

namespace {

constexpr char kAsideSuffix[] = ".merge";
// Another program may put another log in the place of this one while it is read.
constexpr int kMostTries = 5;
constexpr size_t kIdLength = 36;

// Gives text to a file in large pieces.
class LogWriter {
  public:
    explicit LogWriter(int target) : mTarget(target) {}

    int Add(std::string_view text) {
        mText += text;
        return mText.size() < kLogPiece ? 0 : Flush();
    }
    int Copy(int source, int64_t begin, int64_t end) {
        constexpr int64_t kWorthACall = 65536;
        if (end - begin > kWorthACall) {
            const int error = Flush();
            return error == 0 ? CopyPart(source, begin, end, mTarget) : error;
        }
        const size_t had = mText.size();
        mText.resize(had + static_cast<size_t>(end - begin));
        for (char* out = mText.data() + had; begin < end;) {
            const ssize_t count = ::pread(source, out, static_cast<size_t>(end - begin), begin);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return count < 0 ? errno : EIO;
            }
            out += count;
            begin += count;
        }
        return mText.size() < kLogPiece ? 0 : Flush();
    }
    int Flush() {
        const int error = WriteAll(mTarget, mText);
        mText.clear();
        return error;
    }

  private:
    int mTarget;
    std::string mText;
};

class LogMerge {
  public:
    LogMerge(std::string path, std::vector<ScheduleEvent> events,
             const std::map<CardUuid, CardUuid>& renamed);

    // Returns 0, ESTALE when another log has taken the place of this one, or the error's number.
    // The events come before the lines past the limit, which moves with those.
    int Try(int64_t& limit);

  private:
    struct Insertion {
        int64_t Place;
        std::string Text;
    };

    void NameEvents();
    void Rename(ScheduleEvent& event) const;
    int Open();
    int Read();
    bool IsEarlier(std::string_view line) const;
    void PutAfter(size_t event, int64_t end);
    void TakeEvent(ScheduleEvent event, int64_t end);
    void TakeOther(std::string_view line, int64_t begin, int64_t end);
    std::vector<Insertion> PlaceEvents(int64_t limit);
    int Write(const std::vector<Insertion>& insertions, int target);
    int RenameLines(int target, int64_t begin) const;
    int Replace(const std::string& aside, int target);

    const std::string mPath;
    const std::map<CardUuid, CardUuid>& mRenamed;
    // In their order.
    std::vector<ScheduleEvent> mEvents;
    std::map<std::tuple<uint64_t, int64_t, bool>, size_t> mByName;
    // The reviews by what their first lines say.
    std::map<int64_t, size_t> mByLine;
    // The time of the first event as the log has it.
    std::string mFirstTime;

    FileDescriptor mLog;
    struct stat mStatus {};
    // For each event whether the log has it, and the end of the last line that precedes it but not
    // the event before it.
    std::vector<bool> mAreThere;
    std::vector<int64_t> mPlaces;
    // Extensions that lines have lost.
    std::vector<Insertion> mExtensions;
    bool mHasRenamed = false;
    bool mIsInHeading = true;
    // The end of the heading.
    int64_t mHeading = 0;
    // The end of the last event, and the first of the events that it precedes.
    int64_t mLastEnd = 0;
    size_t mLast = 0;
};

LogMerge::LogMerge(std::string path, std::vector<ScheduleEvent> events,
                   const std::map<CardUuid, CardUuid>& renamed)
    : mPath(std::move(path)), mRenamed(renamed), mEvents(std::move(events)) {
    for (ScheduleEvent& event : mEvents) {
        Rename(event);
        if (!event.IsSet && !event.HasExtension) {
            event.Session = 0;
            event.Number = NumberOfReview(event.Review);
        }
    }
    // A review with its extension before the same one without it.
    std::stable_partition(mEvents.begin(), mEvents.end(), [](const ScheduleEvent& event) {
        return event.IsSet || event.HasExtension;
    });
    const auto isKnown = [this](const ScheduleEvent& event) {
        const bool isNew =
            mByName.emplace(std::tuple(event.Session, event.Number, event.IsSet), 0).second;
        if (event.IsSet) {
            return !isNew;
        }
        const bool isFirst = mByLine.emplace(NumberOfReview(event.Review), 0).second;
        return !isNew || (!isFirst && !event.HasExtension);
    };
    mEvents.erase(std::remove_if(mEvents.begin(), mEvents.end(), isKnown), mEvents.end());
    std::sort(mEvents.begin(), mEvents.end(),
              [](const ScheduleEvent& one, const ScheduleEvent& other) {
                  return KeyOf(one) < KeyOf(other);
              });
    mByName.clear();
    mByLine.clear();
    if (!mEvents.empty()) {
        std::array<char, kTimeStampLength> time{};
        mFirstTime.assign(time.data(), WriteTime(time.data(), mEvents.front().Time));
    }
}

// Lets the events be found by what a log has of them.
void LogMerge::NameEvents() {
    for (size_t i = 0; i < mEvents.size(); ++i) {
        const ScheduleEvent& event = mEvents[i];
        mByName[{event.Session, event.Number, event.IsSet}] = i;
        if (!event.IsSet) {
            mByLine[NumberOfReview(event.Review)] = i;
        }
    }
}

void LogMerge::Rename(ScheduleEvent& event) const {
    const auto found = mRenamed.find(event.CardId);
    if (found == mRenamed.end()) {
        return;
    }
    event.CardId = event.Review.CardId = found->second;
    if (!event.IsSet && !event.HasExtension) {
        event.Number = NumberOfReview(event.Review);
    }
}

int LogMerge::Open() {
    mLog = FileDescriptor(::open(mPath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    mStatus = {};
    if (!mLog.IsOpen()) {
        return errno == ENOENT ? 0 : errno;
    }
    // While nobody holds the lock the log ends with whole additions.
    LockFile(mLog.Get());
    const int error = ::fstat(mLog.Get(), &mStatus) != 0 ? errno : 0;
    UnlockFile(mLog.Get());
    return error == 0 && !S_ISREG(mStatus.st_mode) ? EINVAL : error;
}

void LogMerge::TakeEvent(ScheduleEvent event, int64_t end) {
    mHasRenamed = mHasRenamed || mRenamed.count(event.CardId) > 0;
    Rename(event);
    const auto next = std::upper_bound(
        mEvents.begin(), mEvents.end(), event,
        [](const auto& one, const auto& other) { return KeyOf(one) < KeyOf(other); });
    PutAfter(static_cast<size_t>(next - mEvents.begin()), end);
    const auto same = mByName.find({event.Session, event.Number, event.IsSet});
    if (same != mByName.end()) {
        mAreThere[same->second] = true;
    }
    const auto line = event.IsSet ? mByLine.end() : mByLine.find(NumberOfReview(event.Review));
    if (line == mByLine.end() || mAreThere[line->second] ||
        mEvents[line->second].HasExtension == event.HasExtension) {
        return;
    }
    mAreThere[line->second] = true;
    if (!event.HasExtension) {
        const std::string whole = FormatEvent(mEvents[line->second]);
        mExtensions.push_back({end, whole.substr(whole.find('\n') + 1)});
    }
}

void LogMerge::TakeOther(std::string_view line, int64_t begin, int64_t end) {
    mIsInHeading = mIsInHeading && !line.empty() && line.front() == '#';
    if (mIsInHeading) {
        mHeading = end;
    }
    // What looks like an extension must not become that of another event.
    if (LooksLikeExtension(line) && begin == mLastEnd) {
        mLastEnd = mPlaces[mLast] = end;
    }
}

// Most lines are older than all that is new, which the text of their time tells: they need not be
// taken apart.
bool LogMerge::IsEarlier(std::string_view line) const {
    return mRenamed.empty() && line.size() > mFirstTime.size() && line.front() >= '0' &&
           line.front() <= '9' && line.compare(0, mFirstTime.size(), mFirstTime) < 0;
}

// Lets this event and those after it stand after a line.
void LogMerge::PutAfter(size_t event, int64_t end) {
    mIsInHeading = false;
    mLast = event;
    mLastEnd = mPlaces[event] = end;
}

int LogMerge::Read() {
    // One more, for what no event follows.
    mPlaces.assign(mEvents.size() + 1, 0);
    mAreThere.assign(mEvents.size(), false);
    mExtensions.clear();
    mHasRenamed = false;
    mIsInHeading = true;
    mHeading = mLastEnd = 0;
    mLast = mEvents.size();
    if (!mLog.IsOpen()) {
        return 0;
    }
    NameEvents();
    const EventScan::Visit visit = [this](const ScheduleEvent& event, int64_t, int64_t end) {
        TakeEvent(event, end);
    };
    EventScan scan(visit);
    std::string rest;
    int64_t read = 0;
    int64_t lineBegin = 0;
    ReadPieces(mLog.Get(), read, [&](std::string_view piece) {
        const int64_t begin = read - static_cast<int64_t>(piece.size());
        piece = piece.substr(
            0, static_cast<size_t>(std::clamp<int64_t>(mStatus.st_size - begin, 0, kLogPiece)));
        SplitLines(piece, rest, [&](std::string_view line, size_t at) {
            const int64_t end = begin + static_cast<int64_t>(at);
            if (IsEarlier(line)) {
                scan.Finish();
                PutAfter(0, end);
            } else if (!scan.Take(line, lineBegin, end)) {
                TakeOther(line, lineBegin, end);
            }
            lineBegin = end;
        });
        return read < mStatus.st_size;
    });
    scan.Finish();
    return read < mStatus.st_size ? EIO : 0;
}

std::vector<LogMerge::Insertion> LogMerge::PlaceEvents(int64_t limit) {
    std::vector<Insertion> insertions = mExtensions;
    int64_t place = mHeading;
    for (size_t i = 0; i < mEvents.size(); ++i) {
        place = std::max(place, mPlaces[i]);
        if (!mAreThere[i]) {
            insertions.push_back({std::min(place, limit), FormatEvent(mEvents[i])});
        }
    }
    std::stable_sort(
        insertions.begin(), insertions.end(),
        [](const Insertion& one, const Insertion& other) { return one.Place < other.Place; });
    if (!insertions.empty() && mStatus.st_size == 0) {
        insertions.insert(insertions.begin(), {0, kReviewLogHeading});
    }
    return insertions;
}

int LogMerge::Write(const std::vector<Insertion>& insertions, int target) {
    LogWriter writer(target);
    int64_t copied = 0;
    for (const Insertion& insertion : insertions) {
        int error = writer.Copy(mLog.Get(), copied, insertion.Place);
        error = error == 0 ? writer.Add(insertion.Text) : error;
        if (error != 0) {
            return error;
        }
        copied = insertion.Place;
    }
    const int error = writer.Copy(mLog.Get(), copied, mStatus.st_size);
    return error == 0 ? writer.Flush() : error;
}

// Writes the new identities, which are as long, over the old ones.
int LogMerge::RenameLines(int target, int64_t begin) const {
    std::string rest;
    int64_t lineBegin = begin;
    int error = 0;
    ReadPieces(target, begin, [&](std::string_view piece) {
        const int64_t pieceBegin = begin - static_cast<int64_t>(piece.size());
        SplitLines(piece, rest, [&](std::string_view line, size_t at) {
            ScheduleEvent event;
            const auto found =
                ParseEvent(line, {}, event) ? mRenamed.find(event.CardId) : mRenamed.end();
            if (found != mRenamed.end()) {
                const size_t column = line.find('\t', event.IsSet ? line.find('\t') + 1 : 0) + 1;
                const std::array<char, kIdLength> id = UuidText(found->second);
                const ssize_t written = ::pwrite(target, id.data(), id.size(),
                                                 lineBegin + static_cast<int64_t>(column));
                error = written == static_cast<ssize_t>(id.size()) ? error
                        : written < 0                              ? errno
                                                                   : ENOSPC;
            }
            lineBegin = pieceBegin + static_cast<int64_t>(at);
        });
        return error == 0;
    });
    return error;
}

// Gives the log's name to the file aside, after what was added to the log meanwhile.
int LogMerge::Replace(const std::string& aside, int target) {
    if (!mLog.IsOpen()) {
        // Study may have made a log meanwhile.
        return ::renameat2(AT_FDCWD, aside.c_str(), AT_FDCWD, mPath.c_str(), RENAME_NOREPLACE) == 0
                   ? 0
               : errno == EEXIST ? ESTALE
                                 : errno;
    }
    if (LockFile(mLog.Get()) == EBUSY) {
        return EBUSY;
    }
    struct stat status {};
    if (::fstat(mLog.Get(), &status) != 0) {
        return errno;
    }
    if (!IsFileAt(mPath, status) || status.st_size < mStatus.st_size) {
        return ESTALE;
    }
    const off_t end = ::lseek(target, 0, SEEK_END);
    int error = CopyPart(mLog.Get(), mStatus.st_size, status.st_size, target);
    error = error == 0 && mHasRenamed ? RenameLines(target, end) : error;
    if (error == 0 && std::rename(aside.c_str(), mPath.c_str()) != 0) {
        error = errno;
    }
    return error;
}

int LogMerge::Try(int64_t& limit) {
    int error = Open();
    error = error == 0 ? Read() : error;
    if (error != 0) {
        return error;
    }
    const int64_t first = std::clamp<int64_t>(limit, mHeading, mStatus.st_size);
    const std::vector<Insertion> insertions = PlaceEvents(first);
    int64_t moved = first;
    for (const Insertion& insertion : insertions) {
        moved += insertion.Place <= first ? static_cast<int64_t>(insertion.Text.size()) : 0;
    }
    if (insertions.empty() && !mHasRenamed) {
        limit = moved;
        return 0;
    }
    const std::string aside = mPath + kAsideSuffix;
    const FileDescriptor target(::open(
        aside.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
    struct stat status {};
    if (!target.IsOpen() || ::fstat(target.Get(), &status) != 0) {
        return errno;
    }
    // The lock keeps out another merge, which would write to the same file.
    if (!S_ISREG(status.st_mode) || LockFile(target.Get()) == EBUSY || !IsFileAt(aside, status)) {
        return EBUSY;
    }
    const mode_t mode = mLog.IsOpen() ? mStatus.st_mode & 0777 : ModeOfStore(StoreOfLog(mPath));
    error = ::ftruncate(target.Get(), 0) != 0 || ::fchmod(target.Get(), mode) != 0 ? errno : 0;
    error = error == 0 ? Write(insertions, target.Get()) : error;
    error = error == 0 && mHasRenamed ? RenameLines(target.Get(), 0) : error;
    error = error == 0 && ::fsync(target.Get()) != 0 ? errno : error;
    error = error == 0 ? Replace(aside, target.Get()) : error;
    if (error != 0) {
        ::unlink(aside.c_str());
        return error;
    }
    UnlockFile(target.Get());
    mLog.Close();
    // What was added meanwhile was as little on the disk before.
    ::fsync(target.Get());
    SyncDirectory(mPath);
    limit = moved;
    return 0;
}

}  // namespace

int MergeEvents(const wxString& path, std::vector<ScheduleEvent> events,
                const std::map<CardUuid, CardUuid>& renamed) {
    int64_t limit = INT64_MAX;
    return MergeEvents(path, std::move(events), renamed, limit);
}

int MergeEvents(const wxString& path, std::vector<ScheduleEvent> events,
                const std::map<CardUuid, CardUuid>& renamed, int64_t& limit) {
    // A link stays, and what it names is replaced.
    std::error_code missing;
    const std::filesystem::path real = std::filesystem::canonical(ToPath(path), missing);
    LogMerge merge(missing ? ToUtf8(path) : real.string(), std::move(events), renamed);
    int error = ESTALE;
    for (int i = 0; i < kMostTries && error == ESTALE; ++i) {
        error = merge.Try(limit);
    }
    return error;
}
