#include "revise/ReplaceDialog.h"

#include "support/GuiTest.h"

namespace {

using testing::ElementsAre;
using Id = ReplaceDialog;

struct ReplaceDialogTest : GuiStoreTest {
    void SetUp() override {
        for (const char* const front : {"ecole", "ecoles", "other", "-"}) {
            Insert(MakeCard(front, "une ecole"));
        }
        mDatabase.CardSelectRowIdsOrder(CardColumn::kIntroductionOrder, mShown);
    }

    // Types and waits for what the status says then.
    void TypeAndWait(wxDialog& dialog, const wxString& wanted, const wxString& replacement,
                     const wxString& status) {
        Find<wxTextCtrl>(dialog, Id::kWantedId).SetValue(wanted);
        Find<wxTextCtrl>(dialog, Id::kReplacementId).SetValue(replacement);
        EXPECT_FALSE(FindById(dialog, wxID_OK)->IsEnabled());
        wxString shown;
        EXPECT_TRUE(WaitFor([&] {
            shown = FindById(dialog, Id::kStatusId)->GetLabel();
            return shown.StartsWith(status);
        })) << shown;
    }
    void Check(wxDialog& dialog, int id) {
        auto& box = Find<wxCheckBox>(dialog, id);
        box.SetValue(!box.GetValue());
        Send(box, wxEVT_CHECKBOX, box.GetValue() ? 1 : 0);
    }
    int Show(std::function<void(wxDialog&)> act) {
        mAnswers.Then(std::move(act));
        return ReplaceDialog(nullptr, mServices, mDatabase, mReport, mSelected, mShown).ShowModal();
    }
    Strings Sides() { return Query("SELECT Front||'/'||Back FROM Cards ORDER BY ROWID"); }

    ModalAnswers mAnswers;
    FakeServices mServices;
    std::vector<int64_t> mSelected;
    std::vector<int64_t> mShown;
};

TEST_F(ReplaceDialogTest, WritesTheTickedCardsAndTellsOfThoseChangedMeanwhile) {
    Show([this](wxDialog& dialog) {
        EXPECT_FALSE(FindById(dialog, wxID_OK)->IsEnabled());
        Check(dialog, Id::kExpressionId);
        TypeAndWait(dialog, "e(c", "", "\"e(c\" is wrong at character 4: missing");
        TypeAndWait(dialog, "e(c)", "$2", "\"$2\" is wrong at character 3: unknown");
        EXPECT_FALSE(FindById(dialog, wxID_OK)->IsEnabled());
        TypeAndWait(dialog, "^-", "", "0 cards would change, 0 ticked. 1 card is left out");
        Check(dialog, Id::kFirstTextId + 1);
        TypeAndWait(dialog, "e(c|x)", "E$1", "2 cards would change, 2 ticked");
        auto& list = Find<wxListCtrl>(dialog, Id::kListId);
        EXPECT_EQ(list.GetItemText(1, 1) + ">" + list.GetItemText(1, 2), "ecoles>Ecoles");
        list.SetItemState(0, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
        wxListEvent space(wxEVT_LIST_KEY_DOWN, list.GetId());
        space.SetEventObject(&list);
        space.m_code = WXK_SPACE;
        list.ProcessWindowEvent(space);
        EXPECT_EQ(FindById(dialog, Id::kStatusId)->GetLabel(), "2 cards would change, 1 ticked");
        Check(dialog, Id::kAllId);
        EXPECT_TRUE(list.IsItemChecked(0) && list.IsItemChecked(1));
        mDatabase.Execute("UPDATE Cards SET Front='l''ecoles' WHERE ROWID=2");
        mAnswers.Expect(wxID_OK);
        Send(*FindById(dialog, wxID_OK));
    });
    EXPECT_THAT(Sides(), ElementsAre("Ecole/une ecole", "l'ecoles/une ecole", "other/une ecole",
                                     "-/une ecole"));
    EXPECT_EQ(mAnswers.Dialogs.back().Message,
              "1 card stays as it is, because it was changed meanwhile.");
    EXPECT_EQ(mServices.History.GetUndoLabel(), "Undo replacement in 1 card");
}

TEST_F(ReplaceDialogTest, LooksInTheSelectedCardsFirst) {
    mSelected = {mShown[1], mShown[2]};
    Insert(MakeCard("out of sight", "ecole"));
    EXPECT_EQ(Show([this](wxDialog& dialog) {
                  TypeAndWait(dialog, "ecole", "x", "2 cards would change");
                  Choose(dialog, Id::kScopeId, 2);
                  TypeAndWait(dialog, "ecole", "x", "5 cards would change");
                  Choose(dialog, Id::kScopeId, 0);
                  TypeAndWait(dialog, "ecoles", "x", "1 card would change");
                  Send(*FindById(dialog, wxID_OK));
              }),
              wxID_OK);
    EXPECT_EQ(Sides()[1], "x/une ecole");
}

}  // namespace
