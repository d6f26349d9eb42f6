#include "store/StoreUpgrade.h"

#include "store/StoreSchema.h"

wxThread::ExitCode DatabaseUpgradeThread::Entry() {
    mResult = sqlite3_exec(mpHandle, kUpgradeFirstSchema, nullptr, nullptr, nullptr);
    return nullptr;
}
