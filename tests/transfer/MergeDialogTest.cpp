#include "transfer/MergeDialog.h"

#include "base/Time.h"
#include "transfer/DialogTest.h"
#include "transfer/ImportRun.h"

namespace {

constexpr int kMerged = MergeDialog::kMergedColumn;

// Finds the controls of the merged column, from the top down. Ids cannot tell them all, as the
// field of the back shares its id.
std::vector<wxWindow*> MergedColumn(wxWindow& dialog) {
    std::vector<wxWindow*> controls;
    for (wxWindow* const child : dialog.GetChildren()) {
        const auto* const text = dynamic_cast<wxTextCtrl*>(child);
        const auto* const box = dynamic_cast<wxCheckBox*>(child);
        if (text != nullptr ? text->IsEditable() : box != nullptr && box->IsEnabled()) {
            controls.push_back(child);
        }
    }
    return controls;
}

struct MergeDialogTest : DialogTest {
    MergeDialogTest() {
        mStored = MakeCard("front", "stored back");
        mStored.Notes = "stored notes";
        mImported = mStored;
        mImported.Back = "imported back";
        mImported.ReverseX = true;
        mImported.Notes = "imported notes";
    }

    FlashCard mStored;
    FlashCard mImported;
};

}  // namespace

TEST_F(MergeDialogTest, KeepsTheVersionOfTheButton) {
    const std::tuple<int, const FlashCard&, ImportMergePolicy> cases[] = {
        {MergeDialog::kKeepDatabaseId, mStored, ImportMergePolicy::kAsk},
        {MergeDialog::kKeepImportedId, mImported, ImportMergePolicy::kAsk},
        {MergeDialog::kKeepMergedId, mImported, ImportMergePolicy::kAsk},
        {MergeDialog::kAlwaysDatabaseId, mStored, ImportMergePolicy::kKeepDatabase},
        {MergeDialog::kAlwaysImportedId, mImported, ImportMergePolicy::kKeepImported}};
    for (const auto& [id, kept, further] : cases) {
        mAnswers.ThenPress(id);
        const auto answer = ImportQuestionDialogs().AskMerge(nullptr, mStored, mImported, 0);
        EXPECT_TRUE(answer.IsOk) << id;
        EXPECT_EQ(answer.Further, further) << id;
        EXPECT_EQ(answer.Merged.Back, kept.Back) << id;
        EXPECT_EQ(answer.Merged.ReverseX, kept.ReverseX) << id;
        EXPECT_EQ(answer.Merged.Notes, kept.Notes) << id;
    }
}

TEST_F(MergeDialogTest, MarksTheFieldsThatDiffer) {
    MergeDialog dialog(nullptr, mStored, mImported);
    std::vector<bool> marked;
    for (wxWindow* const control : MergedColumn(dialog)) {
        marked.push_back(control->GetBackgroundColour() == wxColour(255, 0, 0) &&
                         control->GetForegroundColour() == *wxBLACK);
    }
    EXPECT_EQ(marked, (std::vector<bool>{false, true, false, false, false, true}));
}

TEST_F(MergeDialogTest, TellsWhatElseDiffers) {
    mImported.Forward.Introduced = true;
    mImported.Forward.LastReview = wxDateTime(1, wxDateTime::Feb, 2020, 12, 30);
    mImported.Forward.ReviewInterval = 259200.0f;
    MergeDialog dialog(nullptr, mStored, mImported, "Old", "New");
    EXPECT_EQ(Find<wxTextCtrl>(dialog, MergeDialog::kOthersId).GetValue(),
              wxString(L"Category: Old \u2192 New\nNotes: stored notes \u2192 imported notes\n"
                       L"Forward schedule: not introduced \u2192 reviewed ") +
                  FormatDate(mImported.Forward.LastReview, "%d %b %Y") +
                  L", interval 3.00 days, difficulty 16\n"
                  L"The merged version gets the schedule of the import.");
    // Two cards of the store become one with the later review of each direction.
    mStored.Reverse = mImported.Forward;
    FlashCard merged = mImported;
    merged.Reverse = mStored.Reverse;
    MergeDialog two(nullptr, mStored, mImported, merged, "", "");
    const wxString others = Find<wxTextCtrl>(two, MergeDialog::kOthersId).GetValue();
    EXPECT_THAT(others.utf8_string(),
                testing::ContainsRegex("Forward [^\n]*\nThe merged .* of the second card[.]\n"
                                       "Reverse [^\n]*\nThe merged .* of the first card[.]"));
    mImported = mStored;
    mImported.Back = "other";
    EXPECT_EQ(MergeDialog(nullptr, mStored, mImported).FindWindow(MergeDialog::kOthersId), nullptr);
}

