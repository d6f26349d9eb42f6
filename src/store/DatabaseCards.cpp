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
    StatementRun run(*this, mpInsertFlashCardStmt);
    int index = 1;
    if (run.BindUuid(index++, card.CardId) < 0 || BindCardFields(run, index, card) < 0) {
        return -1;
    }
    return run.Step("InsertFlashCard");
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
    int index = 1;
    if (BindCardFields(run, index, card) < 0 || run.BindUuid(index, card.CardId) < 0) {
        return -1;
    }
    return run.Step("UpdateFlashCard");
}

int Database::LowerCardId(const CardUuid& id) {
    StatementRun run(*this, GetStatement("UPDATE OR IGNORE Cards SET CardId=LOWER(CardId)"
                                         " WHERE LOWER(CardId)=?;"));
    if (run.BindUuid(1, id) < 0 || run.Step("LowerCardId") < 0) {
        return -1;
    }
    return sqlite3_changes(mpHandle);
}

int Database::MendNextReviews() {
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
    return 0;
}

int Database::ResetErc() {
    return Execute("UPDATE Cards SET ERC=0,RERC=0");
}

int Database::DeleteCard(const CardUuid& id) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpDeleteCardStmt);
    if (run.BindUuid(1, id) < 0) {
        return -1;
    }
    return run.Step(wxString::Format("Delete CardId: %s", FormatUuid(id)));
}

int Database::CardDeleteByRowId(int64_t rowId) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpCardDeleteByRowIdStmt);
    if (run.BindInt64(1, rowId) < 0) {
        return -1;
    }
    return run.Step("CardDeleteByRowId");
}

int Database::CardUpdateCategory(int64_t rowId, int32_t categoryId) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpCardUpdateCategoryStmt);
    if (run.BindInt(1, categoryId) < 0 || run.BindInt64(2, rowId) < 0) {
        return -1;
    }
    return run.Step("CardUpdateCategory");
}

int Database::UpdateFlashCardCategory(int32_t fromId, int32_t toId) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpUpdateFlashCardCategoryStmt);
    if (run.BindInt(2, fromId) < 0 || run.BindInt(1, toId) < 0) {
        return -1;
    }
    return run.Step("UpdateFlashCardCategory");
}

int Database::SelectCardByRowId(int64_t rowId, std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    cards.clear();
    StatementRun run(*this, mpSelectCardByRowIdStmt);
    if (run.BindInt64(1, rowId) < 0) {
        return -1;
    }
    return ReadFlashCardRows(run, cards, true);
}

int Database::VisitCardByRowId(int64_t rowId, bool& found, const CardRowVisitor& visit) {
    static const wxString label = "VisitCardByRowId";
    const Lock lock(mMutex);
    found = false;
    StatementRun run(*this, mpSelectCardByRowIdStmt);
    if (run.BindInt64(1, rowId) < 0 || run.Step(label) < 0) {
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
    cards.clear();
    StatementRun run(*this, mpSelectCardByIdStmt);
    if (run.BindUuid(1, id) < 0) {
        return -1;
    }
    return ReadFlashCardRows(run, cards, true);
}

int Database::SelectCardsByFrontBack(const wxString& front, const wxString& back,
                                     std::list<FlashCard>& cards) {
    const Lock lock(mMutex);
    cards.clear();
    StatementRun run(*this, mpSelectCardsByFrontBackStmt);
    if (run.BindText(1, front) < 0 || run.BindText(2, back) < 0) {
        return -1;
    }
    return ReadFlashCardRows(run, cards, true);
}

int Database::SelectFirstCard(sqlite3_stmt* statement, int32_t categoryId,
                              std::list<FlashCard>& cards) {
    cards.clear();
    StatementRun run(*this, statement);
    if (run.BindInt(1, categoryId) < 0) {
        return -1;
    }
    return ReadFlashCardRows(run, cards, false);
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

int Database::VisitReady(sqlite3_stmt* statement, bool reverse, int32_t categoryId,
                         const wxDateTime& limit, const ReadyRowVisitor& visit,
                         const wxString& label) {
    StatementRun run(*this, statement);
    if (run.BindInt(1, categoryId) < 0 || run.BindTime(2, limit) < 0) {
        return -1;
    }
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
    return SelectInt(mpCountAllCardsStmt, count);
}

int Database::SelectCategoryIdCount(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpSelectCategoryIdCountStmt, categoryId, count,
                            "mpSelectCategoryIdCountStmt");
}

int Database::CountForward(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpCountForwardStmt, categoryId, count);
}

int Database::CountReverse(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpCountReverseStmt, categoryId, count);
}

int Database::CountIntroducedForward(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpCountIntroducedForwardStmt, categoryId, count);
}

int Database::CountIntroducedReverse(int32_t categoryId, int32_t& count) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpCountIntroducedReverseStmt, categoryId, count);
}

int Database::SelectCardIdCount(const CardUuid& id, int32_t& count) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpSelectCardIdCountStmt);
    if (run.BindUuid(1, id) < 0) {
        return -1;
    }
    return ReadInt(run, count, "SelectCardIdCount");
}

int Database::SelectReadyCount(sqlite3_stmt* statement, int32_t categoryId, const wxDateTime& now,
                               int32_t& count, const wxString& label) {
    StatementRun run(*this, statement);
    if (run.BindInt(1, categoryId) < 0 || run.BindTime(2, now) < 0) {
        return -1;
    }
    return ReadInt(run, count, label);
}

int Database::SelectReadyCountForward(int32_t categoryId, const wxDateTime& now, int32_t& count) {
    const Lock lock(mMutex);
    return SelectReadyCount(mpSelectReadyCountForwardStmt, categoryId, now, count,
                            "SelectReadyCountForward");
}

int Database::SelectReadyCountReverse(int32_t categoryId, const wxDateTime& now, int32_t& count) {
    const Lock lock(mMutex);
    return SelectReadyCount(mpSelectReadyCountReverseStmt, categoryId, now, count,
                            "SelectReadyCountReverse");
}

bool Database::IsEmpty() {
    int32_t count = 0;
    return CountAllCards(count) < 0 || count == 0;
}

int Database::SelectMaxIntroductionOrder(int32_t categoryId, int32_t& order) {
    const Lock lock(mMutex);
    return SelectIntBindInt(mpSelectMaxIntroductionOrderStmt, categoryId, order);
}

int Database::SelectRowIdById(const CardUuid& id, std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    StatementRun run(*this, mpSelectRowIdByIdStmt);
    if (run.BindUuid(1, id) < 0) {
        return -1;
    }
    return ReadInt64Rows(run, rowIds);
}
