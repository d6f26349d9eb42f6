#pragma once

#include <wx/dialog.h>

class wxStaticText;

// Asks whether the new score of a card in the history is to replace the recorded one. ShowModal
// returns wxYES for "Rescore" and wxNO for "Original Score"; closing it in another way returns
// neither, and counts as "Rescore".
class RescoreMessageBox : public wxDialog {
  public:
    RescoreMessageBox(wxWindow* parent, wxWindowID id, const wxString& title,
                      const wxPoint& position = wxDefaultPosition,
                      const wxSize& size = wxDefaultSize, long style = wxDEFAULT_DIALOG_STYLE);

  private:
    void CreateControls();

    wxStaticText* mpExplanationText = nullptr;
    wxStaticText* mpQuestionText = nullptr;
};
