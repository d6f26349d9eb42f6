// Cards: writing, reading, counting, and the row ids of lists.

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "base/Time.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/StoreSchema.h"

namespace {

// A statement is prepared once for each of these numbers of rows.
constexpr size_t kGroupSizes[] = {4096, 1024, 256, 64, 16, 4, 1};
constexpr size_t kParametersPerCard = 24;

// Returns the text repeated, with commas between.
std::string Repeat(const std::string& text, size_t count) {
    std::string all = text;
    all.reserve(count * (text.length() + 1));
    for (size_t i = 1; i < count; ++i) {
        all += ',';
        all += text;
    }
    return all;
}

}  // namespace

wxDateTime ReadyRow::LastReview() const {
    const int first = mReverse ? kReverseScheduleColumn : kForwardScheduleColumn;
    return mRun.ColumnTime(first + kLastReviewOffset);
}

float ReadyRow::ReviewInterval() const {
    const int first = mReverse ? kReverseScheduleColumn : kForwardScheduleColumn;
    return static_cast<float>(mRun.ColumnDouble(first + kReviewIntervalOffset));
}

int64_t ReadyRow::RowId() const {
    return mRun.ColumnInt64(kRowIdColumn);
}

int Database::InsertFlashCard(const FlashCard& card) {
    const Lock lock(mMutex);
    if (card.CardId.IsZero()) {
        return -1;
    }
    StatementRun run(*this, mpInsertFlashCardStmt, card.CardId);
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
    // No row: the card has gone, or another program has stored its identity in capitals.
    if (result < 0 || sqlite3_changes(mpHandle) > 0 || LowerCardId(card.CardId) <= 0) {
        return result;
    }
    return WriteCard(card);
}

int Database::WriteCard(const FlashCard& card) {
    StatementRun run(*this, mpUpdateFlashCardStmt);
    const bool isBound = BindCardFields(run, card) == 0 && run.Bind(card.CardId) == 0;
    return isBound ? run.Step("UpdateFlashCard") : -1;
}

int Database::LowerCardId(const CardUuid& id) {
    sqlite3_stmt* const statement =
        GetStatement("UPDATE OR IGNORE Cards SET CardId=LOWER(CardId) WHERE LOWER(CardId)=?;");
    return Run(statement, "LowerCardId", id) < 0 ? -1 : sqlite3_changes(mpHandle);
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
    const Lock lock(mMutex);
    const wxString label = wxString::Format("Delete CardId: %s", FormatUuid(id));
    return Run(mpDeleteCardStmt, label.utf8_str(), id);
}

int Database::CardDeleteByRowId(int64_t rowId) {
    const Lock lock(mMutex);
    return Run(mpCardDeleteByRowIdStmt, "CardDeleteByRowId", rowId);
}

int Database::CardUpdateCategory(int64_t rowId, int32_t categoryId) {
    const Lock lock(mMutex);
    return Run(mpCardUpdateCategoryStmt, "CardUpdateCategory", categoryId, rowId);
}

int Database::UpdateFlashCardCategory(int32_t fromId, int32_t toId) {
    const Lock lock(mMutex);
    return Run(mpUpdateFlashCardCategoryStmt, "UpdateFlashCardCategory", toId, fromId);
}

int Database::SelectCardByRowId(int64_t rowId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectCards(mpSelectCardByRowIdStmt, cards, rowId);
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
        int result = run.Step("VisitCardsByRowId");
        for (; result == 0 && !run.IsDone(); result = run.Step("VisitCardsByRowId")) {
            visit(CardRow(run));
        }
        if (result < 0) {
            return result;
        }
    }
    return IsOpen() ? 0 : -1;
}

int Database::SelectCardById(const CardUuid& id, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectCards(mpSelectCardByIdStmt, cards, id);
}

int Database::SelectCardsByFrontBack(const wxString& front, const wxString& back,
                                     std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectCards(mpSelectCardsByFrontBackStmt, cards, front, back);
}

int Database::SelectFirstCard(sqlite3_stmt* statement, int32_t categoryId,
                              std::list<FlashCard>& cards) {
    StatementRun run(*this, statement, categoryId);
    return ReadFlashCardRow(run, cards);
}

int Database::SelectEarlyForward(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectEarlyForwardStmt, categoryId, cards);
}

int Database::SelectEarlyReverse(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectEarlyReverseStmt, categoryId, cards);
}

int Database::SelectNewForward(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectNewForwardStmt, categoryId, cards);
}

