#pragma once

#ifdef __WXGTK__

#include <wx/dynlib.h>

// A function of the platform's own toolkit, or null. It is in the process already, since our
// windows stand on it; the few functions that we call are looked up there, so that the build needs
// none of its headers.
template <class Function>
Function FindToolkitFunction(const char* name) {
    return reinterpret_cast<Function>(
        wxDynamicLibrary::RawGetSymbol(wxDynamicLibrary::GetProgramHandle(), name));
}

#endif
