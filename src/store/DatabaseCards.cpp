// Cards: writing, reading, counting, and the row ids of lists.

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "base/Time.h"
#include "base/Unicode.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/StoreSchema.h"

namespace {

// Each number of rows has a statement of its own, prepared once.
constexpr size_t kGroupSizes[] = {4096, 1024, 256, 64, 16, 4, 1};
constexpr size_t kParametersPerCard = 24;

int VisitRows(StatementRun& run, const char* label, const CardRowVisitor& visit) {
    const CardRow row(run);
    int result = run.Step(label);
    for (; result == 0 && !run.IsDone(); result = run.Step(label)) {
        visit(row);
    }
    return result;
}

}  // namespace

int Database::InsertFlashCard(const FlashCard& card) {
    const Lock lock(mMutex);
    if (card.CardId.IsZero()) {
        return -1;
    }
    StatementRun run(*this, Prepared(StatementId::kInsertFlashCard), card.CardId);
    return BindCardFields(run, card) < 0 ? -1 : run.Step("InsertFlashCard");
}

size_t Database::GroupSize(size_t left, size_t parametersPerRow) const {
    const auto limit =
        static_cast<size_t>(std::max(1, sqlite3_limit(mpHandle, SQLITE_LIMIT_VARIABLE_NUMBER, -1)));
    return *std::find_if(std::begin(kGroupSizes), std::end(kGroupSizes), [&](size_t size) {
        return size == 1 || (size <= left && size * parametersPerRow <= limit);
    });
}

int Database::StepQuietly(StatementRun& run, const char* label) {
    const bool wasTrying = std::exchange(mTrying, true);
    const bool hadFailed = mTryFailed;
    const int result = run.Step(label);
    mTrying = wasTrying;
    mTryFailed = hadFailed;
    return result;
}

int Database::InsertFlashCards(const std::vector<FlashCard>& cards, size_t& inserted) {
    const Lock lock(mMutex);
    inserted = 0;
    while (IsOpen() && inserted < cards.size()) {
        const size_t size = GroupSize(cards.size() - inserted, kParametersPerCard);
        const std::string row = "(" + Repeat("?", kParametersPerCard) + ")";
        StatementRun run(*this, GetStatement(kInsertCards + Repeat(row, size) + ";"));
        const auto first = cards.begin() + static_cast<std::ptrdiff_t>(inserted);
        const bool isBound =
            std::all_of(first, first + static_cast<std::ptrdiff_t>(size), [&](const auto& card) {
                return !card.CardId.IsZero() && run.Bind(card.CardId) == 0 &&
                       BindCardFields(run, card) == 0;
            });
        const int result = isBound ? StepQuietly(run, "InsertFlashCards") : -1;
        if (result < 0) {
            return result;
        }
        inserted += size;
    }
    return IsOpen() ? 0 : -1;
}

template <typename... Values>
int Database::RunOverRowIds(const char* sql, const std::vector<int64_t>& rowIds,
                            const std::function<int(int64_t)>& single, const Values&... values) {
    const Lock lock(mMutex);
    int last = 0;
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t size = GroupSize(rowIds.size() - begin, 1 + sizeof...(values));
        StatementRun run(*this, GetStatement(sql + ("(" + Repeat("?", size) + ")")), values...);
        const size_t end = begin + size;
        for (size_t i = begin; i < end; ++i) {
            run.Bind(rowIds[i]);
        }
        const bool isDone = StepQuietly(run, "RunOverRowIds") == 0;
        for (; begin < end; ++begin) {
            const int result = isDone ? 0 : single(rowIds[begin]);
            last = result < 0 ? result : last;
        }
    }
    return IsOpen() ? last : -1;
}

int Database::CardsDeleteByRowId(const std::vector<int64_t>& rowIds) {
    return RunOverRowIds("DELETE FROM Cards WHERE ROWID IN ", rowIds,
                         [this](int64_t rowId) { return CardDeleteByRowId(rowId); });
}

int Database::CardsUpdateCategory(const std::vector<int64_t>& rowIds, int32_t categoryId) {
    return RunOverRowIds(
        "UPDATE Cards SET CategoryId=? WHERE ROWID IN ", rowIds,
        [&](int64_t rowId) { return CardUpdateCategory(rowId, categoryId); }, categoryId);
}

