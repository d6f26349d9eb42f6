#include "reviews/ScheduleEvents.h"

#include <array>
#include <cstring>
#include <limits>
#include <tuple>
#include <utility>

#include "reviews/EventScan.h"
#include "reviews/LogFile.h"
#include "reviews/LogLines.h"

namespace {

constexpr std::string_view kSetMark = "#=\t";
constexpr std::string_view kExtensionMark = "#\t";
// The store holds no time beyond it.
constexpr int64_t kGreatestSecond = std::numeric_limits<int64_t>::max() / 1000;

wxDateTime TimeOf(int64_t seconds) {
    return wxDateTime(wxLongLong(seconds * 1000));
}
int64_t SecondsOf(const wxDateTime& time) {
    return time.GetValue().GetValue() / 1000;
}

// The finalizer of splitmix64.
uint64_t Mix(uint64_t number) {
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31);
}

char* WriteText(char* out, std::string_view text) {
    return std::copy(text.begin(), text.end(), out);
}

char* WriteSession(char* out, const ScheduleEvent& event) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (int shift = 60; shift >= 0; shift -= 4) {
        *out++ = kDigits[event.Session >> shift & 15];
    }
    *out++ = '\t';
    return WriteNumber(out, event.Number);
}

char* WriteSchedule(char* out, const CardSchedule& schedule) {
    *out++ = '\t';
    *out++ = schedule.Introduced ? '1' : '0';
    *out++ = '\t';
    out = schedule.LastReview.IsValid() ? WriteNumber(out, SecondsOf(schedule.LastReview))
                                        : WriteText(out, "-");
    *out++ = '\t';
    out = WriteNumber(out, int{schedule.LastScore});
    *out++ = '\t';
    const float interval = schedule.ReviewInterval;
    out = WriteNumber(out, std::isfinite(interval) ? interval : 0.0f);
    *out++ = '\t';
    return WriteNumber(out, int{schedule.Difficulty});
}

bool TakeSession(LineReader& reader, ScheduleEvent& event) {
    return reader.TakeSession(event.Session) && event.Session != 0 && reader.Take('\t') &&
           reader.TakeNumber(0, std::numeric_limits<int64_t>::max(), event.Number) &&
           reader.Take('\t');
}

bool TakeLastReview(LineReader& reader, wxDateTime& time) {
    if (reader.Take("-\t")) {
        time = wxDateTime();
        return true;
    }
    int64_t seconds = 0;
    const bool isRead =
        reader.TakeNumber(-kGreatestSecond, kGreatestSecond, seconds) && reader.Take('\t');
    time = TimeOf(isRead ? seconds : 0);
    return isRead;
}

bool TakeSchedule(LineReader& reader, CardSchedule& schedule) {
    schedule.Introduced = reader.Take('1');
    return (schedule.Introduced || reader.Take('0')) && reader.Take('\t') &&
           TakeLastReview(reader, schedule.LastReview) &&
           reader.TakeSmall(UINT8_MAX, schedule.LastScore) && reader.Take('\t') &&
           reader.TakeFloat(schedule.ReviewInterval) && reader.Take('\t') &&
           reader.TakeSmall(UINT8_MAX, schedule.Difficulty);
}

bool TakeErc(LineReader& reader, int32_t& erc) {
    int64_t number = 0;
    const bool isRead = reader.TakeNumber(std::numeric_limits<int32_t>::min(),
                                          std::numeric_limits<int32_t>::max(), number) &&
                        reader.IsDone();
    erc = static_cast<int32_t>(number);
    return isRead;
}

bool ParseReview(std::string_view line, ScheduleEvent& event) {
    if (!ParseReviewLine(line, event.Review)) {
        return false;
    }
    const ReviewRecord& review = event.Review;
    event.Time = review.Time;
    event.CardId = review.CardId;
    event.Direction = review.Direction;
    event.Session = 0;
    event.Number = NumberOfReview(review);
    event.IsSet = event.HasExtension = false;
    event.Share = 0;
    event.From.Introduced = review.Elapsed >= 0;
    event.From.LastReview =
        event.From.Introduced ? TimeOf(review.Time - review.Elapsed) : wxDateTime();
    event.From.LastScore = 0;
    event.From.ReviewInterval = review.OldInterval;
    event.From.Difficulty = review.OldDifficulty;
    event.After = {
        true, TimeOf(review.Time), review.Score, review.NewInterval, review.NewDifficulty, 0};
    event.From.ERC = 0;
    return true;
}

