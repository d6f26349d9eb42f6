#include "app/MainWindows.h"

#include <wx/frame.h>
#include <wx/utils.h>

#include <algorithm>
#include <utility>

namespace {

// A window on the screen other than that frame, which is about to go.
bool IsAnyOtherShown(const wxFrame& frame) {
    return std::any_of(
        wxTopLevelWindows.begin(), wxTopLevelWindows.end(), [&frame](const wxWindow* window) {
            return window != &frame && window->IsShown() && !window->IsBeingDeleted();
        });
}

}  // namespace

MainWindows::MainWindows(Maker makeList, Maker makeStudy)
    : mList{std::move(makeList)}, mStudy{std::move(makeStudy)} {}

wxFrame& MainWindows::ShowList() {
    return Show(mList, mStudy);
}

wxFrame& MainWindows::ShowStudy() {
    return Show(mStudy, mList);
}

wxFrame& MainWindows::Show(Place& wanted, Place& other) {
    if (wanted.Frame == nullptr) {
        const wxBusyCursor busy;
        wanted.Frame = wanted.Make();
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
    if (!IsAnyOtherShown(frame)) {
        CloseHidden();
    }
}

void MainWindows::CloseHidden() {
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

void BringToFront(wxFrame& frame) {
    if (!frame.IsShown()) {
        return;
    }
    frame.Raise();
    if (frame.IsIconized()) {
        frame.Iconize(false);
    }
}