int Database::UpdateFlashCard(const FlashCard& card) {
    const Lock lock(mMutex);
    const int result = WriteCard(card);
    // Without a row, the card is gone or another program has stored its identity in capitals.
    if (result < 0 || sqlite3_changes(mpHandle) > 0 || LowerCardId(card.CardId) <= 0) {
        return result;
    }
    return WriteCard(card);
}

int Database::UpdateFlashCard(const FlashCard& card, int64_t version) {
    const Lock lock(mMutex);
    {
        StatementRun run(*this, Prepared(StatementId::kUpdateOfVersion));
        const bool isBound =
            BindCardFields(run, card) == 0 && run.Bind(card.CardId) == 0 && run.Bind(version) == 0;
        const int result = isBound ? run.Step("UpdateFlashCard") : -1;
        if (result < 0 || sqlite3_changes(mpHandle) > 0) {
            return result;
        }
    }
    int64_t present = 0;
    if (ReadVersion(present) < 0) {
        return -1;
    }
    return present == version ? UpdateFlashCard(card) : kChangedSince;
}

int Database::UpdateDifferences(const FlashCard& before, const FlashCard& after) {
    const Lock lock(mMutex);
    std::vector<int64_t> rowIds;
    const CardParts parts = FindDifferences(before, after);
    if (SelectRowIdById(after.CardId, rowIds) < 0) {
        return -1;
    }
    return parts.none()
               ? 0
               : UpdateParts(rowIds, parts, [&after](size_t) -> const FlashCard& { return after; });
}

int Database::ReadVersion(int64_t& version) {
    const Lock lock(mMutex);
    StatementRun run(*this, GetStatement("SELECT data_version FROM pragma_data_version;"));
    const int result = run.Step("ReadVersion");
    if (result >= 0) {
        version = run.ColumnInt64(0);
    }
    return result;
}

int Database::WriteCard(const FlashCard& card) {
    StatementRun run(*this, Prepared(StatementId::kUpdateFlashCard));
    const bool isBound = BindCardFields(run, card) == 0 && run.Bind(card.CardId) == 0;
    return isBound ? run.Step("UpdateFlashCard") : -1;
}

int Database::LowerCardId(const CardUuid& id) {
    sqlite3_stmt* const statement =
        GetStatement("UPDATE OR IGNORE Cards SET CardId=LOWER(CardId) WHERE LOWER(CardId)=?;");
    StatementRun run(*this, statement, id);
    return run.Step("LowerCardId") < 0 ? -1 : sqlite3_changes(mpHandle);
}

void Database::MendNextReviews() {
    for (const char* const prefix : {"", "R"}) {
        wxString sql =
            "UPDATE Cards SET @NextReview=@LastReview+CAST(@ReviewInterval AS INTEGER)"
            " WHERE CategoryId IN (SELECT Id FROM Categories) AND @X=0 AND @Introduced=1"
            " AND @NextReview=-1 AND @LastReview>=0"
            " AND @LastReview+CAST(@ReviewInterval AS INTEGER) BETWEEN 0 AND ";
        sql.Replace("@X", *prefix == 'R' ? "ReverseX" : "ForwardX");
        sql.Replace("@", prefix);
        ExecuteText(sql << kLastTimeStamp);
    }
}

int Database::ResetErc() {
    return Execute("UPDATE Cards SET ERC=0,RERC=0");
}

int Database::DeleteCard(const CardUuid& id) {
    const wxString label = wxString::Format("Delete CardId: %s", FormatUuid(id));
    return Run(StatementId::kDeleteCard, label.utf8_str(), id);
}

int Database::CardDeleteByRowId(int64_t rowId) {
    return Run(StatementId::kCardDeleteByRowId, "CardDeleteByRowId", rowId);
}

int Database::CardUpdateCategory(int64_t rowId, int32_t categoryId) {
    return Run(StatementId::kCardUpdateCategory, "CardUpdateCategory", categoryId, rowId);
}

int Database::UpdateFlashCardCategory(int32_t fromId, int32_t toId) {
    return Run(StatementId::kUpdateFlashCardCategory, "UpdateFlashCardCategory", toId, fromId);
}

int Database::SelectCardByRowId(int64_t rowId, std::list<FlashCard>& cards) {
    return Read(StatementId::kSelectCardByRowId, ReadFlashCardRows, cards, rowId);
}

