#include "exchange/dialogs/ImportQuestionDialogs.h"

#include <wx/defs.h>

#include "exchange/dialogs/ImportNewCategoryMessageBox.h"
#include "exchange/dialogs/MergeDialog.h"

ImportQuestions::CategoryAnswer ImportQuestionDialogs::AskNewCategory(wxWindow* parent,
                                                                      const wxString& name) {
    ImportNewCategoryMessageBox box(parent, name);
    if (box.ShowModal() != wxID_YES) {
        return CategoryAnswer::kCancel;
    }
    return box.IsYesToAll() ? CategoryAnswer::kYesToAll : CategoryAnswer::kYes;
}

ImportQuestions::MergeAnswer ImportQuestionDialogs::AskMerge(wxWindow* parent,
                                                             const FlashCard& stored,
                                                             const FlashCard& imported, uint32_t) {
    MergeDialog dialog(parent);
    dialog.SetCards(stored, imported);
    MergeAnswer answer;
    answer.IsOk = dialog.ShowModal() == wxOK;
    answer.Merged = dialog.GetMergedCard();
    if (dialog.GetChoice() == MergeDialog::kAlwaysImported) {
        answer.Further = ImportMergePolicy::kKeepImported;
    } else if (dialog.GetChoice() == MergeDialog::kAlwaysDatabase) {
        answer.Further = ImportMergePolicy::kKeepDatabase;
    }
    return answer;
}
