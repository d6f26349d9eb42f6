#pragma once

class wxThread;

// What the store asks of the program while a worker upgrades the store file: keep the person
// informed and come back when the worker has ended. The thread is joinable and already runs; the
// caller joins it afterwards.
class UpgradeWait {
  public:
    virtual ~UpgradeWait() = default;
    virtual void WaitFor(wxThread& worker) = 0;
};
