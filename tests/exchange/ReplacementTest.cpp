#include "exchange/Replacement.h"

#include "base/Unicode.h"
#include "store/UndoHistory.h"
#include "support/StoreFixture.h"

namespace {

struct ReplacementTest : StoreFixture {
    ReplacementsFound Find(const wxString& wanted, const wxString& replacement,
                           bool isExpression = false) {
        ReplacementQuery query;
        query.RowIds = mRowIds;
        query.Wanted = wanted;
        query.Replacement = replacement;
        query.Options.IsExpression = isExpression;
        query.Texts = {true, true, true, false, false};
        return FindReplacements(mDatabase, query, mCancelled);
    }

    // Writes what was found and gives the number of cards that were left alone.
    int32_t Write(std::vector<CardTextChange> changes) {
        ReplacementThread thread(mDatabase, std::move(changes));
        EXPECT_TRUE(thread.Start());
        thread.Join();
        const int32_t left = thread.CountLeftAlone();
        mHistory.Add(NoteTexts(thread.TakeWritten()));
        return left;
    }

    std::pair<int32_t, int32_t> Undo() {
        UndoOutcome outcome;
        EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
        return {outcome.Restored, outcome.LeftAlone};
    }

    Strings Sides() { return Query("SELECT Front,Back,Notes FROM Cards ORDER BY ROWID"); }

    UndoHistory mHistory;
    // One of them has no card.
    const std::vector<int64_t> mRowIds{1, 2, 3, 4, 4711};
    std::atomic<bool> mCancelled{false};
};

using testing::ElementsAre;

TEST_F(ReplacementTest, ChangesOnlyTheTextsThatAreStillAsTheyWereFound) {
    FlashCard both = MakeCard("ecole", "school, ecole");
    both.Notes = "une Ecole";
    both = Insert(both);
    const FlashCard edited = Insert(MakeCard("l'ecole", "the school"));
    const FlashCard gone = Insert(MakeCard("ecoles", "schools"));
    Insert(MakeCard("other", "card"));
    ReplacementsFound found = Find("ecole", wxString::FromUTF8("école"));
    ASSERT_EQ(found.Cards.size(), 3U);

    // Meanwhile one card is studied, one edited and one deleted.
    both.Forward.ReviewInterval = 777;
    mDatabase.UpdateFlashCard(both);
    FlashCard other = edited;
    other.Front = "l'ecole !";
    mDatabase.UpdateFlashCard(other);
    mDatabase.DeleteCard(gone.CardId);
    EXPECT_EQ(Write(std::move(found.Cards)), 2);
    EXPECT_THAT(Sides(), ElementsAre("école|school, école|une école", "l'ecole !|the school|",
                                     "other|card|"));
    EXPECT_EQ(Stored(both.CardId).Forward.ReviewInterval, 777);

    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo replacement in 1 card");
    FlashCard studied = Stored(both.CardId);
    studied.Forward.ReviewInterval = 888;
    mDatabase.UpdateFlashCard(studied);
    EXPECT_EQ(Undo(), std::pair(1, 0));
    EXPECT_EQ(Sides().front(), "ecole|school, ecole|une Ecole");
    EXPECT_EQ(Stored(both.CardId).Forward.ReviewInterval, 888);
    UndoOutcome outcome;
    EXPECT_EQ(mHistory.RedoLast(mDatabase, outcome), 0);
    EXPECT_EQ(Sides().front(), "école|school, école|une école");
    // A text that was changed since stays, with the card's other texts.
    studied = Stored(both.CardId);
    studied.Notes = "changed";
    mDatabase.UpdateFlashCard(studied);
    EXPECT_EQ(Undo(), std::pair(0, 1));
    EXPECT_EQ(Sides().front(), "école|school, école|changed");
}

TEST_F(ReplacementTest, LeavesOutWhatWouldBeBlankAndTellsOfFaults) {
    const FlashCard first = Insert(MakeCard("wort", "word"));
    Insert(MakeCard("aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", "long"));
    const ReplacementsFound blank = Find("wort", " ");
    EXPECT_TRUE(blank.Cards.empty());
    EXPECT_EQ(blank.Blank, 1);
    const ReplacementsFound ends = Find("r", " ");
    ASSERT_EQ(ends.Cards.size(), 1U);
    EXPECT_EQ(Find("wort$", " w ", true).Cards.front().Texts.front().After, u"w");
    const ReplacementsFound runaway = Find("(a+)+$", "", true);
    EXPECT_EQ(runaway.Fault.Message, "The expression takes too long.");
    EXPECT_EQ(runaway.FaultyFront.length(), 37U);
    EXPECT_EQ(Find("w(", "", true).Fault.Place, 2U);
    mCancelled = true;
    EXPECT_TRUE(Find("wort", "x").Cards.empty());
}

// A broken text is changed whole or not at all, a number counts as its text, and a card without an
// identity is changed but cannot be undone.
TEST_F(ReplacementTest, ChangesDamagedCardsAndSaysWhatCannotBeUndone) {
    Insert(MakeCard("a-b", "x"));
    Insert(MakeCard("a-c", "x"));
    mDatabase.Execute("UPDATE Cards SET CardId='none' WHERE Front='a-c'");
    mDatabase.Execute("INSERT INTO Cards(CardId,Front,Back) VALUES('also none',x'00d82d00',5)");
    ReplacementsFound found = Find("-", "+");
    EXPECT_EQ(found.Cards.size(), 3U);
    EXPECT_EQ(Write(std::move(found.Cards)), 1);
    EXPECT_THAT(Query("SELECT Front FROM Cards WHERE Back='x' ORDER BY ROWID"),
                ElementsAre("a+b", "a+c"));
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo replacement in 1 card");
}

TEST_F(ReplacementTest, AStoreThatIsLockedIsTold) {
    Insert(MakeCard("a", "b"));
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(StorePath().utf8_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(Find("a", "x").IsStoreFailed);
    sqlite3_close(other);
    EXPECT_EQ(Find("a", "x").Cards.size(), 1U);
}

}  // namespace
