#include <thread>

#include "support/StoreFixture.h"

using CardStoreTest = StoreFixture;

// Every field differs from its default.
TEST_F(CardStoreTest, ACardComesBackAsItWasStored) {
    FlashCard card = MakeCard("front", "back", 7);
    card.Author = "author";
    card.Chapter = "chapter";
    card.IntroductionOrder = 42;
    card.ForwardX = true;
    card.ReverseX = true;
    card.Notes = "notes";
    card.Forward = {true, wxDateTime(time_t{1111111111}), 4, 86400.25f, 12, 4097};
    card.Reverse = {true, wxDateTime(time_t{1222222222}), 2, 59.9f, 20, 8193};
    Insert(card);
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

TEST_F(CardStoreTest, NextReviewsAreStoredUpToTheEndOfTheYear9999) {
    constexpr int64_t kEnd = 253402300799;
    FlashCard card = Insert(MakeCard("front", "back"));
    const std::tuple<int64_t, float, std::string> cases[] = {
        {1700000000, 3e9f, "4700000000"}, {kEnd - 1, 1.0f, "253402300799"}, {kEnd, 1.0f, "-1"}};
    for (const auto& [last, interval, next] : cases) {
        card.Forward = card.Reverse = {true, wxDateTime(wxLongLong(last * 1000)), 3, interval};
        EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        EXPECT_EQ(Query("SELECT NextReview FROM Cards"), Strings{next});
        EXPECT_EQ(Query("SELECT RNextReview FROM Cards"), Strings{next});
        EXPECT_EQ(Stored(card.CardId).Forward.LastReview, card.Forward.LastReview);
    }
    // What an earlier version could not store is derived when the store opens, as far as it fits.
    Reopen();
    EXPECT_EQ(Query("SELECT NextReview, RNextReview FROM Cards"), Strings{"-1|-1"});
    Query("UPDATE Cards SET LastReview=7, ReviewInterval=3e9, RLastReview=8, RReviewInterval=4e9");
    Reopen();
    EXPECT_EQ(Query("SELECT NextReview, RNextReview FROM Cards"), Strings{"3000000007|4000000008"});
}

TEST_F(CardStoreTest, ADamagedRowIsAnErrorOrReadsWithinItsRange) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    Query("UPDATE Cards SET LastReview=-9223372036854775808, ReviewInterval=1e300, ForwardX=2");
    EXPECT_TRUE(Stored(card.CardId).Forward.LastReview.IsValid() && Stored(card.CardId).ForwardX);
    Query("UPDATE Cards SET CardId='no identity'");
    std::list<FlashCard> cards;
    EXPECT_EQ(mDatabase.SelectCardByRowId(1, cards), -1);
}

// The store folds only ASCII, the text is folded in full.
TEST_F(CardStoreTest, SearchesOfAnyKindEndWell) {
    FlashCard card = MakeCard("Hund", L"\u00c4pfel");
    card.Notes = "100 percent";
    card.Author = L"\u00f6";
    Insert(card);
    // One text is longer than a pattern of the engine may be.
    const std::pair<wxString, size_t> cases[] = {{"HUN", 1},
                                                 {"1%t", 1},
                                                 {"x", 0},
                                                 {L"\u00d6", 1},
                                                 {L"\u00c4", 0},
                                                 {wxString('%', 10000), 1},
                                                 {wxString('_', 10000), 0},
                                                 {wxString('x', 60000), 0},
                                                 {"'", 0},
                                                 {"", 1}};
    for (const auto& [text, hits] : cases) {
        std::vector<int64_t> rowIds;
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(text, CardColumn::kFront, rowIds), 0);
        EXPECT_EQ(rowIds.size(), hits) << text.Left(20);
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(0, text, {CardColumn::kFront, true}, rowIds), 0);
        EXPECT_EQ(mDatabase.SearchRowIdsOrder(9, text, {CardColumn::kFront, true}, rowIds), 0);
        EXPECT_EQ(rowIds.size(), 2 * hits) << text.Left(20);
    }
    Insert(MakeCard("Affe", "", 4));
    Insert(MakeCard("Katze", ""));
    std::vector<int64_t> all;
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder({CardColumn::kFront, true}, all), 0);
    EXPECT_EQ(all, (std::vector<int64_t>{3, 1, 2}));
    std::vector<int64_t> ofCategory;
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(0, CardColumn::kFront, ofCategory), 0);
    EXPECT_EQ(ofCategory, (std::vector<int64_t>{1, 3}));
}

