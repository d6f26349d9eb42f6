#include "study/RescoreMessageBox.h"

#include <wx/button.h>

#include "support/GuiTest.h"

namespace {

using RescoreMessageBoxTest = GuiTest;

constexpr int kRescoreId = 10063;
constexpr int kOriginalScoreId = 10065;

// Opens the question, does something to it and tells how it ended.
int EndOf(const std::function<void(RescoreMessageBox&)>& act) {
    RescoreMessageBox box(nullptr, 10052, "Rescore");
    box.CallAfter([&box, &act] { act(box); });
    return box.ShowModal();
}

void Press(wxWindow& button) {
    wxCommandEvent event(wxEVT_BUTTON, button.GetId());
    event.SetEventObject(&button);
    button.HandleWindowEvent(event);
}

TEST_F(RescoreMessageBoxTest, OnlyOriginalScoreKeepsTheOriginalScore) {
    EXPECT_EQ(EndOf([](RescoreMessageBox& box) { Press(*FindById(box, kRescoreId)); }), wxYES);
    EXPECT_EQ(EndOf([](RescoreMessageBox& box) { Press(*FindById(box, kOriginalScoreId)); }), wxNO);
    EXPECT_NE(EndOf([](RescoreMessageBox& box) { box.Close(); }), wxNO);
    // Enter is for the score that was just chosen.
    EXPECT_EQ(EndOf([](RescoreMessageBox& box) { Press(*box.GetDefaultItem()); }), wxYES);
}

}  // namespace
