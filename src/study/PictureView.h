#pragma once

#include <wx/string.h>
#include <wx/window.h>

#include <functional>
#include <vector>

class CardPictures;

// Shows the pictures of a card one at a time, each in the whole window. A click or a key goes to
// the next one, and after the last one back to the card; the arrows go both ways and Escape back at
// once. It knows pictures, but no cards.
class PictureView : public wxWindow {
  public:
    // The function is called when the card is wanted back.
    PictureView(wxWindow* parent, std::function<void()> leave);

    // The pictures are not owned and must stay while the view is shown.
    void SetPictures(CardPictures* pictures, const std::vector<wxString>& names, size_t first);
    const wxString& GetPicture() const { return mNames[mCurrent]; }
    // Shows the next or the previous one. Past the last one the card comes back.
    void Step(int way);

  private:
    void OnPaint(wxPaintEvent& event);
    void OnKey(wxKeyEvent& event);

    const std::function<void()> mLeave;
    CardPictures* mpPictures = nullptr;
    std::vector<wxString> mNames{wxString()};
    size_t mCurrent = 0;
};