int Database::VisitCardsByRowId(const std::vector<int64_t>& rowIds, const CardRowVisitor& visit) {
    const Lock lock(mMutex);
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t end = begin + GroupSize(rowIds.size() - begin, 1);
        StatementRun run(
            *this, GetStatement(kSelectWantedCards + Repeat("(?)", end - begin) + kOfWantedCards));
        for (; begin < end; ++begin) {
            run.Bind(rowIds[begin]);
        }
        const int result = VisitRows(run, "VisitCardsByRowId", visit);
        if (result < 0) {
            return result;
        }
    }
    return IsOpen() ? 0 : -1;
}

int Database::FindMediaColumns(std::vector<std::string>& columns) {
    StatementRun run(*this, GetStatement("SELECT name FROM pragma_table_info('Cards') WHERE name IN"
                                         " ('FrontAudio','BackAudio','FrontImage','BackImage');"));
    int result = run.Step("FindMediaColumns");
    for (; result == 0 && !run.IsDone(); result = run.Step("FindMediaColumns")) {
        columns.push_back(ToUtf8(run.ColumnText(0)));
    }
    return result;
}

size_t CardMedia::CountBytes() const {
    size_t bytes = 0;
    for (const StoredValue& value : Values) {
        bytes += static_cast<size_t>(sqlite3_value_bytes(value.get()));
    }
    return bytes;
}

int Database::SelectMedia(const std::vector<int64_t>& rowIds, size_t mostBytes,
                          std::vector<CardMedia>& media) {
    const Lock lock(mMutex);
    size_t bytes = 0;
    std::vector<std::string> columns;
    if (FindMediaColumns(columns) < 0 || columns.empty()) {
        return columns.empty() && IsOpen() ? 0 : -1;
    }
    std::string sql = "SELECT CardId";
    std::string condition;
    for (const std::string& column : columns) {
        sql += "," + column;
        condition += (condition.empty() ? "" : " OR ") + column + " NOT NULL";
    }
    sql += " FROM Cards WHERE (" + condition + ") AND ROWID IN ";
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t end = begin + GroupSize(rowIds.size() - begin, 1);
        StatementRun run(*this, GetStatement(sql + "(" + Repeat("?", end - begin) + ")"));
        for (; begin < end; ++begin) {
            run.Bind(rowIds[begin]);
        }
        int result = run.Step("SelectMedia");
        for (; result == 0 && !run.IsDone(); result = run.Step("SelectMedia")) {
            CardMedia& found = media.emplace_back();
            run.ColumnUuid(0, found.CardId);
            for (size_t i = 1; i <= columns.size(); ++i) {
                found.Values.push_back(run.ColumnValue(static_cast<int>(i)));
            }
            bytes += found.CountBytes();
            if (bytes > mostBytes) {
                media.clear();
                return 1;
            }
        }
        if (result < 0) {
            return result;
        }
    }
    return IsOpen() ? 0 : -1;
}

int Database::UpdateMedia(const CardMedia& media) {
    const Lock lock(mMutex);
    std::vector<std::string> columns;
    if (FindMediaColumns(columns) < 0 || columns.size() != media.Values.size()) {
        return -1;
    }
    std::string sql;
    for (const std::string& column : columns) {
        sql += (sql.empty() ? "UPDATE Cards SET " : ",") + column + "=?";
    }
    StatementRun run(*this, GetStatement(sql + " WHERE CardId=?;"));
    for (const StoredValue& value : media.Values) {
        run.Bind(value);
    }
    run.Bind(media.CardId);
    return run.Step("UpdateMedia");
}

int Database::SelectCardById(const CardUuid& id, std::list<FlashCard>& cards) {
    return Read(StatementId::kSelectCardById, ReadFlashCardRows, cards, id);
}

int Database::SelectCardsByFrontBack(const wxString& front, const wxString& back,
                                     std::list<FlashCard>& cards) {
    return Read(StatementId::kSelectCardsByFrontBack, ReadFlashCardRows, cards, front, back);
}

int Database::SelectEarly(ReviewDirection direction, int32_t categoryId,
                          std::list<FlashCard>& cards) {
    return Read({StatementId::kSelectEarly, direction}, ReadFlashCardRow, cards, categoryId);
}

int Database::SelectNew(ReviewDirection direction, int32_t categoryId,
                        std::list<FlashCard>& cards) {
    return Read({StatementId::kSelectNew, direction}, ReadFlashCardRow, cards, categoryId);
}

