#include "shell/Forms.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/display.h>
#include <wx/intl.h>
#include <wx/listctrl.h>
#include <wx/scrolwin.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "shell/MessageBox.h"
#include "shell/Toolkit.h"

wxBoxSizer* MakeFormColumn(wxWindow& window) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    auto* const margin = new wxBoxSizer(wxVERTICAL);
    margin->Add(column, wxSizerFlags(1).Expand().Border(wxALL, window.FromDIP(kFormEdge)));
    window.SetSizer(margin);
    return column;
}

wxBoxSizer* AddFormGroup(wxSizer& column, wxWindow& form, const wxString& title) {
    auto* const heading = new wxStaticText(&form, wxID_STATIC, title);
    heading->SetFont(heading->GetFont().Bold());
    if (!column.IsEmpty()) {
        column.AddSpacer(form.FromDIP(kFormEdge));
    }
    column.Add(heading);
    auto* const group = new wxBoxSizer(wxVERTICAL);
    column.Add(group, wxSizerFlags().Expand().Border(wxLEFT, form.FromDIP(kFormEdge)));
    return group;
}

wxSizerFlags FormRow(const wxWindow& form) {
    return wxSizerFlags().Expand().Border(wxTOP, form.FromDIP(kFormGap));
}

wxSizer* MakeOkCancel(wxWindow& window) {
    auto* const row = new wxStdDialogButtonSizer();
    auto* const ok = new wxButton(&window, wxID_OK, _("&OK"));
    row->AddButton(ok);
    row->AddButton(new wxButton(&window, wxID_CANCEL, _("&Cancel")));
    row->Realize();
    // The library's own distances differ from those of the guidelines, and some are around the row.
    for (wxSizerItem* const item : row->GetChildren()) {
        if (item->IsSpacer()) {
            item->AssignSpacer(0, 0);
        } else {
            item->SetFlag(int{wxALIGN_CENTRE_VERTICAL} | int{wxLEFT});
            item->SetBorder(window.FromDIP(kFormGap));
        }
    }
    ok->SetDefault();
    return row;
}

void LetReturnPressDefault(wxDialog& dialog) {
    dialog.Bind(wxEVT_CHAR_HOOK, [&dialog](wxKeyEvent& event) {
        const int key = event.GetKeyCode();
        const bool isReturn = key == WXK_RETURN || key == WXK_NUMPAD_ENTER;
        auto* const button = dynamic_cast<wxButton*>(dialog.GetDefaultItem());
        if (!isReturn || event.HasAnyModifiers() || button == nullptr || !button->IsEnabled() ||
            dynamic_cast<wxButton*>(wxWindow::FindFocus()) != nullptr) {
            event.Skip();
            return;
        }
        wxCommandEvent press(wxEVT_BUTTON, button->GetId());
        press.SetEventObject(button);
        // Later, as the press may end the dialog in the midst of the key's event.
        wxPostEvent(button->GetEventHandler(), press);
    });
}

namespace {

// Lines of text that stay visible above and below the focused control.
constexpr int kLinesAround = 2;

void ScrollBy(wxScrolledWindow& form, int pixels) {
    form.Scroll(wxDefaultCoord, std::max(0, form.GetViewStart().y + pixels));
}

void ShowPlace(wxScrolledWindow& form, const wxRect& place) {
    const wxRect wanted = wxRect(place).Inflate(0, kLinesAround * form.GetCharHeight());
    const int below = wanted.GetBottom() - form.GetClientSize().y;
    if (wanted.y < 0) {
        ScrollBy(form, wanted.y);
    } else if (below > 0) {
        ScrollBy(form, std::min(below, wanted.y));
    }
}

// Gives the wheel to a long text under the mouse, else to the form. Left alone, choices and number
// fields would change their values when the user only wants to scroll.
void OnWheel(wxScrolledWindow& form, wxMouseEvent& event) {
    const auto* const text = dynamic_cast<const wxTextCtrl*>(event.GetEventObject());
    const bool isLongText = text != nullptr && text->IsMultiLine() &&
                            text->GetScrollRange(wxVERTICAL) > text->GetScrollThumb(wxVERTICAL);
    if (isLongText || event.GetWheelAxis() != wxMOUSE_WHEEL_VERTICAL ||
        event.GetWheelDelta() == 0) {
        event.Skip();
        return;
    }
    ScrollBy(form, -event.GetWheelRotation() * event.GetLinesPerAction() * form.GetCharHeight() /
                       event.GetWheelDelta());
}

void BindWheel(wxScrolledWindow& form, wxWindow& window) {
    window.Bind(wxEVT_MOUSEWHEEL, [&form](wxMouseEvent& event) { OnWheel(form, event); });
    for (wxWindow* const child : window.GetChildren()) {
        BindWheel(form, *child);
    }
}

}  // namespace

