#include "shell/ProgramInfo.h"

#include <wx/filename.h>
#include <wx/filesys.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include "shell/Toolkit.h"

wxString GetVersionText() {
    return wxString(kApplicationName) + " Mobile " + VELOMIND_VERSION;
}

wxString GetHelpFilePath() {
    wxFileName path(wxStandardPaths::Get().GetExecutablePath());
    path.SetFullName("Help.htm");
    if (!path.FileExists()) {
        const wxFileName installed(path.GetPath() + "/../share/velomind", "Help.htm");
        if (installed.FileExists()) {
            path = installed;
            path.MakeAbsolute();
        }
    }
    // The catalogue in use says the language. English has none.
    const wxTranslations* const translations = wxTranslations::Get();
    wxFileName translated = path;
    if (translations != nullptr) {
        const wxString language = translations->GetHeaderValue("Language", "velomind");
        translated.SetFullName("Help." + language + ".htm");
    }
    return translated.FileExists() ? translated.GetFullPath() : path.GetFullPath();
}

wxString FindSampleList() {
    const wxFileName program(wxStandardPaths::Get().GetExecutablePath());
    const wxTranslations* const translations = wxTranslations::Get();
    const wxString language =
        translations == nullptr ? wxString() : translations->GetHeaderValue("Language", "velomind");
    // Beside a program in its build folder, and in the share/ of an installed one.
    for (const char* const place : {"/../../samples/", "/../share/doc/velomind/examples/"}) {
        for (const wxString& folder : {language, wxString()}) {
            wxFileName list(program.GetPath() + place + folder, "capitals.txt");
            list.MakeAbsolute();
            if (list.FileExists()) {
                return list.GetFullPath();
            }
        }
    }
    return wxString();
}

void OpenUserGuide(const wxString& section) {
    const wxString address = wxFileSystem::FileNameToURL(wxFileName(GetHelpFilePath()));
    // Desktops that look for the file themselves take the section for a part of its name, so we ask
    // a browser directly.
    if (section.empty() || !OpenInBrowser(address + "#" + section)) {
        wxLaunchDefaultBrowser(address);
    }
}
