#include "store/SearchQuery.h"

#include <algorithm>

#include "support/StoreFixture.h"

namespace {

constexpr int64_t kNow = 1700000000;
constexpr int64_t kDay = 86400;

CardSchedule Scored(int64_t ago, float interval, uint8_t score = 4) {
    return {true, wxDateTime(static_cast<time_t>(kNow - ago)), score, interval};
}

}  // namespace

class SearchQueryTest : public StoreFixture {
  protected:
    SearchQueryTest() {
        // One more category, 1.
        mDatabase.CategoryInsert(L"Fran\u00e7ais");
        FlashCard card = MakeCard(L"l\u2019\u00c9cole", "Schule", 1);
        card.Author = "Anna";
        card.Chapter = "Chapter 1";
        card.Notes = "big house";
        card.Forward = Scored(10 * kDay, 9 * kDay);
        Add(card);
        card = MakeCard(L"Stra\u00dfe 100%", "due<7d front:x");
        card.Author = "Bert";
        card.Forward = Scored(kDay, 60 * kDay, 2);
        card.Reverse = Scored(9 * kDay, 8 * kDay);
        Add(card);
        card = MakeCard(L"STRASSE 100\uff05", L"\u304c \u0915\u093c");
        card.Chapter = "Chapter 2";
        card.ForwardX = true;
        card.Reverse = Scored(0, 5 * kDay, 1);
        Add(card);
        Add(MakeCard("house", L"big -- 5\" \u201c"));
    }

    void Add(const FlashCard& card) { mHard.push_back(Insert(card).CardId); }

    // The row ids found, with digits in a row, or a problem.
    std::string Find(const SearchQuery& query, ReviewDirection direction = kReviewForward) {
        if (!query.GetProblem().empty()) {
            return std::string(query.GetProblem().utf8_str());
        }
        const CardSearch search{
            query, direction, wxDateTime(static_cast<time_t>(kNow)), {mHard[1], mHard[2]}};
        std::vector<int64_t> rowIds;
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(search, CardColumn::kIntroductionOrder, rowIds), 0);
        std::sort(rowIds.begin(), rowIds.end());
        std::string found;
        for (const int64_t rowId : rowIds) {
            found += std::to_string(rowId);
        }
        return found;
    }

    std::vector<CardUuid> mHard;
};

