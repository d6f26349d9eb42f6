#pragma once

#include <wx/string.h>

class wxEvtHandler;

// The commands of the Help menu and the test command: user guide, mails to the maker, web site and
// About dialog. They need no window and keep nothing.
void BindHelpCommands(wxEvtHandler& handler);

// The user guide, in the directory of the program's own file; a link to the program is followed.
wxString GetHelpFilePath();

// The mails that a person can send to the maker, as addresses for the mail program. Subject and
// body are percent-encoded, so whatever starts it gets one word without blanks and line breaks.
wxString GetSupportMailAddress();
wxString GetFeedbackMailAddress();
