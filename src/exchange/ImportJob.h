#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>
#include <wx/thread.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "base/Worker.h"
#include "formats/CardRecord.h"
#include "formats/LegacyRowSource.h"
#include "store/FlashCard.h"

class CardRecordReader;
class Database;
class MediaSource;
class wxWindow;
struct TableLayout;

enum class ImportFormat {
    // The program's own text form.
    kVlmText = 0,
    kDelimited = 1,
    // A store of version 1.0.
    kVersion1Store = 2,
    // A deck of another program.
    kDeck = 3
};

// Makes the reader of a deck's cards, or returns null and says why there is none. It is called for
// each pass, on the thread that reads. The flag ends it and the reader early, and outlives both.
using DeckReaderMaker = std::function<std::unique_ptr<CardRecordReader>(
    Database& database, const std::atomic<bool>& isCancelled, wxString& message)>;

// What becomes of a record without an id whose pair of texts is already in the store or earlier in
// the file.
enum class KnownPairs { kStop, kSkip, kUpdate };

// A file to import, and how to read it.
struct ImportInput {
    wxString FileName;
    ImportFormat Format = ImportFormat::kVlmText;
    // Separates the fields of the delimited format.
    wchar_t Delimiter = L'\t';
    // The encoding of a text without a mark; wxFONTENCODING_SYSTEM to find out whether it is UTF-8
    // or Windows-1252.
    wxFontEncoding Encoding = wxFONTENCODING_SYSTEM;
    // How to read a table that is not in this program's own form; the delimiter does not count
    // then. Null for one that is.
    std::shared_ptr<const TableLayout> Layout = nullptr;
    // False when backslashes in a table of this program's own form are text, as in formulas.
    bool HasEscapes = true;
    // Makes the engine that reads a store of version 1.0.
    LegacyRowSourceMaker MakeRowSource = &MakeLegacyRowSource;
    // Needed only for a deck.
    DeckReaderMaker MakeDeckReader = nullptr;
    // The pictures and sounds that come along; null for none. They are brought into the store's
    // folder once the file is known to have no fault, before its cards are written.
    std::shared_ptr<MediaSource> Media = nullptr;
    // False for a trial, which needs the names alone.
    bool BringsMedia = true;
    KnownPairs Pairs = KnownPairs::kStop;
    // True asks before the texts of a stored card are replaced.
    bool AskBeforeChanges = false;
};

enum class ImportStatus : int32_t { kRunning = 0, kFinished = 1, kCancelled = 2, kFailed = 3 };

enum class ImportRequest : int32_t { kMerge = 0, kNewCategories = 1, kLongField = 2 };

// What becomes of a stored card whose texts differ from the imported card's.
enum class ImportMergePolicy : int32_t { kAsk = 0, kKeepDatabase = 1, kKeepImported = 2 };

// The state of an import, which its worker and the main thread share. The worker writes it; the
// main thread reads Status and Progress at any time, and the rest after the worker has ended.
//
// A question to the user takes this way. The worker fills in the fields of the question, posts
// RequestSemaphore and waits for ReplySemaphore. Between the two the fields belong to the main
// thread, which asks, writes the answer, and posts ReplySemaphore.
struct ImportResult {
    // The main thread writes only kCancelled, by Cancel.
    std::atomic<ImportStatus> Status{ImportStatus::kRunning};
    // Follows the status, for readers that know nothing of imports.
    std::atomic<bool> IsCancelled{false};
    // Records that equal their stored card.
    int32_t DuplicatesIgnored = 0;
    // Records that matched a stored card and differed from it.
    int32_t RecordsMerged = 0;
    // New cards.
    int32_t RecordsInserted = 0;
    // Records without any text, such as those with only pictures.
    int32_t RecordsLeftOut = 0;
    // Pictures and sounds that the file names, and that are neither beside it nor in the store's
    // folder.
    int32_t FilesMissing = 0;
    // The failure and its line in the file; -1 for no line.
    wxString Message;
    int32_t LineNumber = -1;
    // The part of the current pass that is done, 0 to 1.
    std::atomic<float> Progress{0.0f};

