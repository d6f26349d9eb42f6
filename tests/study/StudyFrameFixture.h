#pragma once

#include "study/CardViewer.h"
#include "study/QuickScore.h"
#include "study/StudyFrame.h"
#include "support/GuiTest.h"

// The study window, with a person's keys.
struct StudyFrameTest : FrameTest<StudyFrame> {
    void Open(const wxSize& size = wxSize(640, 480)) {
        OpenFrame(new StudyFrame(mServices, nullptr, ID_WINDOW_STUDY, "Study - Velomind",
                                 wxDefaultPosition, size));
    }

    // Puts cards with the fronts "f1", ... and the backs "b1", ... into the store, to be introduced
    // in that order.
    std::vector<FlashCard> InsertCards(int count) {
        std::vector<FlashCard> cards;
        for (int i = 1; i <= count; ++i) {
            FlashCard card = MakeCard(wxString::Format("f%i", i), wxString::Format("b%i", i));
            card.IntroductionOrder = i;
            cards.push_back(Insert(card));
        }
        return cards;
    }

    CardViewer& Viewer() { return Find<CardViewer>(*mpFrame, "panel"); }
    QuickScore& Scores() { return Find<QuickScore>(*mpFrame, StudyFrame::kQuickScoreId); }
    wxStaticText& Message() { return Find<wxStaticText>(*mpFrame, wxID_STATIC); }
    wxString StatusText(int field) { return mpFrame->GetStatusBar()->GetStatusText(field); }

    void Keys(const std::vector<int>& keyCodes) {
        for (const int keyCode : keyCodes) {
            SendKey(Scores(), keyCode);
            DrainEvents();
        }
    }

    // The message, or the two sides: "f1|" with a covered back, "f1/b1", "f1/b1 scored 4".
    wxString State() {
        if (Message().IsShownOnScreen()) {
            return Viewer().IsShown() || Scores().IsShown() ? "both" : "message";
        }
        const int mark = Scores().GetMark();
        return Viewer().GetFirstText() + (Viewer().IsSecondCovered() ? "|" : "/") +
               Viewer().GetSecondText() +
               (mark == wxNOT_FOUND ? wxString() : wxString::Format(" scored %i", 5 - mark));
    }
};