int Database::SelectNextDue(ReviewDirection direction, int32_t categoryId,
                            std::list<FlashCard>& cards) {
    return Read({StatementId::kSelectNextDue, direction}, ReadFlashCardRow, cards, categoryId);
}

int Database::VisitReady(ReviewDirection direction, int32_t categoryId, const wxDateTime& limit,
                         const CardRowVisitor& visit) {
    const Lock lock(mMutex);
    StatementRun run(*this, Prepared({StatementId::kVisitReady, direction}), categoryId, limit);
    return VisitRows(run,
                     direction == kReviewReverse ? "SelectRReadySortByRNextReview"
                                                 : "SelectReadySortByNextReview",
                     visit);
}

int Database::SelectSchedules(int32_t most, int64_t& rowId, std::vector<CardSchedules>& cards) {
    const Lock lock(mMutex);
    StatementRun run(*this, Prepared(StatementId::kSelectSchedules), rowId, most);
    const auto readSide = [&run](int excluded, int first, CardSchedules::Side& side) {
        side.Excluded = run.ColumnInt(excluded) != 0;
        side.Introduced = run.ColumnInt(first) != 0;
        side.LastReview = run.ColumnSeconds(first + 1);
        side.Interval = static_cast<float>(run.ColumnDouble(first + 2));
        side.Difficulty = static_cast<uint8_t>(run.ColumnInt(first + 3));
    };
    for (int count = 0;; ++count) {
        const int result = StepQuietly(run, "SelectSchedules");
        if (result < 0 || run.IsDone()) {
            return result < 0 ? result : count;
        }
        rowId = run.ColumnInt64(0);
        CardSchedules& card = cards.emplace_back();
        // A text that is no identity leaves zero.
        run.ColumnUuid(1, card.CardId);
        card.CategoryId = run.ColumnInt(2);
        readSide(3, 5, card.Forward);
        readSide(4, 9, card.Reverse);
    }
}

int Database::SelectMaxErc(int32_t categoryId, int32_t& erc) {
    const Lock lock(mMutex);
    int32_t greatest = 0;
    for (const ReviewDirection direction : kEachDirection) {
        std::list<FlashCard> cards;
        if (Read({StatementId::kSelectMaxErc, direction}, ReadFlashCardRow, cards, categoryId) <
            0) {
            return -1;
        }
        for (const FlashCard& card : cards) {
            greatest = std::max(greatest, ScheduleOf(card, direction).ERC);
        }
    }
    erc = greatest;
    return 0;
}

int Database::CountAllCards(int32_t& count) {
    return SelectInt(StatementId::kCountAllCards, count, "SelectInt");
}

int Database::SelectCategoryIdCount(const CategoryChoice& choice, int32_t& count) {
    return SumInt(StatementId::kSelectCategoryIdCount, count, "mpSelectCategoryIdCountStmt",
                  choice);
}

int Database::Count(ReviewDirection direction, const CategoryChoice& choice, int32_t& count) {
    return SumInt({StatementId::kCount, direction}, count, "SelectIntBindInt", choice);
}

int Database::CountIntroduced(ReviewDirection direction, const CategoryChoice& choice,
                              int32_t& count) {
    return SumInt({StatementId::kCountIntroduced, direction}, count, "SelectIntBindInt", choice);
}

int Database::CountReady(ReviewDirection direction, const CategoryChoice& choice,
                         const wxDateTime& now, int32_t& count) {
    return SumInt(
        {StatementId::kCountReady, direction}, count,
        direction == kReviewReverse ? "SelectReadyCountReverse" : "SelectReadyCountForward", choice,
        now);
}

int Database::SelectCardIdCount(const CardUuid& id, int32_t& count) {
    return SelectInt(StatementId::kSelectCardIdCount, count, "SelectCardIdCount", id);
}

bool Database::IsEmpty() {
    int32_t count = 0;
    return CountAllCards(count) < 0 || count == 0;
}

int Database::SelectMaxIntroductionOrder(int32_t categoryId, int32_t& order) {
    return SelectInt(StatementId::kSelectMaxIntroductionOrder, order, "SelectIntBindInt",
                     categoryId);
}

int Database::SelectRowIdById(const CardUuid& id, std::vector<int64_t>& rowIds) {
    return Read(StatementId::kSelectRowIdById, ReadInt64Rows, rowIds, id);
}
