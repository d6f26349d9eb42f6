#pragma once

#include <wx/defs.h>
#include <wx/string.h>
#include <wx/textdlg.h>

class wxWindow;

// A message box whose title is the caption on every platform; the toolkit's own function leaves the
// title empty for some captions. Style and result are those of wxMessageBox.
int ShowMessageBox(const wxString& text, const wxString& caption, long style = wxOK | wxCENTRE,
                   wxWindow* parent = nullptr);

// The box of a validation message: caption "Message" and the button OK.
void ShowValidationMessage(const wxString& text);

// The toolkit's question for one line of text, with a field that is named for those who hear the
// screen and high enough for any font.
class TextQuestion : public wxTextEntryDialog {
  public:
    TextQuestion(wxWindow* parent, const wxString& question, const wxString& caption,
                 const wxString& value = wxString());
};
