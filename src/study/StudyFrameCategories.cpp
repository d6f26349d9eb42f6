#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>

#include "base/Text.h"
#include "categories/CategoryList.h"
#include "categories/CurrentCategory.h"
#include "categories/DropDown.h"
#include "shell/AppServices.h"
#include "study/CardViewer.h"
#include "study/StudyFrame.h"
#include "study/StudyPanels.h"
#include "study/StudyTexts.h"

// How the study window tells of the end of the day, and goes from one category to another without
// the list.
//
// A break begins when nothing of the category is due and ends when the next card falls due. Cards
// shown meanwhile are early review, which the bar says. A card failed in it is due at once, but the
// break goes on: a dismissed bar stays away until the time that it told.

namespace {

constexpr int kCategoryListId = 11001;

}  // namespace

void StudyFrame::UpdateCategoryText() {
    const wxString name = GetCategoryName(*mpDatabase, mpScheduler->GetCategoryId());
    mpStatusBar->SetStatusText(StudyCategoryText(name, mpScheduler->GetNewCount()), kCategoryField);
}

bool StudyFrame::IsBreakDismissed() const {
    return mDismissedBreak.End.IsValid() &&
           mDismissedBreak.CategoryId == mpScheduler->GetCategoryId() &&
           mDismissedBreak.IsReverse == mReverseStudy &&
           mServices.GetClock().Now() < mDismissedBreak.End;
}

void StudyFrame::UpdateBreakBar() {
    wxString message;
    if (HasCard() && mpScheduler->IsBreakTime() && !IsBreakDismissed()) {
        // While the message of a store that failed is on the screen, the store tells no time.
        message = BreakMessage(mpScheduler->GetNextDueTime(), mServices.GetClock().Now());
    }
    const bool isBreak = !message.empty();
    if (!isBreak && HasCard()) {
        message = DayMessage();
    }
    const bool shows = !message.empty();
    if (shows && !isBreak) {
        mOffer.clear();
        mIsOfferStale = true;
        mpBreakBar->SetTexts(message, mOffer, false);
    }
    if (isBreak) {
        // The categories are counted once for a bar, and not again at each score.
        if (!mpBreakBar->IsShown() || mIsOfferStale) {
            const std::vector<CategoryReady> categories = mpScheduler->CountCategories();
            mOffer = OfferText(FindNextDue(categories, mpScheduler->GetCategoryId()));
            mIsOfferStale = false;
        }
        mpBreakBar->SetTexts(message, mOffer, mpScheduler->HoldsNewCards());
    }
    if (mpBreakBar->IsShown() != shows) {
        GetSizer()->Show(mpBreakBar, shows);
        Layout();
    }
}

void StudyFrame::DismissBreak() {
    if (!mpScheduler->IsBreakTime() || IsBreakDismissed()) {
        DismissDayMessage();
        UpdateBreakBar();
        TakeKeys();
        return;
    }
    mDismissedBreak = {mpScheduler->GetCategoryId(), mReverseStudy, mpScheduler->GetNextDueTime()};
    UpdateBreakBar();
    TakeKeys();
}

void StudyFrame::OnCharHook(wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE && !event.HasAnyModifiers() && mpBreakBar->IsShown() &&
        !IsChoosingCategory()) {
        DismissBreak();
    } else {
        event.Skip();
    }
}

void StudyFrame::GoToNextDue() {
    if (mpScheduler == nullptr) {
        return;
    }
    const std::vector<CategoryReady> categories = mpScheduler->CountCategories();
    const CategoryReady* const next = FindNextDue(categories, mpScheduler->GetCategoryId());
    if (next == nullptr) {
        mpStatusBar->SetStatusText(_("Nothing else to study now"), kStepField);
        return;
    }
    mpScheduler->SetHistoryIndex(-1);
    mServices.SetCurrentCategoryId(*mpDatabase, next->Info.Id);
    mpDatabase->Notify();
    mpCardViewer->ScrollToTop();
    // Translators: %s is the name of a category in which nothing is due.
    const wxString format = next->Ready > 0 ? _("Category: %s") : _("New cards: %s");
    mpStatusBar->SetStatusText(wxString::Format(format, ShownName(next->Info.Name)), kStepField);
    TakeKeys();
}

bool StudyFrame::IsChoosingCategory() const {
    return mpCategories != nullptr && mpCategories->IsShown();
}

void StudyFrame::CreateCategories() {
    mpCategories = new wxDropDownWindow(this, nullptr);
    mpCategoryList = new CategoryList(mServices, mpCategories, kCategoryListId);
    mpCategories->SetContent(mpCategoryList);
    mpCategories->StayOpenWhile([this] { return mpCategoryList->IsAsking(); });
    mpCategoryList->Bind(wxEVT_LIST_ITEM_ACTIVATED,
                         [this](wxListEvent&) { mpCategories->Dismiss(); });
    mpCategories->Bind(wxEVT_SHOW, [this](wxShowEvent& event) {
        event.Skip();
        if (!event.IsShown()) {
            // The window that had the keys before may have gone with its card.
            CallAfter([this] { TakeKeys(); });
        }
    });
}

void StudyFrame::ChooseCategory() {
    if (IsChoosingCategory()) {
        mpCategories->Dismiss();
        return;
    }
    if (mpScheduler == nullptr) {
        return;
    }
    if (mpCategories == nullptr) {
        CreateCategories();
    }
    mpScheduler->SetHistoryIndex(-1);
    // The list counts again when it is given the store again.
    mpCategoryList->SetDatabase(nullptr);
    mpCategoryList->SetDatabase(mpDatabase);
    mpCategories->Popup();
}