TEST_F(MergeDialogTest, RefusesAMergedVersionThatIsNoCard) {
    MergeDialog dialog(nullptr, mStored, mImported);
    auto* const back = dynamic_cast<wxTextCtrl*>(MergedColumn(dialog)[1]);
    const struct {
        wxTextCtrl* Control;
        wxString Wrong, Message, Right;
    } cases[] = {{&Find<wxTextCtrl>(dialog, MergeDialog::kFrontIds[kMerged]), " \n",
                  "Flash cards cannot have a blank front", L"\u3000new "},
                 {back, "", "Flash cards cannot have a blank back", " text\n"},
                 {&Find<wxTextCtrl>(dialog, MergeDialog::kOrderIds[kMerged]), "abc",
                  "Introduction Order must be a whole number", " -7"}};
    mAnswers.Then([&](wxDialog&) {
        Find<wxTextCtrl>(dialog, MergeDialog::kAuthorIds[kMerged]).SetValue(" me ");
        for (const auto& row : cases) {
            row.Control->SetValue(row.Wrong);
            mAnswers.Expect(wxID_OK);
            Send(*FindById(dialog, MergeDialog::kKeepMergedId));
            EXPECT_EQ(mAnswers.Dialogs.back().Title, "Message");
            EXPECT_EQ(mAnswers.Dialogs.back().Message, row.Message);
            EXPECT_TRUE(WaitFor([&] { return row.Control->HasFocus(); })) << row.Message;
            EXPECT_EQ(row.Control->GetStringSelection(), row.Wrong);
            row.Control->SetValue(row.Right);
        }
        Send(*FindById(dialog, MergeDialog::kKeepMergedId));
    });
    EXPECT_EQ(dialog.ShowModal(), wxOK);
    const FlashCard& merged = dialog.GetMergedCard();
    EXPECT_EQ(merged.Front + "|" + merged.Back + "|" + merged.Author, "new|text|me");
    EXPECT_EQ(merged.IntroductionOrder, -7);
    EXPECT_EQ(merged.Notes, "imported notes");
}

TEST_F(MergeDialogTest, AsksBeforeAnyWayOutStopsTheImport) {
    const std::function<void(wxDialog&)> ways[] = {
        [](wxDialog& dialog) { Send(*FindById(dialog, MergeDialog::kStopId)); },
        [](wxDialog& dialog) { dialog.Close(); },
        [](wxDialog& dialog) { SendKeyEvent(wxEVT_CHAR_HOOK, dialog, WXK_ESCAPE); }};
    for (const auto& leave : ways) {
        mAnswers.Then([&](wxDialog& dialog) {
            mAnswers.Expect(wxID_CANCEL);
            leave(dialog);
            EXPECT_TRUE(dialog.IsModal()) << "a cancelled stop goes on";
            mAnswers.Expect(wxID_OK);
            leave(dialog);
        });
        EXPECT_FALSE(ImportQuestionDialogs().AskMerge(nullptr, mStored, mImported, 0).IsOk);
        EXPECT_EQ(mAnswers.Dialogs.back().Title, "Stop Import?");
    }
}
