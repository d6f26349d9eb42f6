#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "reviews/ScheduleEvents.h"
#include "store/CardUuid.h"
#include "sync/SyncState.h"

// What may have changed in a store since its last exchange. Nothing of it is held to be true for
// long: each card is read again when it is collected.

// Finds the cards whose rows differ from the copy, those that are gone included; with isAll the
// store's cards all together. Reads a few thousand rows at a time, so that study, which goes on,
// never waits for it. Returns false on failure.
bool FindDifferences(SyncState& state, bool isAll, std::vector<CardUuid>& cards,
                     const std::atomic<bool>& isCancelled);

// Returns a sum of the bytes before an offset of the log, by which it is known again; empty where
// the log is shorter.
std::string LogTailSum(const wxString& logPath, int64_t end);
// Returns what tells an event from all others.
std::string FormatEventKey(const ScheduleEvent& event);
