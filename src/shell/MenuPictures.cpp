#include "shell/MenuPictures.h"

#include <wx/defs.h>

#ifdef __WXGTK__

#include <wx/dynlib.h>

// The toolkit is in the process already, since our windows stand on it; two of its functions are
// looked up there, so that the build needs none of its headers.
void ShowMenuPictures() {
    using GetSettings = void* (*)();
    using SetProperty = void (*)(void* object, const char* property, ...);
    const wxDllType program = wxDynamicLibrary::GetProgramHandle();
    const auto getSettings = reinterpret_cast<GetSettings>(
        wxDynamicLibrary::RawGetSymbol(program, "gtk_settings_get_default"));
    const auto setProperty =
        reinterpret_cast<SetProperty>(wxDynamicLibrary::RawGetSymbol(program, "g_object_set"));
    void* const settings = getSettings == nullptr ? nullptr : getSettings();
    if (settings != nullptr && setProperty != nullptr) {
        setProperty(settings, "gtk-menu-images", 1, nullptr);
    }
}

#else

void ShowMenuPictures() {}

#endif
