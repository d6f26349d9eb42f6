#include "edit/EditFrame.h"

#include "edit/EditForm.h"
#include "edit/EditSchedulePanel.h"
#include "plot/PlotControl.h"
#include "reviews/ReviewLog.h"
#include "support/GuiTest.h"

namespace {

constexpr int kFront = EditForm::ID_FRONT, kBack = EditForm::ID_BACK;
constexpr int kAuthor = EditForm::ID_AUTHOR, kChapter = EditForm::ID_CHAPTER;
constexpr int kNotes = EditForm::ID_NOTES, kCategory = EditForm::ID_CATEGORY;
constexpr int kOrder = EditForm::ID_INTRODUCTION_ORDER;
constexpr int kForwardSchedule = EditForm::ID_FORWARD_SCHEDULE;
constexpr int kReverseX = EditForm::ID_REVERSE_X, kForwardX = EditForm::ID_FORWARD_X;
constexpr int kInterval = EditSchedulePanel::ID_REVIEW_INTERVAL;
constexpr int kIntroduced = EditSchedulePanel::ID_INTRODUCED;

// An editor, with a person's keys.
struct EditFrameTest : FrameTest<EditFrame> {
    // A new card, or a stored one.
    void Open(const FlashCard* card = nullptr) {
        OpenFrame(new EditFrame(mServices));
        card == nullptr ? mpFrame->New() : mpFrame->SetCard(*card);
    }
    void TypeCard() {
        Type(kFront, "f");
        Type(kBack, "b");
    }

    wxWindow& Control(int field) { return *FindById(*mpFrame, field); }
    wxTextEntry& Entry(int field) { return Find<wxTextEntry>(*mpFrame, field); }
    void Type(int field, const wxString& text) { Entry(field).ChangeValue(text); }
    wxString Text(int field) { return Entry(field).GetValue(); }
    // A box of the form, or the one of a schedule.
    wxCheckBox& Box(int id) {
        return dynamic_cast<wxCheckBox&>(
            id == kForwardSchedule ? *FindById(Control(id), kIntroduced) : Control(id));
    }

