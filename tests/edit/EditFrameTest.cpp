#include "edit/EditFrame.h"

#include "edit/EditForm.h"
#include "edit/EditSchedulePanel.h"
#include "plot/PlotControl.h"
#include "support/GuiTest.h"
#include "support/LoggedReview.h"

#include <wx/clipbrd.h>
#include <wx/spinctrl.h>

#include <tuple>

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

TEST_F(EditFrameTest, ASaveIsShownByTheListWhereItFollows) {
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
        EXPECT_EQ(mServices.History.GetUndoLabel(), "Undo editing of \"after\"");
        mDatabase.UpdateFlashCard(card);
    }
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

TEST_F(EditFrameTest, ManyCardsTakeWhatWasTouchedAndKeepTheRest) {
    // The time of a reset is the present one.
    constexpr char kRows[] =
        "SELECT CardId,Front,Back,CategoryId,Author,Chapter,Notes,IntroductionOrder,ForwardX,"
        "ReverseX,Introduced,LastReview>1700000099,NextReview-LastReview,ReviewInterval,Difficulty,"
        "LastScore,ERC,RIntroduced,RLastReview,RNextReview FROM Cards";
    mDatabase.CategoryInsert("one");
    mDatabase.CategoryInsert("two");
    wxWindow* difficulty = nullptr;
    const auto press = [this](int id) { Send(*FindById(Control(kForwardSchedule), id)); };
    const auto clearNotes = [this] {
        // Typed and deleted again: the notes of all are blank.
        Entry(kNotes).WriteText("x");
        DrainEvents();
        Entry(kNotes).Remove(0, 1);
        DrainEvents();
    };
    const struct {
        std::function<void()> Touch;
        std::string Change;
    } rows[] = {{[&] { Type(kFront, "mine"); }, "Front='mine'"},
                {[&] { Type(kCategory, "two"); }, "CategoryId=2"},
                {[&] { Type(kAuthor, "me"); }, "Author='me'"},
                {[&] { Type(kChapter, " 7 "); }, "Chapter='7'"},
                {clearNotes, "Notes=''"},
                {[&] { Type(kOrder, "-3"); }, "IntroductionOrder=-3"},
                {[&] {
                     Entry(kOrder).Remove(0, 1);
                     Type(kOrder, " ");
                 },
                 "IntroductionOrder=CASE rowid WHEN 1 THEN 4 WHEN 2 THEN 103 ELSE 104 END"},
                {[&] { Box(kReverseX).Set3StateValue(wxCHK_CHECKED); }, "ReverseX=1"},
                {[&] {
                     Type(kAuthor, "me");
                     dynamic_cast<wxSpinCtrl&>(*difficulty).SetValue(30);
                 },
                 "Author='me',Difficulty=30"},
                {[&] { press(EditSchedulePanel::ID_RESET_SCHEDULE); },
                 "Introduced=0,LastReview=1800000000,NextReview=1800000005,ReviewInterval=5.0,"
                 "Difficulty=16,"
                 "LastScore=0,ERC=0"}};
    for (const auto& [touch, change] : rows) {
        SCOPED_TRACE(change);
        mDatabase.Execute("DELETE FROM Cards");
        std::vector<FlashCard> cards;
        for (int i = 0; i < 3; ++i) {
            FlashCard card = MakeCard(wxString::Format("f%d", i), "back", i == 0 ? 0 : 1);
            card.Notes = card.Front;
            card.Chapter = "same";
            card.IntroductionOrder = i == 0 ? 3 : 100 + i;
            card.ReverseX = i == 1;
            card.Forward.Introduced = i > 0;
            card.Forward.LastReview = wxDateTime(static_cast<time_t>(1700000000 + i));
            card.Forward.ReviewInterval = 86400.0f * static_cast<float>(1 + i);
            card.Forward.Difficulty = static_cast<uint8_t>(i);
            cards.push_back(Insert(card));
        }
        OpenFrame(new EditFrame(mServices));
        mpFrame->SetCards({1, 2, 3});
        EXPECT_EQ(mpFrame->GetTitle(), "Edit 3 Cards - Velomind");
        EXPECT_EQ(Text(kFront) + Text(kBack) + Text(kChapter) + Text(kOrder), "backsame");
        EXPECT_FALSE(mpFrame->IsModified());
        difficulty = FindById(Control(kForwardSchedule), EditSchedulePanel::ID_DIFFICULTY);
        EXPECT_EQ(dynamic_cast<wxSpinCtrl&>(*difficulty).GetTextValue(), "");
        touch();
        EXPECT_TRUE(mpFrame->IsModified());
        // A score that is given meanwhile stays, but for what is touched.
        cards[2].Forward.LastScore = 5;
        cards[2].Forward.ERC = 77;
        mDatabase.UpdateFlashCard(cards[2]);
        const Strings before = Query("SELECT * FROM Cards");
        mServices.History.Clear();
        Command(ID_SAVE_CLOSE);
        EXPECT_EQ(mpFrame, nullptr);
        const Strings whole = Query("SELECT * FROM Cards");
        const Strings saved = Query(kRows);
        EXPECT_TRUE(mServices.History.GetUndoLabel().StartsWith("Undo change of "));
        UndoOutcome outcome;
        EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
        EXPECT_EQ(Query("SELECT * FROM Cards"), before);
        EXPECT_EQ(mServices.History.RedoLast(mDatabase, outcome), 0);
        EXPECT_EQ(Query("SELECT * FROM Cards"), whole);
        // Studied since, and taken back: the score stays.
        FlashCard studied = Stored(cards[1].CardId);
        studied.Forward.LastReview += wxTimeSpan::Day();
        mDatabase.UpdateFlashCard(studied);
        EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
        EXPECT_EQ(Stored(cards[1].CardId).Forward.LastReview, studied.Forward.LastReview);
        for (const FlashCard& card : cards) {
            mDatabase.UpdateFlashCard(card);
        }
        Query("UPDATE Cards SET " + change);
        EXPECT_EQ(saved, Query(kRows));
    }
}

