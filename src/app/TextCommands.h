#pragma once

class wxEvtHandler;

// Undo, Redo, Cut, Copy, Paste, Delete and Select All for whichever text field has the focus:
// handlers and update handlers that stand behind those of every window.
void BindTextCommands(wxEvtHandler& handler);
