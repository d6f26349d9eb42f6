#include "store/UndoHistory.h"

#include "support/StoreFixture.h"

using Counts = std::pair<int32_t, int32_t>;

struct UndoHistoryTest : StoreFixture {
    void SetUp() override { EXPECT_EQ(mDatabase.CategoryInsert("Verbs"), 0); }

    std::vector<int64_t> RowsOf(const std::vector<FlashCard>& cards) {
        std::vector<int64_t> rowIds;
        for (const FlashCard& card : cards) {
            EXPECT_EQ(mDatabase.SelectRowIdById(card.CardId, rowIds), 0);
        }
        return rowIds;
    }

    void Delete(const std::vector<FlashCard>& cards) {
        StoreChange change;
        EXPECT_EQ(NoteDeletion(mDatabase, RowsOf(cards), change), 0);
        for (const FlashCard& card : cards) {
            EXPECT_EQ(mDatabase.DeleteCard(card.CardId), 0);
        }
        mHistory.Add(std::move(change));
    }

    void Move(const std::vector<FlashCard>& cards, int32_t intoId) {
        StoreChange change;
        EXPECT_EQ(NoteMove(mDatabase, RowsOf(cards), intoId, change), 0);
        for (const int64_t rowId : RowsOf(cards)) {
            EXPECT_EQ(mDatabase.CardUpdateCategory(rowId, intoId), 0);
        }
        mHistory.Add(std::move(change));
    }

    void Merge(const Category& from, int32_t intoId) {
        StoreChange change;
        EXPECT_EQ(NoteMerge(mDatabase, from, intoId, change), 0);
        EXPECT_EQ(mDatabase.UpdateFlashCardCategory(from.Id, intoId), 0);
        EXPECT_EQ(mDatabase.DeleteCategory(from.Id), 0);
        mHistory.Add(std::move(change));
    }

    // The restored and the left alone cards of taking back one step.
    Counts Undo() {
        UndoOutcome outcome;
        EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
        return {outcome.Restored, outcome.LeftAlone};
    }

    Counts Redo() {
        UndoOutcome outcome;
        EXPECT_EQ(mHistory.RedoLast(mDatabase, outcome), 0);
        return {outcome.Restored, outcome.LeftAlone};
    }

    Strings Categories() { return Query("SELECT Name FROM Categories ORDER BY Name"); }

    UndoHistory mHistory;
};

TEST_F(UndoHistoryTest, StepsComeBackInTurnAndLeaveWhatWasStudiedSince) {
    const FlashCard kept = Insert(MakeCard("moved", "back", 0));
    FlashCard gone = MakeCard("gone", "back", 1);
    gone.Forward.Introduced = true;
    gone.Forward.ReviewInterval = 12345.0f;
    gone.Notes = L"\u8a9e";
    gone = Insert(gone);
    Move({kept}, 1);
    Delete({gone});
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo deletion of 1 card");
    FlashCard studied = Stored(kept.CardId);
    studied.Forward.ReviewInterval = 777.0f;
    EXPECT_EQ(mDatabase.UpdateFlashCard(studied), 0);

    EXPECT_EQ(Undo(), Counts(1, 0));
    const FlashCard again = Stored(gone.CardId);
    EXPECT_EQ(again.Forward, gone.Forward);
    EXPECT_EQ(again.Notes, gone.Notes);
    EXPECT_EQ(again.CategoryId, 1);
    EXPECT_EQ(Undo(), Counts(1, 0));
    EXPECT_EQ(Stored(kept.CardId).CategoryId, 0);
    EXPECT_EQ(Stored(kept.CardId).Forward.ReviewInterval, 777.0f);
    EXPECT_TRUE(mHistory.IsEmpty());
    EXPECT_EQ(Undo(), Counts(0, 0));
}

