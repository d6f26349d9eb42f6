#include "shell/MenuPictures.h"

#include <wx/defs.h>

#ifdef __WXGTK__

#include "shell/ToolkitFunction.h"

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
