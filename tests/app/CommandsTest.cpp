#include "app/Commands.h"

#include <wx/srchctrl.h>
#include <wx/uri.h>

#include "shell/TextUndo.h"
#include "support/GuiTest.h"

namespace {

struct CommandsTest : GuiTest {
    CommandsTest() {
        BindTextCommands(mHandler);
        mpFrame->SetSizer(new wxBoxSizer(wxVERTICAL));
        ShowAndWait(*mpFrame);
    }

    // Puts a control into the window and gives it the focus.
    template <typename Control>
    Control* Focus(const wxString& text) {
        auto* const control = new Control(mpFrame, wxID_ANY, text);
        mpFrame->GetSizer()->Add(control);
        mpFrame->Layout();
        control->SetFocus();
        EXPECT_TRUE(WaitFor([control] { return wxWindow::FindFocus() == control; }));
        return control;
    }

    bool Run(int id) { return SendCommand(mHandler, id); }
    bool IsEnabled(int id) { return RuleOf(mHandler, id) == "on"; }

    void CheckDelete(wxTextEntry& text) {
        text.SetInsertionPoint(1);
        EXPECT_TRUE(IsEnabled(wxID_DELETE));
        EXPECT_TRUE(Run(wxID_DELETE));
        EXPECT_EQ(text.GetValue(), "acd");
        text.SetSelection(0, 2);
        Run(wxID_DELETE);
        EXPECT_EQ(text.GetValue(), "d");
        text.SetInsertionPointEnd();
        Run(wxID_DELETE);
        EXPECT_EQ(text.GetValue(), "d");
    }

    wxEvtHandler mHandler;
    wxFrame* mpFrame = new wxFrame(nullptr, wxID_ANY, "window");
};

TEST_F(CommandsTest, EditsTheTextFieldThatHasTheFocus) {
    CheckDelete(*Focus<wxSearchCtrl>("abcd"));
    CheckDelete(*Focus<wxComboBox>("abcd"));
    wxTextCtrl& text = *Focus<wxTextCtrl>("abcd");
    CheckDelete(text);
    Run(wxID_SELECTALL);
    Run(wxID_CUT);
    EXPECT_EQ(text.GetValue(), "");
    EXPECT_FALSE(IsEnabled(wxID_SELECTALL));
    ASSERT_TRUE(WaitFor([this] { return IsEnabled(wxID_PASTE); }));
    Run(wxID_PASTE);
    EXPECT_EQ(text.GetValue(), "d");
    EXPECT_FALSE(IsEnabled(wxID_UNDO));
    TextUndo::AttachTo(text);
    text.WriteText("e");
    EXPECT_TRUE(IsEnabled(wxID_UNDO));
    Run(wxID_UNDO);
    EXPECT_EQ(text.GetValue(), "d");
    EXPECT_FALSE(IsEnabled(wxID_UNDO));
    Run(wxID_REDO);
    EXPECT_EQ(text.GetValue(), "de");
}

TEST_F(CommandsTest, MailsAreOneWordThatReadsAsTheWholeText) {
    const wxString address = GetFeedbackMailAddress();
    const wxString text = wxURI::Unescape(address);
    EXPECT_TRUE(text.StartsWith("mailto:support@example.org?subject=Feedback&body=Version: Velo"));
    EXPECT_TRUE(
        text.EndsWith("recommend\r\n\r\nPlease write any other comments or suggestions "
                      "here:\r\n\r\n"));
    EXPECT_EQ(address.find_first_of(" \r\n"), wxString::npos);
    // One question mark starts the query; another would end it for some programs.
    EXPECT_EQ(address.Freq('?'), 1);
}

}  // namespace
