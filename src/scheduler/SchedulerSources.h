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

// How the program tells a person of the rare renumbering of the early-review order, which keeps the
// screen still for a while.
class MaintenancePrompt {
  public:
    virtual ~MaintenancePrompt() = default;
    // Returns when the person has confirmed.
    virtual void ConfirmStart() = 0;
    virtual void TellComplete() = 0;
};

// The source of chance in the schedule. Injectable, so that a test can repeat or choose it.
class ReviewRandom {
  public:
    virtual ~ReviewRandom() = default;
    // A number in the closed range 0 to 1.
    virtual float Next() = 0;
};

// The fixed sequence of a 15-bit linear congruential generator that starts at 1 with every start of
// the program: 41, 18467, 6334, 26500, ... each divided by 32767.
class SequenceRandom : public ReviewRandom {
  public:
    float Next() override;
    // The next whole number, 0 to 32767.
    int NextWhole();

  private:
    uint32_t mState = 1;
};
