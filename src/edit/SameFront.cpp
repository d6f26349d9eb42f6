#include "edit/SameFront.h"

#include <wx/hyperlink.h>
#include <wx/intl.h>
#include <wx/textctrl.h>

#include <functional>
#include <list>

#include "base/Job.h"
#include "base/Text.h"
#include "exchange/Duplicates.h"
#include "media/MediaLines.h"
#include "shell/AppServices.h"
#include "store/Database.h"

// One search. The worker writes the card, and the main thread reads it once it has ended.
struct SameFrontSearch {
    SameFrontSearch(Database& database, const wxString& front, const CardUuid& except,
                    std::function<void()> atEnd)
        : Reading(
              [this, &database, front, except](const std::atomic<bool>& isCancelled) {
                  IsFound = FindCardWithFront(database, front, except, isCancelled, Found);
              },
              std::move(atEnd)) {}

    bool IsFound = false;
    FlashCard Found;
    Job Reading;
};

namespace {

constexpr int kPause = 500;

}  // namespace

SameFront::SameFront(AppServices& services, wxTextCtrl& front, wxHyperlinkCtrl& link)
    : mServices(services), mFront(front), mLink(link) {
    mFront.Bind(wxEVT_TEXT, [this](wxCommandEvent& event) {
        event.Skip();
        mPause.StartOnce(kPause);
    });
    mPause.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { Search(); });
    mLink.Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) {
        std::list<FlashCard> cards;
        // The card as it is now. The store itself reports a failure.
        if (mpDatabase != nullptr && mpDatabase->SelectCardById(mFound.CardId, cards) >= 0 &&
            !cards.empty()) {
            mServices.OpenEditor(cards.front());
        }
    });
}

SameFront::~SameFront() {
    mpSearch.reset();
}

void SameFront::Watch(Database* database, const CardUuid& except) {
    mPause.Stop();
    mpSearch.reset();
    mpDatabase = database;
    mExcept = except;
    Show(wxString());
}

void SameFront::Search() {
    mpSearch.reset();
    const wxString front = TrimWide(mFront.GetValue());
    if (mpDatabase == nullptr || front.empty()) {
        Show(wxString());
        return;
    }
    mpSearch = std::make_unique<SameFrontSearch>(*mpDatabase, front, mExcept,
                                                 [this] { CallAfter(&SameFront::ShowFound); });
    // Without a thread nothing is said.
    mpSearch->Reading.Start();
}

void SameFront::ShowFound() {
    // A notice may come late, when another search runs already.
    if (mpSearch == nullptr || !mpSearch->Reading.IsFinished()) {
        return;
    }
    mpSearch->Reading.Join();
    const bool isFound = mpSearch->IsFound && mpSearch->Reading.TakeFailure().empty();
    mFound = mpSearch->Found;
    mpSearch.reset();
    Show(isFound ? wxString::Format(_("There is a card \"%s\" already"),
                                    ShownName(WithNamedMediaMarks(mFound.Front)))
                 : wxString());
}

void SameFront::Show(const wxString& text) {
    if (mLink.IsShown() == text.empty() || (!text.empty() && mLink.GetLabel() != text)) {
        mLink.SetLabel(text.empty() ? wxString(" ") : text);
        mLink.Show(!text.empty());
        mLink.GetParent()->Layout();
        mLink.GetParent()->FitInside();
    }
}
