#pragma once

class wxDialog;
class wxSizer;

// Makes the buttons wxID_OK, which Enter presses, and wxID_CANCEL of a dialog, in a row of the
// order and the distances that are usual on the platform. The row is to be expanded, at the end of
// the dialog.
wxSizer* MakeOkCancel(wxDialog& dialog);
