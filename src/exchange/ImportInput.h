#pragma once

#include <wx/string.h>

#include "exchange/LegacyRowSource.h"

enum class ImportFormat {
    // The program's own text form.
    kVlmText = 0,
    kDelimited = 1,
    // A store of version 1.0.
    kVersion1Store = 2
};

// A file to import and how to read it.
struct ImportInput {
    wxString FileName;
    ImportFormat Format = ImportFormat::kVlmText;
    // Between the fields of the delimited format.
    wchar_t Delimiter = L'\t';
    // The engine of a store of version 1.0.
    LegacyRowSourceMaker MakeRowSource = &MakeLegacyRowSource;
};
