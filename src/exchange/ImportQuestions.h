#pragma once

#include <wx/string.h>

#include "exchange/ImportResult.h"

class wxWindow;

// What an import asks of a person. Called on the main thread while the worker waits; the parent is
// the progress window.
class ImportQuestions {
  public:
    enum class CategoryAnswer { kYes, kYesToAll, kCancel };
    struct MergeAnswer {
        // False stops the import.
        bool IsOk = false;
        // What the stored card becomes.
        FlashCard Merged;
        // How further cards of the run are merged; kAsk to be asked again.
        ImportMergePolicy Further = ImportMergePolicy::kAsk;
    };

    virtual ~ImportQuestions() = default;
    // May a category of that name be created?
    virtual CategoryAnswer AskNewCategory(wxWindow* parent, const wxString& name) = 0;
    // Which version of a card to keep; the mask tells the attributes that the record gave.
    virtual MergeAnswer AskMerge(wxWindow* parent, const FlashCard& stored,
                                 const FlashCard& imported, uint32_t attributeMask) = 0;
};
