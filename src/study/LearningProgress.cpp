#include "study/LearningProgress.h"

#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>

#include "base/Text.h"
#include "base/Time.h"
#include "scheduler/Scheduler.h"
#include "shell/Forms.h"
#include "store/CategoryTree.h"
#include "store/Database.h"
#include "study/StudyTexts.h"

namespace {

constexpr int kPanelId = 10102;
constexpr int kBorder = kFormGap;
constexpr int kScrollStep = 10;
// With fewer cards the name of the category tells nothing.
constexpr int32_t kCardsThatShowCategory = 2;

// Makes a number that keeps the width of its first text, so that the labels beside it do not move.
// A number with more digits is cut with an ellipsis, and its tip shows all of it.
wxStaticText* MakeNumber(wxWindow* parent, int id, const wxString& firstText, int32_t number) {
    auto* const text = new wxStaticText(parent, id, firstText, wxDefaultPosition, wxDefaultSize,
                                        wxST_NO_AUTORESIZE | wxALIGN_RIGHT | wxST_ELLIPSIZE_END);
    const wxString digits = wxString::Format("%i", number);
    text->SetLabelText(digits);
    text->SetToolTip(digits);
    return text;
}

wxString NextDueText(const wxDateTime& due, const wxDateTime& now) {
    if (!due.IsValid()) {
        return _("No card has been scored yet");
    }
    if (due < now) {
        return _("Next card due now");
    }
    const auto seconds = static_cast<float>((due - now).GetSeconds().ToDouble());
    // Translators: %s is a length of time such as "3 hours".
    return wxString::Format(_("Next card due in %s"), IntervalText(seconds));
}

}  // namespace

// A count that fails stays 0, here and below, as there is nothing better to show.
LearningProgress::LearningProgress(const Source& source, wxWindow* parent, wxWindowID id,
                                   const wxString& title) {
    const CategoryChoice choice = FindChoice(source.Store, source.Counted.Id);
    int32_t total = 0;
    source.Store.SelectCategoryIdCount(choice, total);

    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, id, title, wxDefaultPosition, wxDefaultSize,
                     wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER, "dialog");
    mpForm = new wxScrolledWindow(this, kPanelId, wxDefaultPosition, wxDefaultSize,
                                  wxNO_BORDER | wxHSCROLL | wxVSCROLL, "panel");
    mpForm->SetScrollRate(kScrollStep, kScrollStep);
    mpLayout = MakeFormColumn(*mpForm);
    auto* const category = new wxStaticText(mpForm, wxID_STATIC, wxString());
    category->SetLabelText(wxString::Format(_("Category: %s"), ShownName(source.Counted.Name)));
    mpLayout->Add(category);
    mpLayout->Show(category, total >= kCardsThatShowCategory);
    AddTotal(total);
    for (const ReviewDirection direction : kEachDirection) {
        AddDirection(source, choice, total, direction);
    }
    AddOutlook(source);

    const int border = FromDIP(kBorder);
    auto* const column = new wxBoxSizer(wxVERTICAL);
    column->Add(mpForm, wxSizerFlags(1).Expand().Border(wxALL, border));
    column->Add(MakeOkCancel(*this),
                wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, 2 * border));
    SetSizer(column);
    FindWindow(wxID_OK)->SetFocus();
    // A scrolled window has no size of its own to ask for.
    mpForm->SetMinSize(mpForm->GetSizer()->CalcMin());
    GetSizer()->Fit(this);
    Centre(wxBOTH);
}

void LearningProgress::AddTotal(int32_t total) {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpLayout->Add(row, FormRow(*mpForm));
    row->Add(MakeNumber(mpForm, kTotalId, _("counting..."), total),
             wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(kBorder)));
    row->Add(new wxStaticText(mpForm, wxID_STATIC, _("cards total")),
             wxSizerFlags().CentreVertical());
}

void LearningProgress::AddDirection(const Source& source, const CategoryChoice& choice,
                                    int32_t total, ReviewDirection direction) {
    const bool isForward = direction == kReviewForward;
    const NumberIds& ids = isForward ? kForwardIds : kReverseIds;
    int32_t notExcluded = 0;
    int32_t introduced = 0;
    int32_t ready = 0;
    source.Store.Count(direction, choice, notExcluded);
    source.Store.CountIntroduced(direction, choice, introduced);
    source.Store.CountReady(direction, choice, source.Time.Now(), ready);

    auto* const box = new wxStaticBoxSizer(
        wxVERTICAL, mpForm, isForward ? _("Study Front to Back") : _("Study Back to Front"));
    const int border = FromDIP(kBorder);
    mpLayout->Add(box, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    auto* const table = new wxFlexGridSizer(2, border, border);
    box->Add(table, wxSizerFlags().Border(wxALL, border));
    const auto addRow = [&](int id, int32_t number, const wxString& text) {
        table->Add(MakeNumber(box->GetStaticBox(), id, "0000", number),
                   wxSizerFlags().Right().CentreVertical());
        table->Add(new wxStaticText(box->GetStaticBox(), wxID_STATIC, text),
                   wxSizerFlags().Left().CentreVertical());
    };
    addRow(ids.Ready, ready, _("cards ready for review"));
    addRow(ids.Memorized, introduced - ready, _("cards memorized"));
    addRow(ids.Waiting, notExcluded - introduced, _("cards waiting for first review"));
    addRow(ids.Excluded, total - notExcluded, _("excluded from review"));
}

// Both directions stand side by side, in the order of the numbers in the list of categories, which
// add up to these.
void LearningProgress::AddOutlook(const Source& source) {
    const wxDateTime now = source.Time.Now();
    const StudyOutlook outlook = CountOutlook(source.Store, now);
    auto* const box = new wxStaticBoxSizer(wxVERTICAL, mpForm, _("All categories"));
    wxWindow* const parent = box->GetStaticBox();
    const int border = FromDIP(kBorder);
    mpLayout->Add(box, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    auto* const table = new wxFlexGridSizer(3, border, 2 * border);
    box->Add(table, wxSizerFlags().Border(wxALL, border));
    const auto addText = [&](const wxString& text, int id = wxID_STATIC) {
        table->Add(new wxStaticText(parent, id, text), wxSizerFlags().Right().CentreVertical());
    };
    const auto addLabel = [&](const wxString& text) {
        table->Add(new wxStaticText(parent, wxID_STATIC, text), wxSizerFlags().CentreVertical());
    };
    // Translators: heads of two narrow columns of numbers.
    addText(_("Front to Back"));
    addText(_("Back to Front"));
    addLabel(wxString());
    const struct {
        int StudyOutlook::Side::*Count;
        int Id;
        wxString Label;
    } rows[] = {{&StudyOutlook::Side::Ready, kOutlookId, _("ready now")},
                {&StudyOutlook::Side::WithinDay, kOutlookId + 2, _("due within 24 hours")},
                {&StudyOutlook::Side::New, kOutlookId + 4, _("new cards left")}};
    for (const auto& row : rows) {
        addText(wxString::Format("%i", outlook.Forward.*row.Count), row.Id);
        addText(wxString::Format("%i", outlook.Reverse.*row.Count), row.Id + 1);
        addLabel(row.Label);
    }
    box->Add(new wxStaticText(parent, kNextDueId, NextDueText(outlook.NextDue, now)),
             wxSizerFlags().Border(wxLEFT | wxRIGHT | wxBOTTOM, border));
}
