#pragma once

#include <wx/dialog.h>

// Version, maker and legal notice of the program.
class AboutDialog : public wxDialog {
  public:
    explicit AboutDialog(wxWindow* parent);

  private:
    void CreateControls();
};
