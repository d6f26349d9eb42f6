#include "app/MainWindows.h"

#include "edit/EditForm.h"
#include "edit/EditFrame.h"
#include "support/GuiTest.h"

namespace {

struct EditorsTest : GuiStoreTest {
    struct Services : FakeServices {
        void FrameClosed(wxFrame& frame) override {
            FakeServices::FrameClosed(frame);
            Open.Forget(frame);
        }
        Editors Open{*this};
    };

    void OpenNew(const wxString& front) {
        mEditors.OpenNew(mDatabase);
        Find<wxTextCtrl>(*wxTopLevelWindows.back(), EditForm::ID_FRONT).ChangeValue(front);
        Find<wxTextCtrl>(*wxTopLevelWindows.back(), EditForm::ID_BACK).ChangeValue("back");
    }
    static size_t Count() {
        DrainEvents();
        return wxTopLevelWindows.GetCount();
    }

    Services mServices;
    Editors& mEditors = mServices.Open;
};

TEST_F(EditorsTest, AStoredCardHasOneEditorUntilThatGoesOnToAnother) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    mEditors.Open(card, mDatabase);
    mEditors.Open(card, mDatabase);
    ASSERT_EQ(Count(), 1U);
    SendCommand(*wxTopLevelWindows.front()->GetEventHandler(), ID_SAVE_NEW);
    mEditors.Open(card, mDatabase);
    EXPECT_EQ(Count(), 2U);
    // A card that was deleted meanwhile has none.
    mEditors.Open(MakeCard("gone", "gone"), mDatabase);
    EXPECT_EQ(Count(), 2U);
    EXPECT_TRUE(mEditors.CloseAll());
    EXPECT_EQ(Count(), 0U);
}

TEST_F(EditorsTest, ClosingAllStopsAtTheFirstThatRefuses) {
    mEditors.OpenNew(mDatabase);
    OpenNew("kept");
    OpenNew("not asked");
    ModalAnswers answers;
    answers.Expect(wxID_CANCEL);
    EXPECT_FALSE(mEditors.CloseAll());
    EXPECT_EQ(Count(), 2U);
    answers.Expect({wxID_YES, wxID_NO});
    EXPECT_TRUE(mEditors.CloseAll());
    EXPECT_EQ(Count(), 0U);
    EXPECT_EQ(Query("SELECT Front FROM Cards"), Strings{"kept"});
}

TEST_F(EditorsTest, AnotherStoreAsksOnceWhetherChangesMayBeLost) {
    mEditors.OpenNew(mDatabase);
    EXPECT_TRUE(mEditors.DiscardAll(nullptr)) << "asked without any change";
    EXPECT_EQ(Count(), 0U);
    ModalAnswers answers;
    answers.Expect({wxID_NO, wxID_YES});
    OpenNew("one");
    EXPECT_FALSE(mEditors.DiscardAll(nullptr));
    OpenNew("two");
    EXPECT_TRUE(mEditors.DiscardAll(nullptr));
    EXPECT_EQ(Count(), 0U);
    EXPECT_TRUE(answers.Dialogs.at(0).Message.StartsWith("You have modified a flash card but it"));
    EXPECT_TRUE(answers.Dialogs.at(1).Message.StartsWith("You have modified flash cards that"));
    EXPECT_EQ(Query("SELECT COUNT(*) FROM Cards"), Strings{"0"});
}

TEST_F(EditorsTest, WhatIsTypedStaysWhenAnotherComputerHasDeletedTheCard) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    const FlashCard other = Insert(MakeCard("other", "back"));
    mEditors.Open(card, mDatabase);
    Find<wxTextCtrl>(*wxTopLevelWindows.back(), EditForm::ID_FRONT).SetValue("typed");
    mEditors.Open(other, mDatabase);
    Query("DELETE FROM Cards");
    mEditors.KeepUnsaved();
    mDatabase.Notify();
    EXPECT_EQ(Count(), 1U) << "the editor in which nothing was typed";
    SendCommand(*wxTopLevelWindows.front()->GetEventHandler(), ID_SAVE_CLOSE);
    EXPECT_EQ(Count(), 0U);
    EXPECT_EQ(Stored(card.CardId).Front, "typed");
}

}  // namespace
