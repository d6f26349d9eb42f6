// Cards: writing, reading, counting, and the row ids of lists.

#include "base/Time.h"
#include "store/CardRow.h"
#include "store/Database.h"

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

int Database::VisitCardByRowId(int64_t rowId, bool& found, const CardRowVisitor& visit) {
    const Lock lock(mMutex);
    found = false;
    StatementRun run(*this, mpSelectCardByRowIdStmt, rowId);
    if (run.Step("VisitCardByRowId") < 0) {
        return -1;
    }
    if (!run.IsDone()) {
        found = true;
        visit(CardRow(run));
    }
    return 0;
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
