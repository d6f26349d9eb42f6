#pragma once

#include <wx/panel.h>

class wxStaticText;

// Shows a card as the study window will, once its back is uncovered: in the font and the colours of
// the settings, the front above the back. Long texts are cut. Owned by its dialog.
class CardSample : public wxPanel {
  public:
    enum ControlId : int { ID_FRONT = 10098, ID_BACK = 10099 };

    explicit CardSample(wxWindow* parent);

    void SetTexts(const wxString& front, const wxString& back);

  private:
    wxStaticText* AddSide(int id);
    void WrapTexts();

    wxString mFront;
    wxString mBack;
    wxStaticText* mpFront = nullptr;
    wxStaticText* mpBack = nullptr;
    int mWrapWidth = -1;
};
