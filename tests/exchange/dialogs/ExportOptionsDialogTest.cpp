#include "exchange/dialogs/ExportOptionsDialog.h"

#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/filedlg.h>
#include <wx/radiobox.h>
#include <wx/textctrl.h>

#include "support/GuiTest.h"

namespace {

enum Id : int {
    kFormat = 10081,
    kDelimiterLabel = 10000,
    kDelimiter = 10001,
    kOther = 10083,
    kDelimiterHelp = 10085,
    kScheduling = 10082,
    kRange = 10148,
    kPreview = 10035,
    kOk = 5100
};

// Notes how many dialogs had been shown when it was asked to deliver.
class OrderedReport : public RecordingReport {
  public:
    void DeliverPending() override { DialogsBefore = Answers->Dialogs.size(); }
    const ModalAnswers* Answers = nullptr;
    size_t DialogsBefore = 0;
};

class ExportOptionsDialogTest : public GuiStoreTest {
  protected:
    void Send(wxDialog& dialog, wxEventType type, int id) {
        wxCommandEvent event(type, id);
        event.SetEventObject(FindById(dialog, id));
        dialog.GetEventHandler()->ProcessEvent(event);
    }
    void Choose(wxDialog& dialog, int id, int index) {
        static_cast<wxChoice*>(FindById(dialog, id))->SetSelection(index);
        Send(dialog, wxEVT_CHOICE, id);
    }
    void Type(wxDialog& dialog, const wxString& text) {
        static_cast<wxTextCtrl*>(FindById(dialog, kOther))->SetValue(text);
    }
    std::string Preview(wxDialog& dialog) {
        return static_cast<wxTextCtrl*>(FindById(dialog, kPreview))->GetValue().utf8_string();
    }
    // Cards in the preview, which is in the first form.
    int CardsIn(wxDialog& dialog) {
        wxString text = Preview(dialog);
        return static_cast<int>(text.Replace("id: ", ""));
    }
    void InsertCards(int count, int32_t category) {
        for (int i = 0; i < count; ++i) {
            Insert(MakeCard("f", "b", category));
        }
    }
    // Exports a card as a table behind a delimiter that is typed, and answers what comes.
    int ExportTyped(const wxString& delimiter, const wxString& path, ModalAnswers& answers) {
        answers.Expect(wxID_NONE);
        if (!path.empty()) {
            answers.Expect([path](wxDialog& dialog) {
                auto& chooser = dynamic_cast<wxFileDialog&>(dialog);
                chooser.SetPath(path);
                EXPECT_TRUE(WaitFor([&] { return chooser.GetPath() == path; }));
                return wxID_OK;
            });
            // The progress window runs its course.
            answers.Expect(wxID_NONE);
        }
        answers.Expect(wxID_OK);
        const std::vector<int64_t> selected{1};
        mOrdered.Answers = &answers;
        ExportOptionsDialog dialog(nullptr, mCategories, mOrdered);
        dialog.SetDatabase(mDatabase, selected);
        Choose(dialog, kFormat, 1);
        Choose(dialog, kDelimiter, 4);
        Type(dialog, delimiter);
        dialog.CallAfter([this, &dialog] {
            Send(dialog, wxEVT_BUTTON, kOk);
            if (dialog.IsModal() && dialog.GetReturnCode() == 0) {
                mStayed = true;
                dialog.EndModal(wxID_CLOSE);
            }
        });
        return dialog.ShowModal();
    }

