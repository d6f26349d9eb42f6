#include <numeric>

#include "support/StoreFixture.h"

namespace {

struct GroupStoreTest : StoreFixture {
    static std::vector<FlashCard> MakeCards(int count) {
        std::vector<FlashCard> cards;
        for (int i = 0; i < count; ++i) {
            FlashCard card = MakeCard(wxString::Format("front %d", i), L"\u00e4", i % 3);
            card.CardId.Bytes[0] = static_cast<uint8_t>(i);
            card.CardId.Bytes[1] = static_cast<uint8_t>(i >> 8);
            card.IntroductionOrder = i;
            card.Forward.LastReview = wxDateTime(static_cast<time_t>(1700000000 + i));
            card.Reverse.ReviewInterval = 0.5f * static_cast<float>(i);
            card.Reverse.LastReview = card.Forward.LastReview;
            cards.push_back(card);
        }
        return cards;
    }
    Strings Rows() { return Query("SELECT rowid,* FROM Cards ORDER BY rowid"); }
    int InsertAll(const std::vector<FlashCard>& cards) {
        return mDatabase.InsertFlashCards(cards, mInserted);
    }

    size_t mInserted = 0;
};

TEST_F(GroupStoreTest, AGroupWritesTheRowsThatItsCardsWouldWriteOneByOne) {
    const std::vector<FlashCard> cards = MakeCards(93);
    for (const FlashCard& card : cards) {
        Insert(card);
    }
    const Strings expected = Rows();
    for (const int size : {0, 1, 4, 93}) {
        mDatabase.Execute("DELETE FROM Cards");
        EXPECT_EQ(InsertAll({cards.begin(), cards.begin() + size}), 0);
        EXPECT_EQ(mInserted, static_cast<size_t>(size));
        EXPECT_EQ(Rows(), Strings(expected.begin(), expected.begin() + size));
    }
    mDatabase.Execute("DELETE FROM Cards");
    EXPECT_EQ(InsertAll(MakeCards(3000)), 0);
    EXPECT_EQ(Query("SELECT count(*), max(rowid), max(IntroductionOrder) FROM Cards"),
              Strings{"3000|3000|2999"});
    EXPECT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
}

TEST_F(GroupStoreTest, AGroupThatFailsWritesNothingAndReportsNothing) {
    std::vector<FlashCard> cards = MakeCards(1100);
    cards[1090].CardId = cards[3].CardId;
    EXPECT_LT(InsertAll(cards), 0);
    // Statements of 1024 and of 64 rows have passed; one of 4 has not.
    EXPECT_EQ(mInserted, 1088u);
    EXPECT_EQ(Rows().size(), mInserted);
    EXPECT_TRUE(mReport.Texts.empty());
    cards[1090].CardId = CardUuid();
    cards.erase(cards.begin(), cards.begin() + 1088);
    EXPECT_LT(InsertAll(cards), 0);
    EXPECT_EQ(mInserted, 0u);
    mDatabase.Close();
    EXPECT_LT(InsertAll({}), 0);
    EXPECT_TRUE(mReport.Texts.empty());
}

TEST_F(GroupStoreTest, PartsOfManyCardsAreWrittenAsCardByCardAndAreThenCommon) {
    std::vector<FlashCard> cards = MakeCards(9);
    // A card that is due beyond the last time, and one with a score.
    cards[5].Forward.ReviewInterval = 1e30f;
    cards[6].Forward = {true, wxDateTime(static_cast<time_t>(5)), 4, 99.5f, 3, 12345};
    EXPECT_EQ(InsertAll(cards), 0);
    FlashCard values = MakeCard(L"\u8a9e\n", wxString(L"a\0b", 3), 7);
    values.Author = values.Chapter = values.Notes = "mine";
    values.IntroductionOrder = -8;
    values.ForwardX = values.ReverseX = true;
    values.Forward = values.Reverse = {true, wxDateTime(static_cast<time_t>(77)), 2, 4e9f, 31, 9};
    std::vector<int64_t> rowIds{4711};
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(CardColumn::kIntroductionOrder, rowIds), 0);
    for (size_t i = 0; i < kCardPartCount; ++i) {
        SCOPED_TRACE(ColumnOfPart(static_cast<CardPart>(i)));
        CardParts parts;
        parts.set(i);
        // The interval goes with others, as a reset does it.
        parts.set(static_cast<size_t>(CardPart::kLastScore));
        for (FlashCard card : cards) {
            CopyParts(values, parts, card);
            EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        }
        const Strings expected = Rows();
        for (const FlashCard& card : cards) {
            EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        }
        CommonCard common;
        EXPECT_EQ(mDatabase.UpdateParts(rowIds, parts,
                                        [&](size_t) -> const FlashCard& { return values; }),
                  0);
        EXPECT_EQ(Rows(), expected);
        EXPECT_EQ(mDatabase.SelectCommonParts(rowIds, common), 0);
        EXPECT_EQ(common.Count, 9);
        EXPECT_TRUE((common.Several & parts).none());
        EXPECT_TRUE((FindDifferences(common.Card, values) & parts).none());
        EXPECT_EQ(HasPart(common.Several, CardPart::kIntroductionOrder),
                  !HasPart(parts, CardPart::kIntroductionOrder));
        for (const FlashCard& card : cards) {
            EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        }
    }
}

TEST_F(GroupStoreTest, ManyRowsMoveAndGoTogetherAndAFailureIsOneCardsOwn) {
    Query("CREATE UNIQUE INDEX one ON Cards(CategoryId,Front)");
    Reopen();
    std::vector<FlashCard> cards = MakeCards(300);
    cards[7].CategoryId = 9;
    cards[7].Front = "front 5";
    EXPECT_EQ(InsertAll(cards), 0);
    std::vector<int64_t> rowIds(299);
    std::iota(rowIds.begin(), rowIds.end(), 1);
    rowIds.erase(rowIds.begin() + 7);
    rowIds.push_back(12345);
    CardParts category;
    AddPart(category, CardPart::kCategory);
    const FlashCard into = MakeCard("", "", 9);
    const std::function<int()> moves[] = {[&] { return mDatabase.CardsUpdateCategory(rowIds, 9); },
                                          [&] {
                                              return mDatabase.UpdateParts(
                                                  rowIds, category,
                                                  [&](size_t) -> const FlashCard& { return into; });
                                          }};
    for (const auto& move : moves) {
        Query("UPDATE Cards SET CategoryId=1 WHERE rowid<>8");
        mReport.Texts.clear();
        EXPECT_LT(move(), 0);
        EXPECT_EQ(mReport.Texts.size(), 1u);
        EXPECT_EQ(Query("SELECT rowid FROM Cards WHERE CategoryId<>9 ORDER BY rowid"),
                  (Strings{"6", "300"}));
    }
    EXPECT_EQ(mDatabase.CardsDeleteByRowId(rowIds), 0);
    EXPECT_EQ(Query("SELECT rowid FROM Cards ORDER BY rowid"), (Strings{"8", "300"}));
}

}  // namespace
