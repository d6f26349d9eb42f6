#pragma once

#include <wx/string.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "files/StoreFiles.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

// The review log is a plain text beside the store (ReviewLogPath), with one line for each score.
// Only plots depend on it, the counts of a day of study, what a forgotten card keeps of its
// interval, if the user wants that, and the exchange with other computers: it may be deleted at any
// time, and a line that cannot be written is dropped. For the store "Words.vlm" it is
// "Words.vlm.reviews":
//
//     2026-03-01T18:04:09Z 1b4e28ba-2fa1-41d2-883f-0016d3cca427 F 4 86412 86400 131072 16 16 -
//     # 9f3c51d07a2b4e68 12 1 1772301837 4 86400 16 25 4711
//
// with tabs in place of the blanks: the time in UTC, the card, the direction (F from front to back,
// R from back to front), the score, the seconds elapsed since the review before ("-" for a card
// that had never been scored in that direction), the interval before and after in seconds, the
// difficulty before and after, and, for a score that replaces an earlier one, the time of that one,
// else "-". The first line is a comment, "#", with these names.
//
// The second line, the extension of the first, is a comment for earlier versions, which wrote none.
// Both are written at once. It has the session, a random number of the process in base 16; a number
// that counts up in the process; the exact schedule that the score began from, which is whether the
// card was introduced, its last review in seconds since 1970 ("-" for none), last score, interval
// and difficulty; the part of its interval that a forgotten card kept then, in hundredths; and the
// card's ERC after the score.
//
// A schedule that came from no score, such as one that the user has typed or reset, or that undo
// has brought back, is told by a line of its own, also a comment for earlier versions:
//
//     #= 2026-03-01T18:05:40Z 1b4e28ba-2fa1-41d2-883f-0016d3cca427 F 9f3c51d07a2b4e68 13 0 ...
//
// with the time, the card, the direction, the session and the number, and then the whole schedule
// after it: introduced, last review, last score, interval, difficulty, ERC. The log of a store that
// is exchanged has the lines of all its computers, in the order of time (ScheduleEvents.h).

// The lowest score of a card that was remembered.
constexpr int kLeastRemembered = 3;

// One score.
struct ReviewRecord {
    // Seconds since 1970; becomes the card's LastReview.
    int64_t Time = 0;
    CardUuid CardId;
    ReviewDirection Direction = kReviewForward;
    uint8_t Score = 0;
    // Seconds since the review before; -1 for the first one.
    int64_t Elapsed = -1;
    // Seconds.
    float OldInterval = 0;
    float NewInterval = 0;
    uint8_t OldDifficulty = 0;
    uint8_t NewDifficulty = 0;
    // The Time of the score that this one replaces; -1 for none.
    int64_t Replaces = -1;
};

// A card is known once its interval is a day. To fail it then is a lapse; a failure while it is
// still being learnt, or learnt again, is none.
constexpr float kKnownInterval = 86400.0f;
constexpr uint8_t kLeastPass = 3;
// A card with that many lapses in one direction, since it was last begun anew, takes too much.
constexpr int32_t kManyLapses = 8;

// How many reviews of a card may lie between a score and the one that it replaces: study keeps the
// last 20 scores. Without an end a log of one card would take its square in time.
constexpr int kFarthestReplaced = 1000;

struct ScheduleEvent;

// The first line of a log.
extern const char kReviewLogHeading[];

// Appends scores to the log of a store. Main thread only.
class ReviewLog {
  public:
    // The path of the log.
    explicit ReviewLog(const wxString& path);

    // Goes on with the log of another store.
    void SetPath(const wxString& path);

    // Adds a review, with the schedule that it began from, the part of its interval in hundredths
    // that a forgotten card keeps, and the card's ERC after it. Writes once and does not wait for
    // the disk. A torn line at the end of the file gets its line end first. A failure is traced
    // once and otherwise ignored. Returns true when the lines are there.
    bool Append(const ReviewRecord& record, const CardSchedule& from, int share, int32_t erc);
    // Adds any events likewise.
    bool Append(const std::vector<ScheduleEvent>& events);

