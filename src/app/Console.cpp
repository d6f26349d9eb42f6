#include "app/Console.h"

#include <cstdio>

void PrintText(const wxString& text) {
    std::fputs(text.utf8_str(), stdout);
}

void PrintError(const wxString& text) {
    std::fprintf(stderr, "velomind: %s\n", static_cast<const char*>(text.utf8_str()));
}
