#include "app/Help.h"

#include <wx/uri.h>

#include "app/QuickHelp.h"
#include "support/GuiTest.h"

TEST_F(GuiTest, MailsAreOneWordThatReadsAsTheWholeText) {
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

TEST_F(GuiTest, QuickHelpFollowsTheTopWindow) {
    FakeServices services;
    auto* const help = new QuickHelp(services, [] { return "Shared."; });
    auto& text = dynamic_cast<wxTextCtrl&>(*help->GetChildren().front());
    auto* const other = new wxFrame(nullptr, ID_WINDOW_STUDY, "study");
    wxTheApp->SetTopWindow(other);
    DrainEvents();
    EXPECT_EQ(text.GetValue(),
              "Study Window\n\nUse this window to study your flash cards.\n\nShared.");
    other->SetId(ID_WINDOW_LIST);
    DrainEvents();
    EXPECT_TRUE(text.GetValue().StartsWith("List View\n\n"));
    WriteBooleanSetting("QuickHelp", true);
    help->Close();
    EXPECT_EQ(services.Closed, std::vector<wxFrame*>{help});
    EXPECT_FALSE(ReadBooleanSetting("QuickHelp"));
}
