#pragma once

#include "scheduler/MaintenancePrompt.h"

// Tells of the scheduler's rare maintenance in message boxes.
class AppMaintenancePrompt : public MaintenancePrompt {
  public:
    void ConfirmStart() override;
    void TellComplete() override;
};
