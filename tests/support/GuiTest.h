#pragma once

#include <gtest/gtest.h>
#include <wx/modalhook.h>
#include <wx/window.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "support/StoreFixture.h"

class wxDialog;
class wxTopLevelWindow;

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

// A key pressed and released, as events straight to a window: a character or a WXK_ code. True when
// the window takes the press.
void SendKey(wxWindow& window, int keyCode, int modifiers = 0);
bool SendKeyDown(wxWindow& window, int keyCode, int modifiers = 0);
void SendKeyUp(wxWindow& window, int keyCode, int modifiers = 0);

// Answers modal dialogs in the order in which they open, without showing them, and keeps what they
// said. A dialog that nobody expected fails the test and is answered with wxID_CANCEL.
class ModalAnswers : public wxModalDialogHook {
  public:
    struct Seen {
        wxString Title;
        // Of a message box; empty for others.
        wxString Message;
    };

    ModalAnswers() { Register(); }
    ~ModalAnswers() override;

    // The next dialog ends with this code.
    void Expect(int answer);
    // The next dialog is handed to the function, whose result ends it.
    void Expect(std::function<int(wxDialog&)> answer);

    std::vector<Seen> Dialogs;

  protected:
    int Enter(wxDialog* dialog) override;

  private:
    std::deque<std::function<int(wxDialog&)>> mAnswers;
};

// Settings of their own in a fresh directory, and at the end no window left behind.
class OwnWindows {
  protected:
    OwnWindows();
    ~OwnWindows();

    TemporaryDirectory mSettingsDirectory;
};

class GuiTest : public ::testing::Test, protected OwnWindows {};

// The same with a real, open store that has one category "Default" (id 0).
class GuiStoreTest : public StoreFixture, protected OwnWindows {};
