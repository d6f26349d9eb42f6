#pragma once

#include "store/StatementRun.h"

class Database;

// Keeps the store's file locked for reading while it lives. Reads in a row then need not lock and
// unlock the file one by one, which costs more than a small read itself. For a stretch of reads
// without a write; it is of no effect where the store cannot be read.
class StoreReadLock {
  public:
    explicit StoreReadLock(Database& database);

  private:
    // Has stepped to its only row, and so reads until it is reset.
    StatementRun mRun;
};
