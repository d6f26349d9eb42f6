#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <string_view>
#include <vector>

#include "exchange/Worker.h"

class CardRecordWriter;
class CardRow;
class Database;
class DelimitedWriter;
class TextSink;

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

// What the worker of an export and the main thread share. The worker writes it, except for
// Cancelled; the main thread reads Position and Total at any time and the rest once the worker has
// ended.
struct ExportProgress {
    // Cards done.
    std::atomic<int32_t> Position{0};
    // The end of the bar: twice the number of cards.
    std::atomic<int32_t> Total{1};
    // Set by the main thread. An export goes on to its end all the same.
    std::atomic<bool> Cancelled{false};
    // The file is not what was asked for. Without a message, it could not be made at all and the
    // library has told why.
    bool Failed = false;
    wxString Message;
    // Row ids that gave no card any more.
    int32_t Missing = 0;
};

// Which attributes of a card go into its record, in which order and with which values. The caller
// ends the record.

// The attributes of the full forms. The second texts of the sides become attributes of their own
// only when they are to be split off. An empty category is left out. 0, or -1 from the writer or
// for a card without an identity.
int WriteCardRecord(CardRecordWriter& writer, const CardRow& card, std::u16string_view category,
                    bool splitSecondTexts, bool includeScheduling);

// The header of the delimited form: a column for each attribute that WriteCardRecord writes.
void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling);

// The few attributes that the previous generation of the program knows.
int WriteVersion1Record(CardRecordWriter& writer, const CardRow& card, bool includeScheduling);

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

// Writes an export file on a thread of its own. Its end waits for the worker.
class ExportThread : public Worker {
  public:
    // The database and the row ids are not owned.
    ExportThread(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options);
    ~ExportThread() override { Join(); }

    // To be read after Join.
    const ExportProgress& GetProgress() const { return mProgress; }

    int32_t GetMaximum() const override { return mProgress.Total; }
    int32_t GetPosition() const override { return mProgress.Position; }
    // The file is written to its end first.
    void Cancel() override;

  protected:
    void Work() override;

  private:
    wxString mFileName;
    wxFontEncoding mEncoding;
    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    ExportOptions mOptions;
    ExportProgress mProgress;
};
