#pragma once

#include "exchange/ImportJob.h"

class Database;
class FatalErrorReport;
class wxWindow;

// The field that shows the faults.
constexpr int kFaultTextId = 10421;

// Reads a file behind a progress window and lists what is wrong with each of its records, up to a
// thousand of them, with their lines, as a text to read and to copy. What is odd and no fault, such
// as a quote that is taken for text, stands below. Writes nothing to the store. Main thread only.
void ShowAllFaults(wxWindow* parent, const ImportInput& input, Database& database,
                   FatalErrorReport& report);