// Adds the extension to a review whose line it follows.
bool ParseExtension(std::string_view line, ScheduleEvent& event) {
    LineReader reader(line);
    ScheduleEvent read = event;
    int64_t share = 0;
    if (!reader.Take(kExtensionMark) || !TakeSession(reader, read) ||
        !TakeSchedule(reader, read.From) || !reader.Take('\t') ||
        !reader.TakeNumber(0, 100, share) || !reader.Take('\t') ||
        !TakeErc(reader, read.After.ERC)) {
        return false;
    }
    read.Share = static_cast<int>(share);
    read.HasExtension = true;
    event = read;
    return true;
}

bool ParseSet(std::string_view line, ScheduleEvent& event) {
    LineReader reader(line);
    ScheduleEvent read;
    read.IsSet = true;
    if (!reader.Take(kSetMark) || !reader.TakeTime(read.Time) || !reader.Take('\t') ||
        !reader.TakeId(read.CardId) || !reader.Take('\t')) {
        return false;
    }
    const bool isForward = reader.Take('F');
    read.Direction = isForward ? kReviewForward : kReviewReverse;
    if (!(isForward || reader.Take('R')) || !reader.Take('\t') || !TakeSession(reader, read) ||
        !TakeSchedule(reader, read.After) || !reader.Take('\t') ||
        !TakeErc(reader, read.After.ERC)) {
        return false;
    }
    event = read;
    return true;
}

}  // namespace

int64_t NumberOfReview(const ReviewRecord& record) {
    uint64_t words[7] = {};
    std::memcpy(&words[0], record.CardId.Bytes.data(), sizeof record.CardId.Bytes);
    words[2] = static_cast<uint64_t>(record.Time);
    words[3] = static_cast<uint64_t>(record.Elapsed);
    words[4] = static_cast<uint64_t>(record.Replaces);
    std::memcpy(&words[5], &record.OldInterval, sizeof record.OldInterval);
    std::memcpy(reinterpret_cast<char*>(&words[5]) + 4, &record.NewInterval, 4);
    words[6] = static_cast<uint64_t>(record.Direction) << 24 | uint64_t{record.Score} << 16 |
               uint64_t{record.OldDifficulty} << 8 | record.NewDifficulty;
    uint64_t hash = 0;
    for (const uint64_t word : words) {
        hash = Mix(hash + 0x9E3779B97F4A7C15U + word);
    }
    return static_cast<int64_t>(hash >> 2);
}

bool LooksLikeExtension(std::string_view line) {
    return line.substr(0, kExtensionMark.size()) == kExtensionMark;
}

bool EventScan::Take(std::string_view line, int64_t begin, int64_t end) {
    line = WithoutReturn(line);
    if (mIsWaiting && ParseExtension(line, mReview)) {
        mEnd = end;
        Finish();
        return true;
    }
    Finish();
    ScheduleEvent set;
    if (ParseReview(line, mReview)) {
        mIsWaiting = true;
        mBegin = begin;
        mEnd = end;
        return true;
    }
    const bool isSet = ParseSet(line, set);
    if (isSet) {
        mVisit(set, begin, end);
    }
    return isSet;
}

void EventScan::Finish() {
    if (std::exchange(mIsWaiting, false)) {
        mVisit(mReview, mBegin, mEnd);
    }
}

bool EventKey::operator<(const EventKey& other) const {
    return std::tie(Time, Session, Number, IsReview) <
           std::tie(other.Time, other.Session, other.Number, other.IsReview);
}

bool EventKey::operator==(const EventKey& other) const {
    return std::tie(Time, Session, Number, IsReview) ==
           std::tie(other.Time, other.Session, other.Number, other.IsReview);
}

EventKey KeyOf(const ScheduleEvent& event) {
    return {event.Time, event.Session, event.Number, !event.IsSet};
}

