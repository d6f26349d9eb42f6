#include "reviews/ReviewLog.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <utility>

#include "base/Files.h"
#include "base/Process.h"
#include "base/Unicode.h"
#include "reviews/LogFile.h"
#include "reviews/LogLines.h"
#include "reviews/ScheduleEvents.h"

namespace {

constexpr int64_t kTypicalLine = 90;
// The identity follows the time and a tab.
constexpr size_t kIdColumn = 21;

bool IsBlankOrComment(std::string_view line) {
    return line.empty() || line.front() == '#';
}

}  // namespace

const char kReviewLogHeading[] =
    "# time\tcard\tdirection\tscore\telapsed\tinterval\tnew interval\tdifficulty\tnew difficulty\t"
    "replaces\n";

ReviewLog::ReviewLog(const wxString& path) : mPath(ToUtf8(path)) {}

void ReviewLog::SetPath(const wxString& path) {
    mPath = ToUtf8(path);
}

bool ReviewLog::Append(const ReviewRecord& record, const CardSchedule& from, int share,
                       int32_t erc) {
    return AppendLines(FormatEvent(MakeReviewEvent(record, from, share, erc)));
}

bool ReviewLog::Append(const std::vector<ScheduleEvent>& events) {
    std::string lines;
    for (const ScheduleEvent& event : events) {
        lines += FormatEvent(event);
    }
    return lines.empty() || AppendLines(std::move(lines));
}

bool ReviewLog::AppendLines(std::string lines) {
    const int error = ::AppendLines(mPath, StoreOfLog(mPath), kReviewLogHeading, std::move(lines));
    if (error != 0 && !mHasFailed) {
        mHasFailed = true;
        VELOMIND_TRACE("Review log: error %i", error);
    }
    return error == 0;
}

std::string FormatReviewLine(const ReviewRecord& record) {
    std::array<char, kLongestLogLine> line{};
    char* out = WriteTime(line.data(), record.Time);
    *out++ = '\t';
    const std::array<char, 36> id = UuidText(record.CardId);
    out = std::copy(id.begin(), id.end(), out);
    *out++ = '\t';
    *out++ = record.Direction == kReviewReverse ? 'R' : 'F';
    *out++ = '\t';
    out = WriteNumber(out, int{record.Score});
    *out++ = '\t';
    out = record.Elapsed < 0 ? (*out++ = '-', out) : WriteNumber(out, record.Elapsed);
    for (const float interval : {record.OldInterval, record.NewInterval}) {
        *out++ = '\t';
        out = WriteNumber(out, interval);
    }
    for (const uint8_t difficulty : {record.OldDifficulty, record.NewDifficulty}) {
        *out++ = '\t';
        out = WriteNumber(out, int{difficulty});
    }
    *out++ = '\t';
    out = record.Replaces < 0 ? (*out++ = '-', out) : WriteTime(out, record.Replaces);
    *out++ = '\n';
    return {line.data(), out};
}

bool ParseReviewLine(std::string_view line, ReviewRecord& record) {
    LineReader reader(line);
    if (!reader.TakeTime(record.Time) || !reader.Take('\t') || !reader.TakeId(record.CardId) ||
        !reader.Take('\t')) {
        return false;
    }
    const bool isForward = reader.Take('F');
    record.Direction = isForward ? kReviewForward : kReviewReverse;
    record.Elapsed = record.Replaces = -1;
    return (isForward || reader.Take('R')) && reader.Take('\t') &&
           reader.TakeSmall(5, record.Score) && reader.Take('\t') &&
           (reader.Take('-') || reader.TakeWhole(record.Elapsed)) && reader.Take('\t') &&
           reader.TakeInterval(record.OldInterval) && reader.Take('\t') &&
           reader.TakeInterval(record.NewInterval) && reader.Take('\t') &&
           reader.TakeSmall(UINT8_MAX, record.OldDifficulty) && reader.Take('\t') &&
           reader.TakeSmall(UINT8_MAX, record.NewDifficulty) && reader.Take('\t') &&
           (reader.Take('-') || reader.TakeTime(record.Replaces)) && reader.IsDone();
}

