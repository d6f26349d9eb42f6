#pragma once

#include <wx/frame.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/weakref.h>

#include <stdexcept>
#include <vector>

#include "scheduler/Scheduler.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "study/CardViewer.h"
#include "study/QuickScore.h"
#include "study/StudyFrame.h"
#include "support/FakeServices.h"
#include "support/GuiTest.h"

// A study window on a real store, told what to do by keys and commands as a person would.
class StudyFrameTest : public GuiStoreTest {
  protected:
    ~StudyFrameTest() override {
        if (mpFrame != nullptr) {
            Close();
        }
    }

    // The window of whatever the store holds by then, on the screen.
    void Open(const wxSize& size = wxSize(640, 480)) {
        mpFrame = new StudyFrame(mServices, nullptr, ID_WINDOW_STUDY, "Study - Velomind",
                                 wxDefaultPosition, size);
        mpFrame->SetDatabase(&mDatabase);
        ShowAndWait(*mpFrame);
    }
    void Close() {
        mpFrame->Close();
        DrainEvents();
    }

    // Puts cards with the fronts "front 1", ... and the backs "back 1", ... into the store, to be
    // introduced in that order.
    std::vector<FlashCard> InsertCards(int count) {
        std::vector<FlashCard> cards;
        for (int i = 1; i <= count; ++i) {
            FlashCard card =
                MakeCard(wxString::Format("front %i", i), wxString::Format("back %i", i));
            card.IntroductionOrder = i;
            cards.push_back(Insert(card));
        }
        return cards;
    }

    template <class T>
    T& Child() {
        for (wxWindow* const child : mpFrame->GetChildren()) {
            if (auto* const found = dynamic_cast<T*>(child)) {
                return *found;
            }
        }
        throw std::runtime_error("no such child");
    }
    CardViewer& Viewer() { return Child<CardViewer>(); }
    QuickScore& Scores() { return Child<QuickScore>(); }
    wxStaticText& Message() { return Child<wxStaticText>(); }
    wxString StatusText(int field) { return mpFrame->GetStatusBar()->GetStatusText(field); }

    void Key(int keyCode) {
        SendKey(Scores(), keyCode);
        DrainEvents();
    }
    void Command(int id, bool checked = true) {
        wxCommandEvent event(wxEVT_MENU, id);
        event.SetInt(checked ? 1 : 0);
        mpFrame->GetEventHandler()->ProcessEvent(event);
        DrainEvents();
    }
    bool IsEnabled(int id) {
        const wxUpdateUIEvent event = AskRule(id);
        return !event.GetSetEnabled() || event.GetEnabled();
    }
    bool IsChecked(int id) {
        const wxUpdateUIEvent event = AskRule(id);
        return event.GetSetChecked() && event.GetChecked();
    }

    // What the window shows, in one word.
    wxString State() {
        if (Message().IsShown()) {
            return Viewer().IsShown() || Scores().IsShown() ? "both" : "message";
        }
        if (Viewer().IsSecondCovered()) {
            return Viewer().GetSecondText().empty() ? "front" : "front with a back";
        }
        return Scores().GetMark() == wxNOT_FOUND ? "back" : "recent";
    }

    FakeServices mServices;
    wxWeakRef<StudyFrame> mpFrame;

  private:
    wxUpdateUIEvent AskRule(int id) {
        wxUpdateUIEvent event(id);
        EXPECT_TRUE(mpFrame->GetEventHandler()->ProcessEvent(event)) << "no rule for " << id;
        return event;
    }
};
