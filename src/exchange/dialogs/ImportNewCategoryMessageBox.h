#pragma once

#include <wx/dialog.h>

// Asks whether a category that a file names may be created. Ends with wxID_YES or wxID_CANCEL.
class ImportNewCategoryMessageBox : public wxDialog {
  public:
    ImportNewCategoryMessageBox(wxWindow* parent, const wxString& categoryName);

    // The answer holds for every further category of the file.
    bool IsYesToAll() const { return mYesToAll; }

  private:
    bool mYesToAll = false;
};
