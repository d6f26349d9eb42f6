#pragma once

#include <wx/dialog.h>

// Tells how to get the database engine that reads stores of version 1.0. Ends with wxOK when the
// person wants to try again, and with wxCANCEL otherwise, however it was left.
class SqlCeRequired : public wxDialog {
  public:
    SqlCeRequired(wxWindow* parent, const wxString& caption, const wxSize& size);
};
