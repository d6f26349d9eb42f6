#pragma once

#include <cstdint>
#include <map>

class Database;

// Numbers the new cards of an import, so that they come behind the cards of their category in the
// order of the file. Asks the store once for each category.
class IntroductionOrders {
  public:
    explicit IntroductionOrders(Database& database) : mDatabase(database) {}

    // A record gave its order itself; further numbers lie behind it.
    void Note(int32_t categoryId, int32_t order);
    // The order of the next new card.
    int32_t Take(int32_t categoryId);

  private:
    Database& mDatabase;
    // Category id to the next order, for categories that were asked for.
    std::map<int32_t, int32_t> mNext;
};