int64_t ReviewLogLength(const wxString& path) {
    struct stat status {};
    return OpenForReading(path, status).IsOpen() ? int64_t{status.st_size} : 0;
}

bool VisitReviews(const wxString& path, const CardUuid* card,
                  const std::function<void(const ReviewRecord&)>& visit,
                  const std::atomic<bool>& cancelled, int64_t end) {
    struct stat status {};
    const FileDescriptor file = OpenForReading(path, status);
    if (!file.IsOpen()) {
        return !cancelled;
    }
    const std::array<char, 36> id = UuidText(card == nullptr ? CardUuid() : *card);
    const std::string_view wanted(id.data(), card == nullptr ? 0 : id.size());
    std::string rest;
    int64_t offset = 0;
    return ReadPieces(file.Get(), offset, [&](std::string_view piece) {
        const int64_t left = end - (offset - static_cast<int64_t>(piece.size()));
        const std::string_view asked =
            piece.substr(0, static_cast<size_t>(std::clamp<int64_t>(left, 0, kLogPiece)));
        SplitLines(asked, rest, [&](std::string_view line, size_t) {
            ReviewRecord record;
            if (line.size() >= kIdColumn + wanted.size() &&
                line.compare(kIdColumn, wanted.size(), wanted) == 0 &&
                ParseReviewLine(WithoutReturn(line), record)) {
                visit(record);
            }
        });
        return !cancelled;
    });
}

std::vector<ReviewRecord> ReadCardReviews(const wxString& path, const CardUuid& card,
                                          const std::atomic<bool>& cancelled) {
    std::vector<ReviewRecord> reviews;
    const auto keep = [&reviews](const ReviewRecord& record) {
        const auto end = reviews.size() > kFarthestReplaced && record.Replaces >= 0
                             ? reviews.rbegin() + kFarthestReplaced
                             : reviews.rend();
        const auto replaced =
            record.Replaces < 0 ? end : std::find_if(reviews.rbegin(), end, [&](const auto& each) {
                return each.Time == record.Replaces;
            });
        if (replaced != end) {
            reviews.erase(std::next(replaced).base());
        }
        reviews.push_back(record);
    };
    // What was read before a cancel counts.
    VisitReviews(path, &card, keep, cancelled);
    // The clock may have been put back between two reviews.
    std::stable_sort(
        reviews.begin(), reviews.end(),
        [](const ReviewRecord& one, const ReviewRecord& other) { return one.Time < other.Time; });
    return reviews;
}

namespace {

std::string BytesBefore(int file, int64_t offset) {
    std::string bytes(static_cast<size_t>(std::min<int64_t>(offset, 128)), '\0');
    const auto size = static_cast<int64_t>(bytes.size());
    return ::pread(file, bytes.data(), bytes.size(), offset - size) == size ? bytes : std::string();
}

}  // namespace

bool ReviewHistory::Update(const wxString& path, const std::atomic<bool>& cancelled) {
    struct stat status {};
    const FileDescriptor file = OpenForReading(path, status);
    if (!file.IsOpen() || status.st_dev != mDevice || status.st_ino != mFile ||
        status.st_size < mOffset || BytesBefore(file.Get(), mOffset) != mEnd) {
        *this = ReviewHistory();
    }
    if (!file.IsOpen()) {
        return !cancelled;
    }
    mDevice = status.st_dev;
    mFile = status.st_ino;
    if (mReviews.empty()) {
        // A file may have any size and no content, as one with holes in it.
        constexpr off_t kMostReserved = off_t{1} << 20;
        mReviews.reserve(
            static_cast<size_t>(std::min(status.st_size / kTypicalLine, kMostReserved)));
    }
    const bool isDone = ReadPieces(file.Get(), mOffset, [&](std::string_view piece) {
        Take(piece);
        return !cancelled;
    });
    mEnd = BytesBefore(file.Get(), mOffset);
    return isDone;
}

