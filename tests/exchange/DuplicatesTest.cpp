#include "exchange/Duplicates.h"

#include "store/UndoHistory.h"
#include "support/StoreFixture.h"

namespace {

using testing::ElementsAre;

struct DuplicatesTest : StoreFixture {
    // The fronts of each group.
    std::vector<Strings> Fronts(SameBy by, std::optional<int32_t> categoryId = std::nullopt) {
        std::vector<Strings> fronts;
        for (const auto& group : FindDuplicates(mDatabase, by, categoryId, mCancelled).Groups) {
            fronts.emplace_back();
            for (const int64_t rowId : group) {
                std::list<FlashCard> cards;
                mDatabase.SelectCardByRowId(rowId, cards);
                fronts.back().push_back(cards.front().Front.utf8_string());
            }
        }
        return fronts;
    }

    // Makes one card of each group of cards with the same front, and returns how many were left.
    int32_t UniteAll(const std::vector<std::vector<int64_t>>& groups, UndoHistory& history) {
        UnionThread thread(mDatabase, SameBy::kFront, groups);
        EXPECT_TRUE(thread.Start());
        thread.Join();
        history.Add(NoteUnions(thread.TakeDone()));
        return thread.CountLeftAlone();
    }

    std::atomic<bool> mCancelled{false};
};

FlashCard Scored(FlashCard card, time_t forward, time_t reverse) {
    for (const auto& [schedule, time] :
         {std::pair(&card.Forward, forward), {&card.Reverse, reverse}}) {
        schedule->Introduced = time != 0;
        schedule->LastReview = wxDateTime(time != 0 ? time : 1000);
        schedule->ReviewInterval = static_cast<float>(time + 1);
    }
    return card;
}

TEST_F(DuplicatesTest, GroupsWhatAPersonTakesForTheSame) {
    const auto add = [this](const char* front, const char* back, int32_t category) {
        return Insert(MakeCard(wxString::FromUTF8(front), wxString::FromUTF8(back), category));
    };
    const FlashCard school = add("École", "school", 0);
    add("か", "x", 0);
    add("ecole", "School", 0);
    add("が", "x", 0);
    add("カ", "y", 0);
    add("ÉCOLE", "academy", 1);
    add("\u0301", "mark", 0);
    add("\u0300", "mark", 0);
    EXPECT_THAT(Fronts(SameBy::kFront),
                ElementsAre(Strings{"École", "ecole", "ÉCOLE"}, Strings{"か", "カ"}));
    EXPECT_THAT(Fronts(SameBy::kFrontAndBack), ElementsAre(Strings{"École", "ecole"}));
    EXPECT_THAT(Fronts(SameBy::kFront, 0).front(), ElementsAre("École", "ecole"));
    FlashCard found;
    EXPECT_TRUE(FindCardWithFront(mDatabase, "ecolE", school.CardId, mCancelled, found));
    EXPECT_EQ(found.Front, "ecole");
    EXPECT_FALSE(FindCardWithFront(mDatabase, wxString::FromUTF8("が"), Stored(found.CardId).CardId,
                                   mCancelled, found) &&
                 found.Front != wxString::FromUTF8("が"));
    EXPECT_FALSE(FindCardWithFront(mDatabase, "school", {}, mCancelled, found));
    EXPECT_FALSE(FindCardWithFront(mDatabase, "", {}, mCancelled, found));
    mCancelled = true;
    EXPECT_TRUE(Fronts(SameBy::kFront).empty());
}

TEST_F(DuplicatesTest, TheLaterReviewIsTheBetterSchedule) {
    const struct {
        time_t Kept[2];
        time_t Other[2];
        time_t Expected[2];
        bool IsOtherLater;
    } cases[] = {{{5000, 6000}, {7000, 4000}, {7000, 6000}, true},
                 {{0, 0}, {3000, 0}, {3000, 0}, true},
                 {{3000, 0}, {0, 0}, {3000, 0}, false},
                 {{3000, 9000}, {8000, 0}, {8000, 9000}, false},
                 {{0, 0}, {0, 0}, {0, 0}, false}};
    for (const auto& row : cases) {
        const FlashCard kept = Scored(MakeCard("a", "b"), row.Kept[0], row.Kept[1]);
        FlashCard other = Scored(MakeCard("a", "c"), row.Other[0], row.Other[1]);
        other.Notes = "note";
        const FlashCard merged = SuggestUnion(kept, other);
        EXPECT_EQ(merged.Back + merged.Notes, "bnote");
        const FlashCard expected = Scored(kept, row.Expected[0], row.Expected[1]);
        EXPECT_EQ(merged.Forward, expected.Forward);
        EXPECT_EQ(merged.Reverse, expected.Reverse);
        EXPECT_EQ(IsReviewedLater(kept, other), row.IsOtherLater);
    }
}

TEST_F(DuplicatesTest, AGroupIsPlainWhereNothingGetsLost) {
    const struct {
        std::function<void(FlashCard&)> Change;
        bool IsPlain;
    } cases[] = {{[](FlashCard& card) { card.Back = "SCHOOL"; }, true},
                 {[](FlashCard& card) { card.Back = "the school"; }, false},
                 {[](FlashCard& card) { card.CategoryId = 1; }, false},
                 {[](FlashCard& card) { card.ForwardX = true; }, false},
                 {[](FlashCard& card) { card.ReverseX = true; }, false},
                 {[](FlashCard& card) { card.Notes.clear(); }, true},
                 {[](FlashCard& card) { card.Author = "else"; }, false},
                 {[](FlashCard& card) { card.Notes = "else"; }, false},
                 {[](FlashCard& card) { card.Chapter = "else"; }, false},
                 {[](FlashCard& card) { card = Scored(card, 3000, 0); }, true}};
    std::vector<bool> expected;
    for (const auto& row : cases) {
        const wxString front = wxString::Format("ecole%zu", expected.size());
        for (const bool isOther : {false, true}) {
            FlashCard card = MakeCard(front, "school", 0);
            card.Author = card.Chapter = card.Notes = "text";
            if (isOther) {
                row.Change(card);
            }
            Insert(card);
        }
        expected.push_back(row.IsPlain);
    }
    EXPECT_EQ(FindDuplicates(mDatabase, SameBy::kFront, std::nullopt, mCancelled).ArePlain,
              expected);
}

TEST_F(DuplicatesTest, AllGroupsBecomeOneCardEachAndArePartedAgain) {
    Insert(Scored(MakeCard("a", "1"), 5000, 0));
    Insert(Scored(MakeCard("A", "2"), 7000, 3000));
    Insert(Scored(MakeCard("a", "3"), 0, 6000));
    for (const auto& [front, back] : {std::pair("b", "1"), {"b", "2"}, {"c", "1"}, {"c", "2"}}) {
        Insert(Scored(MakeCard(front, back), 0, 0));
    }
    auto groups = FindDuplicates(mDatabase, SameBy::kFront, std::nullopt, mCancelled).Groups;
    // Another card has the row by now, and stays.
    ASSERT_EQ(Query("UPDATE Cards SET Front='d' WHERE ROWID=7").size(), 0U);
    const std::string all =
        "SELECT Front,Back,LastReview,RLastReview FROM Cards ORDER BY Back,Front";
    const Strings before = Query(all);
    UndoHistory history;
    EXPECT_EQ(UniteAll(groups, history), 1);
    const auto united =
        ElementsAre("b|1|1000|1000", "c|1|1000|1000", "A|2|7000|6000", "d|2|1000|1000");
    EXPECT_THAT(Query(all), united);
    UndoOutcome outcome;
    EXPECT_EQ(history.GetUndoLabel(), "Undo merging of 5 cards");
    EXPECT_EQ(history.UndoLast(mDatabase, outcome), 0);
    EXPECT_EQ(Query(all), before);
    EXPECT_EQ(history.GetRedoLabel(), "Redo merging of 5 cards");
    EXPECT_EQ(history.RedoLast(mDatabase, outcome), 0);
    EXPECT_THAT(Query(all), united);
}

TEST_F(DuplicatesTest, AUnionIsTakenBackWithoutTheScoreThatCameAfterIt) {
    const FlashCard kept = Insert(Scored(MakeCard("ecole", "school"), 5000, 0));
    const FlashCard other = Insert(Scored(MakeCard("École", "academy"), 7000, 6000));
    FlashCard merged = SuggestUnion(kept, other);
    merged.Back = "school, academy";
    StoreChange change;
    FlashCard outdated = other;
    outdated.Notes = "as it was before";
    EXPECT_EQ(UniteCards(mDatabase, kept, outdated, merged, change),
              UnionOutcome::kChangedMeanwhile);
    ASSERT_EQ(UniteCards(mDatabase, kept, other, merged, change), UnionOutcome::kDone);
    UndoHistory history;
    history.Add(std::move(change));
    const std::string all = "SELECT Front,Back,LastReview,RLastReview FROM Cards ORDER BY Front";
    EXPECT_THAT(Query(all), ElementsAre("ecole|school, academy|7000|6000"));
    EXPECT_EQ(history.GetUndoLabel(), "Undo merging of cards \"ecole\"");
    UndoOutcome outcome;
    // A score after the merging stays.
    mDatabase.UpdateFlashCard(Scored(Stored(kept.CardId), 8000, 6000));
    EXPECT_EQ(history.UndoLast(mDatabase, outcome), 0);
    EXPECT_THAT(Query(all), ElementsAre("ecole|school|8000|1000", "École|academy|7000|6000"));
    // The other card, once studied, does not go again.
    mDatabase.UpdateFlashCard(Scored(Stored(other.CardId), 9000, 6000));
    EXPECT_EQ(history.RedoLast(mDatabase, outcome), 0);
    EXPECT_EQ(outcome.LeftAlone, 1);
    EXPECT_EQ(Query(all).size(), 2U);
}

TEST_F(DuplicatesTest, AStepKeepsNoMoreSoundsAndPicturesThanTheHistory) {
    UndoHistory history;
    for (const char* const back : {"x", "y", "z"}) {
        Insert(MakeCard("same", back));
    }
    Query("UPDATE Cards SET FrontAudio=zeroblob(40000000)");
    UniteAll(FindDuplicates(mDatabase, SameBy::kFront, std::nullopt, mCancelled).Groups, history);
    EXPECT_EQ(Query("SELECT COUNT(*) FROM Cards"), Strings{"1"});
    EXPECT_TRUE(history.IsEmpty());
}

}  // namespace
