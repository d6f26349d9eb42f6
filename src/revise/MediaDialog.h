#pragma once

#include <wx/dialog.h>

#include "media/MediaFolder.h"

class Database;
class wxListCtrl;
class wxStaticText;

// Lists the pictures and sounds that no card names, and those that cards name and that are missing,
// and deletes the former after a question: they wait in the folder "unused" for a month. Main
// thread only.
class MediaDialog : public wxDialog {
  public:
    enum ControlId : int { kListId = 10160, kDeleteId = 10161, kSummaryId = 10162 };

    // The database is not owned.
    MediaDialog(wxWindow* parent, Database& database);

  private:
    void Look();
    void DeleteUnused();

    Database& mDatabase;
    const MediaFolder mFolder;
    MediaListing mListing;
    wxStaticText* mpSummary = nullptr;
    wxListCtrl* mpList = nullptr;
};
