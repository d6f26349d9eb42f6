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
};

TEST_F(DuplicatesDialogTest, MergesTwoCardsOfAGroupIntoTheOneReviewedLast) {
    FlashCard studied = MakeCard("ECOLE", "school");
    studied.Forward.Introduced = true;
    Insert(MakeCard("ecole", "academy"));
    Insert(studied);
    Insert(MakeCard("ecole", "school"));
    Insert(MakeCard("other", "card"));
    FakeServices services;
    ModalAnswers answers;
    answers.Then([&](wxDialog& dialog) {
        WaitStatus(dialog, "1 group with 3 cards");
        // A merge that is called off changes nothing.
        answers.ThenPress(MergeDialog::kStopId);
        Send(*FindById(dialog, Id::kMergeId));
        answers.Then([](wxDialog& merge) {
            Find<wxTextCtrl>(merge, MergeDialog::kFrontIds[MergeDialog::kMergedColumn])
                .SetValue("the ecole");
            Send(*FindById(merge, MergeDialog::kKeepMergedId));
        });
        Send(*FindById(dialog, Id::kMergeId));
        WaitStatus(dialog, "1 group with 2 cards");
        Choose(dialog, Id::kSameById, 1);
        WaitStatus(dialog, "No two cards are the same.");
        EXPECT_FALSE(FindById(dialog, Id::kMergeId)->IsEnabled());
        Choose(dialog, Id::kSameById, 0);
        dialog.EndModal(wxID_CLOSE);
    });
    DuplicatesDialog(nullptr, services, mDatabase).ShowModal();
    EXPECT_THAT(Query("SELECT Front,Back,Introduced FROM Cards ORDER BY ROWID"),
                ElementsAre("the ecole|school|1", "ecole|school|0", "other|card|0"));
    EXPECT_EQ(services.History.GetUndoLabel(), "Undo merging of cards \"the ecole\"");
}

TEST_F(DuplicatesDialogTest, TellsOfACardThatWentMeanwhile) {
    Insert(MakeCard("a", "b"));
    const FlashCard gone = Insert(MakeCard("A", "c"));
    FakeServices services;
    ModalAnswers answers;
    answers.Then([&](wxDialog& dialog) {
        WaitStatus(dialog, "1 group with 2 cards");
        answers.Then([&](wxDialog& merge) {
            mDatabase.DeleteCard(gone.CardId);
            Send(*FindById(merge, MergeDialog::kKeepDatabaseId));
        });
        answers.Expect(wxID_OK);
        Send(*FindById(dialog, Id::kMergeId));
        WaitStatus(dialog, "No two cards are the same.");
        dialog.EndModal(wxID_CLOSE);
    });
    DuplicatesDialog(nullptr, services, mDatabase).ShowModal();
    EXPECT_EQ(answers.Dialogs.back().Message,
              "One of these cards was changed or deleted meanwhile.");
    EXPECT_TRUE(services.History.IsEmpty());
}

}  // namespace
