#include "app/MainWindows.h"

#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/utils.h>

#include <algorithm>
#include <list>
#include <utility>

#include "edit/EditFrame.h"
#include "shell/MessageBox.h"
#include "shell/WindowPlace.h"
#include "store/Database.h"

namespace {

// Returns true when a window will be left on the screen once that frame is gone.
bool IsAnyOtherShown(const wxFrame& frame) {
    return std::any_of(
        wxTopLevelWindows.begin(), wxTopLevelWindows.end(), [&frame](const wxWindow* window) {
            return window != &frame && window->IsShown() && !window->IsBeingDeleted();
        });
}

}  // namespace

MainWindows::MainWindows(Maker makeList, Maker makeStudy)
    : mList{std::move(makeList)}, mStudy{std::move(makeStudy)} {}

wxFrame& MainWindows::Show(Place& wanted, Place& other) {
    if (wanted.Frame == nullptr) {
        const wxBusyCursor busy;
        wanted.Frame = wanted.Make();
    }
    if (other.Frame != nullptr) {
        TakeTurnOf(*other.Frame, *wanted.Frame);
    }
    wanted.Frame->Show();
    if (other.Frame != nullptr) {
        other.Frame->Hide();
    }
    return *wanted.Frame;
}

wxFrame* MainWindows::GetShown() const {
    for (wxFrame* const frame : {mList.Frame, mStudy.Frame}) {
        if (frame != nullptr && frame->IsShown()) {
            return frame;
        }
    }
    return nullptr;
}

void MainWindows::Forget(wxFrame& frame) {
    for (Place* const place : {&mList, &mStudy}) {
        if (place->Frame == &frame) {
            place->Frame = nullptr;
        }
    }
    if (IsAnyOtherShown(frame)) {
        return;
    }
    for (Place* const place : {&mList, &mStudy}) {
        if (place->Frame != nullptr && !place->Frame->IsShown()) {
            place->Frame->Close();
        }
    }
}

void MainWindows::CloseAll() {
    for (Place* const place : {&mList, &mStudy}) {
        if (place->Frame != nullptr) {
            place->Frame->Close();
        }
    }
}

void BringToFront(wxTopLevelWindow& window) {
    if (!window.IsShown()) {
        return;
    }
    window.Raise();
    if (window.IsIconized()) {
        window.Iconize(false);
    }
}

EditFrame& Editors::Make(Database& database) {
    auto* const frame = new EditFrame(mServices);
    frame->SetDatabase(&database);
    mFrames.push_back(frame);
    return *frame;
}

void Editors::OpenNew(Database& database) {
    const wxBusyCursor busy;
    EditFrame& frame = Make(database);
    frame.New();
    frame.Show();
    BringToFront(frame);
}

void Editors::Open(const FlashCard& card, Database& database) {
    if (Raise(card.CardId)) {
        return;
    }
    const wxBusyCursor busy;
    std::list<FlashCard> stored;
    if (database.SelectCardById(card.CardId, stored) < 0 || stored.empty()) {
        return;
    }
    EditFrame& frame = Make(database);
    frame.SetCard(stored.front());
    frame.Show();
    BringToFront(frame);
}

void Editors::OpenMany(const std::vector<int64_t>& rowIds, Database& database) {
    const auto open = std::find_if(mFrames.begin(), mFrames.end(),
                                   [&](const EditFrame* frame) { return frame->HasCards(rowIds); });
    if (open != mFrames.end()) {
        BringToFront(**open);
        return;
    }
    const wxBusyCursor busy;
    EditFrame& frame = Make(database);
    frame.SetCards(rowIds);
    frame.Show();
    BringToFront(frame);
}

// An editor may have gone on to another card since it was opened, so each is asked.
bool Editors::Raise(const CardUuid& id) {
    const auto open = std::find_if(mFrames.begin(), mFrames.end(), [&id](const EditFrame* frame) {
        return frame->GetCardId() == id;
    });
    if (open != mFrames.end()) {
        BringToFront(**open);
    }
    return open != mFrames.end();
}

bool Editors::Forget(const wxFrame& frame) {
    const auto found = std::find(mFrames.begin(), mFrames.end(), &frame);
    if (found == mFrames.end()) {
        return false;
    }
    mFrames.erase(found);
    return true;
}

bool Editors::CloseAll() {
    const std::vector<EditFrame*> frames = mFrames;
    return std::all_of(frames.begin(), frames.end(), [](EditFrame* frame) {
        if (frame->IsModified()) {
            // The user should see the card that the question is about.
            BringToFront(*frame);
        }
        return frame->Close(false);
    });
}

void Editors::KeepUnsaved() {
    for (EditFrame* const frame : mFrames) {
        frame->StayIfGone();
    }
}

bool Editors::DiscardAll(wxWindow* parent) {
    const auto modified = std::count_if(mFrames.begin(), mFrames.end(),
                                        [](const EditFrame* frame) { return frame->IsModified(); });
    if (modified > 0) {
        const wxString question =
            modified == 1
                ? _("You have modified a flash card but it hasn't been saved yet.  Changing flash"
                    " card store files now will discard those changes.  Do you want to continue?")
                : _("You have modified flash cards that haven't been saved yet.  Changing flash"
                    " card store files now will discard those changes.  Do you want to continue?");
        if (ShowMessageBox(question, _("Discard changes?"), wxYES_NO, parent) != wxYES) {
            return false;
        }
    }
    const std::vector<EditFrame*> frames = mFrames;
    for (EditFrame* const frame : frames) {
        frame->Close(true);
    }
    return true;
}
