#pragma once

#include <cstdint>

class Database;

// Which category is under study. The program's implementation reads the setting and repairs it
// against the store.
class CategorySource {
  public:
    virtual ~CategorySource() = default;
    // The id of a category of the store, or -1 when none could be had.
    virtual int32_t GetCurrentCategoryId(Database& database) = 0;
};
