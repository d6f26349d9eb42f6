#pragma once

#include <wx/string.h>

// Where a failure that the program cannot survive is told. The store calls Report when the engine
// refuses a step.
//
// On the main thread the program's own implementation shows the text and ends the process, so that
// Report does not return. On a worker thread it keeps the first text and returns; whoever has
// waited for the worker then calls DeliverPending on the main thread, which ends the process if a
// text was kept. A test's implementation returns in both cases, and the failing operation then
// gives a negative result.
class FatalErrorReport {
  public:
    virtual ~FatalErrorReport() = default;
    virtual void Report(const wxString& text) = 0;
    virtual void DeliverPending() = 0;
};
