#pragma once

#include <wx/string.h>
#include <wx/thread.h>

#include <atomic>
#include <cstdint>

#include "exchange/LegacyRowSource.h"
#include "store/FlashCard.h"

class Database;
class wxWindow;

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

enum class ImportStatus : int32_t { kRunning = 0, kFinished = 1, kCancelled = 2, kFailed = 3 };

enum class ImportRequest : int32_t { kMerge = 0, kNewCategory = 1 };

// What becomes of a stored card whose texts differ from the imported card's.
enum class ImportMergePolicy : int32_t { kAsk = 0, kKeepDatabase = 1, kKeepImported = 2 };

// What the worker of an import and the main thread share. The worker writes it; the main thread
// reads Status and Progress at any time and the rest once the worker has ended. The fields of a
// question belong to the main thread from RequestSemaphore to ReplySemaphore.
struct ImportResult {
    // The main thread writes only kCancelled.
    std::atomic<ImportStatus> Status{ImportStatus::kRunning};
    // Records identical to the stored card; records that matched one and differ; new cards.
    int32_t DuplicatesIgnored = 0;
    int32_t RecordsMerged = 0;
    int32_t RecordsInserted = 0;
    // What failed and on which line of the file; -1 for none.
    wxString Message;
    int32_t LineNumber = -1;
    // The part of the current pass that is done, 0 to 1.
    std::atomic<float> Progress{0.0f};

    wxSemaphore RequestSemaphore;
    wxSemaphore ReplySemaphore;
    ImportRequest Request = ImportRequest::kMerge;
    // A run does not ask unless somebody sets it before the start.
    ImportMergePolicy MergePolicy = ImportMergePolicy::kKeepImported;
    FlashCard DatabaseCard;
    FlashCard ImportedCard;
    // The answer.
    FlashCard MergedCard;
    // The attributes that the record gave.
    uint32_t AttributeMask = 0;
    bool YesToAllCategories = false;
    wxString CategoryName;

    // The worker moves on from one status to another. False, with nothing changed, when the import
    // was cancelled in the meantime: a cancel is never overwritten.
    bool Advance(ImportStatus from, ImportStatus to);
    // Ends the run as failed, unless it was cancelled. Always false, for a caller to pass on.
    bool Fail(const wxString& message);
    // The same for a cancelled run.
    bool FailCancelled(int32_t line);
    // Puts the question of Request to the main thread and waits for the reply. False when the
    // answer was a cancel, or on a failure.
    bool Ask(ImportRequest request, int32_t line);
};

// What an import asks of a person. Called on the main thread while the worker waits; the parent is
// the progress window.
class ImportQuestions {
  public:
    enum class CategoryAnswer { kYes, kYesToAll, kCancel };
    struct MergeAnswer {
        // False stops the import.
        bool IsOk = false;
        // What the stored card becomes.
        FlashCard Merged;
        // How further cards of the run are merged; kAsk to be asked again.
        ImportMergePolicy Further = ImportMergePolicy::kAsk;
    };

    virtual ~ImportQuestions() = default;
    // May a category of that name be created?
    virtual CategoryAnswer AskNewCategory(wxWindow* parent, const wxString& name) = 0;
    // Which version of a card to keep; the mask tells the attributes that the record gave.
    virtual MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored,
                                 const FlashCard& imported, uint32_t attributeMask) = 0;
};

// Texts of a failed import that more than one step has to say. A name from the file fills its
// place in a text and is never a format itself; one of absurd length is cut.
wxString NamedMessage(const wxString& format, const wxString& name);
wxString UnknownAttributeMessage(const wxString& name);
wxString RepeatedAttributeMessage();
wxString UnreadableFileMessage(const wxString& fileName);
// The file is a store, or the engine keeps it beside one.
wxString DatabaseFileMessage(const wxString& fileName);

// A text with places for the number and the text of the store's last error.
wxString StoreMessage(const wxString& format, Database& database);
wxString StoreReadMessage(Database& database);
