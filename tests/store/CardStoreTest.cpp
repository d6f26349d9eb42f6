#include <thread>
#include <tuple>

#include "support/StoreFixture.h"

class CardStoreTest : public StoreFixture {};

// A card whose every field differs from its default.
FlashCard FullCard() {
    FlashCard card = MakeCard("front", "back", 7);
    card.Author = "author";
    card.Chapter = "chapter";
    card.IntroductionOrder = 42;
    card.ForwardX = true;
    card.ReverseX = true;
    card.Notes = "notes";
    card.Forward = {true, wxDateTime(time_t{1111111111}), 4, 86400.25f, 12, 4097};
    card.Reverse = {true, wxDateTime(time_t{1222222222}), 2, 59.9f, 20, 8193};
    return card;
}

TEST_F(CardStoreTest, ACardComesBackAsItWasStored) {
    const FlashCard card = Insert(FullCard());
    const FlashCard stored = Stored(card.CardId);
    const auto fields = [](const FlashCard& of) {
        return std::tie(of.Front, of.Back, of.CategoryId, of.Author, of.Chapter,
                        of.IntroductionOrder, of.ForwardX, of.ReverseX, of.Notes, of.Forward,
                        of.Reverse);
    };
    EXPECT_TRUE(fields(stored) == fields(card));
    EXPECT_EQ(Query("SELECT NextReview, RNextReview, typeof(FrontAudio) FROM Cards"),
              Strings{"1111197511|1222222281|null"});
    EXPECT_EQ(mDatabase.InsertFlashCard(FlashCard()), -1);
}

TEST_F(CardStoreTest, NoTextIsLostForWhatIsInIt) {
    FlashCard card = MakeCard(wxString(L"a\0b", 3), L"\u4e2d\U0001F600'%");
    card.Notes = "x" + wxString(wxUniChar(0xDC00)) + "y";
    Insert(card);
    const FlashCard stored = Stored(card.CardId);
    EXPECT_EQ(stored.Front, card.Front);
    EXPECT_EQ(stored.Back, card.Back);
    EXPECT_EQ(stored.Notes, L"x\uFFFDy");
    std::list<FlashCard> found;
    EXPECT_EQ(mDatabase.SelectCardsByFrontBack(card.Front, card.Back, found), 0);
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(CardStoreTest, ADamagedRowIsAnErrorOrReadsWithinItsRange) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    Query("UPDATE Cards SET LastReview=9223372036854775807, ReviewInterval=1e300, ForwardX=2");
    const FlashCard stored = Stored(card.CardId);
    EXPECT_TRUE(stored.Forward.LastReview.IsValid());
    EXPECT_TRUE(stored.Forward.NextReview() >= stored.Forward.LastReview);
    EXPECT_TRUE(stored.ForwardX);
    Query("UPDATE Cards SET CardId='no identity'");
    std::list<FlashCard> cards;
    EXPECT_EQ(mDatabase.SelectCardByRowId(1, cards), -1);
}

TEST_F(CardStoreTest, CardsAreChangedMovedAndDeleted) {
    FlashCard card = Insert(FullCard());
    const FlashCard other = Insert(MakeCard("other", "other"));
    card.Front = "changed";
    card.Reverse.ERC = -3;
    EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
    std::vector<int64_t> rowIds;
    EXPECT_EQ(mDatabase.SelectRowIdById(card.CardId, rowIds), 0);
    ASSERT_EQ(rowIds.size(), 1U);
    EXPECT_EQ(mDatabase.CardUpdateCategory(rowIds.front(), 3), 0);
    const FlashCard stored = Stored(card.CardId);
    EXPECT_EQ(stored.Front, "changed");
    EXPECT_EQ(stored.CategoryId, 3);
    EXPECT_TRUE(stored.Reverse == card.Reverse);
    EXPECT_EQ(Stored(other.CardId).Front, "other");
    EXPECT_EQ(mDatabase.CardDeleteByRowId(rowIds.front()), 0);
    EXPECT_EQ(mDatabase.DeleteCard(other.CardId), 0);
    EXPECT_TRUE(mDatabase.IsEmpty());
}

TEST_F(CardStoreTest, SearchFoldsAsciiInTheStoreAndAllLettersInTheText) {
    FlashCard card = MakeCard("Hund", L"\u00c4pfel");
    card.Notes = "100 percent";
    card.Author = L"\u00f6";
    Insert(card);
    const std::pair<const wchar_t*, size_t> cases[] = {{L"HUN", 1},    {L"1%t", 1},    {L"x", 0},
                                                       {L"\u00d6", 1}, {L"\u00c4", 0}, {L"", 1}};
    for (const auto& [text, hits] : cases) {
        std::vector<int64_t> rowIds;
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(text, "Front", rowIds), 0);
        EXPECT_EQ(rowIds.size(), hits) << wxString(text);
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(0, text, "Front DESC", rowIds), 0);
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(9, text, "Front DESC", rowIds), 0);
        EXPECT_EQ(rowIds.size(), 2 * hits) << wxString(text);
    }
}

