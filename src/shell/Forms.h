#pragma once

#include <wx/defs.h>
#include <wx/string.h>

class wxDialog;
class wxScrolledWindow;
class wxSizer;
class wxWindow;

// Makes the buttons wxID_OK, which Enter presses, and wxID_CANCEL of a dialog, in a row of the
// order and the distances that are usual on the platform. The row is to be expanded, at the end of
// the dialog.
wxSizer* MakeOkCancel(wxDialog& dialog);

// Lets a form that is higher than its window follow the keyboard and the wheel: whatever gets the
// focus comes into view together with its label, and the wheel scrolls the form by lines of text
// wherever in it the mouse is. Called once all controls stand in the form, which scrolls by single
// pixels.
void LetFormScroll(wxScrolledWindow& form);

// The room around each field of the editor's form, and the sides of a field on which it is kept: a
// field stands close below its label.
constexpr int kFormBorder = 1;
constexpr int kFieldSides = wxLEFT | wxRIGHT | wxBOTTOM;

// Adds the label of a control to a column, below which the control is to follow; the control is
// created already. The text may hold the mark of a mnemonic, readers of the screen say the spoken
// name. The first label of a group keeps its distance above too.
enum class LabelPlace { First, Later };
void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place);
