#pragma once

#include <wx/textdlg.h>

// The toolkit's question for one line of text, with a field that is named for those who hear the
// screen and high enough for any font.
class TextQuestion : public wxTextEntryDialog {
  public:
    TextQuestion(wxWindow* parent, const wxString& question, const wxString& caption,
                 const wxString& value = wxString());
};
