#pragma once

// How the program tells a person of the rare renumbering of the early-review order, which keeps the
// screen still for a while.
class MaintenancePrompt {
  public:
    virtual ~MaintenancePrompt() = default;
    // Returns when the person has confirmed.
    virtual void ConfirmStart() = 0;
    virtual void TellComplete() = 0;
};