void LetFormScroll(wxScrolledWindow& form) {
    KeepScrollBarVisible(form);
    BindWheel(form, form);
    form.Bind(wxEVT_IDLE,
              [&form, last = static_cast<const void*>(nullptr)](wxIdleEvent& event) mutable {
                  event.Skip();
                  wxRect place;
                  const void* const focus = FindFocusInside(form, place);
                  // Only a change of focus scrolls; otherwise the form would jump back to the
                  // focus whenever the user scrolls away from it.
                  if (focus != last) {
                      last = focus;
                      if (focus != nullptr) {
                          ShowPlace(form, place);
                      }
                  }
              });
}

namespace {

// Returns the size of the screen that a window is on, without panels.
wxSize ScreenSize(const wxWindow& window) {
    const int index = wxDisplay::GetFromWindow(&window);
    return wxDisplay(static_cast<unsigned>(std::max(index, 0))).GetClientArea().GetSize();
}

}  // namespace

void FitDialogToForm(wxDialog& dialog, wxScrolledWindow& form, const wxSize& leastSize) {
    const wxWindow* const parent = dialog.GetParent();
    const wxSize screen = ScreenSize(parent == nullptr ? dialog : *parent);
    form.FitInside();
    // A scrolled window asks for no room by itself.
    form.SetMinSize(form.GetSizer()->CalcMin());
    wxSize wanted = dialog.GetSizer()->CalcMin();
    wanted.IncTo(leastSize);
    form.SetMinSize(wxDefaultSize);
    const int tallest = screen.y * 4 / 5;
    if (wanted.y > tallest) {
        wanted.y = tallest;
        wanted.x += std::max(wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, &dialog), 0);
    }
    dialog.SetClientSize(std::min(wanted.x, screen.x), wanted.y);
    dialog.Layout();
}

void LetColumnsFill(wxListCtrl& list, int one, int other) {
    wxWindow& rows = GetRowsWindow(list);
    rows.Bind(wxEVT_SIZE, [&list, &rows, one, other](wxSizeEvent& event) {
        event.Skip();
        int width = rows.GetClientSize().x;
        for (int column = 0; column < list.GetColumnCount(); ++column) {
            width -= column == one || column == other ? 0 : list.GetColumnWidth(column);
        }
        const int least = list.FromDIP(80);
        list.SetColumnWidth(one, std::max(width / 2, least));
        list.SetColumnWidth(other, std::max(width - width / 2, least));
    });
}

wxChoice* MakeChoice(wxWindow& parent, int id, const wxArrayString& entries) {
    auto* const choice = new wxChoice(&parent, id, wxDefaultPosition, wxDefaultSize, entries);
    choice->SetSelection(0);
    return choice;
}

wxButton* MakeHelpButton(wxWindow& parent, int id, const wxString& caption, const wxString& text) {
    auto* const button =
        new wxButton(&parent, id, "?", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT);
    SetAccessibleName(*button, caption);
    button->Bind(wxEVT_BUTTON, [&parent, caption, text](wxCommandEvent&) {
        ShowMessageBox(text, caption, wxOK | wxCENTRE, &parent);
    });
    return button;
}

wxStaticText* MakeFormLabel(const wxString& text, wxWindow& control, const wxString& spokenName) {
    auto* const label = new wxStaticText(control.GetParent(), wxID_STATIC, text);
    // The key that the label underlines gives the focus to the control after it.
    label->MoveBeforeInTabOrder(&control);
    SetAccessibleName(control, spokenName.empty() ? label->GetLabelText() : spokenName);
    return label;
}

wxFlexGridSizer* MakeFormGrid(const wxWindow& form) {
    auto* const grid = new wxFlexGridSizer(3, form.FromDIP(wxSize(kFormGap, kFormGap)));
    grid->AddGrowableCol(1, 1);
    return grid;
}

wxStaticText* AddFormRow(wxFlexGridSizer& grid, const wxString& text, wxWindow& control,
                         wxButton& help, wxSizer* field) {
    wxStaticText* const label = MakeFormLabel(text, control);
    const wxSizerFlags middle = wxSizerFlags().CentreVertical();
    grid.Add(label, middle);
    if (field != nullptr) {
        grid.Add(field, wxSizerFlags().Expand());
    } else {
        grid.Add(&control, wxSizerFlags().Expand());
    }
    grid.Add(&help, middle);
    return label;
}

void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place) {
    const int sides = place == LabelPlace::First ? int{wxALL} : kFieldSides;
    column.Add(MakeFormLabel(text, control, spokenName), wxSizerFlags().Border(sides, kFormBorder));
}
