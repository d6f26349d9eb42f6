#include "reviews/EditNotes.h"

#include <atomic>
#include <filesystem>

#include "reviews/ScheduleEvents.h"
#include "store/UndoHistory.h"
#include "support/StoreFixture.h"

namespace {

constexpr int64_t kNow = 1700000000000;

struct EditNotesTest : StoreFixture {
    EditNotesTest() {
        mHistory.SetListener(
            [this](const StoreChange& step) { mSteps.Take(StorePath(), step, kNow); });
        Exchange();
    }
    void Exchange() { WriteBytes(StorePath() + kExchangeSuffix, ""); }
    FlashCard Add(const wxString& front) {
        FlashCard card = MakeCard(front, "back");
        card.Forward = card.Reverse = {true, wxDateTime(time_t{1600000000}), 4, 86400, 16, 5};
        return Insert(card);
    }
    void Edit(const FlashCard& card) {
        const FlashCard before = Stored(card.CardId);
        EXPECT_EQ(mDatabase.UpdateFlashCard(card), 0);
        mHistory.Add(NoteEdit(before, card));
    }
    void Undo() { EXPECT_EQ(mHistory.UndoLast(mDatabase, mOutcome), 0); }
    void Redo() { EXPECT_EQ(mHistory.RedoLast(mDatabase, mOutcome), 0); }

    // What was noted since the last call: the fields of each card, named by its place among these,
    // and then the schedules that were set.
    std::string Noted(const std::vector<FlashCard>& cards) {
        const auto nameOf = [&cards](const CardUuid& id) {
            size_t place = 0;
            while (place < cards.size() && cards[place].CardId != id) {
                ++place;
            }
            return std::to_string(place);
        };
        std::string noted;
        for (const EditNote& note : TakeEditNotes(StorePath())) {
            EXPECT_EQ(note.Time, kNow);
            noted += nameOf(note.CardId) + ":";
            for (size_t field = 0; field < kEditedFieldCount; ++field) {
                noted += note.Fields.test(field) ? "FBCAHOXYNfrD"[field] : '\0';
            }
            noted += ' ';
        }
        DropEditNotes(StorePath());
        noted.erase(std::remove(noted.begin(), noted.end(), '\0'), noted.end());
        mOffset = VisitEvents(
            ReviewLogPath(StorePath()), mOffset,
            [&](const ScheduleEvent& event) {
                const FlashCard stored = Stored(event.CardId);
                EXPECT_TRUE(event.IsSet);
                EXPECT_TRUE(event.After == ScheduleOf(stored, event.Direction));
                noted += nameOf(event.CardId) + (event.Direction == kReviewForward ? "F" : "R") +
                         std::to_string(event.Time - kNow / 1000) + " ";
            },
            mCancelled);
        return noted;
    }

