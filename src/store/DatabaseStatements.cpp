// Every statement that the store prepares when it opens.

#include "store/Database.h"
#include "store/StoreSchema.h"

namespace {

constexpr char kCountCards[] = "SELECT count(*) FROM Cards ";

}  // namespace

const std::vector<Database::PreparedText>& Database::GlobalTexts() {
    static const std::vector<PreparedText> kTexts = {
        {&Database::mpGetGlobalStmt, "", "SELECT Value FROM Globals WHERE Key=?;"},
        {&Database::mpInsertGlobalStmt, "", "INSERT INTO Globals (Key,Value) VALUES (?,?);"},
        {&Database::mpUpdateGlobalStmt, "", "UPDATE Globals SET Value=? WHERE Key=?;"},
    };
    return kTexts;
}

const std::vector<Database::PreparedText>& Database::CardTexts() {
    static const std::vector<PreparedText> kTexts = {
        {&Database::mpInsertFlashCardStmt, kInsertCards,
         "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?);"},
        {&Database::mpUpdateFlashCardStmt, "UPDATE Cards SET ",
         "Front=?,Back=?,CategoryId=?,Author=?,Chapter=?,IntroductionOrder=?,ForwardX=?,"
         "ReverseX=?,Notes=?,Introduced=?,LastReview=?,LastScore=?,ReviewInterval=?,Difficulty=?,"
         "NextReview=?,ERC=?,RIntroduced=?,RLastReview=?,RLastScore=?,RReviewInterval=?,"
         "RDifficulty=?,RNextReview=?,RERC=?"
         " WHERE CardId=?;"},
        {&Database::mpDeleteCardStmt, "", "DELETE FROM Cards WHERE CardId=?"},
        {&Database::mpCardDeleteByRowIdStmt, "", "DELETE FROM Cards WHERE ROWID=?"},
        {&Database::mpCardUpdateCategoryStmt, "", "UPDATE Cards SET CategoryId=? WHERE ROWID=?"},
        {&Database::mpUpdateFlashCardCategoryStmt, "",
         "UPDATE Cards SET CategoryId=? WHERE CategoryId=?;"},
        // Nothing runs these three; a file on which they cannot be prepared is no store.
        {&Database::mpDeleteAllCardsStmt, "", "DELETE FROM Cards"},
        {&Database::mpSelectAllCardsStmt, kSelectCards, ""},
        {&Database::mpSelectAllCardsOrderStmt, kSelectCards,
         "ORDER BY CategoryId, IntroductionOrder"},
        {&Database::mpSelectCardByRowIdStmt, kSelectCards, "WHERE ROWID = ?"},
        {&Database::mpSelectCardByIdStmt, kSelectCards, "WHERE CardId = ?"},
        {&Database::mpSelectCardsByFrontBackStmt, kSelectCards, "WHERE Front = ? AND Back = ?"},
        {&Database::mpSelectEarlyForwardStmt, kSelectCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY ERC,NextReview"},
        {&Database::mpSelectEarlyReverseStmt, kSelectCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RERC,RNextReview"},
        {&Database::mpSelectNewForwardStmt, kSelectCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 0 ORDER BY IntroductionOrder"},
        {&Database::mpSelectNewReverseStmt, kSelectCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 0 ORDER BY IntroductionOrder"},
        {&Database::mpSelectNextDueForwardStmt, kSelectCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY NextReview"},
        {&Database::mpSelectNextDueReverseStmt, kSelectCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RNextReview"},
        {&Database::mpSelectReadySortByNextReviewStmt, kSelectCardsAndRows,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 AND NextReview < ?"
         " ORDER BY NextReview"},
        {&Database::mpSelectRReadySortByRNextReviewStmt, kSelectCardsAndRows,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 AND RNextReview < ?"
         " ORDER BY RNextReview"},
        {&Database::mpSelectSchedulesStmt, "",
         "SELECT ROWID, CardId, CategoryId, ForwardX, ReverseX, Introduced, LastReview,"
         " ReviewInterval, Difficulty, RIntroduced, RLastReview, RReviewInterval, RDifficulty"
         " FROM Cards WHERE ROWID > ? ORDER BY ROWID LIMIT ?"},
        {&Database::mpSelectMaxErcForwardStmt, kSelectCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY ERC DESC"},
        {&Database::mpSelectMaxErcReverseStmt, kSelectCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RERC DESC"},
        {&Database::mpCountAllCardsStmt, kCountCards, ""},
        {&Database::mpSelectCategoryIdCountStmt, kCountCards, "WHERE CategoryId = ?"},
        {&Database::mpCountForwardStmt, kCountCards, "WHERE CategoryId = ? AND ForwardX = 0"},
        {&Database::mpCountReverseStmt, kCountCards, "WHERE CategoryId = ? AND ReverseX = 0"},
        {&Database::mpCountIntroducedForwardStmt, kCountCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1"},
        {&Database::mpCountIntroducedReverseStmt, kCountCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1"},
        {&Database::mpSelectCardIdCountStmt, kCountCards, "WHERE CardId = ?"},
        {&Database::mpSelectReadyCountForwardStmt, kCountCards,
         "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 AND NextReview < ?"},
        {&Database::mpSelectReadyCountReverseStmt, kCountCards,
         "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 AND RNextReview < ?"},
        {&Database::mpSelectMaxIntroductionOrderStmt, "",
         "SELECT IntroductionOrder FROM Cards WHERE CategoryId = ?"
         " ORDER BY IntroductionOrder DESC;"},
        {&Database::mpSelectRowIdByIdStmt, "", "SELECT ROWID from Cards WHERE CardId=?;"},
        {&Database::mpSelectAllCategoriesStmt, "", "SELECT Id, Name FROM Categories;"},
        {&Database::mpSelectCategoryByIdStmt, "", "SELECT Id, Name FROM Categories WHERE Id=?;"},
        {&Database::mpSelectCategoryByNameStmt, "",
         "SELECT Id, Name FROM Categories WHERE Name=?;"},
        {&Database::mpCategoryInsertStmt, "", "INSERT INTO Categories (Id,Name) VALUES (?,?);"},
        {&Database::mpUpdateCategoryStmt, "", "UPDATE Categories SET Name=? WHERE Id=?;"},
        {&Database::mpDeleteCategoryStmt, "", "DELETE FROM Categories WHERE Id=?;"},
    };
    return kTexts;
}

void Database::Prepare(const std::vector<PreparedText>& texts) {
    for (const PreparedText& text : texts) {
        this->*text.Member = GetStatement(wxString(text.Head) + text.Tail);
    }
}

void Database::ForgetStatements(const std::vector<PreparedText>& texts) {
    for (const PreparedText& text : texts) {
        this->*text.Member = nullptr;
    }
}
