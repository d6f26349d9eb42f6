#pragma once

#include <wx/panel.h>

#include <functional>
#include <memory>
#include <vector>

#include "decks/Deck.h"
#include "exchange/ImportJob.h"

class wxCheckBox;
class wxChoice;
class wxFlexGridSizer;
class wxScrolledWindow;
class wxTextCtrl;

// What the import dialog asks about a deck: how its categories are named, whether its schedules
// come along, and what each field of its kinds of notes becomes. Below stands what of the deck has
// no place here, before anything is written. Main thread only.
class DeckPanel : public wxPanel {
  public:
    // The function is called after each choice of the user.
    DeckPanel(wxWindow* parent, std::function<void()> onChange);

    // Unpacks the deck and reads it once. Returns what is wrong with it, or nothing.
    wxString Open(const wxString& path);
    // Makes readers with the present choices. They may outlive the panel.
    DeckReaderMaker GetReaderMaker() const;

  private:
    void MakeControls();
    void ShowFields();
    void ChooseRole(size_t field, int role);
    wxString Survey();
    DeckOptions GetOptions() const;
    void OnChoice();

    std::function<void()> mOnChange;
    std::shared_ptr<DeckFile> mFile;
    std::vector<DeckNoteType> mTypes;
    // Whether the user has changed a role of the type.
    std::vector<bool> mIsChosen;

    wxChoice* mpNames = nullptr;
    wxCheckBox* mpSchedules = nullptr;
    wxChoice* mpType = nullptr;
    wxScrolledWindow* mpFields = nullptr;
    wxFlexGridSizer* mpFieldGrid = nullptr;
    wxTextCtrl* mpSummary = nullptr;
};
