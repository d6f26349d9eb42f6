#pragma once

#include <wx/dialog.h>

class wxTextCtrl;

// What the person is asked when the store file cannot be opened. It ends with kTryAgain and a path,
// or with kGiveUp; closing it by the title bar or Esc is giving up.
class DatabaseOpenFailed : public wxDialog {
  public:
    enum Answer : int { kTryAgain = 4, kGiveUp = 16 };

    DatabaseOpenFailed(wxWindow* parent, const wxString& path, bool mustExist);

    wxString GetPath() const;
    bool MustExist() const { return mMustExist; }

  private:
    void OnRetry(wxCommandEvent& event);
    void OnOpen(wxCommandEvent& event);
    void OnNew(wxCommandEvent& event);
    void OnExit(wxCommandEvent& event);
    void OnClose(wxCloseEvent& event);

    wxTextCtrl* mpPath = nullptr;
    bool mMustExist;
};
