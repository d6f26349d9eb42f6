#include "store/CardRow.h"

#include <utility>

namespace {

void ReadSchedule(const StatementRun& run, int column, CardSchedule& schedule) {
    schedule.Introduced = run.ColumnInt(column++) != 0;
    schedule.LastReview = run.ColumnTime(column++);
    schedule.LastScore = static_cast<uint8_t>(run.ColumnInt(column++));
    schedule.ReviewInterval = static_cast<float>(run.ColumnDouble(column++));
    schedule.Difficulty = static_cast<uint8_t>(run.ColumnInt(column++));
    schedule.ERC = run.ColumnInt(column);
}

int ReadFlashCard(const StatementRun& run, FlashCard& card) {
    card.Front = run.ColumnText(1);
    card.Back = run.ColumnText(2);
    card.CategoryId = run.ColumnInt(3);
    card.Author = run.ColumnText(4);
    card.Chapter = run.ColumnText(5);
    card.IntroductionOrder = run.ColumnInt(6);
    card.ForwardX = run.ColumnInt(7) != 0;
    card.ReverseX = run.ColumnInt(8) != 0;
    card.Notes = run.ColumnText(9);
    ReadSchedule(run, kForwardScheduleColumn, card.Forward);
    ReadSchedule(run, kReverseScheduleColumn, card.Reverse);
    return run.ColumnUuid(0, card.CardId);
}

int AddFlashCard(const StatementRun& run, std::list<FlashCard>& cards) {
    FlashCard card;
    if (ReadFlashCard(run, card) < 0) {
        return -1;
    }
    cards.push_back(std::move(card));
    return 0;
}

// The loop that all readers of rows share; read returns a negative value for a damaged row.
template <typename Reader>
int ReadRows(StatementRun& run, const char* label, const Reader& read) {
    for (;;) {
        if (run.Step(label) < 0) {
            return -1;
        }
        if (run.IsDone()) {
            return 0;
        }
        if (read() < 0) {
            return -1;
        }
    }
}

int BindSchedule(StatementRun& run, const CardSchedule& schedule) {
    return run.Bind(schedule.Introduced, schedule.LastReview, schedule.LastScore,
                    schedule.ReviewInterval, schedule.Difficulty, schedule.NextReview(),
                    schedule.ERC);
}

}  // namespace

int CardRow::Read(FlashCard& card) const {
    return ReadFlashCard(mRun, card);
}

int ReadFlashCardRows(StatementRun& run, std::list<FlashCard>& cards) {
    cards.clear();
    return ReadRows(run, "ReadFlashCardRows", [&] { return AddFlashCard(run, cards); });
}

int ReadFlashCardRow(StatementRun& run, std::list<FlashCard>& cards) {
    cards.clear();
    if (run.Step("ReadFlashCardRows") < 0) {
        return -1;
    }
    return run.IsDone() ? 0 : AddFlashCard(run, cards);
}

int ReadCategoryRows(StatementRun& run, std::list<Category>& categories) {
    categories.clear();
    return ReadRows(run, "ReadCategoryRows", [&] {
        categories.push_back({run.ColumnInt(0), run.ColumnText(1)});
        return 0;
    });
}

int ReadInt64Rows(StatementRun& run, std::vector<int64_t>& numbers) {
    return ReadRows(run, "ReadInt64Rows", [&] {
        numbers.push_back(run.ColumnInt64(0));
        return 0;
    });
}

int BindCardFields(StatementRun& run, const FlashCard& card) {
    const int result = run.Bind(card.Front, card.Back, card.CategoryId, card.Author, card.Chapter,
                                card.IntroductionOrder, card.ForwardX, card.ReverseX, card.Notes);
    return result < 0 || BindSchedule(run, card.Forward) < 0 ? -1 : BindSchedule(run, card.Reverse);
}
