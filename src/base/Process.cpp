#include "base/Process.h"

#include <cstdio>
#include <cstdlib>

void EndProcess(ExitCode code) {
    std::fflush(nullptr);
    std::_Exit(code);
}

void PrintText(const wxString& text) {
    std::fputs(text.utf8_str(), stdout);
}

void PrintError(const wxString& text) {
    std::fprintf(stderr, "velomind: %s\n", static_cast<const char*>(text.utf8_str()));
}
