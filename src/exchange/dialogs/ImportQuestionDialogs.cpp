#include "exchange/dialogs/ImportQuestionDialogs.h"

#include "exchange/dialogs/ImportNewCategoryMessageBox.h"

ImportQuestions::CategoryAnswer ImportQuestionDialogs::AskNewCategory(wxWindow* parent,
                                                                      const wxString& name) {
    ImportNewCategoryMessageBox box(parent, name);
    if (box.ShowModal() != wxID_YES) {
        return CategoryAnswer::kCancel;
    }
    return box.IsYesToAll() ? CategoryAnswer::kYesToAll : CategoryAnswer::kYes;
}

// No dialog puts this question yet, and no run asks it: an import begins with the policy that
// keeps the imported version. The answer that changes nothing is to stop.
ImportQuestions::MergeAnswer ImportQuestionDialogs::AskMerge(wxWindow*, const FlashCard&,
                                                             const FlashCard&, uint32_t) {
    return MergeAnswer();
}
