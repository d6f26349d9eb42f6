#include "revise/DuplicatesDialog.h"

#include "support/GuiTest.h"
#include "transfer/MergeDialog.h"

namespace {

using testing::ElementsAre;
using Id = DuplicatesDialog;

struct DuplicatesDialogTest : GuiStoreTest {
    void WaitStatus(wxDialog& dialog, const wxString& status) {
        wxString shown;
        EXPECT_TRUE(WaitFor([&] {
            shown = FindById(dialog, Id::kStatusId)->GetLabel();
            return shown == status;
        })) << shown;
    }
    // Shows the dialog, lets it act and closes it.
    void Show(const std::function<void(wxDialog&)>& act) {
        mAnswers.Then([&act](wxDialog& dialog) {
            act(dialog);
            dialog.EndModal(wxID_CLOSE);
        });
        DuplicatesDialog(nullptr, mServices, mDatabase, mReport).ShowModal();
    }

    FakeServices mServices;
    ModalAnswers mAnswers;
};

TEST_F(DuplicatesDialogTest, MergesTwoCardsOfAGroupIntoTheOneReviewedLast) {
    FlashCard studied = MakeCard("ECOLE", "school");
    studied.Forward.Introduced = true;
    Insert(MakeCard("ecole", "academy"));
    Insert(studied);
    Insert(MakeCard("ecole", "school"));
    Insert(MakeCard("other", "card"));
    Show([&](wxDialog& dialog) {
        WaitStatus(dialog, "1 group with 3 cards, 0 ticked");
        // A merge that is called off changes nothing.
        mAnswers.ThenPress(MergeDialog::kStopId);
        Send(*FindById(dialog, Id::kMergeId));
        mAnswers.Then([](wxDialog& merge) {
            Find<wxTextCtrl>(merge, MergeDialog::kFrontIds[MergeDialog::kMergedColumn])
                .SetValue("the ecole");
            Send(*FindById(merge, MergeDialog::kKeepMergedId));
        });
        Send(*FindById(dialog, Id::kMergeId));
        WaitStatus(dialog, "1 group with 2 cards, 0 ticked");
        Choose(dialog, Id::kSameById, 1);
        WaitStatus(dialog, "No two cards are the same.");
        EXPECT_FALSE(FindById(dialog, Id::kMergeId)->IsEnabled());
        Choose(dialog, Id::kSameById, 0);
    });
    EXPECT_THAT(Query("SELECT Front,Back,Introduced FROM Cards ORDER BY ROWID"),
                ElementsAre("the ecole|school|1", "ecole|school|0", "other|card|0"));
    EXPECT_EQ(mServices.History.GetUndoLabel(), "Undo merging of cards \"the ecole\"");
}

TEST_F(DuplicatesDialogTest, TellsOfACardThatWentMeanwhile) {
    Insert(MakeCard("a", "b"));
    const FlashCard gone = Insert(MakeCard("A", "c"));
    Show([&](wxDialog& dialog) {
        WaitStatus(dialog, "1 group with 2 cards, 0 ticked");
        mAnswers.Then([&](wxDialog& merge) {
            mDatabase.DeleteCard(gone.CardId);
            Send(*FindById(merge, MergeDialog::kKeepDatabaseId));
        });
        mAnswers.Expect(wxID_OK);
        Send(*FindById(dialog, Id::kMergeId));
        WaitStatus(dialog, "No two cards are the same.");
    });
    EXPECT_EQ(mAnswers.Dialogs.back().Message,
              "One of these cards was changed or deleted meanwhile.");
    EXPECT_TRUE(mServices.History.IsEmpty());
}

TEST_F(DuplicatesDialogTest, MergesTheTickedGroupsInOneStep) {
    for (const char* const front : {"plain", "Plain", "chosen", "Chosen"}) {
        Insert(MakeCard(front, front + 1));
    }
    Insert(MakeCard("chosen", "another"));
    const wxString all = "2 groups with 5 cards, %i ticked";
    Show([&](wxDialog& dialog) {
        WaitStatus(dialog, wxString::Format(all, 1));
        auto& tickAll = Find<wxCheckBox>(dialog, Id::kAllId);
        for (const bool tick : {true, false}) {
            tickAll.SetValue(tick);
            Send(tickAll, wxEVT_CHECKBOX, tick);
            WaitStatus(dialog, wxString::Format(all, tick ? 2 : 0));
            EXPECT_EQ(FindById(dialog, Id::kMergeTickedId)->IsEnabled(), tick);
        }
        tickAll.SetValue(true);
        Send(tickAll, wxEVT_CHECKBOX, true);
        for (const int answer : {wxID_CANCEL, wxID_OK}) {
            mAnswers.Expect(answer);
            Send(*FindById(dialog, Id::kMergeTickedId));
        }
        WaitStatus(dialog, "No two cards are the same.");
    });
    EXPECT_EQ(Query("SELECT Front FROM Cards ORDER BY ROWID").size(), 2U);
    EXPECT_EQ(mServices.History.GetUndoLabel(), "Undo merging of 5 cards");
}

}  // namespace
