#pragma once

#include <wx/defs.h>
#include <wx/string.h>

class wxDialog;
class wxScrolledWindow;
class wxSizer;
class wxWindow;

// Makes the OK and Cancel buttons of a dialog (wxID_OK, which Enter presses, and wxID_CANCEL), in
// the platform's usual order and distances. Add the row expanded, at the end of the dialog.
wxSizer* MakeOkCancel(wxDialog& dialog);

// Lets a form that is taller than its window follow the keyboard and the wheel: the focused control
// scrolls into view together with its label, and the wheel scrolls by lines of text wherever the
// mouse is. Call it once all controls stand in the form. The form must scroll by single pixels.
void LetFormScroll(wxScrolledWindow& form);

// The room around each field of the editor's form, in pixels, and the sides on which it is kept: a
// field stands close below its label.
constexpr int kFormBorder = 1;
constexpr int kFieldSides = wxLEFT | wxRIGHT | wxBOTTOM;

// Adds the label of an existing control to a column; the caller adds the control below it. The text
// may hold a mnemonic mark, and screen readers say the spoken name. The first label of a group
// keeps its distance above as well.
enum class LabelPlace { First, Later };
void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place);