    wxSemaphore RequestSemaphore;
    wxSemaphore ReplySemaphore;
    ImportRequest Request = ImportRequest::kMerge;
    // An import takes the file's version without asking, unless this is set before its start.
    ImportMergePolicy MergePolicy = ImportMergePolicy::kKeepImported;
    FlashCard DatabaseCard;
    FlashCard ImportedCard;
    // The answer.
    FlashCard MergedCard;
    // The attributes that the record gave.
    uint32_t AttributeMask = 0;
    // Those that the file names and the store lacks, in the order of the file.
    std::vector<wxString> NewCategories;
    bool YesToAllLongFields = false;
    int32_t FieldLines = 0;
    // What was odd about the file, each thing once.
    std::vector<SourceNotice> Notices;

    void Cancel();
    // Goes from one status to the next. Returns false, with nothing changed, when the import has
    // been cancelled: a cancel is never overwritten.
    bool Advance(ImportStatus from, ImportStatus to);
    // Ends the run as failed, unless it was cancelled. Always returns false, which the caller
    // returns.
    bool Fail(const wxString& message);
    // Ends a cancelled run. Always returns false.
    bool FailCancelled(int32_t line);
    // Puts the question to the main thread and waits for the reply. Returns false when the answer
    // was a cancel, and on a failure.
    bool Ask(ImportRequest request, int32_t line);
};

// The questions that an import may have to ask the user. Called on the main thread while the worker
// waits; the parent is the progress window.
class ImportQuestions {
  public:
    enum class CategoryAnswer { kYes, kYesToAll, kCancel };
    struct MergeAnswer {
        // False stops the import.
        bool IsOk = false;
        // What the stored card becomes.
        FlashCard Merged;
        // How to merge further cards of the run; kAsk asks again.
        ImportMergePolicy Further = ImportMergePolicy::kAsk;
    };

    virtual ~ImportQuestions() = default;
    // Asks whether categories of these names, one or more, may be created.
    virtual CategoryAnswer AskNewCategories(wxWindow* parent,
                                            const std::vector<wxString>& names) = 0;
    // Asks whether a quoted field that goes over so many lines is meant to. The line is that of its
    // record.
    virtual CategoryAnswer AskLongField(wxWindow* parent, int32_t line, int32_t lines) = 0;
    // Asks which version of a card to keep. The mask tells the attributes that the record gave.
    virtual MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored,
                                 const FlashCard& imported, uint32_t attributeMask) = 0;
};

// Runs an import on a thread of its own and puts the worker's questions to the user. Its destructor
// cancels an import that still runs.
class ImportThread : public Worker {
  public:
    // The database, the questions and the set, which may be null, are not owned.
    ImportThread(const ImportInput& input, Database& database, bool askCategories,
                 std::set<int32_t>* touchedCategories, ImportQuestions& questions);
    ~ImportThread() override;

    // Set up before Start and read after Join.
    ImportResult& GetResult() { return mResult; }

    int32_t GetMaximum() const override { return 1000; }
    int32_t GetPosition() const override;
    void Cancel() override;
    void OnTimer(wxWindow* dialog) override;

  protected:
    void Work() override;
    void OnFailure(const wxString& message) override { mResult.Fail(message); }

  private:
    bool AskNewCategories(wxWindow* parent);
    bool AskLongField(wxWindow* parent);
    bool AskMerge(wxWindow* parent);
    void Reply();

    ImportInput mInput;
    Database& mDatabase;
    bool mAskCategories;
    std::set<int32_t>* mpTouchedCategories;
    ImportQuestions& mQuestions;
    ImportResult mResult;
};

// The texts of failures that several steps of an import share.
wxString UnreadableFileMessage(const wxString& fileName);
// The message for a store, or a file that the engine keeps beside one.
wxString DatabaseFileMessage(const wxString& fileName);

// Fills the number and the text of the store's last error into a format.
wxString StoreMessage(const wxString& format, Database& database);
wxString StoreReadMessage(Database& database);
// Says how many files are missing; empty for none.
wxString MissingFilesMessage(const ImportResult& result);
