#include "ListFixture.h"

#include <sqlite3.h>

void ListTest::FillStore(int count) {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(StorePath().utf8_str(), &handle), SQLITE_OK);
    const std::string last = std::to_string(count - 1);
    const std::string sql =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < " + last +
        ") INSERT INTO Cards (CardId, Front, Back, CategoryId, Author, Chapter, Notes,"
        " IntroductionOrder, ForwardX, ReverseX, Introduced, RIntroduced)"
        " SELECT printf('%08x-0000-4000-8000-000000000000', i), printf('front %06d', " +
        last + " - i), 'back ' || i, 0, '', '', '', i, 0, 0, 0, 0 FROM n";
    EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(handle);
    sqlite3_close(handle);
}
