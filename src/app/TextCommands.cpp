#include "app/TextCommands.h"

#include <wx/event.h>
#include <wx/textentry.h>
#include <wx/window.h>

#include "shell/TextUndo.h"

namespace {

// Text field, search field or combo box.
wxTextEntry* FocusedText() {
    return dynamic_cast<wxTextEntry*>(wxWindow::FindFocus());
}

void DeleteSelection(wxTextEntry& text) {
    long from = 0;
    long to = 0;
    text.GetSelection(&from, &to);
    if (from == to) {
        // Nothing is selected: the character to the right.
        to = from + 1;
    }
    if (text.IsEditable() && from < text.GetLastPosition()) {
        text.Remove(from, to);
    }
}

void SelectAll(wxTextEntry& text) {
    text.SetSelection(-1, -1);
}

bool HasText(const wxTextEntry& text) {
    return text.GetLastPosition() > 0;
}

bool CanDelete(const wxTextEntry& text) {
    return text.IsEditable();
}

struct TextCommand {
    int Id;
    void (*Run)(wxTextEntry&);
    bool (*IsEnabled)(const wxTextEntry&);
};

constexpr TextCommand kCommands[] = {{wxID_CUT, [](wxTextEntry& text) { text.Cut(); },
                                      [](const wxTextEntry& text) { return text.CanCut(); }},
                                     {wxID_COPY, [](wxTextEntry& text) { text.Copy(); },
                                      [](const wxTextEntry& text) { return text.CanCopy(); }},
                                     {wxID_PASTE, [](wxTextEntry& text) { text.Paste(); },
                                      [](const wxTextEntry& text) { return text.CanPaste(); }},
                                     {wxID_DELETE, DeleteSelection, CanDelete},
                                     {wxID_SELECTALL, SelectAll, HasText}};

struct UndoCommand {
    int Id;
    void (TextUndo::*Run)();
    bool (TextUndo::*IsEnabled)() const;
};

constexpr UndoCommand kUndoCommands[] = {{wxID_UNDO, &TextUndo::Undo, &TextUndo::CanUndo},
                                         {wxID_REDO, &TextUndo::Redo, &TextUndo::CanRedo}};

void BindUndoCommand(wxEvtHandler& handler, const UndoCommand& command) {
    handler.Bind(
        wxEVT_MENU,
        [&command](wxCommandEvent& event) {
            if (TextUndo* const history = TextUndo::Find(wxWindow::FindFocus())) {
                (history->*command.Run)();
            } else {
                event.Skip();
            }
        },
        command.Id);
    handler.Bind(
        wxEVT_UPDATE_UI,
        [&command](wxUpdateUIEvent& event) {
            const TextUndo* const history = TextUndo::Find(wxWindow::FindFocus());
            event.Enable(history != nullptr && (history->*command.IsEnabled)());
        },
        command.Id);
}

}  // namespace

void BindTextCommands(wxEvtHandler& handler) {
    for (const UndoCommand& command : kUndoCommands) {
        BindUndoCommand(handler, command);
    }
    for (const TextCommand& command : kCommands) {
        handler.Bind(
            wxEVT_MENU,
            [&command](wxCommandEvent& event) {
                if (wxTextEntry* const text = FocusedText()) {
                    command.Run(*text);
                } else {
                    event.Skip();
                }
            },
            command.Id);
        handler.Bind(
            wxEVT_UPDATE_UI,
            [&command](wxUpdateUIEvent& event) {
                const wxTextEntry* const text = FocusedText();
                event.Enable(text != nullptr && command.IsEnabled(*text));
            },
            command.Id);
    }
}