int Database::SelectNewReverse(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectNewReverseStmt, categoryId, cards);
}

int Database::SelectNextDueForward(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectNextDueForwardStmt, categoryId, cards);
}

int Database::SelectNextDueReverse(int32_t categoryId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    return SelectFirstCard(mpSelectNextDueReverseStmt, categoryId, cards);
}

int Database::VisitReady(sqlite3_stmt* statement, bool reverse, int32_t categoryId,
                         const wxDateTime& limit, const ReadyRowVisitor& visit, const char* label) {
    StatementRun run(*this, statement, categoryId, limit);
    const ReadyRow row(run, reverse);
    for (;;) {
        const int result = run.Step(label);
        if (result < 0) {
            return result;
        }
        if (run.IsDone()) {
            return 0;
        }
        visit(row);
    }
}

int Database::SelectReadySortByNextReview(int32_t categoryId, const wxDateTime& limit,
                                          const ReadyRowVisitor& visit) {
    const Lock lock(mMutex);
    return VisitReady(mpSelectReadySortByNextReviewStmt, false, categoryId, limit, visit,
                      "SelectReadySortByNextReview");
}

int Database::SelectRReadySortByRNextReview(int32_t categoryId, const wxDateTime& limit,
                                            const ReadyRowVisitor& visit) {
    const Lock lock(mMutex);
    return VisitReady(mpSelectRReadySortByRNextReviewStmt, true, categoryId, limit, visit,
                      "SelectRReadySortByRNextReview");
}

int Database::SelectSchedules(int32_t most, int64_t& rowId, std::vector<CardSchedules>& cards) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpSelectSchedulesStmt, rowId, most);
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
        // A text that is no identity leaves it zero.
        run.ColumnUuid(1, card.CardId);
        card.CategoryId = run.ColumnInt(2);
        readSide(3, 5, card.Forward);
        readSide(4, 9, card.Reverse);
    }
}

int Database::SelectMaxErc(int32_t categoryId, int32_t& erc) {
    const Lock lock(mMutex);
    std::list<FlashCard> forward;
    std::list<FlashCard> reverse;
    if (SelectFirstCard(mpSelectMaxErcForwardStmt, categoryId, forward) < 0 ||
        SelectFirstCard(mpSelectMaxErcReverseStmt, categoryId, reverse) < 0) {
        return -1;
    }
    erc = 0;
    if (!forward.empty() && forward.front().Forward.ERC >= 0) {
        erc = forward.front().Forward.ERC;
    }
    if (!reverse.empty() && erc <= reverse.front().Reverse.ERC) {
        erc = reverse.front().Reverse.ERC;
    }
    return 0;
}

int Database::CountAllCards(int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpCountAllCardsStmt, count, "SelectInt");
}

int Database::SelectCategoryIdCount(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpSelectCategoryIdCountStmt, count, "mpSelectCategoryIdCountStmt", categoryId);
}

int Database::CountForward(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpCountForwardStmt, count, "SelectIntBindInt", categoryId);
}

int Database::CountReverse(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpCountReverseStmt, count, "SelectIntBindInt", categoryId);
}

int Database::CountIntroducedForward(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpCountIntroducedForwardStmt, count, "SelectIntBindInt", categoryId);
}

int Database::CountIntroducedReverse(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpCountIntroducedReverseStmt, count, "SelectIntBindInt", categoryId);
}

int Database::SelectCardIdCount(const CardUuid& id, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpSelectCardIdCountStmt, count, "SelectCardIdCount", id);
}

int Database::SelectReadyCountForward(int32_t categoryId, const wxDateTime& now, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpSelectReadyCountForwardStmt, count, "SelectReadyCountForward", categoryId,
                     now);
}

int Database::SelectReadyCountReverse(int32_t categoryId, const wxDateTime& now, int32_t& count) {
    const Lock lock(mMutex);
    return SelectInt(mpSelectReadyCountReverseStmt, count, "SelectReadyCountReverse", categoryId,
                     now);
}

bool Database::IsEmpty() {
    int32_t count = 0;
    return CountAllCards(count) < 0 || count == 0;
}

int Database::SelectMaxIntroductionOrder(int32_t categoryId, int32_t& order) {
    const Lock lock(mMutex);
    return SelectInt(mpSelectMaxIntroductionOrderStmt, order, "SelectIntBindInt", categoryId);
}

int Database::SelectRowIdById(const CardUuid& id, std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpSelectRowIdByIdStmt, id);
    return ReadInt64Rows(run, rowIds);
}
