#pragma once

#include <wx/string.h>

// Trace lines are a developer's aid: they go to this hook, which is empty unless somebody sets it.
// The texts are built only when a hook is there. Set before the first thread starts.
using TraceHook = void (*)(const wxString& line);
extern TraceHook gTraceHook;

#define VELOMIND_TRACE(...)                            \
    do {                                               \
        if (gTraceHook != nullptr) {                   \
            gTraceHook(wxString::Format(__VA_ARGS__)); \
        }                                              \
    } while (false)