TEST_F(EditFrameTest, OfManyCardsThoseThatAreThereAreSaved) {
    std::vector<FlashCard> cards;
    for (const char* const front : {"a", "b", "c", "d"}) {
        cards.push_back(Insert(MakeCard(front, "back")));
    }
    Query("UPDATE Cards SET CardId='x' WHERE Front='c'");
    OpenFrame(new EditFrame(mServices));
    mpFrame->SetCards({1, 2, 3, 4});
    Type(kAuthor, "me");
    // The first one comes back in another row, and a new card has its row by then.
    mDatabase.DeleteCard(cards[0].CardId);
    mDatabase.DeleteCard(cards[3].CardId);
    Query("UPDATE Cards SET rowid=9 WHERE Front='b'");
    Insert(MakeCard("new", "back"));
    Query("UPDATE Cards SET rowid=2 WHERE Front='new'");
    mDatabase.Notify();
    EXPECT_TRUE(Answer({wxID_OK}, ID_SAVE_NEW).StartsWith("2 of the cards are no longer"));
    EXPECT_EQ(Query("SELECT Front FROM Cards WHERE Author='me' ORDER BY 1"), (Strings{"b", "c"}));
    EXPECT_EQ(mpFrame->GetTitle(), "Edit - Velomind");
    mpFrame->SetCards({2, 9});
    mDatabase.Execute("DELETE FROM Cards");
    mDatabase.Notify();
    DrainEvents();
    EXPECT_EQ(mpFrame, nullptr);
}

TEST_F(EditFrameTest, TheKeysGoThroughTheListAndOnToTheNextNewCard) {
    const FlashCard card = Insert(MakeCard("one", "b"));
    const FlashCard next = Insert(MakeCard("two", "b"));
    Open(&card);
    const auto page = [this](int key) {
        return SendKeyEvent(wxEVT_CHAR_HOOK, *mpFrame, key, wxMOD_CONTROL);
    };
    mServices.Neighbours = {next, card, next};
    Type(kFront, "uno");
    for (const auto& [answer, front, stored] :
         {std::tuple{wxID_CANCEL, "uno", "one"}, {wxID_YES, "two", "uno"}}) {
        ModalAnswers modal;
        modal.Expect(answer);
        page(WXK_PAGEDOWN);
        EXPECT_EQ(Text(kFront), front);
        EXPECT_EQ(Stored(card.CardId).Front, stored);
    }
    EXPECT_EQ(mpFrame->GetCardId(), next.CardId);
    mServices.Neighbours.clear();
    page(WXK_PAGEUP);
    EXPECT_EQ(Text(kFront), "two");
    // The next new card belongs where the last one was put, wherever the list is.
    mDatabase.CategoryInsert("Verbs");
    WriteBooleanSetting(kSettingFollowSavedCards, false);
    Type(kCategory, "Verbs");
    Type(kChapter, "7");
    Type(kAuthor, "somebody");
    Type(kNotes, "notes");
    Command(ID_SAVE_NEW);
    EXPECT_EQ(Text(kCategory) + Text(kChapter) + Text(kFront) + Text(kNotes), "Verbs7");
    EXPECT_NE(Text(kAuthor), "somebody");
    EXPECT_FALSE(mpFrame->IsModified());
    EXPECT_EQ(wxWindow::FindFocus(), &Control(kFront));
}

TEST_F(EditFrameTest, APastedListMayBecomeCards) {
    Open();
    const struct {
        const char* Text;
        // 0 where nothing is asked.
        int Answer;
    } rows[] = {{"un - one\ndeux - two\n\n", wxID_YES},
                {"un\tone\r\ndeux\ttwo", wxID_NO},
                {"un\tone\ndeux\t\n", 0},
                {"un - one", 0},
                {"un-one\ndeux-two", 0},
                {"a\tb\nc\td", wxID_CANCEL}};
    for (const auto& [text, answer] : rows) {
        SCOPED_TRACE(text);
        mServices.ImportedTexts.clear();
        Type(kFront, "");
        {
            const wxClipboardLocker lock;
            wxTheClipboard->SetData(new wxTextDataObject(text));
        }
        ModalAnswers modal;
        if (answer != 0) {
            modal.Expect(answer);
        }
        Entry(kFront).Paste();
        const bool isText = answer == 0 || answer == wxID_NO;
        EXPECT_TRUE(WaitFor([&] {
            return modal.Dialogs.size() == (answer == 0 ? 0U : 1U) &&
                   Text(kFront).empty() != isText;
        }));
        EXPECT_EQ(mServices.ImportedTexts.size(), answer == wxID_YES ? 1U : 0U);
    }
    // Beside a text that was typed a list is a text.
    Type(kFront, "");
    Type(kBack, "b");
    Entry(kFront).Paste();
    EXPECT_TRUE(WaitFor([&] { return !Text(kFront).empty(); }));
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
    const auto review = [&](const CardUuid& id, ReviewDirection direction, int score) {
        LoggedReview{id, 1700000000 + 90000 * score, score, 60, 0, direction}.AppendTo(StorePath());
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
