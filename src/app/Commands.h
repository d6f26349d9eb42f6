#pragma once

#include <wx/string.h>

class wxEvtHandler;

// The commands that need no window of their own: they work on whatever has the focus or start
// another program. The application binds them, so every window has them unless its own table takes
// them first.

// Binds Undo, Redo, Cut, Copy, Paste, Delete and Select All to the text field that has the keyboard
// focus, with the rules that enable them. Without such a field they are disabled and pass on.
void BindTextCommands(wxEvtHandler& handler);

// Binds the commands of the Help menu and the test command, and F1 in windows without a menu bar.
void BindHelpCommands(wxEvtHandler& handler);

// Return the mails that a user can send to the maker, as addresses for the mail program. Subject
// and body are percent-encoded, so that the address is one word without blanks and line breaks.
wxString GetSupportMailAddress();
wxString GetFeedbackMailAddress();
