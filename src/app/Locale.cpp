#include "app/Locale.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/translation.h>

#include <clocale>
#include <cstdlib>

void SetUpCharacters() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        // The library converts the command line by what the environment names, not by the locale
        // in force, so both are changed.
        const char* const all = std::getenv("LC_ALL");
        const bool allIsSet = all != nullptr && *all != '\0';
        setenv(allIsSet ? "LC_ALL" : "LC_CTYPE", "C.UTF-8", 1);
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    std::setlocale(LC_NUMERIC, "C");
}

void SetUpTranslations() {
    // A program that was not installed in a standard place has its catalogues beside it.
    wxFileName beside(wxStandardPaths::Get().GetExecutablePath());
    beside.RemoveLastDir();
    beside.AppendDir("share");
    beside.AppendDir("locale");
    wxFileTranslationsLoader::AddCatalogLookupPathPrefix(beside.GetPath());

    auto* const translations = new wxTranslations;
    wxTranslations::Set(translations);
    translations->AddStdCatalog();
    translations->AddCatalog("velomind");
}
