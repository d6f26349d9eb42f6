#include "base/IcuLibrary.h"

#include <dlfcn.h>

void* FindIcuSymbol(const char* name) {
    static void* const library =
        dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_LAZY | RTLD_LOCAL);
    return library == nullptr ? nullptr : dlsym(library, name);
}
