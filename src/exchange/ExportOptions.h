#pragma once

#include <wx/fontenc.h>

// The forms of an exported text, by their index in the list of choices.
enum class ExportFormat {
    kVlmText = 0,
    kDelimited = 1,
    // What the previous generation of the program reads.
    kVlmText1 = 2
};

// How cards are put into a text.
struct ExportOptions {
    bool IncludeScheduling = true;
    ExportFormat Format = ExportFormat::kVlmText;
    // Between the columns of the delimited form.
    wchar_t Delimiter = L'\t';
};

// The encoding of an index in the list of choices; UTF-16LE for any that is not in the list.
wxFontEncoding ExportEncoding(int choice);
