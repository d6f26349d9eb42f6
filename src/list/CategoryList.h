#pragma once

#include <wx/listctrl.h>

#include <cstdint>

#include "store/FlashCard.h"
#include "store/Subject.h"

class AppServices;
class Database;

// Every category with the number of cards that are ready in each direction. The focused row is the
// current category; here categories are chosen, renamed, merged and deleted. Follows the store and
// the settings by their notices. Main thread only.
class CategoryList : public wxListCtrl, private Observer {
  public:
    // The services are not owned and must outlive the control.
    CategoryList(AppServices& services, wxWindow* parent, wxWindowID id);
    ~CategoryList() override;

    // The store to show, not owned; null shows nothing new.
    void SetDatabase(Database* database);

    bool HasFocusedRow() const;
    // The focused row is that of a category.
    bool HasFocusedCategory() const;

    // All act on the focused row and ask first.
    void Rename();
    void DeleteFocused();
    void Paste();
    bool CanPaste() const;

    // A question or the menu of this control has the keys for the moment.
    bool IsAsking() const { return mAsking; }

  protected:
    wxSize DoGetBestClientSize() const override;

  private:
    void Update(Subject* subject) override;

    // Brings the rows up to date: 0, or -1 at the first failure, with the rows as far as they came.
    int RefreshRows();
    // The row's text with the counts as of a time: 0 or -1.
    int MakeRowText(const Category& category, const wxDateTime& now, wxString& text);
    int RenameOrMerge(const Category& category, const wxString& newName);
    int Merge(const Category& from, const Category& into);
    void DeleteCategoryOf(long row);
    int Ask(const wxString& text, const wxString& caption, long style = wxOK | wxCENTRE);
    void SelectRow(long row);
    void TellFocusedRow();
    long FocusedRow() const;
    int32_t CategoryOf(long row) const;
    void UseFont();

    void OnItemFocused(wxListEvent& event);
    void OnListKeyDown(wxListEvent& event);
    void OnContextMenu(wxContextMenuEvent& event);

    AppServices& mServices;
    Database* mpDatabase = nullptr;
    bool mAsking = false;
    // The control is moving the focus, and with it the selection.
    bool mFocusMoves = false;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
