#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>

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
