#include "transfer/ImportDialog.h"

#include "formats/Table.h"
#include "formats/decks/DeckWriter.h"
#include "support/FakeServices.h"
#include "transfer/CardSample.h"
#include "transfer/DeckPanel.h"
#include "transfer/DialogTest.h"
#include "transfer/FaultList.h"
#include "transfer/FormatRows.h"
#include "transfer/TablePanel.h"

namespace {

const wxString kNeither =
    "The file is neither a text with lines such as \"Front: dog\"\nnor a table with a column for "
    "the "
    "front and one for the back.\nFor a table, choose the format \"Delimited\" and then the "
    "delimiter.";

struct ImportDialogTest : DialogTest {
    // Opens the dialog on a file of these bytes.
    ImportDialog& Open(const std::string& bytes) {
        WriteBytes(mDirectory.Path("import.txt"), bytes);
        return OpenFile("import.txt");
    }
    ImportDialog& OpenFile(const wxString& name) {
        mDialog = std::make_unique<ImportDialog>(nullptr, mServices, mDatabase, mReport,
                                                 mDirectory.Path(name));
        return *mDialog;
    }

    void Choose(int id, int selection) { ::Choose(*mDialog, id, selection); }
    bool IsShown(int id) { return FindById(*mDialog, id)->IsShown(); }

    // Returns the format with its delimiter, and what the dialog shows below them.
    wxString Shown() {
        wxString text =
            Find<wxChoice>(*mDialog, ImportDialog::ID_FORMAT).GetStringSelection() + "/" +
            Find<wxChoice>(*mDialog, FormatRows::kDelimiterId).GetStringSelection() + ": ";
        EXPECT_NE(IsShown(ImportDialog::ID_ERROR), IsShown(ImportDialog::ID_PREVIEW));
        const bool isError = IsShown(ImportDialog::ID_ERROR);
        const wxString label = FindById(*mDialog, ImportDialog::ID_PREVIEW_LABEL)->GetLabel();
        EXPECT_TRUE(label.StartsWith(isError ? "Error (first card)" : "Preview (first card"))
            << label;
        if (isError) {
            return text + Find<wxTextCtrl>(*mDialog, ImportDialog::ID_ERROR).GetValue();
        }
        const auto& list = Find<wxListCtrl>(*mDialog, ImportDialog::ID_PREVIEW);
        for (int i = 0; i < list.GetItemCount(); ++i) {
            text += list.GetItemText(i, 0) + "=" + list.GetItemText(i, 1) + ";";
        }
        return text;
    }

    FakeServices mServices;
    std::unique_ptr<ImportDialog> mDialog;
};

}  // namespace

TEST_F(ImportDialogTest, FindsTheFormatAndShowsTheFirstCard) {
    Insert(MakeCard("in", "store"));
    const std::string before = ReadBytes(StorePath());
    const std::pair<const char*, wxString> cases[] = {
        {"Front\tBack\na\tb\nc\td\n", "Delimited/tab: Front=a;Back=b;"},
        {"f,b,Category\na,b,never asked\n", "Delimited/comma: f=a;b=b;Category=never asked;"},
        {"", "Delimited/tab: "},
        {"Q: a\nQ: b\nA: c\n\nwrong", L"VLM Text File/tab: Q=a \u21B5 b;A=c;"},
        {"in: store\n",
         "VLM Text File/tab: \"in\" is not a valid attribute name.\nLine Number: 1\n\nThe first "
         "row "
         "is: in: store\n" +
             kNeither},
        {"Hund - dog\n", "Delimited/dash or sign between words: Front=Hund;Back=dog;"},
        {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1",
         "VLM Text File/tab: This file is a spreadsheet or another packed file, and no text.  Save "
         "it as CSV first."},
        // The preview does not mind a card whose texts the store has already.
        {"f\tb\nin\tstore\n", "Delimited/tab: f=in;b=store;"},
    };
    for (const auto& [bytes, shown] : cases) {
        Open(bytes);
        EXPECT_EQ(Shown(), shown) << bytes;
    }
    EXPECT_EQ(ReadBytes(StorePath()), before);
    OpenFile("not there");
    EXPECT_EQ(Shown(), "VLM Text File/tab: \nLine Number: -1");
}