TEST_F(CardStoreTest, EveryColumnSortsInBothDirections) {
    mDatabase.CategoryInsert("Before the default");
    FlashCard less = MakeCard("a", "a", 1);
    less.Forward.LastReview = less.Reverse.LastReview = wxDateTime(time_t{1000});
    FlashCard more = MakeCard("b", "b", 0);
    more.Author = more.Chapter = more.Notes = "text";
    more.IntroductionOrder = 1;
    more.ForwardX = more.ReverseX = true;
    more.Forward.ReviewInterval = more.Reverse.ReviewInterval = 9;
    more.Forward.LastReview = more.Reverse.LastReview = wxDateTime(time_t{2000});
    more.Forward.Difficulty = more.Reverse.Difficulty = 20;
    Insert(more);
    Insert(less);
    CategoryChoice both(0);
    both.Below = {1};
    for (int i = 0; i <= static_cast<int>(CardColumn::kRDifficulty); ++i) {
        const auto column = static_cast<CardColumn>(i);
        const bool byId = column == CardColumn::kCategory;
        for (const bool descending : {false, true}) {
            std::vector<int64_t> rowIds;
            EXPECT_EQ(mDatabase.CardSelectRowIdsOrder({column, descending}, rowIds), 0);
            const bool lessFirst = byId == descending;
            EXPECT_EQ(rowIds,
                      lessFirst ? (std::vector<int64_t>{2, 1}) : (std::vector<int64_t>{1, 2}))
                << i << descending;
            std::vector<int64_t> ofBoth;
            EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(both, {column, descending}, ofBoth), 0);
            EXPECT_EQ(ofBoth, rowIds) << i << descending;
        }
    }
}

TEST_F(CardStoreTest, ALongSearchIsBrokenOffWithoutHarm) {
    Query(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000)"
        " INSERT INTO Cards (CardId, Front, CategoryId)"
        " SELECT printf('%08x-0000-4000-8000-000000000000', i), 'text', 0 FROM n");
    std::vector<int64_t> rowIds;
    const auto search = [&] { mDatabase.SearchRowIdsOrder("text", CardColumn::kFront, rowIds); };
    int asked = 0;
    EXPECT_FALSE(mDatabase.TryUntil([&] { return ++asked == 3; }, search));
    EXPECT_EQ(asked, 3);
    EXPECT_TRUE(rowIds.empty() && mReport.Texts.empty());
    EXPECT_TRUE(mDatabase.TryUntil([] { return false; }, search));
    search();
    EXPECT_EQ(rowIds.size(), 40000U);
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

TEST_F(CardStoreTest, AnEditWritesOnlyWhatItHasChanged) {
    const FlashCard before = Insert(MakeCard("front", "back"));
    FlashCard after = before;
    after.Front = "edited";
    after.Forward.ReviewInterval = 9.0f;
    Query("UPDATE Cards SET Back='from elsewhere',RReviewInterval=5.0");
    EXPECT_EQ(mDatabase.UpdateDifferences(before, after), 0);
    EXPECT_EQ(Query("SELECT Front,Back,ReviewInterval,RReviewInterval FROM Cards"),
              Strings{"edited|from elsewhere|9.0|5.0"});
    mDatabase.DeleteCard(before.CardId);
    EXPECT_EQ(mDatabase.UpdateDifferences(before, after), 0);
    EXPECT_EQ(Query("SELECT COUNT(*) FROM Cards"), Strings{"0"});
}
