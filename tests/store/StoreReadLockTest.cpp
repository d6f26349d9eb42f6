#include "store/StoreReadLock.h"

#include <sqlite3.h>

#include "support/StoreFixture.h"

using StoreReadLockTest = StoreFixture;

TEST_F(StoreReadLockTest, KeepsOtherProgramsFromWritingAndTheStoreReadable) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(StorePath().utf8_str(), &other), SQLITE_OK);
    const auto write = [other] {
        return sqlite3_exec(other, "DELETE FROM Globals WHERE Key='x'", nullptr, nullptr, nullptr);
    };
    auto lock = std::make_unique<StoreReadLock>(mDatabase);
    EXPECT_EQ(write(), SQLITE_BUSY);
    std::list<Category> categories;
    EXPECT_EQ(mDatabase.SelectAllCategories(categories), 0);
    EXPECT_EQ(categories.size(), 1U);
    lock.reset();
    EXPECT_EQ(write(), SQLITE_OK);

    // Nor does the store open while another program writes.
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    mDatabase.Close();
    EXPECT_LT(mDatabase.Open(StorePath(), mWait), 0);
    sqlite3_close(other);
    EXPECT_EQ(mDatabase.Open(StorePath(), mWait), 0);
}
