#pragma once

#include <wx/defs.h>
#include <wx/string.h>
#include <wx/textdlg.h>

class wxWindow;

// Shows a message box whose title is the caption on every platform; the library's own function
// leaves the title empty for some captions. Style and result are those of wxMessageBox.
int ShowMessageBox(const wxString& text, const wxString& caption, long style = wxOK | wxCENTRE,
                   wxWindow* parent = nullptr);

// Returns the line that ends a question about cards and says how many they are.
wxString AboutCards(int count);

// Shows the box of a validation message: caption "Message" and the button OK.
void ShowValidationMessage(const wxString& text);

// The library's dialog that asks for one line of text, with a field that has a name for screen
// readers and is high enough for any font.
class TextQuestion : public wxTextEntryDialog {
  public:
    TextQuestion(wxWindow* parent, const wxString& question, const wxString& caption,
                 const wxString& value = wxString());
};
