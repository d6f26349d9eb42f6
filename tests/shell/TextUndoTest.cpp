#include "shell/TextUndo.h"

#include <wx/spinctrl.h>

#include "support/GuiTest.h"

namespace {

// Does what a person's hands do to a text: "abc" types these letters, "=abc" pastes them, "<<" and
// ">" delete backwards and forwards, "@2" moves the caret, "@1-3" selects.
void Work(wxTextEntry& text, const std::string& step) {
    const wxString rest = wxString::FromUTF8(step).Mid(1);
    const auto caret = [&text] { return text.GetInsertionPoint(); };
    long from = 0;
    long to = 0;
    if (step[0] == '=') {
        text.GetSelection(&from, &to);
        if (from != to) {
            text.Remove(from, to);
        }
        text.WriteText(rest);
    } else if (step[0] == '@') {
        rest.BeforeFirst('-').ToLong(&from);
        rest.Contains("-") ? text.SetSelection(from, wxAtol(rest.AfterFirst('-')))
                           : text.SetInsertionPoint(from);
    } else {
        for (const wxUniChar letter : wxString::FromUTF8(step)) {
            if (letter == '<') {
                text.Remove(caret() - 1, caret());
            } else if (letter == '>') {
                text.GetSelection(&from, &to);
                text.Remove(from, std::max(to, from + 1));
            } else {
                text.WriteText(letter);
            }
        }
    }
    DrainEvents();
}

struct UndoCase {
    std::vector<std::string> Steps;
    // The text at the end and after each undo, back to the text that was loaded.
    std::vector<const char*> Texts;
};

const UndoCase kCases[] = {
    {{"one two  six"}, {"one two  six", "one two  ", "one ", ""}},
    // Between equal letters only the caret tells where a letter went.
    {{"=hello", "@3", "lp"}, {"hellplo", "hello", ""}},
    {{"=one two", "<<<<", "@1", ">>"}, {"o", "one", "one two", ""}},
    {{"=one two", "@0-3", "=three"}, {"three two", "one two", ""}},
    {{"=one two", "@0-3", ">", "=one"}, {"one two", " two", "one two", ""}},
    {{"=one two", "@0-3", "=1", "@2", "x"}, {"1 xtwo", "1 two", "one two", ""}},
    {{"=one\ntwo", "three", "@0", "four"}, {"fourone\ntwothree", "one\ntwothree", "one\ntwo", ""}},
    // What an input method puts in at once stays together, and apart from what comes next.
    {{"=\u65e5\u672c", "=\u8a9e\u3067", "a"},
     {"\u65e5\u672c\u8a9e\u3067a", "\u65e5\u672c\u8a9e\u3067", "\u65e5\u672c", ""}}};

struct TextUndoTest : GuiTest {
    // A field with a history, and the text that was loaded into it.
    template <class Control>
    Control& Make(Control* control) {
        TextUndo::AttachTo(*mpFrame);
        mpUndo = TextUndo::Find(control);
        return *control;
    }
    wxTextCtrl& MakeLines() {
        return Make(new wxTextCtrl(mpFrame, wxID_ANY, "", {}, {}, wxTE_MULTILINE));
    }

    wxFrame* mpFrame = new wxFrame(nullptr, wxID_ANY, "frame");
    TextUndo* mpUndo = nullptr;
};

TEST_F(TextUndoTest, TypingIsTakenBackByWordsAndMadeAgain) {
    for (const UndoCase& one : kCases) {
        SCOPED_TRACE(one.Texts[0]);
        wxTextCtrl& text = MakeLines();
        for (const std::string& step : one.Steps) {
            Work(text, step);
        }
        for (size_t i = 0; i < one.Texts.size(); ++i) {
            EXPECT_EQ(text.GetValue(), wxString::FromUTF8(one.Texts[i]));
            SendKeyEvent(wxEVT_CHAR, text, WXK_CONTROL_Z, wxMOD_CONTROL);
        }
        EXPECT_FALSE(mpUndo->CanUndo());
        for (size_t i = one.Texts.size() - 1; i-- > 0;) {
            SendKeyEvent(wxEVT_CHAR, text, WXK_CONTROL_Z, wxMOD_CONTROL | wxMOD_SHIFT);
            EXPECT_EQ(text.GetValue(), wxString::FromUTF8(one.Texts[i]));
        }
        EXPECT_FALSE(mpUndo->CanRedo());
    }
}

TEST_F(TextUndoTest, EveryKindOfFieldHasItsOwnHistory) {
    auto& line = Make(new wxTextCtrl(mpFrame, wxID_ANY));
    auto& choice = Make(new wxComboBox(mpFrame, wxID_ANY));
    for (wxTextEntry* const text :
         {static_cast<wxTextEntry*>(&line), static_cast<wxTextEntry*>(&choice)}) {
        Work(*text, "ab c");
    }
    mpUndo->Undo();
    EXPECT_EQ(choice.GetValue() + "|" + line.GetValue(), "ab |ab c");
    // A new change leaves nothing to be made again.
    Work(choice, "d");
    EXPECT_FALSE(mpUndo->CanRedo());
    auto& fixed = Make(new wxTextCtrl(mpFrame, wxID_ANY, "", {}, {}, wxTE_READONLY));
    EXPECT_EQ(TextUndo::Find(&fixed), nullptr);
}

TEST_F(TextUndoTest, AnotherTextFromTheProgramIsNothingToTakeBack) {
    wxTextCtrl& text = MakeLines();
    Work(text, "one two");
    text.ChangeValue("the next card");
    mpUndo->Undo();
    EXPECT_EQ(text.GetValue(), "the next card");
    Work(text, "!");
    text.ChangeValue("the one after");
    TextUndo::Restart(text);
    EXPECT_FALSE(mpUndo->CanUndo());
}

TEST_F(TextUndoTest, AHugeTextCostsNoMemory) {
    wxTextCtrl& text = MakeLines();
    wxString half;
    for (int i = 0; i < 1750; ++i) {
        half += wxString('x', 99) + "\n";
    }
    text.WriteText(half);
    text.WriteText("a");
    text.Remove(0, 150000);
    // Each change alone would be within the limit, all together are not, so the oldest is gone.
    for (int i = 0; i < 3; ++i) {
        mpUndo->Undo();
    }
    EXPECT_TRUE(text.GetValue() == half);
    text.WriteText(half);
    EXPECT_FALSE(mpUndo->CanUndo());
    EXPECT_FALSE(mpUndo->CanRedo());
}

}  // namespace
