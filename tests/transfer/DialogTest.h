#pragma once

#include "support/GuiTest.h"

// Notes how many dialogs had been shown when it was asked to deliver.
class OrderedReport : public RecordingReport {
  public:
    explicit OrderedReport(const ModalAnswers& answers) : mAnswers(answers) {}
    void DeliverPending() override { DialogsBefore = mAnswers.Dialogs.size(); }
    size_t DialogsBefore = 0;

  private:
    const ModalAnswers& mAnswers;
};

// A test of dialogs that are shown, and of those that they show in turn.
struct DialogTest : GuiStoreTest {
    ModalAnswers mAnswers;
    OrderedReport mOrdered{mAnswers};
};
