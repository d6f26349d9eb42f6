// Finds the cards that the words of a search describe, in one statement: each word is a condition,
// and its text or number a bound argument.

#include <algorithm>
#include <iterator>
#include <string>

#include "base/Folding.h"
#include "base/Text.h"
#include "store/Database.h"
#include "store/SearchQuery.h"

namespace {

using Kind = SearchTerm::Kind;

// The columns for each SearchTerm::Field. A category is found by its name.
constexpr const char* kFieldColumns[] = {
    "Front,Back,Author,Chapter,Notes", "Front", "Back", "Notes", "Author", "Chapter", "Name"};

// The identities come as one text, whose parts of 36 characters are taken from its front, so that
// any number of them is one bound argument.
constexpr const char* kAmongHard =
    "CardId IN (WITH RECURSIVE Rest(Ids) AS (SELECT ? UNION ALL SELECT substr(Ids,37) FROM Rest"
    " WHERE length(Ids) > 36) SELECT substr(Ids,1,36) FROM Rest)";

// The condition for each CardState, forward and in reverse. The first two are those
// of the counts of cards to study.
constexpr const char* kStates[][2] = {
    {"ForwardX = 0 AND Introduced = 1 AND NextReview < ?",
     "ReverseX = 0 AND RIntroduced = 1 AND RNextReview < ?"},
    {"ForwardX = 0 AND Introduced = 0", "ReverseX = 0 AND RIntroduced = 0"},
    {"Introduced = 1 AND LastScore < 3", "RIntroduced = 1 AND RLastScore < 3"},
    {"ForwardX <> 0", "ReverseX <> 0"},
    {"FOLDED(Front) IN (SELECT FOLDED(Front) FROM Cards GROUP BY 1 HAVING count(*) > 1)",
     "FOLDED(Front) IN (SELECT FOLDED(Front) FROM Cards GROUP BY 1 HAVING count(*) > 1)"},
    {kAmongHard, kAmongHard}};

constexpr const char* kDue[] = {"ForwardX = 0 AND Introduced = 1 AND NextReview ",
                                "ReverseX = 0 AND RIntroduced = 1 AND RNextReview "};
constexpr const char* kInterval[] = {"Introduced = 1 AND ReviewInterval ",
                                     "RIntroduced = 1 AND RReviewInterval "};

// A text of which folding leaves nothing, such as an accent, is looked for as it stands.
bool IsFolded(const SearchTerm& term) {
    return !FoldText(term.Text).empty();
}

std::string TextCondition(const SearchTerm& term) {
    const std::string match = std::string(IsFolded(term) ? "RESEMBLES" : "CONTAINS") + "(?," +
                              kFieldColumns[static_cast<size_t>(term.In)] + ")";
    return term.In == SearchTerm::Field::kCategory
               ? "CategoryId IN (SELECT Id FROM Categories WHERE " + match + ")"
               : match;
}

std::string Condition(const SearchTerm& term, size_t direction) {
    switch (term.What) {
        case Kind::kText:
            return TextCondition(term);
        case Kind::kState:
            return kStates[static_cast<size_t>(term.State)][direction];
        case Kind::kDue:
            return std::string(kDue[direction]) + term.Comparison + " ?";
        case Kind::kInterval:
            return std::string(kInterval[direction]) + term.Comparison + " ?";
    }
    return "1";
}

std::string Selection(const CardSearch& search, const std::string& first) {
    std::string sql = "SELECT ROWID FROM Cards " + first;
    for (const SearchTerm& term : search.Query.GetTerms()) {
        const bool isReverse = term.Direction.value_or(search.Direction) == kReviewReverse;
        const std::string condition = Condition(term, isReverse ? 1 : 0);
        sql += " AND (" + condition + ")" + (term.IsExcluded ? " IS NOT TRUE" : "");
    }
    return sql;
}

// Returns the identities of the first cards in a row. No card has the empty identity.
wxString JoinHard(const std::vector<CardUuid>& cards, int32_t most) {
    wxString ids;
    for (size_t i = 0; i < std::min(cards.size(), static_cast<size_t>(most)); ++i) {
        ids += FormatUuid(cards[i]);
    }
    return ids;
}

int BindTerm(StatementRun& run, const SearchTerm& term, const CardSearch& search) {
    const int64_t now = search.Now.IsValid() ? search.Now.GetTicks() : 0;
    switch (term.What) {
        case Kind::kText:
            return IsFolded(term) ? run.Bind(MakeFoldedPattern(term.Text))
                                  : run.Bind("%" + LowerWide(term.Text) + "%");
        case Kind::kState:
            if (term.State == CardState::kHard) {
                return run.Bind(JoinHard(search.Hard, term.Hardest));
            }
            return term.State == CardState::kDue ? run.Bind(search.Now) : 0;
        case Kind::kDue:
            return run.Bind(now + term.Seconds);
        case Kind::kInterval:
            return run.Bind(static_cast<double>(term.Seconds));
    }
    return -1;
}

}  // namespace

int Database::SearchRowIdsOrder(const CardSearch& search, CardOrder order,
                                std::vector<int64_t>& rowIds) {
    if (search.Query.IsExact()) {
        return SearchRowIdsOrder(search.Query.GetText(), order, rowIds);
    }
    if (!search.Query.GetProblem().empty()) {
        return IsOpen() ? 0 : -1;
    }
    const Lock lock(mMutex);
    StatementRun run(*this, OrderedStatement(Selection(search, "WHERE 1"), order));
    return BindSearch(run, search) < 0 ? -1 : ReadInt64Rows(run, rowIds);
}

int Database::SearchRowIdsOrder(const CategoryChoice& choice, const CardSearch& search,
                                CardOrder order, std::vector<int64_t>& rowIds) {
    if (search.Query.IsExact()) {
        return SearchRowIdsOrder(choice, search.Query.GetText(), order, rowIds);
    }
    if (!search.Query.GetProblem().empty()) {
        return IsOpen() ? 0 : -1;
    }
    const Lock lock(mMutex);
    StatementRun run(*this, OrderedStatement(Selection(search, OfChoice(choice)), order));
    BindChoice(run, choice);
    return BindSearch(run, search) < 0 ? -1 : ReadInt64Rows(run, rowIds);
}

int Database::BindSearch(StatementRun& run, const CardSearch& search) {
    for (const SearchTerm& term : search.Query.GetTerms()) {
        if (BindTerm(run, term, search) < 0) {
            return -1;
        }
    }
    return 0;
}
