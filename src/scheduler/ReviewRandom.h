#pragma once

#include <cstdint>

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
