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

void OpenUserGuide(const wxString& section) {
    const wxString address = wxFileSystem::FileNameToURL(wxFileName(GetHelpFilePath()));
    // Desktops that look for the file themselves take the section for a part of its name, so we ask
    // a browser directly.
    if (section.empty() || !OpenInBrowser(address + "#" + section)) {
        wxLaunchDefaultBrowser(address);
    }
}
