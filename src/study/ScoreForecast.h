#pragma once

#include <wx/window.h>

#include <array>

#include "study/StudyTexts.h"

class QuickScore;

// Says beside each score button when the card would come back: a column of texts that ends at the
// buttons, each in the row of its button. It only shows; the keys stay with the buttons. Owned by
// its parent, which must place it beside the buttons.
class ScoreForecast : public wxWindow {
  public:
    // The buttons must have the same parent and live as long.
    ScoreForecast(wxWindow* parent, const QuickScore& scores);

    // The texts by the position of their buttons. Empty ones leave the column empty.
    void SetTexts(const ScoreLabels& texts);
    const ScoreLabels& GetTexts() const { return mTexts; }

    bool AcceptsFocus() const override { return false; }

  protected:
    wxSize DoGetBestClientSize() const override;

  private:
    void OnPaint(wxPaintEvent& event);

    const QuickScore& mScores;
    ScoreLabels mTexts;
};
