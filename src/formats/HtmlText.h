#pragma once

#include <wx/string.h>

#include <string>

class MediaSource;

// Counts what a field loses when it becomes plain text.
struct HtmlLosses {
    int Pictures = 0;
    int Sounds = 0;
    // Formulas, kept as their source.
    int Formulas = 0;
};

// The plain text of a field that is written in HTML.
struct HtmlText {
    wxString Text;
    // The text with each annotated part (<ruby>) replaced by its reading; empty without any.
    wxString Reading;
};

// Turns a field into text: breaks and the ends of blocks become line feeds, list items lines with a
// dash, cells of a table blanks, entities their characters. White space of the source becomes one
// blank, unless line feeds are breaks too, as in fields of Mnemosyne. Pictures and sounds are
// counted and dropped; formulas keep their source without the markers. Lines have no blanks at
// either end, and the text no empty lines at either end. Takes any text, in linear time. With a
// source of files, pictures and sounds that it has become lines at their places and are no loss.
HtmlText ReadHtml(const wxString& html, bool lineFeedsBreak, HtmlLosses& losses,
                  MediaSource* media = nullptr);

// Returns true when nothing can be seen in the field: only white space and markup without text.
bool IsEmptyHtml(const wxString& html);
