#pragma once

#include <wx/string.h>
#include <wx/translation.h>

#include "base/SettingsFile.h"

// The name of the program and of its maker, addresses and legal lines. They stand alone so that a
// maker changes them in one place: the hosts and the mailbox are reserved examples. The version
// comes from CMake and is compiled into one small source, so that a new one rebuilds nothing else.

constexpr const char* kMakerName = "Ostrel";

// Roots of the maker's sites; a path and query such as "/?q=forum" follows.
constexpr const char* kWebSite = "https://www.example.org";
constexpr const char* kCommunitySite = "https://community.example.org";
constexpr const char* kSupportSite = "https://support.example.org";
constexpr const char* kSupportMailbox = "support@example.org";

// Marked here and translated by the window that shows them. The %i is the last year.
constexpr const char* kLegalLines =
    wxTRANSLATE("Copyright (c) 2004-%i Ostrel.\nAll rights reserved.");
constexpr const char* kLegalNotice = wxTRANSLATE(
    "This program comes as it is, without warranty of any kind. The license that comes with it says"
    " how it may be used, copied and passed on.");
constexpr int kLegalLastYear = 2008;

// Returns the name, edition and version of the program, "Velomind Mobile 2.5.7.1625".
wxString GetVersionText();

// Returns the path of the user guide in the language of the program: Help.htm in English,
// Help.de.htm and others for the other languages. The guides lie beside the program's own file or,
// when it is installed under a prefix such as /usr, in share/velomind of that prefix.
wxString GetHelpFilePath();

// Returns the path of a word list for a first try, in the language of the program where there is
// one; empty when none was installed.
wxString FindSampleList();

// Shows the user guide in the user's browser, at the section with that id, or at its beginning when
// the id is empty.
void OpenUserGuide(const wxString& section = wxString());
