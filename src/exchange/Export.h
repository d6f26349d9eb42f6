#pragma once

#include <wx/string.h>

#include <cstdint>
#include <vector>

#include "exchange/ExportOptions.h"
#include "exchange/ExportProgress.h"

class Database;
class TextSink;

// Cards go out in the order of their row ids; one that is gone is passed over and counted as
// missing. All of these give 0, or -1 on a failed read or write. Nothing of the size of the export
// is held in memory, but for ExportToString.

// Reads and writes card by card.
int WriteCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
               const ExportOptions& options, ExportProgress& progress);

// Writes a file that begins with a byte order mark, in place of any of that name. On a failure the
// progress tells why, and the file may be left behind in part.
int ExportToFile(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options,
                 ExportProgress& progress);

// Puts the same into a string, without a mark. The text is replaced also on a failure, by what
// there is.
int ExportToString(wxString& text, Database& database, const std::vector<int64_t>& rowIds,
                   const ExportOptions& options, ExportProgress& progress);
