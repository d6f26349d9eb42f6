#include "base/Process.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/strconv.h>
#include <wx/translation.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>

void SetUpCharacters() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    std::setlocale(LC_NUMERIC, "C");
    // GTK takes the language of its own buttons from this category. Where the user's locale is not
    // installed, C.UTF-8 at least lets the variable LANGUAGE count.
    if (std::setlocale(LC_MESSAGES, "") == nullptr) {
        std::setlocale(LC_MESSAGES, "C.UTF-8");
    }
    // GTK's file dialogs write dates by this category; the program's own are FormatDate's.
    std::setlocale(LC_TIME, "");
}

std::vector<std::wstring> ReadCommandWords(int argc, char** argv) {
    std::vector<std::wstring> words;
    for (int i = 0; i < argc; ++i) {
        wxString word(argv[i], wxConvLibc);
        if (word.empty()) {
            // Bytes that are not text in the locale become one character each, so that nothing is
            // lost.
            word = wxString(argv[i], wxConvISO8859_1);
        }
        words.push_back(word.ToStdWstring());
    }
    return words;
}

void SetUpTranslations() {
    // The catalogues lie beside the program in a build folder, and in share/ of an installed tree.
    // The path of the program is free of links here.
    const wxFileName program(wxStandardPaths::Get().GetExecutablePath());
    for (const char* const place : {"locale", "../share/locale"}) {
        wxFileName folder = wxFileName::DirName(place);
        folder.MakeAbsolute(program.GetPath());
        wxFileTranslationsLoader::AddCatalogLookupPathPrefix(folder.GetPath());
    }

    auto* const translations = new wxTranslations;
    wxTranslations::Set(translations);
    // A mixture of languages would be worse than English: without a catalogue of ours in the user's
    // language the library's texts stay English too.
    const wxString language = translations->GetBestTranslation("velomind", "en");
    translations->SetLanguage(language.empty() ? wxString("en") : language);
    translations->AddStdCatalog();
    translations->AddCatalog("velomind");
}

void EndProcess(ExitCode code) {
    std::fflush(nullptr);
    std::_Exit(code);
}

void PrintText(const wxString& text) {
    std::fputs(text.utf8_str(), stdout);
}

void PrintError(const wxString& text) {
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name,
                 static_cast<const char*>(text.utf8_str()));
}
