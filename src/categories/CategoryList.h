#pragma once

#include <wx/listctrl.h>

#include <cstdint>
#include <vector>

#include "store/CategoryTree.h"
#include "store/Subject.h"

class AppServices;
class Database;

// Lists every category, indented below those that its name puts it under, with the number of cards
// that are ready in each direction. The focused row is the current category; here the user chooses,
// renames, merges and deletes categories. Refreshes itself when the store or the settings notify.
// Main thread only.
class CategoryList : public wxListCtrl, private Observer {
  public:
    // The services are not owned and must outlive the control.
    CategoryList(AppServices& services, wxWindow* parent, wxWindowID id);
    ~CategoryList() override;

    // Shows that store, which is not owned. Null leaves the rows as they are.
    void SetDatabase(Database* database);

    bool HasFocusedRow() const { return FocusedRow() >= 0; }
    // Returns true when a row is focused and stands for a category.
    bool HasFocusedCategory() const;

    // These act on the focused row. Rename and delete ask the user first.
    void Rename();
    void DeleteFocused();
    void Paste();
    bool CanPaste() const;

    // Returns true while a question or the menu of this control is open and has the keys.
    bool IsAsking() const { return mAsking; }

  protected:
    wxSize DoGetBestClientSize() const override;

  private:
    void Update(Subject* subject) override;

    // Brings the rows up to date. Stops at the first failure, which the store reports.
    void RefreshRows();
    // Gives each category its row, in that order, and deletes the rows of others.
    void ArrangeRows(const std::vector<CategoryPlace>& places);
    // Makes a row's text with the counts as of that time. Returns 0 or -1.
    int MakeRowText(const CategoryPlace& place, const wxDateTime& now, wxString& text);
    void RenameOrMerge(const Category& category, const wxString& newName);
    void RenameOnly(const Category& category, const wxString& newName);
    void Merge(const Category& from, const Category& into);
    void DeleteCategoryOf(long row);
    int Ask(const wxString& text, const wxString& caption, long style = wxOK | wxCENTRE);
    void FillWidth();
    void SelectRow(long row);
    void TellFocusedRow();
    long FocusedRow() const { return GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED); }
    int32_t CategoryOf(long row) const { return static_cast<int32_t>(GetItemData(row)); }
    void UseFont();

    void OnItemFocused(wxListEvent& event);
    void OnListKeyDown(wxListEvent& event);
    void OnChar(wxKeyEvent& event);
    void OnContextMenu(wxContextMenuEvent& event);

    AppServices& mServices;
    Database* mpDatabase = nullptr;
    bool mAsking = false;
    // The room that the widest row needs, in pixels.
    int mRowWidth = 0;
    // What was typed to find a name, and when its last letter was typed.
    wxString mTyped;
    wxLongLong mTypedAt;
    // True while the control moves the focus, and the selection after it.
    bool mFocusMoves = false;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
