#pragma once

#include <wx/dialog.h>

#include <functional>
#include <utility>

#include "support/GuiTest.h"

inline void Send(wxEventType type, wxWindow& window) {
    wxCommandEvent event(type, window.GetId());
    event.SetEventObject(&window);
    window.GetEventHandler()->ProcessEvent(event);
}
inline void Press(wxWindow& button) {
    Send(wxEVT_BUTTON, button);
}

// Notes how many dialogs had been shown when it was asked to deliver.
class OrderedReport : public RecordingReport {
  public:
    explicit OrderedReport(const ModalAnswers& answers) : mAnswers(answers) {}
    void DeliverPending() override { DialogsBefore = mAnswers.Dialogs.size(); }
    size_t DialogsBefore = 0;

  private:
    const ModalAnswers& mAnswers;
};

// A test of dialogs that are shown, and of those that they show in turn.
class DialogTest : public GuiStoreTest {
  protected:
    // What the next dialog gets to do once it is on the screen.
    void Then(std::function<void(wxDialog&)> act) {
        mAnswers.Expect([act = std::move(act)](wxDialog& dialog) {
            dialog.CallAfter([act, &dialog] { act(dialog); });
            return wxID_NONE;
        });
    }
    void ThenPress(int id) {
        Then([id](wxDialog& dialog) { Press(*FindById(dialog, id)); });
    }
    // The next dialog runs its course, as a progress window does.
    void ThenWatch() { mAnswers.Expect(wxID_NONE); }

    ModalAnswers mAnswers;
    OrderedReport mOrdered{mAnswers};
};
