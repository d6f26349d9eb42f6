#include "app/Help.h"

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/textctrl.h>
#include <wx/uri.h>

#include <vector>

#include "app/QuickHelp.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "support/FakeServices.h"
#include "support/GuiTest.h"

namespace {

class HelpTest : public GuiTest {};

TEST_F(HelpTest, MailsAreOneWordThatReadsAsTheWholeText) {
    const wxString address = GetFeedbackMailAddress();
    EXPECT_EQ(
        wxURI::Unescape(address),
        "mailto:support@example.org?subject=Feedback&body=Version: Velomind Mobile "
        "2.5.7.1625\r\n\r\nOverall, how likely would you be to recommend Velomind to a friend "
        "or colleague?\r\nDefinitely would recommend\r\nProbably would recommend\r\nMight or "
        "might not recommend\r\nProbably would not recommend\r\nDefinitely would not "
        "recommend\r\n\r\nPlease write any other comments or suggestions here:\r\n\r\n");
    EXPECT_EQ(address.find_first_of(" \r\n"), wxString::npos);
    // One question mark starts the query; another would end it for some programs.
    EXPECT_EQ(address.Freq('?'), 1);
}

TEST_F(HelpTest, QuickHelpFollowsTheTopWindow) {
    FakeServices services;
    auto* const help = new QuickHelp(services, [] { return "Shared."; });
    wxWindow* const text = help->GetChildren().front();
    auto* const other = new wxFrame(nullptr, ID_WINDOW_STUDY, "study");
    wxTheApp->SetTopWindow(other);
    DrainEvents();
    EXPECT_EQ(dynamic_cast<wxTextCtrl*>(text)->GetValue(),
              "Study Window\n\nUse this window to study your flash cards.\n\nShared.");
    other->SetId(ID_WINDOW_LIST);
    DrainEvents();
    EXPECT_TRUE(dynamic_cast<wxTextCtrl*>(text)->GetValue().StartsWith("List View\n\n"));
    WriteBooleanSetting("QuickHelp", true);
    help->Close();
    EXPECT_EQ(services.Closed, std::vector<wxFrame*>{help});
    EXPECT_FALSE(ReadBooleanSetting("QuickHelp"));
}

}  // namespace