    // A command of the menus, or the press of a button where there is one of that id.
    void Command(int id) {
        wxWindow* const button = mpFrame->FindWindow(id);
        button == nullptr ? void(SendCommand(*mpFrame, id)) : Send(*button);
        DrainEvents();
    }
    // Gives the command, answers what it asks and gives back the last question.
    wxString Answer(std::initializer_list<int> answers, int id) {
        ModalAnswers modal;
        modal.Expect(answers);
        Command(id);
        return modal.Dialogs.empty() ? "nothing was asked" : modal.Dialogs.back().Message;
    }
};

TEST_F(EditFrameTest, EachFaultIsToldInItsTurnAndPointedAt) {
    Open();
    Type(kFront, L" \n\u3000");
    wxWindow& forwardInterval = *FindById(Control(kForwardSchedule), kInterval);
    dynamic_cast<wxTextEntry&>(forwardInterval).ChangeValue("x");
    const wxString name = wxString(L"100%s \"\u00e9\"\n") + wxString('n', 5000);
    Type(kCategory, name);
    Type(kOrder, "12a");
    const auto expectFault = [this](std::initializer_list<int> answers, const wxString& message,
                                    wxWindow& field, int command = ID_SAVE_CLOSE) {
        EXPECT_EQ(Answer(answers, command).Left(60), message.Left(60));
        EXPECT_EQ(wxWindow::FindFocus(), &field);
        long from = 0;
        long to = 0;
        dynamic_cast<wxTextEntry&>(field).GetSelection(&from, &to);
        EXPECT_EQ(to - from, dynamic_cast<wxTextEntry&>(field).GetLastPosition());
    };
    expectFault({wxID_OK}, "Flash cards cannot have a blank front", Control(kFront));
    Type(kFront, "  front ");
    expectFault({wxID_YES, wxID_OK}, "Flash cards cannot have a blank back", Control(kBack),
                wxID_CANCEL);
    Type(kBack, "back");
    expectFault({wxID_OK}, "ReviewInterval must be a number", forwardInterval);
    dynamic_cast<wxTextEntry&>(forwardInterval).ChangeValue("2");
    expectFault({wxID_NO}, L"Category \"100%s \"\u00e9\" nnnnn" + wxString('n', 60),
                Control(kCategory));
    EXPECT_EQ(Query("SELECT COUNT(*) FROM Categories"), Strings{"1"});

    expectFault({wxID_YES, wxID_OK}, "Introduction Order must be a whole number", Control(kOrder));
    Type(kOrder, "-5");
    Command(wxID_OK);
    EXPECT_EQ(mpFrame, nullptr);
    EXPECT_EQ(Query("SELECT Front,Back,CategoryId,IntroductionOrder,ReviewInterval FROM Cards"),
              Strings{"front|back|1|-5|2.0"});
    EXPECT_EQ(Query("SELECT Name FROM Categories WHERE Id = 1"), Strings{name.utf8_string()});
    EXPECT_EQ(mServices.CurrentCategory, 1);
}

TEST_F(EditFrameTest, ABlankOrderGoesBehindAllOthers) {
    Open();
    for (const char* const order : {"", "7", "", "99999999999", "2147483647", ""}) {
        TypeCard();
        Type(kOrder, order);
        Command(ID_SAVE_NEW);
        EXPECT_EQ(Text(kFront), "");
    }
    EXPECT_EQ(Query("SELECT IntroductionOrder FROM Cards ORDER BY rowid"),
              (Strings{"1", "7", "8", "-1", "2147483647", "2147483647"}));
    for (const char* const order : {"1.5", "2147483648", "-2147483648"}) {
        TypeCard();
        Type(kOrder, order);
        Answer({wxID_OK}, ID_SAVE_NEW);
    }
}

TEST_F(EditFrameTest, ANewCardIsTheOwnersAndInTheCurrentCategory) {
    mDatabase.CategoryInsert("007");
    mServices.CurrentCategory = 1;
    Open();
    EXPECT_EQ(Text(kAuthor), wxGetUserName().empty() ? wxGetUserId() : wxGetUserName());
    EXPECT_EQ(Text(kCategory), "7");
    EXPECT_EQ(Text(kOrder), "");
    // Nothing was typed, so nothing is stored or asked.
    Command(ID_SAVE_CLOSE);
    // The same name for the store, and a blank one.
    for (const char* const category : {"0007", "  "}) {
        Open();
        TypeCard();
        Type(kCategory, category);
        Command(ID_SAVE_CLOSE);
    }
    EXPECT_EQ(Query("SELECT CategoryId FROM Cards ORDER BY rowid"), (Strings{"1", "0"}));
}

// What is typed into a field, or null where its box is ticked, and what the card becomes by that.
struct TouchedField {
    int Id;
    const char* Typed;
    std::string Change;
};

TEST_F(EditFrameTest, ASaveCanBeTakenBackAndIsShownByTheList) {
    EXPECT_EQ(mDatabase.CategoryInsert("Other"), 0);
    FlashCard card = Insert(MakeCard("before", "b", 1));
    for (const bool follow : {true, false}) {
        WriteBooleanSetting(kSettingFollowSavedCards, follow);
        mServices.CurrentCategory = 0;
        Open(&card);
        Type(kFront, "after");
        Command(ID_SAVE_CLOSE);
        EXPECT_EQ(Stored(card.CardId).Front, "after");
        EXPECT_EQ(mServices.CurrentCategory, follow ? 1 : 0);
        EXPECT_EQ(mServices.Saved.back(), card.CardId);
        UndoOutcome outcome;
        EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
        EXPECT_EQ(Stored(card.CardId).Front, "before");
    }
    Open();
    TypeCard();
    Command(ID_SAVE_CLOSE);
    EXPECT_EQ(mServices.History.GetUndoLabel(), "Undo new card \"f\"");
    UndoOutcome outcome;
    EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
    EXPECT_EQ(Query("SELECT Front FROM Cards"), Strings{"before"});
}

TEST_F(EditFrameTest, ASaveLeavesWhatWasNotTouchedAsTheStoreHasIt) {
    mDatabase.CategoryInsert("one");
    mDatabase.CategoryInsert("two");
    for (const TouchedField& field :
         {TouchedField{kForwardSchedule, nullptr, "Introduced = 1"},
          {kFront, "mine", "Front = 'mine'"},
          {kBack, "\t1\r\n2\r3\r\n", "Back = '1' || char(10) || '2' || char(10) || '3'"},
          {kCategory, "Default", "CategoryId = 0"},
          {kAuthor, "", "Author = ''"},
          {kChapter, "mine", "Chapter = 'mine'"},
          {kNotes, "mine", "Notes = 'mine'"},
          {kOrder, "70", "IntroductionOrder = 70"},
          {kForwardX, nullptr, "ForwardX = 1"},
          {kReverseX, nullptr, "ReverseX = 1"}}) {
        SCOPED_TRACE(field.Change);
        // Some of its texts cannot be shown as they are.
        FlashCard card = MakeCard("front\r\nsecond", wxString(L"a\0b\xD800 c", 6), 1);
        card.Author = wxString(L"line\nline\0", 10);
        card.Notes = wxString('n', 10000) + L"\u05d0\u05b8 \u0065\u0301 \U0001F600\nend";
        card.Forward.LastReview = wxDateTime(static_cast<time_t>(0));
        card.Forward.ReviewInterval = 1000000.0f;
        Insert(card);
        Open(&card);
        EXPECT_FALSE(mpFrame->IsModified());
        field.Typed == nullptr ? Box(field.Id).SetValue(true) : Type(field.Id, field.Typed);
        // Nobody tells the editor of what study or an import does meanwhile.
        card.Front = " other front\r\n";
        card.Back = card.Author = card.Chapter = card.Notes = "other";
        card.CategoryId = 2;
        card.IntroductionOrder = 12;
        card.ForwardX = field.Id != kForwardX;
        card.Forward.ReviewInterval = 57600.0f;
        card.Reverse.Introduced = true;
        mDatabase.UpdateFlashCard(card);
        Command(ID_SAVE_NEW);
        const Strings saved = Query("SELECT * FROM Cards");
        mDatabase.UpdateFlashCard(card);
        Query("UPDATE Cards SET " + field.Change);
        EXPECT_EQ(saved, Query("SELECT * FROM Cards"));
        Query("DELETE FROM Cards");
        Close();
    }
}

TEST_F(EditFrameTest, AnEditorFollowsTheStoreAndATypedTextStays) {
    mDatabase.CategoryInsert("one");
    mDatabase.CategoryInsert("two");
    FlashCard card = Insert(MakeCard("front", "b", 2));
    Open(&card);
    const auto change = [this] {
        mDatabase.Notify();
        return wxJoin(dynamic_cast<wxComboBox&>(Control(kCategory)).GetStrings(), ' ');
    };
    Entry(kFront).SetSelection(1, 3);
    card.Front = "another";
    mDatabase.UpdateFlashCard(card);
    mDatabase.UpdateCategory({2, "zwei"});
    EXPECT_EQ(change(), "Default one zwei");
    EXPECT_EQ(Text(kCategory) + Text(kFront) + Entry(kFront).GetStringSelection(), "zweianotherno");
    EXPECT_FALSE(mpFrame->IsModified());
    Type(kCategory, "mine");
    mDatabase.DeleteCategory(1);
    mDatabase.UpdateCategory({0, "null"});
    mDatabase.UpdateCategory({2, "deux"});
    EXPECT_EQ(change(), "null deux");
    mDatabase.CategoryInsert("new");
    EXPECT_EQ(change(), "null deux new");
    EXPECT_EQ(Text(kCategory), "mine");
    // A score gives no notice, so it is looked for when the user comes back.
    card.Forward.Introduced = true;
    mDatabase.UpdateFlashCard(card);
    wxActivateEvent activation(wxEVT_ACTIVATE, true);
    mpFrame->ProcessWindowEvent(activation);
    EXPECT_TRUE(Box(kForwardSchedule).GetValue());

    // A card deleted without a notice cannot be saved. With the notice the editor just closes.
    mDatabase.DeleteCard(card.CardId);
    EXPECT_TRUE(Answer({wxID_OK}, ID_SAVE_CLOSE).Contains("no longer in the store"));
    EXPECT_EQ(mServices.Closed.size(), 0U);
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(mServices.Closed.size(), 1U);
}

// Each schedule shows the reviews of its own direction, and those that come while the editor is
// open; a new card has none.
TEST_F(EditFrameTest, TheReviewsOfACardAppearBesideItsSchedule) {
    FlashCard card = Insert(MakeCard("front", "back"));
    ReviewLog log(ReviewLogPath(StorePath()));
    const auto review = [&](const CardUuid& id, ReviewDirection direction, uint8_t score) {
        ReviewRecord record;
        record.Time = 1700000000 + 90000 * score;
        record.CardId = id;
        record.Direction = direction;
        record.Score = score;
        record.NewInterval = 86400;
        log.Append(record);
    };
    review(MakeCard("another", "").CardId, kReviewForward, 1);
    review(card.CardId, kReviewForward, 2);
    review(card.CardId, kReviewForward, 4);
    const auto life = [this](ReviewDirection direction) -> PlotControl& {
        wxWindow& forward = Control(kForwardSchedule);
        return Find<PlotControl>(direction == kReviewForward ? forward : *forward.GetNextSibling(),
                                 EditSchedulePanel::ID_CARD_LIFE);
    };
    Open(&card);
    mDatabase.Notify();
    EXPECT_TRUE(WaitFor([&] { return life(kReviewForward).IsShownOnScreen(); }));
    EXPECT_EQ(life(kReviewForward).GetPlot().Table.Rows.size(), 2U);
    EXPECT_TRUE(life(kReviewForward).GetPlot().Table.Describe(1).Contains("4"));
    EXPECT_NE(life(kReviewReverse).GetPlot().EmptyText, "");
    review(card.CardId, kReviewReverse, 5);
    card.Reverse.LastReview += wxTimeSpan::Day();
    mDatabase.UpdateFlashCard(card);
    mDatabase.Notify();
    EXPECT_TRUE(WaitFor([&] { return life(kReviewReverse).GetPlot().Table.Rows.size() == 1; }));
    Type(kFront, "changed");
    Command(ID_SAVE_NEW);
    EXPECT_FALSE(life(kReviewForward).IsShown() || life(kReviewReverse).IsShown());
}

}  // namespace
