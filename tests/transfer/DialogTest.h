#pragma once

#include "support/GuiTest.h"

// Remembers how many dialogs had been shown when it was asked to deliver.
class OrderedReport : public RecordingReport {
  public:
    explicit OrderedReport(const ModalAnswers& answers) : mAnswers(answers) {}
    void DeliverPending() override { DialogsBefore = mAnswers.Dialogs.size(); }
    size_t DialogsBefore = 0;

  private:
    const ModalAnswers& mAnswers;
};

// A test of dialogs, which may show further dialogs, on a real store.
struct DialogTest : GuiStoreTest {
    ModalAnswers mAnswers;
    OrderedReport mOrdered{mAnswers};
};
