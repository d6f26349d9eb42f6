#include "shell/Forms.h"

#include "support/GuiTest.h"

namespace {

// A dialog with a form of many rows, each a label and a choice.
struct FormsTest : GuiTest {
    FormsTest() {
        mpForm = new wxScrolledWindow(mpDialog, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                      wxVSCROLL | wxTAB_TRAVERSAL);
        mpForm->SetScrollRate(1, 1);
        wxBoxSizer* const column = MakeFormColumn(*mpForm);
        for (int i = 0; i < 60; ++i) {
            wxArrayString entries;
            entries.Add("one");
            entries.Add("two");
            mChoices.push_back(MakeChoice(*mpForm, wxID_ANY, entries));
            column->Add(MakeFormLabel("&Row", *mChoices.back()));
            column->Add(mChoices.back());
        }
        auto* const rows = new wxBoxSizer(wxVERTICAL);
        rows->Add(mpForm, wxSizerFlags(1).Expand());
        rows->Add(MakeOkCancel(*mpDialog));
        mpDialog->SetSizer(rows);
        LetFormScroll(*mpForm);
        FitDialogToForm(*mpDialog, *mpForm, wxSize(300, 200));
        ShowAndWait(*mpDialog);
    }

    bool IsInView(const wxWindow& control) const {
        return wxRect(mpForm->GetClientSize()).Contains(control.GetRect());
    }

    wxDialog* mpDialog = new wxDialog(nullptr, wxID_ANY, "dialog", wxDefaultPosition, wxDefaultSize,
                                      wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
    wxScrolledWindow* mpForm = nullptr;
    std::vector<wxChoice*> mChoices;
};

TEST_F(FormsTest, ATallFormFollowsTheKeyboardAndTheWheelAndChangesNoValue) {
    EXPECT_LT(mpDialog->GetSize().y, mpForm->GetVirtualSize().y);
    mChoices.back()->SetFocus();
    EXPECT_TRUE(WaitFor([this] { return IsInView(*mChoices.back()); }));
    // The user scrolls away from the focus, and the form stays there.
    const int bottom = mpForm->GetViewStart().y;
    SendMouse(*mChoices.back(), wxEVT_MOUSEWHEEL, wxPoint(1, 1), 1200);
    DrainEvents();
    EXPECT_LT(mpForm->GetViewStart().y, bottom);
    EXPECT_FALSE(IsInView(*mChoices.back()));
    EXPECT_EQ(mChoices.back()->GetSelection(), 0);
    mChoices.front()->SetFocus();
    EXPECT_TRUE(WaitFor([this] { return IsInView(*mChoices.front()); }));
    EXPECT_EQ(mpForm->GetViewStart().y, 0) << "the first label is in view too";
}

}  // namespace
