// The conflict of a stored card and its imported version, settled by a person.

#include "exchange/dialogs/MergeDialog.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/textctrl.h>

#include <vector>

#include "exchange/ImportThread.h"
#include "exchange/dialogs/ImportQuestionDialogs.h"
#include "exchange/dialogs/ProgressDialog.h"
#include "support/GuiTest.h"

namespace {

enum : int { ID_FRONT = 10000, ID_AUTHOR = 10004, ID_ORDER = 10010, ID_KEEP_MERGED = 10014 };

void Press(wxWindow& window) {
    wxCommandEvent click(wxEVT_BUTTON, window.GetId());
    click.SetEventObject(&window);
    window.GetEventHandler()->ProcessEvent(click);
}

// The controls of the merged column, from the top down; the one of the back shares its id.
std::vector<wxWindow*> MergedColumn(wxWindow& dialog) {
    std::vector<wxWindow*> controls;
    for (wxWindow* const child : dialog.GetChildren()) {
        const auto* const text = dynamic_cast<wxTextCtrl*>(child);
        const bool isMerged =
            text != nullptr ? text->IsEditable()
                            : dynamic_cast<wxCheckBox*>(child) != nullptr && child->IsEnabled();
        if (isMerged) {
            controls.push_back(child);
        }
    }
    return controls;
}

wxTextCtrl& Text(wxWindow& dialog, int id) {
    return dynamic_cast<wxTextCtrl&>(*FindById(dialog, id));
}

class MergeDialogTest : public GuiStoreTest {
  protected:
    MergeDialogTest() {
        mStored = MakeCard("front", "stored back");
        mStored.Notes = "stored notes";
        mImported = mStored;
        mImported.Back = "imported back";
        mImported.ReverseX = true;
        mImported.Notes = "imported notes";
    }

    // What the next dialog gets to do once it is on the screen.
    void Then(const std::function<void(wxDialog&)>& act) {
        mAnswers.Expect([act](wxDialog& dialog) {
            dialog.CallAfter([act, &dialog] { act(dialog); });
            return wxID_NONE;
        });
    }
    void ThenPress(int id) {
        Then([id](wxDialog& dialog) { Press(*FindById(dialog, id)); });
    }

    // An import of new backs for some stored cards, which asks about each, behind its progress
    // window.
    ImportResult& ImportBacks(int cards) {
        std::string text;
        for (int i = 0; i < cards; ++i) {
            const FlashCard card = Insert(MakeCard(wxString::Format("f%i", i), "b"));
            text += "id: " + FormatUuid(card.CardId).utf8_string() + "\nBack: new\n\n";
        }
        const ImportInput input{mDirectory.Path("import.txt")};
        WriteBytes(input.FileName, text);
        mThread = std::make_unique<ImportThread>(input, mDatabase, true, nullptr, mQuestions);
        mThread->GetResult().MergePolicy = ImportMergePolicy::kAsk;
        mThread->Start();
        ProgressDialog progress(nullptr, "Progress", wxSize(400, 300));
        progress.SetSource(*mThread);
        progress.ShowModal();
        mThread->Join();
        return mThread->GetResult();
    }
    Strings Backs() { return Query("SELECT Back FROM Cards ORDER BY Front"); }

    FlashCard mStored;
    FlashCard mImported;
    ModalAnswers mAnswers;
    ImportQuestionDialogs mQuestions;
    std::unique_ptr<ImportThread> mThread;
};

}  // namespace

TEST_F(MergeDialogTest, KeepsTheVersionOfTheButton) {
    const struct {
        int Id;
        const FlashCard& Kept;
        MergeDialog::Choice Choice;
    } cases[] = {{10078, mStored, MergeDialog::kThisCard},
                 {10015, mImported, MergeDialog::kThisCard},
                 {10014, mImported, MergeDialog::kThisCard},
                 {10016, mStored, MergeDialog::kAlwaysDatabase},
                 {10017, mImported, MergeDialog::kAlwaysImported}};
    for (const auto& row : cases) {
        MergeDialog dialog(nullptr);
        dialog.SetCards(mStored, mImported);
        ThenPress(row.Id);
        EXPECT_EQ(dialog.ShowModal(), wxOK) << row.Id;
        EXPECT_EQ(dialog.GetChoice(), row.Choice) << row.Id;
        EXPECT_EQ(dialog.GetMergedCard().Back, row.Kept.Back) << row.Id;
        EXPECT_EQ(dialog.GetMergedCard().ReverseX, row.Kept.ReverseX) << row.Id;
        EXPECT_EQ(dialog.GetMergedCard().Notes, row.Kept.Notes) << row.Id;
    }
}

