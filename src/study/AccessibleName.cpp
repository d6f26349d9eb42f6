#include "study/AccessibleName.h"

#include <wx/window.h>

#ifdef __WXGTK__

#include <wx/dynlib.h>

// The toolkit is in the process already, since our windows stand on it; two of its functions are
// looked up there, so that the build needs none of its headers.
void SetAccessibleName(const wxWindow& window, const wxString& name) {
    using GetAccessible = void* (*)(void* widget);
    using SetName = void (*)(void* accessible, const char* name);
    const wxDllType program = wxDynamicLibrary::GetProgramHandle();
    static const auto getAccessible = reinterpret_cast<GetAccessible>(
        wxDynamicLibrary::RawGetSymbol(program, "gtk_widget_get_accessible"));
    static const auto setName =
        reinterpret_cast<SetName>(wxDynamicLibrary::RawGetSymbol(program, "atk_object_set_name"));
    void* const accessible = getAccessible == nullptr ? nullptr : getAccessible(window.GetHandle());
    if (accessible != nullptr && setName != nullptr) {
        setName(accessible, name.utf8_str());
    }
}

#else

void SetAccessibleName(const wxWindow& /*window*/, const wxString& /*name*/) {}

#endif
