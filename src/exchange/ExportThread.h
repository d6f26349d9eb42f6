#pragma once

#include <wx/fontenc.h>
#include <wx/thread.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "exchange/Export.h"
#include "exchange/ProgressSource.h"

class Database;

// Writes an export file on a thread of its own. Lives on the main thread, which must keep it until
// the worker has ended; its end waits for the worker.
class ExportThread : public wxThread, public ProgressSource {
  public:
    // The database and the row ids are not owned.
    ExportThread(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options);
    ~ExportThread() override;

    // Starts the worker. When that fails the export is finished at once, as failed.
    void Start();
    // Waits for the worker's end.
    void Join();
    // To be read after Join.
    const ExportProgress& GetProgress() const { return mProgress; }

    int32_t GetMinimum() const override { return 0; }
    int32_t GetMaximum() const override { return mProgress.Total; }
    int32_t GetPosition() const override { return mProgress.Position; }
    bool IsFinished() const override { return mFinished; }
    // The file is written to its end first.
    void Cancel() override;
    void OnTimer(wxWindow* /*dialog*/) override {}

  protected:
    ExitCode Entry() override;

  private:
    wxString mFileName;
    wxFontEncoding mEncoding;
    Database& mDatabase;
    const std::vector<int64_t>& mRowIds;
    ExportOptions mOptions;
    ExportProgress mProgress;
    // Written by the worker, as the last thing it does.
    std::atomic<bool> mFinished{false};
    // The worker was started and not yet waited for.
    bool mStarted = false;
};
