#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

#include <functional>
#include <string>
#include <vector>

class wxButton;
class wxChoice;
class wxFlexGridSizer;
class wxStaticText;
class wxTextCtrl;
class wxWindow;

// The rows "Format" and "Delimiter" that the import and export dialogs share: a choice of the form
// of the text, a choice of what stands between the columns of a table, and a field for a delimiter
// that is not in the list. The delimiter's row is visible only while the text is a table. The
// dialog owns the controls and keeps this object, which outlives none of them. Main thread only.
class FormatRows {
  public:
    enum ControlId : int { kDelimiterId = 10001 };

    // What the two dialogs do not have in common.
    struct Setup {
        wxString FormatLabel;
        // The table must be the second format.
        wxArrayString Formats;
        wxString FormatHelp;
        wxString DelimiterLabel;
        // What the choice of delimiters offers after the field for a typed one: labels, and the
        // texts that they stand for.
        wxArrayString FurtherLabels = {};
        std::vector<std::wstring> FurtherDelimiters = {};

        int FormatId;
        int FormatHelpId;
        int DelimiterLabelId;
        int OtherId;
        int DelimiterHelpId;
    };

    // The delimiters that the list offers by name, in its order.
    static constexpr wchar_t kListed[] = {L'\t', L',', L' ', L';'};

    // Makes the controls and adds both rows to the grid, with everything visible, so that the
    // dialog can measure itself. The function is called after each change that the user makes, once
    // the right controls are visible; the dialog then lays itself out.
    FormatRows(wxWindow& dialog, wxFlexGridSizer& grid, const Setup& setup,
               std::function<void()> onChange);

    // Returns the index of the chosen format.
    int GetFormat() const;
    bool IsDelimited() const;
    // Chooses the table and a delimiter of the list. Does not call the function.
    void ChooseDelimited(wchar_t listed);
    // The same for any text between columns; one that the list lacks goes into the field.
    void ChooseSeparator(const std::wstring& separator);
    // Chooses the format of that index. Does not call the function.
    void ChooseFormat(int index);
    // Shows the delimiter's row for a table only, and its field only for a delimiter to be typed.
    void ShowDelimiter();

    // Returns the chosen delimiter, which counts only for a table: the first character of the field
    // when the user types one, and 0 while the field is empty.
    wchar_t GetDelimiter() const;
    // Returns the same as a text; a further delimiter may have several characters.
    std::wstring GetSeparator() const;
    // Returns what is wrong with the typed delimiter, or nothing. Empties a field that holds only a
    // line break, which nobody could see in it.
    wxString CheckDelimiter();
    // Selects the typed delimiter, to be typed again.
    void FocusTypedDelimiter();

  private:
    void AddFormat(wxFlexGridSizer& grid, const Setup& setup);
    void AddDelimiter(wxFlexGridSizer& grid, const Setup& setup);
    bool IsDelimiterTyped() const;

    wxWindow& mDialog;
    std::vector<std::wstring> mFurther;
    wxChoice* mpFormat = nullptr;
    wxStaticText* mpDelimiterLabel = nullptr;
    wxChoice* mpDelimiter = nullptr;
    wxTextCtrl* mpOther = nullptr;
    wxButton* mpDelimiterHelp = nullptr;
};