    FakeCategorySource mCategories;
    OrderedReport mOrdered;
    bool mStayed = false;
};

TEST_F(ExportOptionsDialogTest, TheDelimiterIsShownWhereThereIsOne) {
    ExportOptionsDialog dialog(nullptr, mCategories, mReport);
    dialog.SetDatabase(mDatabase, {});
    const struct {
        int Format;
        int Delimiter;
        bool Shown;
        bool OtherShown;
    } rows[] = {
        {0, 4, false, false}, {1, 3, true, false}, {1, 4, true, true}, {2, 4, false, false}};
    for (const auto& row : rows) {
        Choose(dialog, kFormat, row.Format);
        Choose(dialog, kDelimiter, row.Delimiter);
        for (const int id : {kDelimiterLabel, kDelimiter, kDelimiterHelp}) {
            EXPECT_EQ(FindById(dialog, id)->IsShown(), row.Shown);
        }
        EXPECT_EQ(FindById(dialog, kOther)->IsShown(), row.OtherShown);
    }
}

TEST_F(ExportOptionsDialogTest, TheRangeBeginsAsNarrowAsItCan) {
    mDatabase.CategoryInsert("other");
    mDatabase.CategoryInsert("empty");
    InsertCards(18, 0);
    InsertCards(2, 1);
    const struct {
        int32_t Current;
        std::vector<int64_t> Selected;
        int Start;
        bool CurrentEnabled;
        int Cards;
    } rows[] = {{2, {}, 0, false, 16}, {1, {}, 1, true, 2}, {2, {20, 3, 99}, 2, false, 2}};
    for (const auto& row : rows) {
        mCategories.Current = row.Current;
        ExportOptionsDialog dialog(nullptr, mCategories, mReport);
        dialog.SetDatabase(mDatabase, row.Selected);
        auto& range = *static_cast<wxRadioBox*>(FindById(dialog, kRange));
        EXPECT_EQ(range.GetSelection(), row.Start);
        EXPECT_TRUE(range.IsItemEnabled(0));
        EXPECT_EQ(range.IsItemEnabled(1), row.CurrentEnabled);
        EXPECT_EQ(range.IsItemEnabled(2), !row.Selected.empty());
        EXPECT_EQ(CardsIn(dialog), row.Cards);
        range.SetSelection(0);
        Send(dialog, wxEVT_RADIOBOX, kRange);
        EXPECT_EQ(CardsIn(dialog), 16);
    }
}

TEST_F(ExportOptionsDialogTest, ThePreviewFollowsEveryOption) {
    InsertCards(1, 0);
    ExportOptionsDialog dialog(nullptr, mCategories, mReport);
    dialog.SetDatabase(mDatabase, {});
    EXPECT_NE(Preview(dialog).find("RERC: 0"), std::string::npos);
    static_cast<wxCheckBox*>(FindById(dialog, kScheduling))->SetValue(false);
    Send(dialog, wxEVT_CHECKBOX, kScheduling);
    EXPECT_EQ(Preview(dialog).find("RERC: 0"), std::string::npos);
    Choose(dialog, kFormat, 1);
    EXPECT_EQ(Preview(dialog).rfind("id\tFront\tBack", 0), 0U);
    Choose(dialog, kDelimiter, 4);
    EXPECT_EQ(Preview(dialog), "You must specify a delimiter.");
    Type(dialog, "\"");
    EXPECT_EQ(Preview(dialog), "\" cannot be used as a delimiter.");
    Type(dialog, "||");
    EXPECT_EQ(Preview(dialog), "You can only have a one character delimiter");
    Type(dialog, "\n");
    EXPECT_EQ(Preview(dialog), "You must specify a delimiter.");
    EXPECT_TRUE(static_cast<wxTextCtrl*>(FindById(dialog, kOther))->IsEmpty());
    Type(dialog, "|");
    EXPECT_EQ(Preview(dialog).rfind("id|Front|Back", 0), 0U);
}

TEST_F(ExportOptionsDialogTest, OkExportsAndTellsTheOutcome) {
    InsertCards(1, 0);
    const wxString path = mDirectory.Path("out.txt");
    {
        ModalAnswers answers;
        EXPECT_EQ(ExportTyped("|", path, answers), wxID_OK);
        // Options, file and progress.
        EXPECT_EQ(mOrdered.DialogsBefore, 3U);
        EXPECT_EQ(answers.Dialogs.back().Message, "1 Records Exported");
        EXPECT_EQ(ReadBytes(path).substr(0, 8), std::string("\xFF\xFEi\0d\0|\0", 8));
    }
    {
        ModalAnswers answers;
        EXPECT_EQ(ExportTyped("|", "/dev/full", answers), wxID_OK);
        EXPECT_NE(answers.Dialogs.back().Message.Find("is not complete"), wxNOT_FOUND);
    }
    EXPECT_FALSE(mStayed);
}

TEST_F(ExportOptionsDialogTest, AWrongDelimiterKeepsTheDialog) {
    InsertCards(1, 0);
    ModalAnswers answers;
    ExportTyped("||", wxString(), answers);
    EXPECT_EQ(answers.Dialogs.back().Message, "You can only have a one character delimiter");
    EXPECT_TRUE(mStayed);
}

}  // namespace
