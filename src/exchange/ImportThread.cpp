#include "exchange/ImportThread.h"

#include "exchange/ImportJob.h"
#include "exchange/ImportPass.h"

ImportThread::ImportThread(const ImportInput& input, Database& database, bool askCategories,
                           std::set<int32_t>* touchedCategories, ImportQuestions& questions)
    : mInput(input),
      mDatabase(database),
      mAskCategories(askCategories),
      mpTouchedCategories(touchedCategories),
      mQuestions(questions) {}

ImportThread::~ImportThread() {
    ImportThread::Cancel();
}

void ImportThread::Work() {
    // The outcome is in the result, whatever this returns.
    ImportCards(mInput, mDatabase, mResult, mAskCategories, mpTouchedCategories);
}

int32_t ImportThread::GetPosition() const {
    return static_cast<int32_t>(mResult.Progress * 1000.0f);
}

void ImportThread::Cancel() {
    if (!IsFinished()) {
        mResult.Status = ImportStatus::kCancelled;
    }
    // A worker that has put a question, or is about to, must not wait for its answer.
    Reply();
    Join();
}

void ImportThread::OnTimer(wxWindow* dialog) {
    if (mResult.RequestSemaphore.TryWait() != wxSEMA_NO_ERROR) {
        return;
    }
    const bool goOn =
        mResult.Request == ImportRequest::kMerge ? AskMerge(dialog) : AskNewCategory(dialog);
    if (goOn) {
        Reply();
    } else {
        Cancel();
    }
}

bool ImportThread::AskNewCategory(wxWindow* parent) {
    const auto answer = mQuestions.AskNewCategory(parent, mResult.CategoryName);
    if (answer == ImportQuestions::CategoryAnswer::kYesToAll) {
        mResult.YesToAllCategories = true;
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
    // Fails only on a semaphore that was never made, and then the worker's own call fails too.
    mResult.ReplySemaphore.Post();
}
