// Row ids for list views, whole or searched, in any order.

#include <algorithm>
#include <iterator>
#include <string>

#include "base/Text.h"
#include "base/Unicode.h"
#include "store/CardRow.h"
#include "store/CardSequence.h"
#include "store/Database.h"

namespace {

// True when LOWER(text) LIKE ? is true for one of the five.
constexpr char kSearchColumns[] = "CONTAINS(?,Front,Back,Author,Chapter,Notes)";

struct OrderText {
    CardColumn Column;
    const char* Expression;
};

// A card that was not introduced has no schedule yet and comes after those that have one.
constexpr OrderText kOrders[] = {
    {CardColumn::kIntroductionOrder, "IntroductionOrder"},
    {CardColumn::kFront, "Front"},
    {CardColumn::kBack, "Back"},
    {CardColumn::kCategory, "CategoryId"},
    {CardColumn::kCategoryName, "(SELECT Name FROM Categories WHERE Id=CategoryId)"},
    {CardColumn::kAuthor, "Author"},
    {CardColumn::kChapter, "Chapter"},
    {CardColumn::kForwardX, "ForwardX"},
    {CardColumn::kReverseX, "ReverseX"},
    {CardColumn::kNotes, "Notes"},
    {CardColumn::kNextReview, "Introduced=0,NextReview"},
    {CardColumn::kReviewInterval, "Introduced=0,ReviewInterval"},
    {CardColumn::kRNextReview, "RIntroduced=0,RNextReview"},
    {CardColumn::kRReviewInterval, "RIntroduced=0,RReviewInterval"},
    {CardColumn::kLastReview, "Introduced=0,LastReview"},
    {CardColumn::kDifficulty, "Introduced=0,Difficulty"},
    {CardColumn::kRLastReview, "RIntroduced=0,RLastReview"},
    {CardColumn::kRDifficulty, "RIntroduced=0,RDifficulty"},
    {CardColumn::kCardId, "CardId"},
};

const char* FindExpression(CardColumn column) {
    const auto* const found =
        std::find_if(std::begin(kOrders), std::end(kOrders),
                     [column](const OrderText& text) { return text.Column == column; });
    return found->Expression;
}

std::string FormatOrder(CardOrder order) {
    const bool isNumber = order.Column == CardColumn::kIntroductionOrder;
    return std::string(" ORDER BY ") + FindExpression(order.Column) +
           (order.Descending ? " DESC" : "") + (isNumber ? "" : ",IntroductionOrder");
}

}  // namespace

// The engine refuses a pattern that is too long, which counts as finding nothing and not as a
// failure.
bool Database::IsPatternTooLong(const wxString& pattern) const {
    const int limit = sqlite3_limit(mpHandle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);
    return ToUtf8(pattern).length() > static_cast<size_t>(limit);
}

sqlite3_stmt* Database::OrderedStatement(const std::string& selection, CardOrder order) {
    return IsOpen() ? GetStatement(selection + FormatOrder(order) + ";") : nullptr;
}

int Database::CardSelectRowIdsOrder(CardOrder order, std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    StatementRun run(*this, OrderedStatement("SELECT ROWID from Cards", order));
    return ReadInt64Rows(run, rowIds);
}

// The ids are written into the text, so that any number of categories fits.
std::string Database::OfChoice(const CategoryChoice& choice) {
    if (!choice.IsMany()) {
        return "WHERE CategoryId = ?";
    }
    std::string ids = std::to_string(choice.Id);
    for (const int32_t id : choice.Below) {
        ids += "," + std::to_string(id);
    }
    return "WHERE CategoryId IN (" + ids + ")";
}

void Database::BindChoice(StatementRun& run, const CategoryChoice& choice) {
    if (!choice.IsMany()) {
        run.Bind(choice.Id);
    }
}

int Database::CardSelectRowIdsOrder(const CategoryChoice& choice, CardOrder order,
                                    std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    StatementRun run(*this, OrderedStatement("SELECT ROWID from Cards " + OfChoice(choice), order));
    BindChoice(run, choice);
    return ReadFirstCardsOf(run, rowIds);
}

