#include "app/Locale.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/strconv.h>
#include <wx/string.h>
#include <wx/translation.h>

#include <clocale>
#include <cstdlib>

void SetUpCharacters() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    std::setlocale(LC_NUMERIC, "C");
}

std::vector<std::wstring> ReadCommandWords(int argc, char** argv) {
    std::vector<std::wstring> words;
    for (int i = 0; i < argc; ++i) {
        wxString word(argv[i], wxConvLibc);
        if (word.empty()) {
            // Not text of the locale: byte by byte, so that at least nothing is lost.
            word = wxString(argv[i], wxConvISO8859_1);
        }
        words.push_back(word.ToStdWstring());
    }
    return words;
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
