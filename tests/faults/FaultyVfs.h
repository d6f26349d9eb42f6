#pragma once

// A file layer beneath the engine that fails when a test says so, else that of the platform. It is
// the one that every store of the test program uses once Install was called.
class FaultyVfs {
  public:
    // What may fail. A write that fails has put half of its bytes.
    enum Call { kOpen, kRead, kWrite, kTruncate, kSync, kLock, kDelete, kFullWrite, kCallCount };

    static void Install();

    // The call of that kind at a position, counted from 1 on, fails; also every later one, if it is
    // to last. A position of 0 only counts.
    static void Arm(Call call, int position, bool lasting);
    // Nothing fails any more. Gives how many calls of the kind there were since Arm.
    static int Disarm();
    static bool HasFailed();
};