TEST_F(ImportDialogTest, ShowsWhatTheChoicesAskFor) {
    Open("f: a\nb: b\n");
    EXPECT_FALSE(IsShown(FormatRows::kDelimiterId));
    EXPECT_FALSE(IsShown(ImportDialog::ID_OTHER_DELIMITER));
    Choose(ImportDialog::ID_FORMAT, 1);
    EXPECT_TRUE(IsShown(FormatRows::kDelimiterId));
    EXPECT_FALSE(IsShown(ImportDialog::ID_OTHER_DELIMITER));
    EXPECT_TRUE(
        Shown().StartsWith("Delimited/tab: \"f: a\" is not a valid attribute name.\nLine Number: "
                           "1\n\nThe first row is"));

    Choose(FormatRows::kDelimiterId, 4);
    EXPECT_TRUE(IsShown(ImportDialog::ID_OTHER_DELIMITER));
    EXPECT_EQ(Shown(), "Delimited/other: You must specify a delimiter.");
    auto& other = Find<wxTextCtrl>(*mDialog, ImportDialog::ID_OTHER_DELIMITER);
    const std::pair<wxString, wxString> cases[] = {
        {"ab", "You can only have a one character delimiter"},
        {"\"", "\" cannot be used as a delimiter."},
        {"\n", "You must specify a delimiter."},
        {":", "f=b;a=b;"}};
    for (const auto& [typed, shown] : cases) {
        other.SetValue(typed);
        EXPECT_EQ(Shown(), "Delimited/other: " + shown) << typed;
    }
    Choose(ImportDialog::ID_FORMAT, 0);
    EXPECT_FALSE(IsShown(ImportDialog::ID_OTHER_DELIMITER));
    EXPECT_EQ(Shown(), "VLM Text File/other: f=a;b=b;");
}

TEST_F(ImportDialogTest, LetsColumnsBeChosen) {
    Open("Hund;dog;M\xE4nnchen\nKatze;cat;\n");
    EXPECT_EQ(Shown(), L"Delimited/semi-colon: Front=Hund;Back=dog;Notes=M\u00E4nnchen;");
    EXPECT_FALSE(Find<wxCheckBox>(*mDialog, TablePanel::ID_HAS_HEADER).GetValue());

    // Two columns cannot be the same side, so they change places.
    Choose(TablePanel::ID_FIRST_USE + 1, static_cast<int>(ColumnUse::kFront));
    EXPECT_EQ(Shown(), L"Delimited/semi-colon: Back=Hund;Front=dog;Notes=M\u00E4nnchen;");
    Choose(TablePanel::ID_FIRST_USE + 2, static_cast<int>(ColumnUse::kIgnore));
    EXPECT_EQ(Shown(), L"Delimited/semi-colon: Back=Hund;Front=dog;");

    auto& header = Find<wxCheckBox>(*mDialog, TablePanel::ID_HAS_HEADER);
    header.SetValue(true);
    Send(header, wxEVT_CHECKBOX, 1);
    EXPECT_EQ(Shown(), "Delimited/semi-colon: Front=Katze;Back=cat;");
    EXPECT_TRUE(FindById(*mDialog, ImportDialog::ID_PREVIEW_LABEL)->GetLabel().Contains("row 1"));
}

// Its table shows them as text at once, and so does one of the program's own form.
TEST_F(ImportDialogTest, LetsQuotesBeText) {
    for (const char* const bytes : {"a;\"b\"\nc;\"d\"\n", "Front;Back\na;\"b\"\nc;\"d\"\n"}) {
        Open(bytes);
        EXPECT_EQ(Shown(), "Delimited/semi-colon: Front=a;Back=b;");
        auto& box = Find<wxCheckBox>(*mDialog, TablePanel::ID_QUOTES_ARE_TEXT);
        box.SetValue(true);
        Send(box, wxEVT_CHECKBOX, 1);
        EXPECT_EQ(Shown(), "Delimited/semi-colon: Front=a;Back=\"b\";");
    }
}

// What the letters of a text say is shown, and can be chosen for a text form too.
TEST_F(ImportDialogTest, ShowsAndTakesTheEncoding) {
    Open("\xF1\xEE\xE1\xE0\xEA\xE0;dog\n\xEA\xEE\xF8\xEA\xE0;cat\n");
    auto& table = Find<wxChoice>(*mDialog, ImportDialog::ID_ENCODING);
    EXPECT_EQ(table.GetString(0), "Automatic: Cyrillic (Windows-1251)");
    Open("Front: \x8C\xA2\nBack: dog\n");
    EXPECT_EQ(Shown(), L"VLM Text File/tab: Front=\u0152\u00A2;Back=dog;");
    auto& text = Find<wxChoice>(*mDialog, ImportDialog::ID_ENCODING);
    EXPECT_TRUE(text.IsShown());
    Choose(ImportDialog::ID_ENCODING, text.FindString("Japanese (Shift_JIS)"));
    EXPECT_EQ(Shown(), L"VLM Text File/tab: Front=\u72AC;Back=dog;");
}

