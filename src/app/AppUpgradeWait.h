#pragma once

#include "store/UpgradeWait.h"

class wxWindow;

// Waits for the upgrade of a store behind a modal dialog.
class AppUpgradeWait : public UpgradeWait {
  public:
    // The parent of the dialog, or null.
    explicit AppUpgradeWait(wxWindow* parent) : mpParent(parent) {}
    void WaitFor(wxThread& worker) override;

  private:
    wxWindow* mpParent;
};
