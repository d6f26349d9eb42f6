#include "scheduler/SchedulerSources.h"

float SequenceRandom::Next() {
    // 1/32767 as a float, so that the greatest whole number gives exactly 1.
    constexpr float kStep = 0x1.0002p-15f;
    return static_cast<float>(NextWhole()) * kStep;
}

int SequenceRandom::NextWhole() {
    mState = mState * 214013U + 2531011U;
    return static_cast<int>((mState >> 16) & 0x7FFFU);
}
