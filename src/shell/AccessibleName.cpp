#include "shell/AccessibleName.h"

#include <wx/window.h>

#ifdef __WXGTK__

#include <cstddef>

#include "shell/ToolkitFunction.h"

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
