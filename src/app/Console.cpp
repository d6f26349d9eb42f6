#include "app/Console.h"

#include <cstdio>

void PrintLine(const wxString& text) {
    std::printf("%s\n", static_cast<const char*>(text.utf8_str()));
}

void PrintError(const wxString& text) {
    std::fprintf(stderr, "velomind: %s\n", static_cast<const char*>(text.utf8_str()));
}
