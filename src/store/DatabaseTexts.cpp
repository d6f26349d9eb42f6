// Texts of many cards: walking over all of them, and changing them in groups.

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "store/CardRow.h"
#include "store/CardTexts.h"
#include "store/Database.h"
#include "store/StoreSchema.h"

namespace {

constexpr const char* kTextColumns[kCardTextCount] = {"Front", "Back", "Notes", "Author",
                                                      "Chapter"};

// Cards whose same texts change share a statement. In the order of the cards.
using CardsByTexts = std::map<std::vector<CardText>, std::vector<const CardTextChange*>>;

CardsByTexts SortByTexts(const std::vector<CardTextChange>& changes) {
    CardsByTexts sorted;
    for (const CardTextChange& change : changes) {
        std::vector<CardText> texts;
        for (const CardTextChange::Text& text : change.Texts) {
            texts.push_back(text.Which);
        }
        sorted[texts].push_back(&change);
    }
    return sorted;
}

// A row of VALUES has the row id and, for each text, what it was and what it becomes:
//
//     UPDATE Cards SET Front=column3 FROM (VALUES (?,?,?),(?,?,?)) WHERE Cards.ROWID=column1
//     AND Front=column2 RETURNING ROWID;
std::string MakeUpdate(const std::vector<CardText>& texts, size_t rows) {
    std::string set;
    std::string condition;
    std::string row = "(?";
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string column = kTextColumns[static_cast<size_t>(texts[i])];
        set += (i == 0 ? "" : ",") + column + "=column" + std::to_string(2 * i + 3);
        condition += " AND " + column + "=column" + std::to_string(2 * i + 2);
        row += ",?,?";
    }
    row += ')';
    std::string values = row;
    values.reserve(rows * (row.length() + 1));
    for (size_t i = 1; i < rows; ++i) {
        values += ',' + row;
    }
    return "UPDATE Cards SET " + set + " FROM (VALUES " + values + ") WHERE Cards.ROWID=column1" +
           condition + " RETURNING ROWID;";
}

bool BindChange(StatementRun& run, const CardTextChange& change) {
    return run.Bind(change.RowId) == 0 &&
           std::all_of(change.Texts.begin(), change.Texts.end(),
                       [&run](const auto& text) { return run.Bind(text.Before, text.After) == 0; });
}

}  // namespace

int Database::UpdateTexts(const std::vector<CardTextChange>& changes,
                          std::vector<int64_t>& written) {
    const Lock lock(mMutex);
    const StoreChangeGroup group(*this);
    int last = 0;
    for (const auto& [texts, cards] : SortByTexts(changes)) {
        for (size_t begin = 0; IsOpen() && !texts.empty() && begin < cards.size();) {
            const size_t size = GroupSize(cards.size() - begin, 1 + 2 * texts.size());
            const auto* const first = cards.data() + begin;
            begin += size;
            if (UpdateTextsOf(texts, first, first + size, Failure::kQuiet, written) == 0) {
                continue;
            }
            // Card by card, each failure is reported as its own.
            for (size_t i = 0; i < size; ++i) {
                const int result =
                    UpdateTextsOf(texts, first + i, first + i + 1, Failure::kReported, written);
                last = result < 0 ? result : last;
            }
        }
    }
    return IsOpen() ? last : -1;
}

int Database::UpdateTextsOf(const std::vector<CardText>& texts, const CardTextChange* const* first,
                            const CardTextChange* const* end, Failure failure,
                            std::vector<int64_t>& written) {
    StatementRun run(*this, GetStatement(MakeUpdate(texts, static_cast<size_t>(end - first))));
    if (!std::all_of(first, end, [&run](const auto* change) { return BindChange(run, *change); })) {
        return -1;
    }
    return StepWritten(run, "UpdateTexts", failure, written);
}

int Database::StepWritten(StatementRun& run, const char* label, Failure failure,
                          std::vector<int64_t>& written) {
    const size_t before = written.size();
    const auto step = [&] {
        return failure == Failure::kQuiet ? StepQuietly(run, label) : run.Step(label);
    };
    // All cards are changed before the first row comes.
    int result = step();
    for (; result == 0 && !run.IsDone(); result = step()) {
        written.push_back(run.ColumnInt64(0));
    }
    if (result < 0) {
        written.resize(before);
    }
    return result;
}

int Database::VisitCardsAfter(int64_t& rowId, int32_t most, const CardRowVisitor& visit) {
    const Lock lock(mMutex);
    static const std::string sql =
        std::string(kSelectCardsAndRows) + "WHERE ROWID > ? ORDER BY ROWID LIMIT ?;";
    StatementRun run(*this, GetStatement(sql), rowId, most);
    const CardRow row(run);
    for (int count = 0;; ++count) {
        const int result = StepQuietly(run, "VisitCardsAfter");
        if (result < 0 || run.IsDone()) {
            return result < 0 ? result : count;
        }
        rowId = row.RowId();
        visit(row);
    }
}