  private:
    bool AppendLines(std::string lines);

    std::string mPath;
    bool mHasFailed = false;
};

// Reads a line without its end. Returns false when it is no line of the log.
bool ParseReviewLine(std::string_view line, ReviewRecord& record);
// Returns the line of a record, with its end.
std::string FormatReviewLine(const ReviewRecord& record);

// Returns the bytes of the log; 0 without one.
int64_t ReviewLogLength(const wxString& path);

// Calls visit with each review in the order of the file, replaced ones included; for a card, only
// with those of that card, which takes a fraction of the time. Leaves out what follows the first
// end bytes. A missing log has none. Returns false when cancelled became true. Any thread.
bool VisitReviews(const wxString& path, const CardUuid* card,
                  const std::function<void(const ReviewRecord&)>& visit,
                  const std::atomic<bool>& cancelled, int64_t end = INT64_MAX);

// Returns the reviews of one card in both directions, oldest first, without replaced ones. Reads
// the whole log, so call it on a worker thread. A missing log has none. Stops when cancelled
// becomes true.
std::vector<ReviewRecord> ReadCardReviews(const wxString& path, const CardUuid& card,
                                          const std::atomic<bool>& cancelled);

// All reviews of a log in little memory, for the figures. Kept between questions, it reads only
// what is new in the log. Any thread, one at a time.
class ReviewHistory {
  public:
    struct Review {
        int64_t Time;
        // Seconds since the review before; negative for the first one.
        float Elapsed;
        // The index in Cards.
        uint32_t Card;
        // The card's previous review in the file, in either direction; kNone for none.
        uint32_t Previous;
        uint8_t Score;
        bool IsReverse;
        // True when a later score took its place.
        bool IsReplaced;
        // True when its interval before was kKnownInterval or more.
        bool WasKnown;
    };
    static constexpr uint32_t kNone = UINT32_MAX;

    // Reads the log from where the last call ended, or anew when it is another file than before. A
    // missing log is empty. Returns false when cancelled became true; a later call then continues.
    bool Update(const wxString& path, const std::atomic<bool>& cancelled);
    // Takes bytes of a log, which may end anywhere within a line.
    void Take(std::string_view bytes);

    // In the order of the file.
    const std::vector<Review>& Reviews() const { return mReviews; }
    const std::vector<CardUuid>& Cards() const { return mCards; }
    // Returns the index in Cards, or kNone.
    uint32_t FindCard(const CardUuid& id) const;
    // Lines that are neither reviews nor comments nor empty.
    int64_t ForeignLines() const { return mForeignLines; }

  private:
    // A card and its last review, or an empty place. One access to memory finds all of it: reviews
    // come in no order of cards, so the processor waits for each access.
    struct Slot {
        CardUuid Id;
        uint32_t Card = kNone;
        uint32_t LastReview = kNone;
    };

    void TakeLine(std::string_view line);
    void AddPending();
    void Add(const ReviewRecord& record);
    size_t FindSlot(const CardUuid& id) const;
    Slot& InternCard(const CardUuid& id);
    void GrowIndex();

    std::vector<Review> mReviews;
    std::vector<CardUuid> mCards;
    // An open hash table, whose size is a power of 2.
    std::vector<Slot> mIndex;
    // Reviews that were read while their cards are on the way from memory.
    std::array<ReviewRecord, 16> mPending;
    size_t mPendingCount = 0;
    int64_t mForeignLines = 0;
    // The bytes of a line whose end is not yet read.
    std::string mRest;
    // The file that was read, and how far.
    uint64_t mDevice = 0;
    uint64_t mFile = 0;
    int64_t mOffset = 0;
    // The last bytes before there: another log may have the number of one that is gone.
    std::string mEnd;
};