uint64_t EventSession() {
    static const uint64_t kSession = [] {
        uint64_t halves[2] = {};
        CardUuid random;
        GenerateUuid(random);
        std::memcpy(halves, random.Bytes.data(), sizeof halves);
        // A version 4 identity has six bits that are always the same, and without a source of
        // chance the time and the process must do.
        const auto now = static_cast<uint64_t>(SecondsOf(CurrentTime()));
        const uint64_t session =
            Mix(halves[0] ^ Mix(halves[1] ^ now << 24 ^ static_cast<uint64_t>(::getpid())));
        return session == 0 ? 1 : session;
    }();
    return kSession;
}

int64_t NextEventNumber() {
    static std::atomic<int64_t> last{0};
    return ++last;
}

ScheduleEvent MakeReviewEvent(const ReviewRecord& record, const CardSchedule& from, int share,
                              int32_t erc) {
    ScheduleEvent event;
    event.Time = record.Time;
    event.CardId = record.CardId;
    event.Direction = record.Direction;
    event.Session = EventSession();
    event.Number = NextEventNumber();
    event.Review = record;
    event.From = from;
    event.After = {
        true, TimeOf(record.Time), record.Score, record.NewInterval, record.NewDifficulty, erc};
    event.Share = share;
    event.HasExtension = true;
    return event;
}

ScheduleEvent MakeSetEvent(int64_t time, const CardUuid& card, ReviewDirection direction,
                           const CardSchedule& after) {
    ScheduleEvent event;
    event.Time = time;
    event.CardId = card;
    event.Direction = direction;
    event.Session = EventSession();
    event.Number = NextEventNumber();
    event.IsSet = true;
    event.After = after;
    return event;
}

std::string FormatEvent(const ScheduleEvent& event) {
    std::array<char, kLongestLogLine> line{};
    char* out = line.data();
    if (event.IsSet) {
        out = WriteTime(WriteText(out, kSetMark), event.Time);
        const std::array<char, 36> id = UuidText(event.CardId);
        *out++ = '\t';
        out = std::copy(id.begin(), id.end(), out);
        out = WriteText(out, event.Direction == kReviewReverse ? "\tR\t" : "\tF\t");
    } else if (event.HasExtension) {
        out = WriteText(out, kExtensionMark);
    } else {
        return FormatReviewLine(event.Review);
    }
    out = WriteSchedule(WriteSession(out, event), event.IsSet ? event.After : event.From);
    *out++ = '\t';
    if (!event.IsSet) {
        out = WriteNumber(out, event.Share);
        *out++ = '\t';
    }
    out = WriteNumber(out, event.After.ERC);
    *out++ = '\n';
    const std::string_view written(line.data(), static_cast<size_t>(out - line.data()));
    return event.IsSet ? std::string(written) : FormatReviewLine(event.Review).append(written);
}

bool ParseEvent(std::string_view line, std::string_view extension, ScheduleEvent& event) {
    line = WithoutReturn(line);
    ScheduleEvent read;
    if (ParseReview(line, read)) {
        ParseExtension(WithoutReturn(extension), read);
    } else if (!ParseSet(line, read)) {
        return false;
    }
    event = read;
    return true;
}

int64_t VisitEvents(const wxString& path, int64_t offset,
                    const std::function<void(const ScheduleEvent&)>& visit,
                    const std::atomic<bool>& cancelled) {
    struct stat status {};
    const FileDescriptor file = OpenForReading(path, status);
    if (!file.IsOpen() || status.st_size < offset) {
        return 0;
    }
    const EventScan::Visit visitEvent = [&visit](const ScheduleEvent& event, int64_t, int64_t) {
        visit(event);
    };
    EventScan scan(visitEvent);
    std::string rest;
    int64_t read = offset;
    const auto take = [&](std::string_view piece) {
        const int64_t begin = read - static_cast<int64_t>(piece.size());
        SplitLines(piece, rest, [&](std::string_view line, size_t end) {
            const int64_t lineBegin = offset;
            offset = begin + static_cast<int64_t>(end);
            scan.Take(line, lineBegin, offset);
        });
        return !cancelled;
    };
    if (ReadPieces(file.Get(), read, take)) {
        // A review that is just being written has its extension once the lock is free. A lock that
        // cannot be had changes nothing.
        LockFile(file.Get());
        ReadPieces(file.Get(), read, take);
        UnlockFile(file.Get());
    }
    if (cancelled && scan.IsWaiting()) {
        return scan.GetBegin();
    }
    scan.Finish();
    return offset;
}
