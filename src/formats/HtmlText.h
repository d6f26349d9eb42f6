#pragma once

#include <wx/string.h>

#include <string>

// What of a field has no place in a text, counted.
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
// dash, cells of a table blanks, entities their characters. White space of the source is one blank,
// unless line feeds are breaks too, as in fields of Mnemosyne. Pictures and sounds are counted and
// leave nothing; formulas keep their source without the markers. Lines have no blanks at their ends
// and the text no empty lines at its own. Takes any text, in linear time.
HtmlText ReadHtml(const wxString& html, bool lineFeedsBreak, HtmlLosses& losses);

// True when there is nothing to be seen in the field: only white space and empty lines of markup.
bool IsEmptyHtml(const wxString& html);
