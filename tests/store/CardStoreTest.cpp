#include "support/StoreFixture.h"

using ::testing::Test;

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
    EXPECT_EQ(stored.Front, card.Front);
    EXPECT_EQ(stored.Back, card.Back);
    EXPECT_EQ(stored.CategoryId, card.CategoryId);
    EXPECT_EQ(stored.Author, card.Author);
    EXPECT_EQ(stored.Chapter, card.Chapter);
    EXPECT_EQ(stored.IntroductionOrder, card.IntroductionOrder);
    EXPECT_TRUE(stored.ForwardX);
    EXPECT_TRUE(stored.ReverseX);
    EXPECT_EQ(stored.Notes, card.Notes);
    EXPECT_TRUE(stored.Forward == card.Forward);
    EXPECT_TRUE(stored.Reverse == card.Reverse);
    EXPECT_EQ(Query("SELECT NextReview, RNextReview, typeof(FrontAudio) FROM Cards"),
              std::vector<std::string>{"1111197511|1222222281|null"});
}
