#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <filesystem>

#include "sync/ExchangeFile.h"
#include "sync/SyncState.h"

// Writes all that a computer knows into a file, for those that join or come back after the files of
// changes are gone: cards, deleted ones included, reviews, categories, unions and lost texts.
// Returns 0 or the system's number.
int WriteWholeCopy(SyncState& state, const ExchangeHeader& header, const wxString& logPath,
                   const std::filesystem::path& target, const std::atomic<bool>& isCancelled);
