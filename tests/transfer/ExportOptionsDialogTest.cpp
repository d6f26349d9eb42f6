#include "transfer/ExportOptionsDialog.h"

#include "transfer/DialogTest.h"
#include "transfer/FormatRows.h"

namespace {

using Dialog = ExportOptionsDialog;

struct ExportOptionsDialogTest : DialogTest {
    ExportOptionsDialogTest() { mDatabase.CategoryInsert("other"); }

    void Open(const std::vector<int64_t>& selected) {
        mSelected = selected;
        mDialog = std::make_unique<ExportOptionsDialog>(nullptr, mDatabase, mCategories, mOrdered,
                                                        mSelected);
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
    const std::tuple<int32_t, std::vector<int64_t>, int, size_t> rows[] = {
        {2, {}, 0, 16}, {1, {}, 1, 2}, {2, {20, 3, 99}, 2, 2}};
    for (const auto& [current, selected, start, cards] : rows) {
        mCategories.Current = current;
        Open(selected);
        auto& range = Find<wxRadioBox>(*mDialog, Dialog::kRangeId);
        EXPECT_EQ(range.GetSelection(), start);
        EXPECT_EQ(range.IsItemEnabled(1), current == 1);
        EXPECT_EQ(range.IsItemEnabled(2), !selected.empty());
        EXPECT_EQ(wxString(Preview()).Replace("id: ", ""), cards);
    }
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