TEST_F(SearchQueryTest, EveryWordMustBeFoundAndNamesNarrow) {
    const struct {
        const wchar_t* Text;
        const char* Forward;
        const char* Reverse;
    } rows[] = {
        // Texts.
        {L"", "1234", "1234"},
        {L" \u3000", "1234", "1234"},
        {L"ecole", "1", "1"},
        {L"L'\u00c9COLE", "1", "1"},
        {L"strasse", "23", "23"},
        {L"stra\u00dfe", "23", "23"},
        {L"big house", "14", "14"},
        {L"\"big house\"", "1", "1"},
        {L"\"big house", "1", "1"},
        {L"\"big\"house", "14", "14"},
        {L"-house", "23", "23"},
        {L"house -\"big house\"", "4", "4"},
        {L"-", "4", "4"},
        {L"--", "123", "123"},
        {L"5\"", "4", "4"},
        {L"\u304b", "", ""},
        {L"\u30ac", "3", "3"},
        {L"\u0915", "", ""},
        {L"\u0958", "3", "3"},
        {L"\u201c", "4", "4"},
        {L"\u0301", "", ""},
        // Wild cards, and the sign that is none.
        {L"stra%0", "23", "23"},
        {L"s_hule", "1", "1"},
        {L"stra_e", "", ""},
        {L"0\uff05", "23", "23"},
        {L"%", "1234", "1234"},
        // Fields.
        {L"front:house", "4", "4"},
        {L"FRONT:\"house\"", "4", "4"},
        {L"\uff46ront\uff1ahouse", "4", "4"},
        {L"-back:big", "123", "123"},
        {L"notes:house author:anna chapter:1", "1", "1"},
        {L"category:francais", "1", "1"},
        {L"-category:francais author:b", "2", "2"},
        {L"other:house", "", ""},
        {L"\"front:x\"", "2", "2"},
        {L"\"due<7d\"", "2", "2"},
        // States of the direction.
        {L"is:due", "1", "2"},
        {L"IS:Due", "1", "2"},
        {L"is:new", "4", "14"},
        {L"is:failed", "2", "3"},
        {L"is:excluded", "3", ""},
        {L"is:duplicate", "23", "23"},
        {L"is:hard", "23", "23"},
        {L"-is:hard", "14", "14"},
        {L"hard:1", "2", "2"},
        {L"is:hard -HARD:\uff11", "3", "3"},
        {L"hard:1000", "23", "23"},
        {L"-is:new -is:due", "23", "3"},
        {L"due<0", "1", "2"},
        {L"due<7d", "1", "23"},
        {L"due>7d", "2", ""},
        {L"due>=-1d", "12", "23"},
        {L"due<-2d", "", ""},
        {L"interval>30d", "2", ""},
        {L"interval<=9", "1", "23"},
        {L"interval>=1m", "2", ""},
        {L"interval>1y", "", ""},
        {L"due<99999999999y", "12", "23"},
        {L"forward:is:due", "1", "1"},
        {L"REVERSE:is:due", "2", "2"},
        {L"forward:interval<=9 -reverse:is:new", "", ""},
        {L"forward:due<7d", "1", "1"},
        {L"-reverse:interval<=9", "14", "14"},
        {L"reverse:x", "", ""},
        {L"due", "2", "2"},
        {L"is", "", ""},
    };
    for (const auto& row : rows) {
        const SearchQuery query = SearchQuery::Words(row.Text);
        EXPECT_EQ(Find(query), row.Forward) << wxString(row.Text);
        EXPECT_EQ(Find(query, kReviewReverse), row.Reverse) << wxString(row.Text);
    }
    Add(MakeCard(L"Stra\u00dfe 100%", "x", 1));
    EXPECT_EQ(Find(SearchQuery::Words("is:duplicate")), "235");
    // The stated search takes all of it for one text.
    EXPECT_EQ(Find(SearchQuery::Exact("ecole")), "");
    EXPECT_EQ(Find(SearchQuery::Exact("big house")), "1");
    EXPECT_EQ(Find(SearchQuery::Exact("DUE<7d f_ont%x")), "2");
}

TEST_F(SearchQueryTest, AWordThatCannotMeanAnythingIsAProblem) {
    for (const wchar_t* const text :
         {L"is:", L"is:done", L"due<", L"due<xyz", L"house due>7q", L"interval<d", L"front:",
          L"-category:\"\"", L"reverse:is:done", L"forward:is:hard", L"reverse:hard:5", L"hard:",
          L"hard:0", L"hard:1001", L"hard:-1", L"hard:many"}) {
        const SearchQuery query = SearchQuery::Words(text);
        EXPECT_FALSE(query.GetProblem().empty()) << wxString(text);
        EXPECT_TRUE(query.GetTerms().empty()) << wxString(text);
    }
    wxString many;
    for (size_t i = 0; i < SearchQuery::kMostWords; ++i) {
        many += "-is:duplicate ";
    }
    EXPECT_EQ(Find(SearchQuery::Words(many)), "14");
    EXPECT_NE(SearchQuery::Words(many + "x").GetProblem(), "");
    EXPECT_EQ(Find(SearchQuery::Words(wxString('%', 500) + wxString('_', 500))), "");
    EXPECT_NE(SearchQuery::Words(wxString('%', 1001)).GetProblem(), "");
}

TEST_F(SearchQueryTest, ATickPutsTheWordOfAStateInAndTakesItOut) {
    const auto text = [](const char* before, bool required) {
        return SearchQuery::Words(before).WithState(CardState::kNew, required);
    };
    EXPECT_EQ(text("house", true), "house is:new");
    EXPECT_EQ(text("is:new", false), "");
    EXPECT_EQ(text("reverse:is:new is:new", false), "reverse:is:new");
    EXPECT_EQ(text("a IS:NEW -is:new b is:new", false), "a  -is:new b");
    EXPECT_FALSE(SearchQuery::Words("-is:new").Requires(CardState::kNew));
    // The hardest cards have to be known before the search, as many as its words ask for.
    EXPECT_EQ(SearchQuery::Words("\"is:hard\" is:new").CountHardest(), 0U);
    EXPECT_EQ(SearchQuery::Words("hard:7 -is:hard").CountHardest(), 20U);
}
