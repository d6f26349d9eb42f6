#pragma once

#include <wx/defs.h>
#include <wx/string.h>

class wxWindow;

// A message box whose title is the caption on every platform; the toolkit's own function leaves the
// title empty for some captions. Style and result are those of wxMessageBox.
int ShowMessageBox(const wxString& text, const wxString& caption, long style = wxOK | wxCENTRE,
                   wxWindow* parent = nullptr);

// The box of a validation message: caption "Message" and the button OK.
void ShowValidationMessage(const wxString& text);
