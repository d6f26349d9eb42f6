#pragma once

#include <wx/panel.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "formats/Table.h"

class wxCheckBox;
class wxChoice;
class wxFlexGridSizer;
class wxScrolledWindow;

// The first rows of a table, with a choice above each column that says what becomes of it. The
// choices start as a survey of the file proposes them. Part of the import dialog; main thread only.
class TablePanel : public wxPanel {
  public:
    enum ControlId : int {
        ID_HAS_HEADER = 10401,
        ID_ROWS = 10402,
        ID_QUOTES_ARE_TEXT = 10403,
        // The choice above the first column; the others follow.
        ID_FIRST_USE = 10410
    };

    // The function is called after each change that the user makes.
    TablePanel(wxWindow* parent, std::function<void()> onChange);

    // Surveys a file, unless that was done with the same choices, and shows its rows.
    void Survey(const wxString& fileName, wxFontEncoding encoding, const std::wstring& separator);
    const TableSurvey& GetSurvey() const { return mSurvey; }
    // Returns the layout as the user has left it.
    const TableLayout& GetLayout() const { return mSurvey.Layout; }
    // Returns whether the user has chosen what becomes of a column, or whether the first row names
    // the columns.
    bool IsChanged() const { return mIsChanged; }
    // Keeps the uses of the columns in the settings, for the next table with the same headings, or
    // without headings and with as many columns.
    void RememberUses() const;

  private:
    void SurveyAgain();
    void TakeRememberedUses();
    void ShowRows();
    void AddColumnHead(size_t column, wxFlexGridSizer& grid);
    void ChooseUse(size_t column, int selection);
    wxString NameOfColumn(size_t column) const;

    std::function<void()> mOnChange;
    wxString mFileName;
    TableChoice mChoice;
    TableSurvey mSurvey;
    bool mIsChanged = false;

    wxCheckBox* mpHasHeader = nullptr;
    wxCheckBox* mpQuotesAreText = nullptr;
    wxScrolledWindow* mpRows = nullptr;
    std::vector<wxChoice*> mUses;
};