    StepNotes mSteps;
    UndoHistory mHistory;
    UndoOutcome mOutcome;
    int64_t mOffset = 0;
    std::atomic<bool> mCancelled{false};
};

TEST_F(EditNotesTest, EachStepNotesItsFieldsAndTheSchedulesThatItSets) {
    const std::vector<FlashCard> cards{Add("one"), Add("two")};
    std::vector<int64_t> rowIds;
    for (const FlashCard& card : cards) {
        ASSERT_EQ(mDatabase.SelectRowIdById(card.CardId, rowIds), 0);
    }
    FlashCard edited = cards[0];
    edited.Back = edited.Author = edited.Chapter = edited.Notes = "other";
    edited.ForwardX = edited.ReverseX = true;
    edited.Forward.ERC = 77;
    Edit(edited);
    EXPECT_EQ(Noted(cards), "0:BAHXYN ");
    edited.Forward = CardSchedule();
    edited.Reverse.Difficulty = 3;
    Edit(edited);
    EXPECT_EQ(Noted(cards), "0:fr 0F0 0R0 ");
    Undo();
    EXPECT_EQ(Noted(cards), "0:fr 0F0 0R0 ");
    // A clock that is behind the review does not put the change before it.
    edited = Stored(cards[0].CardId);
    edited.Reverse.LastReview = wxDateTime(time_t{kNow / 1000 + 500});
    Edit(edited);
    EXPECT_EQ(Noted(cards), "0:r 0R0 ");
    edited.Reverse.ReviewInterval = 5;
    Edit(edited);
    EXPECT_EQ(Noted(cards), "0:r 0R501 ");
    // The history takes back only what a score has not changed since.
    ASSERT_EQ(mDatabase.Execute("UPDATE Cards SET RLastReview = 1"), 0);
    Undo();
    EXPECT_EQ(Noted(cards), "");

    StoreChange change;
    const auto reset = [](FlashCard& card) { card.Forward.ReviewInterval = 777; };
    ASSERT_EQ(NoteChange(mDatabase, rowIds, reset, change), 0);
    ASSERT_EQ(mDatabase.Execute("UPDATE Cards SET ReviewInterval = 777"), 0);
    mHistory.Add(std::move(change));
    EXPECT_EQ(Noted(cards), "0:f 1:f 0F0 1F0 ");

    ASSERT_EQ(mDatabase.CategoryInsert("Verbs"), 0);
    change = {};
    ASSERT_EQ(NoteMove(mDatabase, rowIds, 1, change), 0);
    ASSERT_EQ(mDatabase.CardsUpdateCategory(rowIds, 1), 0);
    mHistory.Add(std::move(change));
    Undo();
    Redo();
    EXPECT_EQ(Noted(cards), "0:C 1:C 0:C 1:C 0:C 1:C ");

    change = {};
    ASSERT_EQ(Renumber(mDatabase, {{rowIds[1], cards[1].IntroductionOrder, 9, CardUuid()}}, change),
              0);
    mHistory.Add(std::move(change));
    EXPECT_EQ(Noted(cards), "1:O ");
    mHistory.Add(NoteTexts({{rowIds[0],
                             cards[0].CardId,
                             {{CardText::kFront, u"a", u"b"}, {CardText::kChapter, u"a", u"b"}}}}));
    EXPECT_EQ(Noted(cards), "0:FH ");

    // Cards that come and go.
    mHistory.Add(NoteNewCard(Stored(cards[1].CardId)));
    Undo();
    Redo();
    change = {};
    ASSERT_EQ(NoteDeletion(mDatabase, rowIds, change), 0);
    ASSERT_EQ(mDatabase.CardsDeleteByRowId(rowIds), 0);
    mHistory.Add(std::move(change));
    Undo();
    EXPECT_EQ(Noted(cards), "1:FBCAHOXYNfr 1:D 1:FBCAHOXYNfr 0:D 1:D 0:FBCAHOXYNfr 1:FBCAHOXYNfr ");

    const FlashCard kept = Stored(cards[0].CardId);
    FlashCard merged = kept;
    merged.Notes = "both";
    merged.Forward.ReviewInterval = 11;
    change = {};
    ASSERT_EQ(NoteUnion(mDatabase, kept, Stored(cards[1].CardId), merged, change), 0);
    ASSERT_EQ(mDatabase.UpdateFlashCard(merged) + mDatabase.DeleteCard(cards[1].CardId), 0);
    StoreChange unions;
    unions.What = StoreChange::Kind::kUnion;
    unions.Unions = {std::move(change)};
    mHistory.Add(std::move(unions));
    EXPECT_EQ(Noted(cards), "0:Nf 1:D 0F0 ");
    ASSERT_EQ(mDatabase.Execute("UPDATE Cards SET Notes = 'later'"), 0);
    Undo();
    EXPECT_EQ(Noted(cards), "0:f 1:FBCAHOXYNfr 0F0 ");
}

TEST_F(EditNotesTest, NotesStayUntilTheyAreDropped) {
    const wxString path = StorePath() + kEditNotesSuffix;
    const std::vector<FlashCard> cards{Add("one")};
    const std::vector<EditNote> notes{{kNow, cards[0].CardId, 1}, {kNow, CardUuid(), 1}};
    std::filesystem::remove((StorePath() + kExchangeSuffix).utf8_string());
    EXPECT_EQ(AddEditNotes(StorePath(), notes), 0);
    EXPECT_FALSE(std::filesystem::exists(path.utf8_string()));
    Exchange();
    EXPECT_EQ(AddEditNotes(StorePath(), notes), 0);
    const std::string line = ReadBytes(path);
    // A power cut tore the last line, and others are none.
    WriteBytes(path,
               line + "\n\n1\n" + line.substr(0, line.size() - 2) + "?\n" + line.substr(0, 20));
    EXPECT_EQ(TakeEditNotes(StorePath()).size(), 1U);
    EXPECT_EQ(AddEditNotes(StorePath(), notes), 0);
    // What was taken was not dropped, so it is taken again.
    EXPECT_EQ(TakeEditNotes(StorePath()).size(), 2U);
    EXPECT_EQ(Noted(cards), "0:F 0:F ");
    EXPECT_TRUE(TakeEditNotes(StorePath()).empty());
    std::filesystem::create_directory(path.utf8_string());
    EXPECT_NE(AddEditNotes(StorePath(), notes), 0);
    EXPECT_TRUE(TakeEditNotes(StorePath()).empty());
}

}  // namespace
