#pragma once

#include <wx/arrstr.h>
#include <wx/defs.h>
#include <wx/string.h>

class wxBoxSizer;
class wxButton;
class wxChoice;
class wxDialog;
class wxFlexGridSizer;
class wxListCtrl;
class wxScrolledWindow;
class wxSize;
class wxSizer;
class wxSizerFlags;
class wxStaticText;
class wxWindow;

// Pieces that the forms of the program share, so that their rows look alike and each control has a
// name for screen readers. The window owns the controls and sizers made here. Main thread only.

// The distances that the desktop's guidelines ask for, in pixels at the usual resolution: between
// controls that belong together, and from the edge of a window to what stands in it. Groups of
// controls keep the edge's distance from each other, and controls below a title are indented by it.
constexpr int kFormGap = 6;
constexpr int kFormEdge = 12;

// Gives a window its sizer, with the distance to its edges, and returns the column inside.
wxBoxSizer* MakeFormColumn(wxWindow& window);

// Adds a group to the end of a column: a title in bold and below it the returned column, indented.
// The controls of the group belong to the form.
wxBoxSizer* AddFormGroup(wxSizer& column, wxWindow& form, const wxString& title);

// Returns the flags of a row in such a column: as wide as the column, and apart from the row above.
wxSizerFlags FormRow(const wxWindow& form);

// Makes the OK and Cancel buttons of a window (wxID_OK, which Enter presses, and wxID_CANCEL), in
// the platform's usual order. The row has no room around it. Add it expanded, at the end.
wxSizer* MakeOkCancel(wxWindow& window);

// Lets Return press the default button of a dialog wherever the focus is, but on another button.
// Lists, choices and radio buttons would take the key for themselves otherwise.
void LetReturnPressDefault(wxDialog& dialog);

// Lets a form that is taller than its window follow the keyboard and the wheel: the focused control
// scrolls into view together with its label, and the wheel scrolls by lines of text wherever the
// mouse is. A scroll bar is visible while the form is taller than its window. Call this once all
// controls stand in the form. The form must scroll by single pixels.
void LetFormScroll(wxScrolledWindow& form);

// Makes a dialog as large as the scrolled form in it wants to be, up to four fifths of the
// screen's height, and at least as large as the given size, in pixels inside the frame.
void FitDialogToForm(wxDialog& dialog, wxScrolledWindow& form, const wxSize& leastSize);

// Lets two columns of a list share the width that the other ones leave, whenever its size changes.
void LetColumnsFill(wxListCtrl& list, int one, int other);

// Makes a choice that starts on its first entry.
wxChoice* MakeChoice(wxWindow& parent, int id, const wxArrayString& entries);

// Makes a small button "?" that shows the text in a message box. The caption is the title of the
// box and what screen readers call the button.
wxButton* MakeHelpButton(wxWindow& parent, int id, const wxString& caption, const wxString& text);

// Makes the label of an existing control and leaves it to the caller to place. The text may hold a
// mnemonic mark, whose key gives the control the focus. Screen readers call the control by the
// spoken name, or by the text when that is empty.
wxStaticText* MakeFormLabel(const wxString& text, wxWindow& control,
                            const wxString& spokenName = wxString());

// A form with the labels beside the controls: a grid whose rows are a label, a control that takes
// the room there is, and a help button.
wxFlexGridSizer* MakeFormGrid(const wxWindow& form);

// Adds a row to such a grid and returns the label. The field is the sizer that holds the control
// together with others of its row, or null when the control stands alone.
wxStaticText* AddFormRow(wxFlexGridSizer& grid, const wxString& text, wxWindow& control,
                         wxButton& help, wxSizer* field = nullptr);

// For a form with the labels above the controls: the room around each field, in pixels, and its
// sides. A field stands close below its label.
constexpr int kFormBorder = 1;
constexpr int kFieldSides = wxLEFT | wxRIGHT | wxBOTTOM;

// Adds the label of a control to such a column; the caller adds the control below it. The first
// label of a group also keeps its distance above.
enum class LabelPlace { First, Later };
void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place);
