#pragma once

#include <wx/panel.h>
#include <wx/string.h>

class wxButton;
class wxStaticText;

// The bar above the card that says that nothing is due: a message, a button that offers another
// category, and a button that dismisses the bar. Neither takes the focus, so the scoring keys keep
// working; the frame has a key for each. The buttons send wxEVT_BUTTON with ID_NEXT_DUE_CATEGORY
// and wxID_CLOSE. Owned by its parent, which lays it out.
class BreakBar : public wxPanel {
  public:
    explicit BreakBar(wxWindow* parent);

    // An empty offer hides the button.
    void SetTexts(const wxString& message, const wxString& offer);

    // Takes the present colours of the desktop's theme.
    void UseColours();

  private:
    void WrapMessage();

    wxString mMessage;
    int mWrapWidth = -1;
    wxStaticText* mpText = nullptr;
    wxButton* mpOffer = nullptr;
    wxWindow* mpDismiss = nullptr;
};
