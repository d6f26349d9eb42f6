#pragma once

#include <wx/string.h>

class wxButton;
class wxChoice;
class wxScrolledWindow;
class wxSizer;
class wxTextCtrl;

// The group of the options for study on several computers: the folder through which the open store
// is exchanged, the name of this computer, and the other computers. The controls belong to the
// form.
class ExchangeGroup {
  public:
    enum ControlId : int {
        kFolderId = 10240,
        kBrowseId = 10241,
        kNameId = 10242,
        kOthersId = 10243,
        kLeaveId = 10244
    };

    // Adds the group to the end of a column of the form.
    ExchangeGroup(wxScrolledWindow& form, wxSizer& column);

    // Shows what that store has.
    void Load(const wxString& storePath);
    // Returns an empty text, or why the folder cannot be used for a store at that path.
    wxString FindProblem(const wxString& storePath) const;
    void Store() const;
    // Lets the user type the folder.
    void TurnToFolder();

  private:
    void Browse();
    void Leave();
    wxString GetFolder() const;

    wxScrolledWindow& mForm;
    wxString mStorePath;
    // True once the user has left; takes effect with Store.
    bool mHasLeft = false;
    wxTextCtrl* mpFolder = nullptr;
    wxTextCtrl* mpName = nullptr;
    wxChoice* mpOthers = nullptr;
    wxButton* mpLeave = nullptr;
};
