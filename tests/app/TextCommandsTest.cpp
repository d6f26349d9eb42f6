#include "app/TextCommands.h"

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/combobox.h>
#include <wx/event.h>
#include <wx/frame.h>
#include <wx/sizer.h>
#include <wx/srchctrl.h>
#include <wx/textctrl.h>

#include "support/GuiTest.h"

namespace {

class TextCommandsTest : public GuiTest {
  protected:
    TextCommandsTest() {
        BindTextCommands(mHandler);
        mpFrame = new wxFrame(nullptr, wxID_ANY, "window");
        mpText = new wxTextCtrl(mpFrame, wxID_ANY, "abcd", wxDefaultPosition, wxSize(200, 60),
                                wxTE_MULTILINE);
        mpSearch = new wxSearchCtrl(mpFrame, wxID_ANY, "abcd");
        mpCombo = new wxComboBox(mpFrame, wxID_ANY, "abcd");
        mpReadOnly = new wxTextCtrl(mpFrame, wxID_ANY, "abcd", wxDefaultPosition, wxDefaultSize,
                                    wxTE_READONLY);
        mpButton = new wxButton(mpFrame, wxID_ANY, "button");
        auto* const rows = new wxBoxSizer(wxVERTICAL);
        for (wxWindow* const child : mpFrame->GetChildren()) {
            rows->Add(child);
        }
        mpFrame->SetSizerAndFit(rows);
        mpFrame->Show();
        mpFrame->Raise();
    }

    void Focus(wxWindow* window) {
        window->SetFocus();
        ASSERT_TRUE(WaitFor([window] { return wxWindow::FindFocus() == window; }));
    }

    // False when the command was passed on.
    bool Run(int id) {
        wxCommandEvent event(wxEVT_MENU, id);
        return mHandler.ProcessEvent(event);
    }

    bool IsEnabled(int id) {
        wxUpdateUIEvent event(id);
        EXPECT_TRUE(mHandler.ProcessEvent(event));
        return event.GetEnabled();
    }

    wxEvtHandler mHandler;
    wxFrame* mpFrame = nullptr;
    wxTextCtrl* mpText = nullptr;
    wxSearchCtrl* mpSearch = nullptr;
    wxComboBox* mpCombo = nullptr;
    wxTextCtrl* mpReadOnly = nullptr;
    wxButton* mpButton = nullptr;
};

TEST_F(TextCommandsTest, DeleteTakesTheSelectionOrTheCharacterToTheRight) {
    for (wxTextEntry* const text :
         {static_cast<wxTextEntry*>(mpText), static_cast<wxTextEntry*>(mpSearch),
          static_cast<wxTextEntry*>(mpCombo)}) {
        Focus(dynamic_cast<wxWindow*>(text));
        text->SetInsertionPoint(1);
        EXPECT_TRUE(IsEnabled(wxID_DELETE));
        EXPECT_TRUE(Run(wxID_DELETE));
        EXPECT_EQ(text->GetValue(), "acd");
        text->SetSelection(0, 2);
        Run(wxID_DELETE);
        EXPECT_EQ(text->GetValue(), "d");
        text->SetInsertionPointEnd();
        Run(wxID_DELETE);
        EXPECT_EQ(text->GetValue(), "d");
    }
}

TEST_F(TextCommandsTest, CutPasteAndSelectAllActOnTheFocusedField) {
    Focus(mpText);
    EXPECT_FALSE(IsEnabled(wxID_CUT));
    EXPECT_TRUE(IsEnabled(wxID_SELECTALL));
    Run(wxID_SELECTALL);
    EXPECT_EQ(mpText->GetStringSelection(), "abcd");
    EXPECT_TRUE(IsEnabled(wxID_CUT));
    Run(wxID_CUT);
    EXPECT_EQ(mpText->GetValue(), "");
    EXPECT_FALSE(IsEnabled(wxID_SELECTALL));
    ASSERT_TRUE(WaitFor([this] { return IsEnabled(wxID_PASTE); }));
    Run(wxID_PASTE);
    EXPECT_EQ(mpText->GetValue(), "abcd");
}

TEST_F(TextCommandsTest, AFieldThatIsOnlyReadLosesNothing) {
    Focus(mpReadOnly);
    EXPECT_FALSE(IsEnabled(wxID_DELETE));
    Run(wxID_DELETE);
    EXPECT_EQ(mpReadOnly->GetValue(), "abcd");
}

TEST_F(TextCommandsTest, WithoutATextFieldAllIsDisabledAndPassedOn) {
    Focus(mpButton);
    for (const int id : {wxID_UNDO, wxID_CUT, wxID_COPY, wxID_PASTE, wxID_DELETE, wxID_SELECTALL}) {
        EXPECT_FALSE(IsEnabled(id)) << id;
        EXPECT_FALSE(Run(id)) << id;
    }
}

}  // namespace
