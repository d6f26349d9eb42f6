#include "transfer/ExportOptionsDialog.h"

#include "transfer/DialogTest.h"
#include "transfer/FormatRows.h"

namespace {

using Dialog = ExportOptionsDialog;
using First = AppServices::OfferFirst;

struct ExportOptionsDialogTest : DialogTest {
    ExportOptionsDialogTest() { mDatabase.CategoryInsert("other"); }

    void Open(const std::vector<int64_t>& selected, First first = First::kSelection) {
        mSelected = selected;
        mDialog = std::make_unique<ExportOptionsDialog>(nullptr, mDatabase, mCategories, mOrdered,
                                                        mSelected, first);
    }
    void Choose(int id, int index) { ::Choose(*mDialog, id, index); }
    wxTextCtrl& Text(int id) { return Find<wxTextCtrl>(*mDialog, id); }
    std::string Preview() { return Text(Dialog::kPreviewId).GetValue().utf8_string(); }
    void InsertCards(int count, int32_t category) {
        for (int i = 0; i < count; ++i) {
            Insert(MakeCard("f", "b", category));
        }
    }
    FakeCategorySource mCategories;
    std::vector<int64_t> mSelected;
    std::unique_ptr<ExportOptionsDialog> mDialog;
};

TEST_F(ExportOptionsDialogTest, TheRangeStartsAsNarrowAsItCan) {
    InsertCards(18, 0);
    InsertCards(2, 1);
    // For the current category, the selected cards and what is offered first: the range at the
    // start, the cards in the preview and the numbers beside the ranges.
    const std::tuple<int32_t, std::vector<int64_t>, First, int, size_t, const char*> rows[] = {
        {2, {}, First::kSelection, 0, 16, "All (20) Current Category (0) Selected Cards (0) "},
        {1, {}, First::kSelection, 1, 2, "All (20) Current Category (2) Selected Cards (0) "},
        {1, {3}, First::kCategory, 1, 2, "All (20) Current Category (2) Selected Cards (1) "},
        {2, {3}, First::kCategory, 2, 1, "All (20) Current Category (0) Selected Cards (1) "},
        {2,
         {20, 3, 99},
         First::kSelection,
         2,
         2,
         "All (20) Current Category (0) Selected Cards (3) "}};
    for (const auto& [current, selected, first, start, cards, labels] : rows) {
        mCategories.Current = current;
        Open(selected, first);
        auto& range = Find<wxRadioBox>(*mDialog, Dialog::kRangeId);
        EXPECT_EQ(range.GetSelection(), start);
        wxString shown;
        for (unsigned i = 0; i < range.GetCount(); ++i) {
            shown << range.GetString(i) << " ";
        }
        EXPECT_EQ(shown, labels);
        EXPECT_EQ(range.IsItemEnabled(1), current == 1);
        EXPECT_EQ(range.IsItemEnabled(2), !selected.empty());
        EXPECT_EQ(wxString(Preview()).Replace("id: ", ""), cards);
    }
}

TEST_F(ExportOptionsDialogTest, ReturnPressesTheDefaultButtonFromEachControl) {
    InsertCards(1, 0);
    Open({});
    ShowAndWait(*mDialog);
    int pressed = 0;
    mDialog->Bind(wxEVT_BUTTON, [&pressed](wxCommandEvent& event) { pressed += event.GetId(); });
    for (const int id : {Dialog::kEncodingId, Dialog::kFormatId, Dialog::kSchedulingId,
                         Dialog::kRangeId, Dialog::kPreviewId}) {
        SCOPED_TRACE(id);
        pressed = 0;
        wxWindow& control = *FindById(*mDialog, id);
        control.SetFocus();
        EXPECT_TRUE(WaitFor([&control] { return control.IsDescendant(wxWindow::FindFocus()); }));
        EXPECT_TRUE(SendKeyEvent(wxEVT_CHAR_HOOK, control, WXK_RETURN));
        EXPECT_TRUE(WaitFor([&pressed] { return pressed == wxID_OK; }));
    }
    FindById(*mDialog, Dialog::kFormatHelpId)->SetFocus();
    EXPECT_TRUE(WaitFor([this] { return FindById(*mDialog, Dialog::kFormatHelpId)->HasFocus(); }));
    EXPECT_FALSE(SendKeyEvent(wxEVT_CHAR_HOOK, *wxWindow::FindFocus(), WXK_RETURN));
}

// What counts as a delimiter is tested with the import dialog, which has the same rows.
TEST_F(ExportOptionsDialogTest, ThePreviewFollowsEveryOption) {
    InsertCards(1, 0);
    Open({});
    EXPECT_NE(Preview().find("RERC: 0"), std::string::npos);
    auto& scheduling = Find<wxCheckBox>(*mDialog, Dialog::kSchedulingId);
    scheduling.SetValue(false);
    Send(scheduling, wxEVT_CHECKBOX);
    EXPECT_EQ(Preview().find("RERC: 0"), std::string::npos);
    Choose(Dialog::kFormatId, 1);
    EXPECT_EQ(Preview().rfind("id\tFront\tBack", 0), 0U);
    EXPECT_FALSE(Text(Dialog::kOtherId).IsShown());
    Choose(FormatRows::kDelimiterId, 4);
    EXPECT_TRUE(Text(Dialog::kOtherId).IsShown());
    EXPECT_EQ(Preview(), "You must specify a delimiter.");
    // A wrong delimiter keeps the dialog open; a line break, which nobody can see, is taken out.
    Text(Dialog::kOtherId).SetValue("\n");
    mAnswers.Expect(wxID_OK);
    Send(*FindById(*mDialog, wxID_OK));
    EXPECT_EQ(mAnswers.Dialogs.back().Message, Preview());
    EXPECT_TRUE(Text(Dialog::kOtherId).IsEmpty());
    Text(Dialog::kOtherId).SetValue("|");
    EXPECT_EQ(Preview().rfind("id|Front|Back", 0), 0U);
}

}  // namespace