TEST_F(CardStoreTest, ListsComeInTheOrderAsked) {
    Insert(MakeCard("b", "1", 0));
    Insert(MakeCard("a", "2", 4));
    Insert(MakeCard("c", "3", 0));
    std::vector<int64_t> rowIds;
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder("Front DESC, Back", rowIds), 0);
    EXPECT_EQ(rowIds, (std::vector<int64_t>{3, 1, 2}));
    rowIds.clear();
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(0, "Front", rowIds), 0);
    EXPECT_EQ(rowIds, (std::vector<int64_t>{1, 3}));
}

// Both directions of one category: cards that are due, later, excluded, new, and of another.
TEST_F(CardStoreTest, SelectionsAndCountsSeeOneDirectionOfOneCategory) {
    const struct {
        const char* front;
        int32_t category;
        bool excluded;
        bool introduced;
        time_t next;
        int32_t erc;
        int32_t order;
    } rows[] = {
        {"late", 0, false, true, 900, 50, 1},    {"early", 0, false, true, 100, 40, 2},
        {"future", 0, false, true, 5000, 60, 3}, {"excluded", 0, true, true, 1, 99, 4},
        {"new", 0, false, false, 1, 99, 8},      {"newest", 0, false, false, 1, 99, 7},
        {"other", 1, false, true, 1, 99, 99},    {"timeless", 0, false, true, -100, 70, 0},
    };
    for (const bool reverse : {false, true}) {
        Reopen();
        ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
        for (const auto& row : rows) {
            FlashCard card = MakeCard(row.front, "back", row.category);
            (reverse ? card.ReverseX : card.ForwardX) = row.excluded;
            (reverse ? card.ForwardX : card.ReverseX) = true;
            CardSchedule& schedule = reverse ? card.Reverse : card.Forward;
            schedule = {row.introduced, wxDateTime(row.next - 5), 3, 5.5f, 16, row.erc};
            card.IntroductionOrder = row.order;
            Insert(card);
        }
        const auto call = [&](auto forwardMember, auto reverseMember, auto&&... arguments) {
            EXPECT_EQ((mDatabase.*(reverse ? reverseMember : forwardMember))(arguments...), 0);
        };
        std::list<FlashCard> cards;
        call(&Database::SelectEarlyForward, &Database::SelectEarlyReverse, 0, cards);
        ASSERT_EQ(cards.size(), 1U);
        EXPECT_EQ(cards.front().Front, "early");
        call(&Database::SelectNewForward, &Database::SelectNewReverse, 0, cards);
        ASSERT_EQ(cards.size(), 1U);
        EXPECT_EQ(cards.front().Front, "newest");
        std::vector<int64_t> reviews;
        const ReadyRowVisitor visit = [&](const ReadyRow& row) {
            reviews.push_back(row.LastReview().GetTicks());
            EXPECT_EQ(row.ReviewInterval(), 5.5f);
            CardUuid id;
            EXPECT_EQ(row.CardId(id), 0);
        };
        const wxDateTime now(time_t{1000});
        call(&Database::SelectReadySortByNextReview, &Database::SelectRReadySortByRNextReview, 0,
             now, visit);
        EXPECT_EQ(reviews, (std::vector<int64_t>{-1, 95, 895}));
        int32_t count = 0;
        call(&Database::SelectReadyCountForward, &Database::SelectReadyCountReverse, 0, now, count);
        EXPECT_EQ(count, 3);
        call(&Database::CountForward, &Database::CountReverse, 0, count);
        EXPECT_EQ(count, 6);
        call(&Database::CountReverse, &Database::CountForward, 0, count);
        EXPECT_EQ(count, 0);
        call(&Database::CountIntroducedForward, &Database::CountIntroducedReverse, 0, count);
        EXPECT_EQ(count, 4);
        EXPECT_EQ(mDatabase.SelectMaxErc(0, count), 0);
        EXPECT_EQ(count, 70);
    }
    int32_t number = 1234;
    EXPECT_EQ(mDatabase.SelectMaxErc(77, number), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(mDatabase.SelectMaxIntroductionOrder(77, number), -1);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(mDatabase.SelectMaxIntroductionOrder(0, number), 0);
    EXPECT_EQ(number, 8);
    EXPECT_EQ(mDatabase.SelectCategoryIdCount(0, number), 0);
    EXPECT_EQ(number, 7);
}

TEST_F(CardStoreTest, AWorkerAndTheMainThreadMayUseTheStoreAtOnce) {
    const auto insertSome = [this] {
        for (int i = 0; i < 60; ++i) {
            EXPECT_EQ(mDatabase.InsertFlashCard(MakeCard("front", "back")), 0);
        }
    };
    std::thread worker(insertSome);
    insertSome();
    worker.join();
    EXPECT_TRUE(mReport.Texts.empty());
}