TEST_F(UndoHistoryTest, EachStepCanBeDoneAgainAndTakenBackOnceMore) {
    const FlashCard card = Insert(MakeCard("card", "back", 0));
    const auto store = [this] {
        return Query(
            "SELECT Front, Name FROM Cards LEFT JOIN Categories ON Id = CategoryId ORDER BY Front");
    };
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"deletion", [&] { Delete({Stored(card.CardId)}); }},
        {"move", [&] { Move({card}, 1); }},
        {"new card", [&] { mHistory.Add(NoteNewCard(Insert(MakeCard("new", "x", 1)))); }},
        {"paste",
         [&] {
             StoreChange change;
             NoteCopy(Insert(MakeCard("copy", "x", 1)), change);
             mHistory.Add(std::move(change));
         }},
        {"edit",
         [&] {
             FlashCard edited = Stored(card.CardId);
             edited.Front = "edited";
             edited.CategoryId = 1;
             mHistory.Add(NoteEdit(Stored(card.CardId), edited));
             EXPECT_EQ(mDatabase.UpdateFlashCard(edited), 0);
         }},
        {"merge", [&] {
             Merge({0, "Default"}, 1);
         }}};
    for (const auto& [name, act] : steps) {
        SCOPED_TRACE(name);
        const Strings before = store();
        act();
        const Strings after = store();
        EXPECT_NE(before, after);
        wxString label = mHistory.GetUndoLabel();
        label.Replace("Undo", "Redo");
        for (int turn = 0; turn < 2; ++turn) {
            EXPECT_EQ(Undo(), Counts(1, 0));
            EXPECT_EQ(store(), before);
            EXPECT_EQ(mHistory.GetRedoLabel(), label);
            EXPECT_EQ(Redo(), Counts(1, 0));
            EXPECT_EQ(store(), after);
        }
        Undo();
        EXPECT_EQ(store(), before);
    }
    // A new step leaves nothing to do again.
    Move({card}, 1);
    EXPECT_FALSE(mHistory.CanRedo());
}

TEST_F(UndoHistoryTest, AnEditOfSeveralCardsIsOneStepWithoutWhatWasDoneSince) {
    StoreChange change;
    std::vector<FlashCard> cards;
    for (const char* const name : {"one", "two", "untouched"}) {
        cards.push_back(Insert(MakeCard(name, "back", 0)));
        FlashCard after = cards.back();
        after.Front = *name == 'u' ? "untouched" : "after";
        EXPECT_EQ(mDatabase.UpdateFlashCard(after), 0);
        NoteEdit(cards.back(), after, change);
    }
    mHistory.Add(change);
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo change of 2 cards");
    FlashCard studied = Stored(cards[1].CardId);
    studied.Forward.ReviewInterval = 777.0f;
    EXPECT_EQ(mDatabase.UpdateFlashCard(studied), 0);
    EXPECT_EQ(Undo(), Counts(2, 0));
    EXPECT_EQ(Stored(cards[1].CardId).Front, "two");
    EXPECT_EQ(Stored(cards[1].CardId).Forward.ReviewInterval, 777.0f);
    EXPECT_EQ(Redo(), Counts(2, 0));
    EXPECT_EQ(mDatabase.DeleteCard(cards[0].CardId), 0);
    EXPECT_EQ(Undo(), Counts(1, 1));
    EXPECT_EQ(Redo(), Counts(1, 0));
    studied.Front = "typed elsewhere";
    EXPECT_EQ(mDatabase.UpdateFlashCard(studied), 0);
    EXPECT_EQ(Undo(), Counts(0, 1));
    EXPECT_EQ(Stored(cards[1].CardId).Front, "typed elsewhere");
    EXPECT_FALSE(mHistory.CanRedo());
}

