#include "shell/Toolkit.h"

#include <wx/defs.h>
#include <wx/listctrl.h>
#include <wx/panel.h>
#include <wx/settings.h>
#include <wx/textctrl.h>
#include <wx/window.h>

#ifdef __WXGTK__

#include <cstddef>

namespace {

bool IsA(void* widget, const char* typeFunction) {
    static const auto isA =
        FindToolkitFunction<int (*)(void* instance, size_t type)>("g_type_check_instance_is_a");
    const auto getType = FindToolkitFunction<size_t (*)()>(typeFunction);
    return isA != nullptr && getType != nullptr && isA(widget, getType()) != 0;
}

bool HasEntry(void* widget) {
    static const auto hasEntry =
        FindToolkitFunction<int (*)(void* choice)>("gtk_combo_box_get_has_entry");
    return IsA(widget, "gtk_combo_box_get_type") && hasEntry != nullptr && hasEntry(widget) != 0;
}

// The widget that has the focus when the window has it: a text of several lines and the like stand
// inside a scrolled window, and a choice into which one may type holds an entry.
void* FindInner(void* widget) {
    static const auto getChild = FindToolkitFunction<void* (*)(void* bin)>("gtk_bin_get_child");
    if (widget == nullptr || getChild == nullptr ||
        !(IsA(widget, "gtk_scrolled_window_get_type") || HasEntry(widget))) {
        return widget;
    }
    void* const child = getChild(widget);
    return child == nullptr ? widget : child;
}

void* FindAccessible(void* widget) {
    static const auto getAccessible =
        FindToolkitFunction<void* (*)(void* widget)>("gtk_widget_get_accessible");
    return widget == nullptr || getAccessible == nullptr ? nullptr : getAccessible(widget);
}

}  // namespace

void SetAccessibleName(const wxWindow& window, const wxString& name) {
    static const auto setName =
        FindToolkitFunction<void (*)(void* accessible, const char* name)>("atk_object_set_name");
    void* const widget = window.GetHandle();
    for (void* const accessible : {FindAccessible(widget), FindAccessible(FindInner(widget))}) {
        if (accessible != nullptr && setName != nullptr) {
            setName(accessible, name.utf8_str());
        }
    }
}

void SetAccessibleRole(const wxWindow& window, AccessibleRole role) {
    // In the order of the roles.
    static const char* const names[] = {"push button", "list", "label"};
    static const auto forName = FindToolkitFunction<int (*)(const char* name)>("atk_role_for_name");
    static const auto setRole =
        FindToolkitFunction<void (*)(void* accessible, int role)>("atk_object_set_role");
    void* const accessible = FindAccessible(FindInner(window.GetHandle()));
    if (accessible != nullptr && forName != nullptr && setRole != nullptr) {
        setRole(accessible, forName(names[static_cast<size_t>(role)]));
    }
}

#else

void SetAccessibleName(const wxWindow& /*window*/, const wxString& /*name*/) {}

void SetAccessibleRole(const wxWindow& /*window*/, AccessibleRole /*role*/) {}

#endif

#ifdef __WXGTK__

#include <algorithm>

namespace {

// Above and below the line, for the frame of the field.
constexpr int kFrame = 3;

}  // namespace

void FitTextHeights(wxWindow& window) {
    static const auto getHeight =
        FindToolkitFunction<void (*)(void* widget, int* least, int* natural)>(
            "gtk_widget_get_preferred_height");
    const auto* const text = dynamic_cast<const wxTextCtrl*>(&window);
    if (text != nullptr && text->IsSingleLine() && getHeight != nullptr) {
        int least = 0;
        int natural = 0;
        // Without the height of before, which would count as wanted.
        window.SetMinSize(wxSize(window.GetMinWidth(), -1));
        getHeight(window.GetHandle(), &least, &natural);
        // A change of the font is known to the platform a little later only.
        natural = std::max(natural, window.GetCharHeight() + 2 * window.FromDIP(kFrame));
        window.SetMinSize(wxSize(window.GetMinWidth(), natural));
    }
    for (wxWindow* const child : window.GetChildren()) {
        FitTextHeights(*child);
    }
}

#else

void FitTextHeights(wxWindow& /*window*/) {}

#endif

#ifdef __WXGTK__

void ShowMenuPictures() {
    const auto getSettings = FindToolkitFunction<void* (*)()>("gtk_settings_get_default");
    const auto setProperty =
        FindToolkitFunction<void (*)(void* object, const char* property, ...)>("g_object_set");
    void* const settings = getSettings == nullptr ? nullptr : getSettings();
    if (settings != nullptr && setProperty != nullptr) {
        setProperty(settings, "gtk-menu-images", 1, nullptr);
    }
}

#else

void ShowMenuPictures() {}

#endif

wxWindow& GetRowsWindow(wxListCtrl& list) {
    for (wxWindow* const child : list.GetChildren()) {
        // The toolkit gives it no other sign; the titles of the columns have a name of their own.
        if (child->GetName() == wxPanelNameStr) {
            return *child;
        }
    }
    return list;
}

void KeepHeadingFont(wxListCtrl& list) {
    const wxWindow& rows = GetRowsWindow(list);
    for (wxWindow* const child : list.GetChildren()) {
        if (child != &rows) {
            child->SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
        }
    }
}

void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole) {
    wxWindow& rows = GetRowsWindow(list);
    SetAccessibleName(rows, row.empty() ? whole : row);
    SetAccessibleRole(rows, AccessibleRole::List);
}
