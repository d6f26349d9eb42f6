#pragma once

#include <functional>

#include "preferences/StoreFileChange.h"

// The file dialogs, the recovery dialog and the discard check behind a change of the store file.
class AppStoreFileActions : public StoreFileActions {
  public:
    using DiscardCheck = std::function<bool(wxWindow* parent)>;

    // The second function is told that the open store is another one from now on.
    AppStoreFileActions(DiscardCheck discardEdits, std::function<void()> storeChanged);

    wxString GetDefaultStorePath() override;
    bool ChooseToOpen(wxWindow* parent, wxString& path) override;
    bool ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) override;
    bool DiscardEdits(wxWindow* parent) override { return mDiscardEdits(parent); }
    void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                       bool mustExist) override;

  private:
    DiscardCheck mDiscardEdits;
    std::function<void()> mStoreChanged;
};
