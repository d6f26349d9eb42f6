#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/Worker.h"

class CardRecordWriter;
class CardRow;
class Database;
class DelimitedWriter;
class TextSink;

// The forms of an exported text. The numbers are their places in the list of choices.
enum class ExportFormat {
    kVlmText = 0,
    kDelimited = 1,
    // For the previous generation of the program.
    kVlmText1 = 2,
    // Plain text for Anki, without schedules and always in UTF-8.
    kAnkiText = 3
};

// How an export writes cards.
struct ExportOptions {
    bool IncludeScheduling = true;
    ExportFormat Format = ExportFormat::kVlmText;
    // Separates the columns of the delimited form.
    wchar_t Delimiter = L'\t';
};

// Returns the encoding at a place in the list of choices; UTF-16LE for any other place.
wxFontEncoding ExportEncoding(int choice);

// The state of an export, which its worker and the main thread share. The worker writes it; the
// main thread reads Position and Total at any time, and the rest after the worker has ended.
struct ExportProgress {
    // The number of cards done.
    std::atomic<int32_t> Position{0};
    // The length of the bar, which is twice the number of cards.
    std::atomic<int32_t> Total{1};
    // True when the file is not what was asked for. An empty message then means that the file could
    // not be created, for which the library's log has the reason.
    bool Failed = false;
    wxString Message;
    // The number of row ids without a card.
    int32_t Missing = 0;
};

// The next three functions write a card's attributes, in order, into a record, which the caller
// ends.

// Writes the attributes of the full forms. With splitSecondTexts, the second texts of the sides are
// attributes of their own. An empty category is left out. Returns 0, or -1 when the writer refuses
// an attribute or the card has no identity.
int WriteCardRecord(CardRecordWriter& writer, const CardRow& card, std::u16string_view category,
                    bool splitSecondTexts, bool includeScheduling);

// Writes the header of the delimited form: a column for each attribute that WriteCardRecord writes.
void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling);

// Writes the few attributes that the previous generation of the program knows.
int WriteVersion1Record(CardRecordWriter& writer, const CardRow& card, bool includeScheduling);

// Says where the pictures and sounds of the cards are, and where they belong once the text is
// imported elsewhere; empty where the store's cards have none.
wxString MediaExportHint(Database& database, const ExportOptions& options);

// Writes the cards in the order of the row ids. A card that is gone is skipped and counted as
// missing. Returns 0, or -1 on a failed read or write. Holds a few cards at a time.
int WriteCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
               const ExportOptions& options, ExportProgress& progress);

// Does the same into a file, which begins with a byte order mark and replaces any other of that
// name. On a failure the progress has the reason, and part of the file may be left.
int ExportToFile(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options,
                 ExportProgress& progress);

// Does the same into a string, without a mark. A failure leaves the text written so far.
int ExportToString(wxString& text, Database& database, const std::vector<int64_t>& rowIds,
                   const ExportOptions& options, ExportProgress& progress);

// Writes an export file on a thread of its own. The destructor waits for its end. An export that is
// cancelled still goes on to its end, as half a file helps nobody.
class ExportThread : public Worker {
  public:
    // The database and the row ids are not owned.
    ExportThread(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options);
    ~ExportThread() override { Join(); }

    // Valid after Join.
    const ExportProgress& GetProgress() const { return mProgress; }

    int32_t GetMaximum() const override { return mProgress.Total; }
    int32_t GetPosition() const override { return mProgress.Position; }

  protected:
    void Work() override;
    void OnFailure(const wxString& message) override;

  private:
    wxString mFileName;
    wxFontEncoding mEncoding;
    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    ExportOptions mOptions;
    ExportProgress mProgress;
};