TEST_F(UndoHistoryTest, CardsThatWentOtherWaysMeanwhileAreLeftAlone) {
    const FlashCard moved = Insert(MakeCard("moved", "back", 0));
    const FlashCard imported = Insert(MakeCard("imported again", "back", 0));
    const FlashCard copy = Insert(MakeCard("studied copy", "back", 0));
    StoreChange paste;
    paste.What = StoreChange::Kind::kPaste;
    paste.Cards = {Stored(copy.CardId), Stored(moved.CardId)};
    Move({moved}, 1);
    EXPECT_EQ(mDatabase.CardUpdateCategory(RowsOf({moved}).front(), -1), 0);
    Delete({imported});
    Insert(imported);
    EXPECT_EQ(Undo(), Counts(0, 1));
    EXPECT_EQ(Undo(), Counts(0, 1));
    EXPECT_EQ(Stored(moved.CardId).CategoryId, -1);
    mHistory.Add(std::move(paste));
    EXPECT_EQ(Undo(), Counts(1, 1));
    EXPECT_EQ(Query("SELECT Front FROM Cards ORDER BY Front"),
              (Strings{"imported again", "moved"}));
}

TEST_F(UndoHistoryTest, CategoriesComeBackByTheirNames) {
    const FlashCard verb = Insert(MakeCard("verb", "back", 1));
    Insert(MakeCard("noun", "back", 0));
    Merge({1, "Verbs"}, 0);
    EXPECT_EQ(mDatabase.CategoryInsert("Takes the free id"), 0);
    EXPECT_EQ(Undo(), Counts(1, 0));
    EXPECT_EQ(Categories(), (Strings{"Default", "Takes the free id", "Verbs"}));
    EXPECT_EQ(Query("SELECT Front FROM Cards, Categories WHERE CategoryId=Id AND Name='Verbs'"),
              Strings{"verb"});

    // The category of a deleted card was deleted after it.
    const int32_t id = Stored(verb.CardId).CategoryId;
    Delete({verb});
    EXPECT_EQ(mDatabase.DeleteCategory(id), 0);
    EXPECT_EQ(Undo(), Counts(1, 0));
    EXPECT_EQ(Query("SELECT Front FROM Cards, Categories WHERE CategoryId=Id AND Name='Verbs'"),
              Strings{"verb"});
}

TEST_F(UndoHistoryTest, ARenamingComesBackUnlessTheNameIsTaken) {
    const auto rename = [this](const char* name) {
        StoreChange change;
        change.What = StoreChange::Kind::kRename;
        change.NewName = name;
        EXPECT_EQ(mDatabase.SelectCategoryById(1, change.Categories), 0);
        EXPECT_EQ(mDatabase.UpdateCategory({1, name}), 0);
        mHistory.Add(std::move(change));
    };
    rename("Words");
    rename("More words");
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo renaming of category \"Words\"");
    Undo();
    EXPECT_EQ(mHistory.GetRedoLabel(), "Redo renaming of category \"Words\"");
    EXPECT_EQ(Categories(), (Strings{"Default", "Words"}));
    EXPECT_EQ(mDatabase.CategoryInsert("Verbs"), 0);
    UndoOutcome outcome;
    EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
    EXPECT_TRUE(outcome.NameTaken);
    EXPECT_EQ(Categories(), (Strings{"Default", "Verbs", "Words"}));
    // Renamed once more, by an import or another program.
    rename("Sayings");
    EXPECT_EQ(mDatabase.UpdateCategory({1, "Proverbs"}), 0);
    EXPECT_EQ(mHistory.UndoLast(mDatabase, outcome), 0);
    EXPECT_TRUE(outcome.NameTaken);
    EXPECT_EQ(Categories(), (Strings{"Default", "Proverbs", "Verbs"}));
}

TEST_F(UndoHistoryTest, SoundsAndPicturesComeBackAsTheyWere) {
    const FlashCard card = Insert(MakeCard("seen", "back", 0));
    const FlashCard plain = Insert(MakeCard("plain", "back", 0));
    Query(
        "UPDATE Cards SET FrontAudio=x'0001FF',BackAudio='text',FrontImage=12 WHERE Front='seen'");
    const Strings rows = Query("SELECT * FROM Cards ORDER BY Front");
    Delete({card, plain});
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(Undo(), Counts(2, 0));
        EXPECT_EQ(Query("SELECT * FROM Cards ORDER BY Front"), rows);
        EXPECT_EQ(Redo(), Counts(2, 0));
    }
    Undo();
    EXPECT_EQ(Query("SELECT typeof(FrontAudio),typeof(BackAudio),typeof(FrontImage) FROM Cards"
                    " WHERE Front='seen'"),
              Strings{"blob|text|integer"});
}