int Database::CardSelectFirstRowIds(const CategoryChoice& choice, bool descending, int most,
                                    std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    const CardOrder order(CardColumn::kIntroductionOrder, descending);
    if (!choice.IsMany()) {
        StatementRun run(*this,
                         GetStatement("SELECT ROWID from Cards WHERE CategoryId = ?" +
                                      FormatOrder(order) + " LIMIT ?;"),
                         choice.Id, most);
        return ReadFirstCardsOf(run, rowIds);
    }
    // One statement over all of them would sort all of their cards.
    std::vector<OrderedCard> places;
    const bool isRead = choice.ForEach([&](int32_t id) {
        StatementRun run(*this,
                         GetStatement("SELECT ROWID,IntroductionOrder,CategoryId from Cards"
                                      " WHERE CategoryId = ?" +
                                      FormatOrder(order) + " LIMIT ?;"),
                         id, most);
        return ReadPlaces(run, places) >= 0;
    });
    if (!isRead) {
        return -1;
    }
    std::stable_sort(places.begin(), places.end(), [descending](const auto& a, const auto& b) {
        return descending ? a.Order > b.Order : a.Order < b.Order;
    });
    places.resize(std::min(places.size(), static_cast<size_t>(most)));
    std::transform(places.begin(), places.end(), std::back_inserter(rowIds),
                   [](const OrderedCard& place) { return place.RowId; });
    if (mTrying) {
        ReadFirstCards(rowIds);
    }
    return 0;
}

int Database::VisitTexts(
    CardColumn column, int64_t first, int64_t last,
    const std::function<void(int64_t rowId, std::u16string_view text)>& visit) {
    const Lock lock(mMutex);
    const bool isRead = TryLocked([&] {
        StatementRun run(*this,
                         GetStatement(std::string("SELECT ROWID,") + FindExpression(column) +
                                      " FROM Cards WHERE ROWID BETWEEN ? AND ? ORDER BY ROWID;"),
                         first, last);
        while (run.Step("VisitTexts") >= 0 && !run.IsDone()) {
            visit(run.ColumnInt64(0), run.ColumnUtf16(1));
        }
    });
    return isRead ? 0 : -1;
}

int Database::ReadFirstCardsOf(StatementRun& run, std::vector<int64_t>& rowIds) {
    if (ReadInt64Rows(run, rowIds) < 0) {
        return -1;
    }
    if (mTrying) {
        ReadFirstCards(rowIds);
    }
    return 0;
}

// Reads the cards that a window draws at once. Try records a step that fails. A card with a damaged
// value is no failure, as its row in the list shows it.
void Database::ReadFirstCards(const std::vector<int64_t>& rowIds) {
    constexpr size_t kFirstPage = 50;
    std::list<FlashCard> cards;
    for (size_t i = 0; i < std::min(rowIds.size(), kFirstPage); ++i) {
        SelectCardByRowId(rowIds[i], cards);
    }
}

int Database::SearchRowIdsOrder(const wxString& text, CardOrder order,
                                std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    StatementRun run(
        *this,
        OrderedStatement(std::string("SELECT ROWID FROM Cards WHERE ") + kSearchColumns, order));
    return ReadSearch(run, text, rowIds);
}

int Database::SearchRowIdsOrder(const CategoryChoice& choice, const wxString& text, CardOrder order,
                                std::vector<int64_t>& rowIds) {
    const Lock lock(mMutex);
    const std::string selection =
        "SELECT ROWID FROM Cards " + OfChoice(choice) + " AND " + kSearchColumns;
    StatementRun run(*this, OrderedStatement(selection, order));
    BindChoice(run, choice);
    return ReadSearch(run, text, rowIds);
}

int Database::ReadSearch(StatementRun& run, const wxString& text, std::vector<int64_t>& rowIds) {
    const wxString pattern = "%" + LowerWide(text) + "%";
    if (IsOpen() && IsPatternTooLong(pattern)) {
        return 0;
    }
    run.Bind(pattern);
    return ReadInt64Rows(run, rowIds);
}
