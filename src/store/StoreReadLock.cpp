#include "store/StoreReadLock.h"

#include "store/Database.h"

StoreReadLock::StoreReadLock(Database& database)
    : mRun(database, database.GetStatement("SELECT count(*) FROM Categories;")) {
    // Without its row there is no lock, and every read takes its own as usual.
    mRun.Step("StoreReadLock");
}