TEST_F(UndoHistoryTest, SoundsAndPicturesOfAllStepsHaveALimit) {
    std::vector<FlashCard> cards;
    for (const char* const front : {"a", "b", "c"}) {
        cards.push_back(Insert(MakeCard(front, "back", 0)));
    }
    Query("UPDATE Cards SET BackImage=zeroblob(40000000)");
    Delete({cards[0]});
    StoreChange both;
    EXPECT_EQ(NoteDeletion(mDatabase, RowsOf({cards[1], cards[2]}), both), 0);
    EXPECT_EQ(both.CountMediaBytes(), 0U);
    EXPECT_EQ(DescribeWithoutUndo(both).BeforeFirst('.'),
              "The store has more than 64 MB of sounds and pictures of these cards");
    // The first step goes for the second.
    Delete({cards[1]});
    EXPECT_EQ(Undo(), Counts(1, 0));
    EXPECT_EQ(Query("SELECT Front, LENGTH(BackImage) FROM Cards ORDER BY Front"),
              (Strings{"b|40000000", "c|40000000"}));
    EXPECT_TRUE(mHistory.IsEmpty());
    mHistory.Add(std::move(both));
    EXPECT_TRUE(mHistory.IsEmpty());
}

// A damaged store may have such a card among others.
TEST_F(UndoHistoryTest, ACardWithoutAnIdentityIsChangedWithTheOthers) {
    const FlashCard whole = Insert(MakeCard("whole", "back", 0));
    Insert(MakeCard("nameless", "back", 0));
    Query("UPDATE Cards SET CardId='x' WHERE Front='nameless'");
    std::vector<int64_t> rowIds;
    EXPECT_EQ(mDatabase.CardSelectRowIdsOrder(CardColumn::kFront, rowIds), 0);
    const Category from{0, "Default"};
    StoreChange merge;
    EXPECT_EQ(NoteMerge(mDatabase, from, 1, merge), 0);
    StoreChange move;
    EXPECT_EQ(NoteMove(mDatabase, rowIds, 1, move), 0);
    StoreChange deletion;
    EXPECT_EQ(NoteDeletion(mDatabase, rowIds, deletion), 0);
    for (const StoreChange& change : {merge, move, deletion}) {
        EXPECT_EQ(change.CountCards(), 1U);
        EXPECT_EQ(DescribeWithoutUndo(change),
                  "The store has no proper identity for 1 of these cards. What was done to it"
                  " cannot be undone.");
    }
    EXPECT_EQ(mDatabase.CardsDeleteByRowId(rowIds), 0);
    mHistory.Add(std::move(deletion));
    EXPECT_EQ(Undo(), Counts(1, 0));
    EXPECT_EQ(Query("SELECT Front FROM Cards"), Strings{"whole"});
    EXPECT_EQ(Stored(whole.CardId).Front, "whole");
}

TEST_F(UndoHistoryTest, TheOldestStepsGoFirstAndAHugeOneTakesAllWithIt) {
    const auto add = [this](size_t cards) {
        StoreChange change;
        change.What = StoreChange::Kind::kMove;
        change.MovedCards.resize(cards);
        mHistory.Add(std::move(change));
    };
    add(UndoHistory::kMostCards - 1);
    add(2);
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo moving of 2 cards");
    EXPECT_EQ(Undo(), Counts(0, 2));
    EXPECT_TRUE(mHistory.IsEmpty());
    add(2);
    add(UndoHistory::kMostCards + 1);
    EXPECT_TRUE(mHistory.IsEmpty());
}
