#include "exchange/ImportJob.h"

#include <wx/intl.h>

#include "exchange/ImportPass.h"
#include "store/Database.h"

void ImportResult::Cancel() {
    Status = ImportStatus::kCancelled;
    IsCancelled = true;
}

bool ImportResult::Advance(ImportStatus from, ImportStatus to) {
    return Status.compare_exchange_strong(from, to);
}

bool ImportResult::Fail(const wxString& message) {
    Message = message;
    Advance(ImportStatus::kRunning, ImportStatus::kFailed);
    return false;
}

bool ImportResult::FailCancelled(int32_t line) {
    Message = _("Cancelled");
    LineNumber = line;
    return false;
}

bool ImportResult::Ask(ImportRequest request, int32_t line) {
    Request = request;
    if (RequestSemaphore.Post() != wxSEMA_NO_ERROR) {
        return Fail(_("Unexpected Error (semaphore post returned error)"));
    }
    if (ReplySemaphore.Wait() != wxSEMA_NO_ERROR) {
        return Fail(_("Unexpected Error (semaphore wait returned error)"));
    }
    return Status == ImportStatus::kCancelled ? FailCancelled(line) : true;
}

wxString UnreadableFileMessage(const wxString& fileName) {
    return wxString::Format(_("Unable to read flash cards: %s"), fileName);
}

wxString DatabaseFileMessage(const wxString& fileName) {
    return wxString::Format(_("The file \"%s\" is a store of flash cards or belongs to one, and is "
                              "not imported.  A store is opened in the options."),
                            fileName);
}

wxString StoreMessage(const wxString& format, Database& database) {
    return wxString::Format(format, database.GetLastErrorCode(), database.GetLastError());
}

wxString StoreReadMessage(Database& database) {
    return StoreMessage(_("Database read error %i:%s"), database);
}

wxString MissingFilesMessage(const ImportResult& result) {
    const int number = result.FilesMissing;
    return number == 0
               ? wxString()
               : wxString::Format(wxPLURAL("%i picture or sound was not found beside the file.",
                                           "%i pictures and sounds were not found beside the file.",
                                           static_cast<unsigned>(number)),
                                  number);
}

ImportThread::ImportThread(const ImportInput& input, Database& database, bool askCategories,
                           std::set<int32_t>* touchedCategories, ImportQuestions& questions)
    : mInput(input),
      mDatabase(database),
      mAskCategories(askCategories),
      mpTouchedCategories(touchedCategories),
      mQuestions(questions) {
    if (mInput.AskBeforeChanges) {
        mResult.MergePolicy = ImportMergePolicy::kAsk;
    }
}

ImportThread::~ImportThread() {
    ImportThread::Cancel();
}

void ImportThread::Work() {
    // The result has the outcome.
    ImportCards(mInput, mDatabase, mResult, mAskCategories, mpTouchedCategories);
}

int32_t ImportThread::GetPosition() const {
    return static_cast<int32_t>(mResult.Progress * 1000.0f);
}

void ImportThread::Cancel() {
    if (!IsFinished()) {
        mResult.Cancel();
    }
    // A worker that has put a question, or is about to, must not wait for its answer.
    Reply();
    Join();
}

void ImportThread::OnTimer(wxWindow* dialog) {
    if (mResult.RequestSemaphore.TryWait() != wxSEMA_NO_ERROR) {
        return;
    }
    bool goOn = false;
    switch (mResult.Request) {
        case ImportRequest::kMerge:
            goOn = AskMerge(dialog);
            break;
        case ImportRequest::kNewCategories:
            goOn = AskNewCategories(dialog);
            break;
        case ImportRequest::kLongField:
            goOn = AskLongField(dialog);
            break;
    }
    if (goOn) {
        Reply();
    } else {
        Cancel();
    }
}

bool ImportThread::AskNewCategories(wxWindow* parent) {
    return mQuestions.AskNewCategories(parent, mResult.NewCategories) !=
           ImportQuestions::CategoryAnswer::kCancel;
}

bool ImportThread::AskLongField(wxWindow* parent) {
    const auto answer = mQuestions.AskLongField(parent, mResult.LineNumber, mResult.FieldLines);
    if (answer == ImportQuestions::CategoryAnswer::kYesToAll) {
        mResult.YesToAllLongFields = true;
    }
    return answer != ImportQuestions::CategoryAnswer::kCancel;
}

bool ImportThread::AskMerge(wxWindow* parent) {
    const ImportQuestions::MergeAnswer answer = mQuestions.AskMerge(
        parent, mResult.DatabaseCard, mResult.ImportedCard, mResult.AttributeMask);
    if (!answer.IsOk) {
        return false;
    }
    mResult.MergedCard = answer.Merged;
    if (answer.Further != ImportMergePolicy::kAsk) {
        mResult.MergePolicy = answer.Further;
    }
    return true;
}

void ImportThread::Reply() {
    // This fails only on a semaphore that was never made, and then the worker's own call fails too.
    mResult.ReplySemaphore.Post();
}
