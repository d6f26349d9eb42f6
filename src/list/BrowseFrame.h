#pragma once

#include <wx/frame.h>

#include "store/Subject.h"

class AppServices;
class Database;
class wxButton;
class wxStaticText;

// The list window. So far it tells what the store holds and leads on to studying; the list of the
// cards takes this place. The application makes one when it is first needed and forgets it when it
// tells of its closing. Main thread only.
class BrowseFrame : public wxFrame, private Observer {
  public:
    // The services are not owned and must outlive the window.
    explicit BrowseFrame(AppServices& services);

    // The store to show, not owned; null for none.
    void SetDatabase(Database* database);

  private:
    void Update(Subject* subject) override;
    void BuildControls();
    void UseSettings();
    void ShowFigures();

    void OnActivate(wxActivateEvent& event);
    void OnClose(wxCloseEvent& event);
    void OnStudy(wxCommandEvent& event);

    AppServices& mServices;
    Database* mpDatabase = nullptr;
    wxStaticText* mpFigures = nullptr;
    wxButton* mpStudy = nullptr;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
