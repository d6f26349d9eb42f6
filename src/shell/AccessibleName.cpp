#include "shell/AccessibleName.h"

#include <wx/window.h>

#ifdef __WXGTK__

#include <wx/dynlib.h>

#include <cstddef>

namespace {

// The toolkit is in the process already, since our windows stand on it; a few of its functions are
// looked up there, so that the build needs none of its headers.
template <class Function>
Function Find(const char* name) {
    return reinterpret_cast<Function>(
        wxDynamicLibrary::RawGetSymbol(wxDynamicLibrary::GetProgramHandle(), name));
}

// The widget that has the focus when the window has it: a text of several lines and the like stand
// inside a scrolled window.
void* FindInner(void* widget) {
    using GetType = size_t (*)();
    using IsA = int (*)(void* instance, size_t type);
    using GetChild = void* (*)(void* bin);
    static const auto getType = Find<GetType>("gtk_scrolled_window_get_type");
    static const auto isA = Find<IsA>("g_type_check_instance_is_a");
    static const auto getChild = Find<GetChild>("gtk_bin_get_child");
    if (getType == nullptr || isA == nullptr || getChild == nullptr || widget == nullptr ||
        isA(widget, getType()) == 0) {
        return widget;
    }
    void* const child = getChild(widget);
    return child == nullptr ? widget : child;
}

}  // namespace

void SetAccessibleName(const wxWindow& window, const wxString& name) {
    using GetAccessible = void* (*)(void* widget);
    using SetName = void (*)(void* accessible, const char* name);
    static const auto getAccessible = Find<GetAccessible>("gtk_widget_get_accessible");
    static const auto setName = Find<SetName>("atk_object_set_name");
    void* const widget = FindInner(window.GetHandle());
    if (widget == nullptr || getAccessible == nullptr || setName == nullptr) {
        return;
    }
    void* const accessible = getAccessible(widget);
    if (accessible != nullptr) {
        setName(accessible, name.utf8_str());
    }
}

#else

void SetAccessibleName(const wxWindow& /*window*/, const wxString& /*name*/) {}

#endif
