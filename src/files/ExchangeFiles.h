#pragma once

#include <filesystem>

#include "base/Files.h"

// What an exchange with other computers keeps beside a store, and what becomes of it when the
// program moves or replaces the store. A store without these files takes part in no exchange; a
// copy or a backup of one gets none of them.

// The copy of what all computers have agreed on, and all else that the next exchange needs.
constexpr char kExchangeSuffix[] = ".exchange";
// Locked for the time of an exchange.
constexpr char kExchangeLockSuffix[] = ".exchange-lock";
// When the user changed what, and those of it that the exchange under way has taken.
constexpr char kEditNotesSuffix[] = ".edits";
constexpr char kTakenEditNotesSuffix[] = ".edits-taken";
// An empty file of this name says that another store, such as a restored backup, was put into the
// place of the exchanged one, until the next exchange has asked what that means for the others.
constexpr char kRestoredSuffix[] = ".restored";

// Keeps exchanges of a store out, also those of other programs, while it is moved or replaced. Does
// nothing for a store that takes part in none.
class ExchangeLock {
  public:
    // Returns 0, or EBUSY during an exchange, or the system's number of another error.
    int Take(const std::filesystem::path& store);
    bool IsTaken() const { return mFile.IsOpen(); }

  private:
    FileDescriptor mFile;
};

// Says that a store, if it is exchanged, is being replaced by another one. It does so before that
// happens, and takes it back with the object unless the store was replaced: after a power cut in
// between the next exchange asks once too often, and never once too few.
class ReplacedStoreMark {
  public:
    explicit ReplacedStoreMark(const std::filesystem::path& store);
    ~ReplacedStoreMark();
    ReplacedStoreMark(const ReplacedStoreMark&) = delete;
    ReplacedStoreMark& operator=(const ReplacedStoreMark&) = delete;

    // Returns 0, or why there is no mark.
    int GetError() const { return mError; }
    void Keep() { mIsKept = true; }

  private:
    std::filesystem::path mMark;
    int mError = 0;
    bool mIsKept = true;
};

// Moves these files along with a store, over those of a store that was at the target. Where the
// moved store has none, those at the target stay. What cannot be moved is made anew by the next
// exchange, as for a computer that joins.
void MoveExchangeFiles(const std::filesystem::path& source, const std::filesystem::path& target);
