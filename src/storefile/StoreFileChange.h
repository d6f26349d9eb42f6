#pragma once

#include <wx/string.h>

#include <functional>

class Database;
class wxWindow;

// What the application does for a change of the store file; tests do it without a window.
class StoreFileActions {
  public:
    virtual ~StoreFileActions() = default;

    virtual wxString GetDefaultStorePath() = 0;
    // Both take the path of a store, in whose directory the person begins, and give true and the
    // path that was chosen, or false with path unchanged.
    virtual bool ChooseToOpen(wxWindow* parent, wxString& path) = 0;
    virtual bool ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) = 0;
    // True when no editor has unsaved changes, or when they may be discarded; all editors are
    // closed then.
    virtual bool DiscardEdits(wxWindow* parent) = 0;
    // Opens that file, or another that the person names. The Database must be closed.
    virtual void OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                               bool mustExist) = 0;
};

// In the order in which the choice lists them.
enum class StoreFileChoice : int { kKeep, kMove, kCreate, kOpen };

// Carries out the choice on the open store, with its questions. The Database comes out of it open:
// on the new file, or on the old one when the change was refused or failed. The windows are told.
void ChangeStoreFile(StoreFileActions& actions, wxWindow* parent, Database& database,
                     StoreFileChoice choice, const wxString& currentPath, const wxString& newPath);

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
