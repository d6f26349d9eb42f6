#pragma once

#include "store/StatementRun.h"

class Database;

// Keeps the store's file locked for reading while it lives. Operations in a row then need not lock
// and unlock the file one by one, which costs more than a small read itself. Each write commits by
// itself as ever; other programs can read meanwhile but not write. It is of no effect where the
// store cannot be read.
class StoreReadLock {
  public:
    explicit StoreReadLock(Database& database);

  private:
    // Has stepped to its only row, and so reads until it is reset.
    StatementRun mRun;
};