// The dialog stays after a failed import, so that its choices can be changed, and remembers them.
TEST_F(ImportDialogTest, StaysAfterAFailureAndRemembersTheColumns) {
    const std::string bytes = "Wort;Meaning;Xyz\nHund;dog;\"x\" y\nin;store;\"y\"\n;none;\"z\"\n";
    Insert(MakeCard("in", "store"));
    Open(bytes);
    EXPECT_FALSE(IsShown(ImportDialog::ID_FAULTS));
    Choose(TablePanel::ID_FIRST_USE + 2, static_cast<int>(ColumnUse::kChapter));

    mAnswers.Then([&](wxDialog& dialog) {
        mAnswers.ThenWatch();
        mAnswers.Expect(wxID_OK);
        Send(*FindById(dialog, wxID_OK));
        EXPECT_EQ(mAnswers.Dialogs.back().Title, "Import Failed");
        EXPECT_TRUE(dialog.IsModal());
        EXPECT_TRUE(IsShown(ImportDialog::ID_FAULTS));

        mAnswers.ThenWatch();
        mAnswers.Expect([](wxDialog& list) {
            EXPECT_EQ(Find<wxTextCtrl>(list, kFaultTextId).GetValue(),
                      "Line 3: Duplicate Card: There is already a card in the database with this "
                      "front/back pair.\nLine 4: Every card must have a front attribute.\nLine 2: "
                      "A field "
                      "begins with a double quote and does not end with one, so that the quote is "
                      "taken for text.\n");
            return wxID_CLOSE;
        });
        Send(*FindById(dialog, ImportDialog::ID_FAULTS));

        WriteBytes(mDirectory.Path("import.txt"), bytes.substr(0, bytes.find(";none")));
        Choose(ImportDialog::ID_KNOWN_CARDS, static_cast<int>(KnownPairs::kSkip));
        mAnswers.ThenWatch();
        mAnswers.Expect(wxID_OK);
        Send(*FindById(dialog, wxID_OK));
    });
    EXPECT_EQ(mDialog->ShowModal(), wxOK);
    EXPECT_TRUE(mAnswers.Dialogs.back().Message.StartsWith(
        "1 Records Inserted\n0 Records Merged\n1 Duplicates Ignored"));

    Open(bytes);
    EXPECT_EQ(Shown(), "Delimited/semi-colon: Front=Hund;Back=dog;Chapter=\"x\" y;");
}

TEST_F(ImportDialogTest, ShowsWhatBecomesOfADeckAndLetsItsFieldsBeChosen) {
    constexpr int kFront = 0, kBack = 2, kIgnore = 5;
    const wxString made = mDirectory.Path("made.db");
    ASSERT_EQ(WriteDatabase(made, Schema11(NoteRow(1, "g", 7, "a|b<img src=c>|y|m") +
                                           NewCard(1, 0) + NewCard(1, 1))),
              "");
    WritePackage(mDirectory.Path("my.apkg"), {{"collection.anki2", ReadBytes(made)}});
    ImportDialog& dialog = OpenFile("my.apkg");
    EXPECT_TRUE(mAnswers.Dialogs.empty()) << "a small deck needs no progress window";
    EXPECT_TRUE(Shown().StartsWith("Deck/")) << Shown();
    EXPECT_TRUE(Shown().Contains("front=a;back=b;notes=")) << Shown();
    EXPECT_TRUE(Shown().Contains("category=A::B;")) << Shown();
    const auto summary = [](ImportDialog& shown) {
        return wxJoin(Find<wxListBox>(shown, DeckPanel::ID_SUMMARY).GetStrings(), '\n');
    };
    EXPECT_EQ(summary(dialog), "1 note\n1 card\n1 picture is left out.");
    EXPECT_LT(dialog.GetSize().y, 720) << "fits on a low screen beside panels";
    const auto side = [&](int id) { return Find<wxStaticText>(dialog, id).GetLabelText(); };
    EXPECT_EQ(side(CardSample::ID_FRONT) + "/" + side(CardSample::ID_BACK), "a/b");

    // The first field becomes the back too.
    Choose(DeckPanel::ID_FIRST_FIELD, kBack);
    Choose(DeckPanel::ID_FIRST_FIELD + 3, kFront);
    EXPECT_TRUE(Shown().Contains(L"front=m;back=a \u21B5 b;")) << Shown();
    Choose(DeckPanel::ID_FIRST_FIELD + 3, kIgnore);
    EXPECT_TRUE(summary(dialog).Contains("1 card is left out, since a side is empty"))
        << summary(dialog);
    Choose(DeckPanel::ID_FIRST_FIELD, kFront);

    // As a list it is nothing, and as a deck it comes back.
    Choose(ImportDialog::ID_FORMAT, 0);
    EXPECT_FALSE(FindById(dialog, DeckPanel::ID_SUMMARY)->GetParent()->IsShown());
    EXPECT_TRUE(IsShown(ImportDialog::ID_ERROR));
    Choose(ImportDialog::ID_FORMAT, 2);
    EXPECT_TRUE(Shown().Contains("front=a;back=b;")) << Shown();

    WriteBytes(mDirectory.Path("cut.apkg"), ReadBytes(mDirectory.Path("my.apkg")).substr(0, 99));
    OpenFile("cut.apkg");
    EXPECT_TRUE(Shown().Contains("The package is damaged.")) << Shown();
}
