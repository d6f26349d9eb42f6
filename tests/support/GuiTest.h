#pragma once

// With it come what tests of windows have in common: the controls of the toolkit, the commands, the
// settings and the fakes.
#include <wx/config.h>
#include <wx/listctrl.h>
#include <wx/modalhook.h>
#include <wx/wx.h>

#include <wx/weakref.h>

#include <deque>

#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "support/FakeServices.h"
#include "support/StoreFixture.h"

// Handles events until the condition holds; false when that takes longer than the limit.
bool WaitFor(const std::function<bool()>& condition, int limitMilliseconds = 5000);

// Handles the events that are waiting, idle events included.
void DrainEvents();

// Shows a window and waits until the window manager has put it on the screen and activated it.
// Before that it has neither its final size nor a place for the mouse or the keyboard.
void ShowAndWait(wxTopLevelWindow& window);

// Finds a child, at any depth, by its window name or by its id; the test fails when there is none.
wxWindow* FindNamed(wxWindow& parent, const wxString& name);
wxWindow* FindById(wxWindow& parent, int id);
// The same as the control that it is.
template <class Control>
Control& Find(wxWindow& parent, const wxString& name) {
    return dynamic_cast<Control&>(*FindNamed(parent, name));
}
template <class Control>
Control& Find(wxWindow& parent, int id) {
    return dynamic_cast<Control&>(*FindById(parent, id));
}

// A command as from a menu entry or its key. False when it was passed on.
bool SendCommand(wxEvtHandler& handler, int id, int checked = 1);
// What the rule of a command says: "on", "off", "checked" when it is on and checked, or "" where
// there is none.
std::string RuleOf(wxEvtHandler& handler, int id);

// An event of a control: a press of a button unless it is another one.
void Send(wxWindow& control, wxEventType type = wxEVT_BUTTON, int selection = 0);
void Choose(wxWindow& parent, int choiceId, int selection);

// A key pressed and released, or another event of one, straight to a window: a character or a WXK_
// code. True when the window takes it.
void SendKey(wxWindow& window, int keyCode);
bool SendKeyDown(wxWindow& window, int keyCode, int modifiers = 0);
void SendKeyUp(wxWindow& window, int keyCode);
bool SendKeyEvent(wxEventType type, wxWindow& window, int keyCode, int modifiers = 0);
void SendMouse(wxWindow& window, wxEventType type, const wxPoint& point, int rotation = 0);

// Answers modal dialogs in the order in which they open, without showing them, and keeps what they
// said. A dialog that nobody expected fails the test and is answered with wxID_CANCEL.
class ModalAnswers : public wxModalDialogHook {
  public:
    struct Seen {
        wxString Title;
        // The text of a message box; empty for others.
        wxString Message;
    };

    ModalAnswers() { Register(); }
    ~ModalAnswers() override;

    // The next dialogs end with these codes.
    void Expect(std::initializer_list<int> answers);
    void Expect(int answer) { Expect({answer}); }
    // The next dialog is handed to the function, whose result ends it.
    void Expect(std::function<int(wxDialog&)> answer);
    // The next dialog stays open, and the function gets it once it is on the screen.
    void Then(std::function<void(wxDialog&)> act);
    void ThenPress(int id);
    // The next dialog runs its course, as a progress window does.
    void ThenWatch() { Expect({wxID_NONE}); }
    // The next dialog asks for a text or for a file, and is told this one.
    void ThenType(const wxString& text);
    void ThenChoose(const wxString& path);

    std::vector<Seen> Dialogs;

  protected:
    int Enter(wxDialog* dialog) override;

  private:
    std::deque<std::function<int(wxDialog&)>> mAnswers;
};

// Settings of their own in a fresh directory, and at the end no window left behind.
struct OwnWindows {
    OwnWindows();
    ~OwnWindows();

    TestDirectory mSettingsDirectory;
};

class GuiTest : public ::testing::Test, protected OwnWindows {};

// The same with a real, open store that has one category "Default" (id 0).
class GuiStoreTest : public StoreFixture, protected OwnWindows {};

// A window of the program on such a store, told what to do by commands as a person would.
template <class Frame>
struct FrameTest : GuiStoreTest {
    ~FrameTest() override {
        if (mpFrame != nullptr) {
            Close();
        }
    }

    // Opens the window on whatever the store holds by then.
    void OpenFrame(Frame* frame) {
        mpFrame = frame;
        mpFrame->SetDatabase(&mDatabase);
        ShowAndWait(*mpFrame);
    }
    void Close() {
        mpFrame->Close(true);
        DrainEvents();
    }
    void Command(int id, bool checked = true) {
        SendCommand(*mpFrame, id, checked ? 1 : 0);
        DrainEvents();
    }
    std::string Rule(int id) { return RuleOf(*mpFrame, id); }

    FakeServices mServices;
    wxWeakRef<Frame> mpFrame;
};
