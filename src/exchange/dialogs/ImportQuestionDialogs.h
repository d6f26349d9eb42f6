#pragma once

#include "exchange/ImportQuestions.h"

// Puts the questions of an import as modal dialogs.
class ImportQuestionDialogs : public ImportQuestions {
  public:
    CategoryAnswer AskNewCategory(wxWindow* parent, const wxString& name) override;
    MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored, const FlashCard& imported,
                         uint32_t attributeMask) override;
};
