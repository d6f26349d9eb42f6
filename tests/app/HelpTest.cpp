#include "app/Help.h"

#include <wx/uri.h>

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
