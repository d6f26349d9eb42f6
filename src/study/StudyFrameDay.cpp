#include <wx/intl.h>
#include <wx/statusbr.h>

#include <algorithm>

#include "reviews/ReviewFigures.h"
#include "shell/AppServices.h"
#include "shell/StudySettings.h"
#include "study/CardViewer.h"
#include "study/DayBar.h"
#include "study/StudyFrame.h"
#include "study/StudyPanels.h"
#include "study/StudyTexts.h"

// How the study window tells how far the day is, and what a pause has left. Nothing here stops
// study or asks for an answer.

void StudyFrame::OpenDay() {
    mIsPauseDismissed = false;
    mStudyDay.SetLimits(ReadDayLimits());
    // Called on the worker.
    mStudyDay.Open(mpDatabase, [this] { CallAfter(&StudyFrame::OnDayCounted); });
}

void StudyFrame::OnDayCounted() {
    if (mpScheduler != nullptr && HasCard()) {
        UpdateStatusTexts();
        UpdateDay();
        UpdateBreakBar();
    }
}

void StudyFrame::UpdateDay() {
    const std::optional<DayProgress> progress = mStudyDay.GetProgress();
    const int fields = mStudyDay.GetLimits().Enough > 0 ? kDayField + 1 : kDayField;
    if (mpStatusBar->GetFieldsCount() != fields) {
        mpStatusBar->SetFieldsCount(fields);
    }
    if (mpDayBar == nullptr && progress) {
        mpDayBar = new DayBar(mpStatusBar);
    }
    if (mpDayBar != nullptr) {
        mpDayBar->Show(progress.has_value());
    }
    if (progress) {
        mpStatusBar->SetStatusText(DayText(*progress), kDayField);
        mpDayBar->SetProgress(progress->Done, progress->Goal);
        PlaceDayBar();
    }
}

void StudyFrame::PlaceDayBar() {
    wxRect field;
    if (mpDayBar != nullptr && mpStatusBar->GetFieldRect(kDayField, field)) {
        mpDayBar->Place(field);
    }
}

wxString StudyFrame::DayMessage() {
    const wxDateTime now = mServices.GetClock().Now();
    const StudyPause* const pause = mStudyDay.GetPause();
    if (pause != nullptr && !mIsPauseDismissed) {
        return PauseText(*pause, now);
    }
    const std::optional<DayProgress> progress = mStudyDay.GetProgress();
    const bool isEnough = progress && progress->Done >= progress->Goal;
    return isEnough && mDismissedDay != DayOf(now.GetTicks()) ? EnoughText(*progress) : wxString();
}

void StudyFrame::DismissDayMessage() {
    if (mStudyDay.GetPause() != nullptr && !mIsPauseDismissed) {
        mIsPauseDismissed = true;
    } else {
        mDismissedDay = DayOf(mServices.GetClock().Now().GetTicks());
    }
}

void StudyFrame::ShowMoreToday() {
    if (mpScheduler != nullptr && mpScheduler->HoldsNewCards()) {
        mpScheduler->GetCategories().ForEach([this](int32_t id) {
            mStudyDay.GrantMore(id);
            return true;
        });
        mpScheduler->ChooseAgain();
        mpCardViewer->ScrollToTop();
        TakeKeys();
    }
}
