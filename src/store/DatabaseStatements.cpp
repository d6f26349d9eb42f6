// Every statement that the store prepares when it opens.

#include <iterator>

#include "store/Database.h"
#include "store/StoreSchema.h"

namespace {

constexpr char kUpdateCards[] =
    "UPDATE Cards SET "
    "Front=?,Back=?,CategoryId=?,Author=?,Chapter=?,IntroductionOrder=?,ForwardX=?,"
    "ReverseX=?,Notes=?,Introduced=?,LastReview=?,LastScore=?,ReviewInterval=?,Difficulty=?,"
    "NextReview=?,ERC=?,RIntroduced=?,RLastReview=?,RLastScore=?,RReviewInterval=?,"
    "RDifficulty=?,RNextReview=?,RERC=? WHERE CardId=?";

constexpr char kCountCards[] = "SELECT count(*) FROM Cards ";

}  // namespace

const Database::StatementText Database::kStatementTexts[] = {
    {StatementId::kGetGlobal, "", "SELECT Value FROM Globals WHERE Key=?;"},
    {StatementId::kInsertGlobal, "", "INSERT INTO Globals (Key,Value) VALUES (?,?);"},
    {StatementId::kUpdateGlobal, "", "UPDATE Globals SET Value=? WHERE Key=?;"},
    {StatementId::kInsertFlashCard, kInsertCards,
     "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?);"},
    {StatementId::kUpdateFlashCard, kUpdateCards, ";"},
    {StatementId::kUpdateOfVersion, kUpdateCards,
     " AND (SELECT data_version FROM pragma_data_version)=?;"},
    {StatementId::kDeleteCard, "", "DELETE FROM Cards WHERE CardId=?"},
    {StatementId::kCardDeleteByRowId, "", "DELETE FROM Cards WHERE ROWID=?"},
    {StatementId::kCardUpdateCategory, "", "UPDATE Cards SET CategoryId=? WHERE ROWID=?"},
    {StatementId::kUpdateFlashCardCategory, "",
     "UPDATE Cards SET CategoryId=? WHERE CategoryId=?;"},
    // These three are never run; a file on which they cannot be prepared is no store.
    {StatementId::kUnused, "", "DELETE FROM Cards"},
    {StatementId::kUnused, kSelectCards, ""},
    {StatementId::kUnused, kSelectCards, "ORDER BY CategoryId, IntroductionOrder"},
    {StatementId::kSelectCardByRowId, kSelectCards, "WHERE ROWID = ?"},
    {StatementId::kSelectCardById, kSelectCards, "WHERE CardId = ?"},
    {StatementId::kSelectCardsByFrontBack, kSelectCards, "WHERE Front = ? AND Back = ?"},
    {StatementId::kSelectEarly, kSelectCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY ERC,NextReview",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RERC,RNextReview"},
    {StatementId::kSelectNew, kSelectCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 0 ORDER BY IntroductionOrder",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 0 ORDER BY IntroductionOrder"},
    {StatementId::kSelectNextDue, kSelectCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY NextReview",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RNextReview"},
    {StatementId::kVisitReady, kSelectCardsAndRows,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 AND NextReview < ?"
     " ORDER BY NextReview",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 AND RNextReview < ?"
     " ORDER BY RNextReview"},
    {StatementId::kSelectSchedules, "",
     "SELECT ROWID, CardId, CategoryId, ForwardX, ReverseX, Introduced, LastReview,"
     " ReviewInterval, Difficulty, RIntroduced, RLastReview, RReviewInterval, RDifficulty"
     " FROM Cards WHERE ROWID > ? ORDER BY ROWID LIMIT ?"},
    {StatementId::kSelectMaxErc, kSelectCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 ORDER BY ERC DESC",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 ORDER BY RERC DESC"},
    {StatementId::kCountAllCards, kCountCards, ""},
    {StatementId::kSelectCategoryIdCount, kCountCards, "WHERE CategoryId = ?"},
    {StatementId::kCount, kCountCards, "WHERE CategoryId = ? AND ForwardX = 0",
     "WHERE CategoryId = ? AND ReverseX = 0"},
    {StatementId::kCountIntroduced, kCountCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1"},
    {StatementId::kSelectCardIdCount, kCountCards, "WHERE CardId = ?"},
    {StatementId::kCountReady, kCountCards,
     "WHERE CategoryId = ? AND ForwardX = 0 AND  Introduced = 1 AND NextReview < ?",
     "WHERE CategoryId = ? AND ReverseX = 0 AND RIntroduced = 1 AND RNextReview < ?"},
    {StatementId::kSelectMaxIntroductionOrder, "",
     "SELECT IntroductionOrder FROM Cards WHERE CategoryId = ?"
     " ORDER BY IntroductionOrder DESC;"},
    {StatementId::kSelectRowIdById, "", "SELECT ROWID from Cards WHERE CardId=?;"},
    {StatementId::kSelectAllCategories, "", "SELECT Id, Name FROM Categories;"},
    {StatementId::kSelectCategoryById, "", "SELECT Id, Name FROM Categories WHERE Id=?;"},
    {StatementId::kSelectCategoryByName, "", "SELECT Id, Name FROM Categories WHERE Name=?;"},
    {StatementId::kCategoryInsert, "", "INSERT INTO Categories (Id,Name) VALUES (?,?);"},
    {StatementId::kUpdateCategory, "", "UPDATE Categories SET Name=? WHERE Id=?;"},
    {StatementId::kDeleteCategory, "", "DELETE FROM Categories WHERE Id=?;"},
};

void Database::Prepare(StatementId first, StatementId last) {
    for (const StatementText& text : kStatementTexts) {
        for (size_t i = 0; i < std::size(text.Tails); ++i) {
            if (text.Id >= first && text.Id <= last && text.Tails[i] != nullptr) {
                mPrepared[static_cast<size_t>(text.Id)][i] =
                    GetStatement(std::string(text.Head) + text.Tails[i]);
            }
        }
    }
}