TEST_F(MergeDialogTest, MarksTheFieldsThatDiffer) {
    MergeDialog dialog(nullptr);
    dialog.SetCards(mStored, mImported);
    std::vector<bool> marked;
    for (wxWindow* const control : MergedColumn(dialog)) {
        marked.push_back(control->GetBackgroundColour() == wxColour(255, 0, 0) &&
                         control->GetForegroundColour() == *wxBLACK);
    }
    EXPECT_EQ(marked, (std::vector<bool>{false, true, false, false, false, true}));
}

TEST_F(MergeDialogTest, RefusesAMergedVersionThatIsNoCard) {
    MergeDialog dialog(nullptr);
    dialog.SetCards(mStored, mImported);
    auto* const back = dynamic_cast<wxTextCtrl*>(MergedColumn(dialog)[1]);
    const struct {
        wxTextCtrl* Control;
        wxString Wrong;
        wxString Message;
        wxString Right;
    } cases[] = {
        {&Text(dialog, ID_FRONT), " \n", "Flash cards cannot have a blank front", L"\u3000new "},
        {back, "", "Flash cards cannot have a blank back", " text\n"},
        {&Text(dialog, ID_ORDER), "abc", "Introduction Order must be a whole number", " -7"}};
    Then([&](wxDialog&) {
        Text(dialog, ID_AUTHOR).SetValue(" me ");
        for (const auto& row : cases) {
            row.Control->SetValue(row.Wrong);
            mAnswers.Expect(wxID_OK);
            Press(*FindById(dialog, ID_KEEP_MERGED));
            EXPECT_EQ(mAnswers.Dialogs.back().Title, "Message");
            EXPECT_EQ(mAnswers.Dialogs.back().Message, row.Message);
            EXPECT_TRUE(WaitFor([&] { return row.Control->HasFocus(); })) << row.Message;
            EXPECT_EQ(row.Control->GetStringSelection(), row.Wrong);
            row.Control->SetValue(row.Right);
        }
        Press(*FindById(dialog, ID_KEEP_MERGED));
    });
    EXPECT_EQ(dialog.ShowModal(), wxOK);
    const FlashCard& merged = dialog.GetMergedCard();
    EXPECT_EQ(merged.Front + "|" + merged.Back + "|" + merged.Author, "new|text|me");
    EXPECT_EQ(merged.IntroductionOrder, -7);
    EXPECT_EQ(merged.Notes, "imported notes");
}

TEST_F(MergeDialogTest, AsksBeforeAnyWayOutStopsTheImport) {
    const std::function<void(wxDialog&)> ways[] = {
        [](wxDialog& dialog) { Press(*FindById(dialog, 10018)); },
        [](wxDialog& dialog) { dialog.Close(); },
        [](wxDialog& dialog) {
            wxKeyEvent escape(wxEVT_CHAR_HOOK);
            escape.m_keyCode = WXK_ESCAPE;
            escape.SetEventObject(&dialog);
            dialog.GetEventHandler()->ProcessEvent(escape);
        }};
    for (const auto& leave : ways) {
        MergeDialog dialog(nullptr);
        dialog.SetCards(mStored, mImported);
        Then([&](wxDialog&) {
            mAnswers.Expect(wxID_CANCEL);
            leave(dialog);
            EXPECT_TRUE(dialog.IsModal()) << "a cancelled stop goes on";
            mAnswers.Expect(wxID_OK);
            leave(dialog);
        });
        EXPECT_EQ(dialog.ShowModal(), wxCANCEL);
        EXPECT_EQ(mAnswers.Dialogs.back().Title, "Stop Import?");
    }
}

// The way through the worker, whose question must get an answer whatever the person does.
TEST_F(MergeDialogTest, AnswersTheImportAndStopsIt) {
    mAnswers.Expect(wxID_NONE);
    Then([](wxDialog& dialog) {
        dynamic_cast<wxTextCtrl*>(MergedColumn(dialog)[1])->SetValue("merged");
        Press(*FindById(dialog, ID_KEEP_MERGED));
    });
    Then([](wxDialog& dialog) { dialog.Close(); });
    mAnswers.Expect(wxID_OK);
    const ImportResult& result = ImportBacks(3);
    EXPECT_EQ(result.Status, ImportStatus::kCancelled);
    EXPECT_EQ(result.RecordsMerged, 1);
    EXPECT_EQ(Backs(), (Strings{"merged", "b", "b"}));
}

TEST_F(MergeDialogTest, AsksNoMoreOnceTheDatabaseVersionIsAlwaysKept) {
    mAnswers.Expect(wxID_NONE);
    ThenPress(10016);
    const ImportResult& result = ImportBacks(3);
    EXPECT_EQ(result.Status, ImportStatus::kFinished);
    EXPECT_EQ(result.RecordsMerged, 3);
    EXPECT_EQ(Backs(), (Strings{"b", "b", "b"}));
}
