#pragma once

#include <algorithm>
#include <cstdint>
#include <tuple>

// When, and on which computer, a field of a card was changed. A later stamp wins; at one time the
// greater machine does, so that every computer decides alike.
struct Stamp {
    // Milliseconds since 1970 by a HybridClock; 0 for a field that nobody has changed.
    int64_t Time = 0;
    uint64_t Machine = 0;

    bool IsNone() const { return Time == 0; }
    bool operator==(const Stamp& other) const {
        return Time == other.Time && Machine == other.Machine;
    }
    bool operator!=(const Stamp& other) const { return !(*this == other); }
    bool operator<(const Stamp& other) const {
        return std::tie(Time, Machine) < std::tie(other.Time, other.Machine);
    }
};

// The stamp of what was there before the first exchange. All that was changed since wins over it.
constexpr int64_t kTimeBeforeExchanges = 1;
// The greatest time that a stamp may have, in the year 9999, and the greatest one of others that
// the clock follows: after it there is room for all changes that will ever be made.
constexpr int64_t kLastStampTime = 253402300799999;
constexpr int64_t kLastTimeFollowed = kLastStampTime - 1000000000000;

// The computer's clock, as far as it runs forward: its times are later than all that it has seen of
// other computers, so a change that was made with the knowledge of another one wins over it though
// a clock be wrong.
class HybridClock {
  public:
    explicit HybridClock(int64_t last = 0) : mLast(last) {}

    // Returns the next time, by the computer's clock in milliseconds.
    int64_t Next(int64_t now) {
        mLast = std::max(now, mLast + 1);
        return mLast;
    }
    void See(int64_t time) { mLast = std::max(mLast, time > kLastTimeFollowed ? 0 : time); }
    int64_t GetLast() const { return mLast; }

  private:
    int64_t mLast;
};
