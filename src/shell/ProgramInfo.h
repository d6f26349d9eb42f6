#pragma once

#include <wx/string.h>
#include <wx/translation.h>

#include "base/SettingsFile.h"

// Who stands behind the program. Hosts, mailbox and lines are reserved examples until a maker puts
// real ones in their place; every text that names one takes it from here.

constexpr const char* kMakerName = "Ostrel";

// Roots of the maker's sites; a path and query such as "/?q=forum" follows.
constexpr const char* kWebSite = "https://www.example.org";
constexpr const char* kCommunitySite = "https://community.example.org";
constexpr const char* kSupportSite = "https://support.example.org";
constexpr const char* kSupportMailbox = "support@example.org";

// Marked for translation; whoever shows them asks for it. The %i is the last year of the range.
constexpr const char* kLegalLines =
    wxTRANSLATE("Copyright (c) 2004-%i Ostrel.\nAll rights reserved.");
constexpr const char* kLegalNotice = wxTRANSLATE(
    "This program comes as it is, without warranty of any kind. The license that comes with it says"
    " how it may be used, copied and passed on.");
constexpr int kLegalLastYear = 2008;

// The name, edition and number of the program, "Velomind Mobile 2.5.7.1625".
wxString GetVersionText();
