#pragma once

#include <wx/defs.h>
#include <wx/string.h>

class wxSizer;
class wxWindow;

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
