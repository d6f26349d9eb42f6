#include <wx/hyperlink.h>

#include "edit/EditForm.h"
#include "edit/EditFrame.h"
#include "support/GuiTest.h"

namespace {

using SameFrontTest = FrameTest<EditFrame>;

TEST_F(SameFrontTest, ATypedFrontThatACardHasIsToldWithALinkToIt) {
    const FlashCard stored = Insert(MakeCard(wxString::FromUTF8("École"), "school"));
    OpenFrame(new EditFrame(mServices));
    mpFrame->New();
    auto& front = Find<wxTextCtrl>(*mpFrame, EditForm::ID_FRONT);
    auto& link = Find<wxHyperlinkCtrl>(*mpFrame, EditForm::ID_SAME_FRONT);
    front.SetValue("ecole ");
    EXPECT_TRUE(WaitFor([&link] { return link.IsShown(); }));
    EXPECT_EQ(link.GetLabel(), wxString::FromUTF8("There is a card \"École\" already"));
    wxHyperlinkEvent press(&link, link.GetId(), link.GetURL());
    link.ProcessWindowEvent(press);
    ASSERT_EQ(mServices.Edited.size(), 1U);
    EXPECT_EQ(mServices.Edited.front().CardId, stored.CardId);
    front.SetValue("ecoles");
    EXPECT_TRUE(WaitFor([&link] { return !link.IsShown(); }));
    // A card is not compared with itself, but with the next one.
    Insert(MakeCard("ECOLE", "academy"));
    mpFrame->SetCard(stored);
    front.SetValue("ecole");
    EXPECT_TRUE(
        WaitFor([&link] { return link.GetLabel() == "There is a card \"ECOLE\" already"; }));
}

}  // namespace