namespace {

// Identities are random numbers, unless they come from another program's counter.
size_t HashOf(const CardUuid& id) {
    uint64_t halves[2];
    static_assert(sizeof halves == sizeof id.Bytes);
    std::memcpy(halves, id.Bytes.data(), sizeof halves);
    uint64_t mixed = (halves[0] ^ (halves[0] >> 32)) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ (mixed >> 32) ^ halves[1]) * 0xD6E8FEB86659FD93U;
    return mixed ^ (mixed >> 32);
}

}  // namespace

void ReviewHistory::Take(std::string_view bytes) {
    SplitLines(bytes, mRest,
               [this](std::string_view line, size_t) { TakeLine(WithoutReturn(line)); });
    AddPending();
}

// Looking up a card in memory takes longer than reading its line. Several are requested at once,
// and looked up when the first ones have arrived.
void ReviewHistory::TakeLine(std::string_view line) {
    ReviewRecord& record = mPending[mPendingCount];
    if (ParseReviewLine(line, record)) {
        if (!mIndex.empty()) {
            __builtin_prefetch(&mIndex[HashOf(record.CardId) & (mIndex.size() - 1)], 1);
        }
        if (++mPendingCount == mPending.size()) {
            AddPending();
        }
    } else if (!IsBlankOrComment(line)) {
        ++mForeignLines;
    }
}

void ReviewHistory::AddPending() {
    for (size_t i = 0; i < mPendingCount; ++i) {
        Add(mPending[i]);
    }
    mPendingCount = 0;
}

void ReviewHistory::Add(const ReviewRecord& record) {
    Slot& slot = InternCard(record.CardId);
    if (record.Replaces >= 0) {
        uint32_t earlier = slot.LastReview;
        for (int i = 0; earlier != kNone && mReviews[earlier].Time != record.Replaces; ++i) {
            earlier = i < kFarthestReplaced ? mReviews[earlier].Previous : kNone;
        }
        if (earlier != kNone) {
            mReviews[earlier].IsReplaced = true;
        }
    }
    const auto place = static_cast<uint32_t>(mReviews.size());
    mReviews.push_back({record.Time, static_cast<float>(record.Elapsed), slot.Card,
                        std::exchange(slot.LastReview, place), record.Score,
                        record.Direction == kReviewReverse, false,
                        record.OldInterval >= kKnownInterval});
}

// Returns the place of the card, or the one where it would be. The table has room.
size_t ReviewHistory::FindSlot(const CardUuid& id) const {
    size_t slot = HashOf(id) & (mIndex.size() - 1);
    while (mIndex[slot].Card != kNone && mIndex[slot].Id != id) {
        slot = (slot + 1) & (mIndex.size() - 1);
    }
    return slot;
}

uint32_t ReviewHistory::FindCard(const CardUuid& id) const {
    return mIndex.empty() ? kNone : mIndex[FindSlot(id)].Card;
}

ReviewHistory::Slot& ReviewHistory::InternCard(const CardUuid& id) {
    if (2 * mCards.size() >= mIndex.size()) {
        GrowIndex();
    }
    Slot& slot = mIndex[FindSlot(id)];
    if (slot.Card == kNone) {
        slot.Id = id;
        slot.Card = static_cast<uint32_t>(mCards.size());
        mCards.push_back(id);
    }
    return slot;
}

void ReviewHistory::GrowIndex() {
    std::vector<Slot> old(std::max<size_t>(1024, 2 * mIndex.size()));
    old.swap(mIndex);
    for (const Slot& slot : old) {
        if (slot.Card != kNone) {
            mIndex[FindSlot(slot.Id)] = slot;
        }
    }
}
