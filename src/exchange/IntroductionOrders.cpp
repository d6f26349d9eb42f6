#include "exchange/IntroductionOrders.h"

#include <limits>

#include "store/Database.h"

namespace {

int32_t Following(int32_t order) {
    return order == std::numeric_limits<int32_t>::max() ? order : order + 1;
}

}  // namespace

void IntroductionOrders::Note(int32_t categoryId, int32_t order) {
    const auto next = mNext.find(categoryId);
    if (next != mNext.end() && next->second <= order) {
        next->second = Following(order);
    }
}

int32_t IntroductionOrders::Take(int32_t categoryId) {
    auto next = mNext.find(categoryId);
    if (next == mNext.end()) {
        int32_t greatest = 0;
        const bool found = mDatabase.SelectMaxIntroductionOrder(categoryId, greatest) >= 0;
        next = mNext.emplace(categoryId, found ? Following(greatest) : 0).first;
    }
    const int32_t order = next->second;
    next->second = Following(order);
    return order;
}
