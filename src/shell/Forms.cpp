#include "shell/Forms.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "shell/Toolkit.h"

wxSizer* MakeOkCancel(wxDialog& dialog) {
    auto* const row = new wxStdDialogButtonSizer();
    auto* const ok = new wxButton(&dialog, wxID_OK, _("&OK"));
    row->AddButton(ok);
    row->AddButton(new wxButton(&dialog, wxID_CANCEL, _("&Cancel")));
    row->Realize();
    ok->SetDefault();
    return row;
}

namespace {

// Lines of text above and below what has the focus that are shown with it.
constexpr int kLinesAround = 2;

// What has the focus, of which nothing but its identity is used; null when it is not in the form.
// Gives its place in the window of the form as well.
#ifdef __WXGTK__

// Asked of the platform: parts of a control, such as the button of a choice, get the focus with
// nobody told.
const void* FindFocus(const wxScrolledWindow& form, wxRect& place) {
    static const auto getTop = FindToolkitFunction<void* (*)(void*)>("gtk_widget_get_toplevel");
    static const auto getFocus = FindToolkitFunction<void* (*)(void*)>("gtk_window_get_focus");
    static const auto isInside =
        FindToolkitFunction<int (*)(void*, void*)>("gtk_widget_is_ancestor");
    static const auto translate = FindToolkitFunction<int (*)(void*, void*, int, int, int*, int*)>(
        "gtk_widget_translate_coordinates");
    static const auto getWidth =
        FindToolkitFunction<int (*)(void*)>("gtk_widget_get_allocated_width");
    static const auto getHeight =
        FindToolkitFunction<int (*)(void*)>("gtk_widget_get_allocated_height");
    if (getTop == nullptr || getFocus == nullptr || isInside == nullptr || translate == nullptr ||
        getWidth == nullptr || getHeight == nullptr) {
        return nullptr;
    }
    void* const inside = form.m_wxwindow;
    void* const focus = getFocus(getTop(inside));
    if (focus == nullptr || isInside(focus, inside) == 0 ||
        translate(focus, inside, 0, 0, &place.x, &place.y) == 0) {
        return nullptr;
    }
    place.SetSize(wxSize(getWidth(focus), getHeight(focus)));
    return focus;
}

#else

const void* FindFocus(const wxScrolledWindow& form, wxRect& place) {
    const wxWindow* const focus = wxWindow::FindFocus();
    if (focus == nullptr || focus == &form || !form.IsDescendant(focus)) {
        return nullptr;
    }
    place = wxRect(form.ScreenToClient(focus->GetScreenPosition()), focus->GetSize());
    return focus;
}

#endif

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

// Only a text that is longer than its field scrolls in itself; choices and numbers would take the
// wheel for a change of their value.
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
    BindWheel(form, form);
    form.Bind(wxEVT_IDLE,
              [&form, last = static_cast<const void*>(nullptr)](wxIdleEvent& event) mutable {
                  event.Skip();
                  wxRect place;
                  const void* const focus = FindFocus(form, place);
                  // Not while it stays where it is, or nobody could scroll away from it.
                  if (focus != last) {
                      last = focus;
                      if (focus != nullptr) {
                          ShowPlace(form, place);
                      }
                  }
              });
}

void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place) {
    auto* const label = new wxStaticText(control.GetParent(), wxID_STATIC, text);
    // The key that it underlines gives the focus to what follows it.
    label->MoveBeforeInTabOrder(&control);
    SetAccessibleName(control, spokenName);
    const int sides = place == LabelPlace::First ? int{wxALL} : kFieldSides;
    column.Add(label, wxSizerFlags().Border(sides, kFormBorder));
}
