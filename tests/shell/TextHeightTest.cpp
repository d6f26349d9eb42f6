#include "shell/Toolkit.h"

#include "support/GuiTest.h"

TEST(TextHeightTest, AFieldHasRoomForItsFontAndGivesItBack) {
    wxFrame frame(nullptr, wxID_ANY, "frame");
    auto* const panel = new wxPanel(&frame);
    auto* const field = new wxTextCtrl(panel, wxID_ANY, "Ag");
    wxFont font = field->GetFont();
    FitTextHeights(frame);
    const int usual = field->GetMinSize().y;
    EXPECT_GE(usual, field->GetCharHeight());
    field->SetFont(wxFont(font).Scaled(4));
    FitTextHeights(frame);
    EXPECT_GE(field->GetMinSize().y, field->GetCharHeight());
    field->SetFont(font);
    FitTextHeights(frame);
    EXPECT_EQ(field->GetMinSize().y, usual);
}
