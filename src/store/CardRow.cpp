#include "store/CardRow.h"

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
    if (run.ColumnUuid(0, card.CardId) < 0) {
        return -1;
    }
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
    return 0;
}

int ReadCategory(const StatementRun& run, Category& category) {
    category.Id = run.ColumnInt(0);
    category.Name = run.ColumnText(1);
    return 0;
}

// The loop that both record readers share.
template <typename Record, typename Reader>
int ReadRows(StatementRun& run, std::list<Record>& records, bool all, const wxString& label,
             const Reader& read) {
    records.clear();
    for (;;) {
        if (run.Step(label) < 0) {
            return -1;
        }
        if (run.IsDone()) {
            return 0;
        }
        Record record;
        if (read(run, record) < 0) {
            return -1;
        }
        records.push_back(std::move(record));
        if (!all) {
            return 0;
        }
    }
}

int BindSchedule(StatementRun& run, int& index, const CardSchedule& schedule) {
    const bool bound = run.BindInt(index++, schedule.Introduced ? 1 : 0) == 0 &&
                       run.BindTime(index++, schedule.LastReview) == 0 &&
                       run.BindInt(index++, schedule.LastScore) == 0 &&
                       run.BindDouble(index++, static_cast<double>(schedule.ReviewInterval)) == 0 &&
                       run.BindInt(index++, schedule.Difficulty) == 0 &&
                       run.BindTime(index++, schedule.NextReview()) == 0 &&
                       run.BindInt(index++, schedule.ERC) == 0;
    return bound ? 0 : -1;
}

}  // namespace

int ReadFlashCardRows(StatementRun& run, std::list<FlashCard>& cards, bool all) {
    return ReadRows(run, cards, all, "ReadFlashCardRows", ReadFlashCard);
}

int ReadCategoryRows(StatementRun& run, std::list<Category>& categories, bool all) {
    return ReadRows(run, categories, all, "ReadCategoryRows", ReadCategory);
}

int ReadInt64Rows(StatementRun& run, std::vector<int64_t>& numbers) {
    const wxString label = "ReadInt64Rows";
    for (;;) {
        if (run.Step(label) < 0) {
            return -1;
        }
        if (run.IsDone()) {
            return 0;
        }
        numbers.push_back(run.ColumnInt64(0));
    }
}

int BindCardFields(StatementRun& run, int& index, const FlashCard& card) {
    const bool bound =
        run.BindText(index++, card.Front) == 0 && run.BindText(index++, card.Back) == 0 &&
        run.BindInt(index++, card.CategoryId) == 0 && run.BindText(index++, card.Author) == 0 &&
        run.BindText(index++, card.Chapter) == 0 &&
        run.BindInt(index++, card.IntroductionOrder) == 0 &&
        run.BindInt(index++, card.ForwardX ? 1 : 0) == 0 &&
        run.BindInt(index++, card.ReverseX ? 1 : 0) == 0 &&
        run.BindText(index++, card.Notes) == 0 && BindSchedule(run, index, card.Forward) == 0 &&
        BindSchedule(run, index, card.Reverse) == 0;
    return bound ? 0 : -1;
}
