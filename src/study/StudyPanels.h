#pragma once

#include <wx/panel.h>
#include <wx/string.h>

class wxButton;
class wxStaticText;

// The bar above the card that says that nothing is due, or that it is enough for today: a message,
// a button that offers another category, one that offers more new cards, and one that dismisses the
// bar. None takes the focus, so the scoring keys keep working; the frame has a key or a menu entry
// for each. The buttons send wxEVT_BUTTON with ID_NEXT_DUE_CATEGORY, ID_SHOW_MORE_TODAY and
// wxID_CLOSE. Owned by its parent, which lays it out.
class BreakBar : public wxPanel {
  public:
    explicit BreakBar(wxWindow* parent);

    // An empty offer hides its button.
    void SetTexts(const wxString& message, const wxString& offer, bool offersMore);

    // Takes the present colours of the desktop's theme.
    void UseColours();

  private:
    void WrapMessage();

    wxString mMessage;
    int mWrapWidth = -1;
    wxStaticText* mpText = nullptr;
    wxButton* mpOffer = nullptr;
    wxButton* mpMore = nullptr;
    wxWindow* mpDismiss = nullptr;
};
