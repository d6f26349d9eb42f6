#include "exchange/ExportThread.h"

#include <wx/intl.h>

#include "exchange/Export.h"

ExportThread::ExportThread(const wxString& fileName, wxFontEncoding encoding, Database& database,
                           const std::vector<int64_t>& rowIds, const ExportOptions& options)
    : wxThread(wxTHREAD_JOINABLE),
      mFileName(fileName),
      mEncoding(encoding),
      mDatabase(database),
      mRowIds(rowIds),
      mOptions(options) {}

ExportThread::~ExportThread() {
    Join();
}

void ExportThread::Start() {
    mStarted = Create() == wxTHREAD_NO_ERROR && Run() == wxTHREAD_NO_ERROR;
    if (!mStarted) {
        mProgress.Failed = true;
        mProgress.Message = _("Unable to start a thread for the export.");
        mFinished = true;
    }
}

void ExportThread::Join() {
    if (mStarted) {
        Wait();
        mStarted = false;
    }
}

void ExportThread::Cancel() {
    mProgress.Cancelled = true;
    Join();
}

wxThread::ExitCode ExportThread::Entry() {
    // The outcome is in the progress, whatever this returns.
    ExportToFile(mFileName, mEncoding, mDatabase, mRowIds, mOptions, mProgress);
    mFinished = true;
    return nullptr;
}
