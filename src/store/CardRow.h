#pragma once

#include <cstdint>
#include <list>
#include <string_view>
#include <vector>

#include "store/FlashCard.h"
#include "store/Statement.h"

// The first of a direction's six schedule columns in the column list for reading a card:
// Introduced, LastReview, LastScore, ReviewInterval, Difficulty, ERC.
constexpr int kForwardScheduleColumn = 10;
constexpr int kReverseScheduleColumn = 16;
// The row id, at the end of the column list of a walk over due cards.
constexpr int kRowIdColumn = 22;

// A card as it lies in the store, for whoever looks at many cards and keeps none: nothing is copied
// before it is asked for. The row and its texts, which are the engine's own, end with the
// visit.
class CardRow {
  public:
    // One direction of study.
    class Schedule {
      public:
        Schedule(const StatementRun& run, int column) : mRun(run), mColumn(column) {}
        bool Introduced() const { return mRun.ColumnInt(mColumn) != 0; }
        // Seconds since 1970.
        int64_t LastReview() const { return mRun.ColumnSeconds(mColumn + 1); }
        wxDateTime LastReviewTime() const { return mRun.ColumnTime(mColumn + 1); }
        uint8_t LastScore() const { return static_cast<uint8_t>(mRun.ColumnInt(mColumn + 2)); }
        float ReviewInterval() const { return static_cast<float>(mRun.ColumnDouble(mColumn + 3)); }
        uint8_t Difficulty() const { return static_cast<uint8_t>(mRun.ColumnInt(mColumn + 4)); }
        int32_t Erc() const { return mRun.ColumnInt(mColumn + 5); }

      private:
        const StatementRun& mRun;
        int mColumn;
    };

    explicit CardRow(const StatementRun& run) : mRun(run) {}
    // 0, or -1 on a bad text.
    int CardId(CardUuid& uuid) const { return mRun.ColumnUuid(0, uuid); }
    // The same as it is stored, in any form.
    std::u16string_view CardIdText() const { return mRun.ColumnUtf16(0); }
    std::u16string_view Front() const { return mRun.ColumnUtf16(1); }
    std::u16string_view Back() const { return mRun.ColumnUtf16(2); }
    int32_t CategoryId() const { return mRun.ColumnInt(3); }
    std::u16string_view Author() const { return mRun.ColumnUtf16(4); }
    std::u16string_view Chapter() const { return mRun.ColumnUtf16(5); }
    int32_t IntroductionOrder() const { return mRun.ColumnInt(6); }
    bool ForwardX() const { return mRun.ColumnInt(7) != 0; }
    bool ReverseX() const { return mRun.ColumnInt(8) != 0; }
    std::u16string_view Notes() const { return mRun.ColumnUtf16(9); }
    Schedule ScheduleOf(ReviewDirection direction) const {
        return {mRun,
                direction == kReviewForward ? kForwardScheduleColumn : kReverseScheduleColumn};
    }
    // Reads the whole card. Returns 0, or -1 when all but its identity was read, which is none.
    int Read(FlashCard& card) const;
    // Only in a walk that has the column, as one over row ids has.
    int64_t RowId() const { return mRun.ColumnInt64(kRowIdColumn); }

  private:
    const StatementRun& mRun;
};

// These step a run whose arguments are bound. Each returns 0, or -1 on any failure.

// Clears the list and reads every row into it.
int ReadFlashCardRows(StatementRun& run, std::list<FlashCard>& cards);
int ReadCategoryRows(StatementRun& run, std::list<Category>& categories);
// Clears the list and reads the first row, if there is one.
int ReadFlashCardRow(StatementRun& run, std::list<FlashCard>& cards);
// Appends the first column of every row.
int ReadInt64Rows(StatementRun& run, std::vector<int64_t>& numbers);

// Binds every field of a card but its id to the next parameters. Returns 0 or -1.
int BindCardFields(StatementRun& run, const FlashCard& card);
