#include "study/LearningProgress.h"

#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>

#include "base/Text.h"
#include "base/Time.h"
#include "scheduler/Scheduler.h"
#include "shell/Forms.h"
#include "store/Database.h"
#include "study/StudyTexts.h"

namespace {

constexpr int kPanelId = 10102;
constexpr int kBorder = kFormGap;
constexpr int kScrollStep = 10;
// With fewer cards the name of the category tells nothing.
constexpr int32_t kCardsThatShowCategory = 2;

// A number keeps the width of its first text, so that the labels beside it do not move. A number
// with more digits is cut with an ellipsis, and its tip shows all of it.
wxStaticText* MakeNumber(wxWindow* parent, int id, const wxString& firstText) {
    return new wxStaticText(parent, id, firstText, wxDefaultPosition, wxDefaultSize,
                            wxST_NO_AUTORESIZE | wxALIGN_RIGHT | wxST_ELLIPSIZE_END);
}

void SetNumber(wxStaticText& text, int32_t number) {
    const wxString digits = wxString::Format("%i", number);
    text.SetLabelText(digits);
    text.SetToolTip(digits);
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

LearningProgress::LearningProgress(const Source& source, wxWindow* parent, wxWindowID id,
                                   const wxString& title)
    : mCategoryId(source.Counted.Id), mCategoryName(source.Counted.Name) {
    const wxDateTime now = source.Time.Now();
    int32_t count = 0;
    // A count that fails stays 0, here and below.
    source.Store.SelectCategoryIdCount(mCategoryId, count);
    mShowCategory = count >= kCardsThatShowCategory;

    SetExtraStyle(wxFRAME_EX_METAL | wxWS_EX_BLOCK_EVENTS);
    wxDialog::Create(parent, id, title, wxDefaultPosition, wxDefaultSize,
                     wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER, "dialog");
    CreateControls(CountOutlook(source.Store, now), now);
    mpCategoryText->SetLabelText(wxString::Format(_("Category: %s"), ShownName(mCategoryName)));
    mpLayout->Show(mpCategoryText, mShowCategory);
    ShowCounts(source.Store, source.Time);

    // A scrolled window has no size of its own to ask for.
    wxWindow* const panel = mpLayout->GetContainingWindow();
    panel->SetMinSize(panel->GetSizer()->CalcMin());
    GetSizer()->Fit(this);
    Centre(wxBOTH);
}

LearningProgress::NumberTexts LearningProgress::ForwardTexts() {
    return {mpForwardReadyText, mpForwardMemorizedText, mpForwardWaitingText,
            mpForwardExcludedText};
}

LearningProgress::NumberTexts LearningProgress::ReverseTexts() {
    return {mpReverseReadyText, mpReverseMemorizedText, mpReverseWaitingText,
            mpReverseExcludedText};
}

void LearningProgress::CreateControls(const StudyOutlook& outlook, const wxDateTime& now) {
    auto* const panel = new wxScrolledWindow(this, kPanelId, wxDefaultPosition, wxDefaultSize,
                                             wxNO_BORDER | wxHSCROLL | wxVSCROLL, "panel");
    panel->SetScrollRate(kScrollStep, kScrollStep);
    const int border = FromDIP(kBorder);
    mpLayout = MakeFormColumn(*panel);

    mpCategoryText = new wxStaticText(panel, wxID_STATIC, _("Category"));
    mpLayout->Add(mpCategoryText);

    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpLayout->Add(row, FormRow(*panel));
    mpTotalText = MakeNumber(panel, kTotalId, _("counting..."));
    row->Add(mpTotalText, wxSizerFlags().CentreVertical().Border(wxRIGHT, border));
    row->Add(new wxStaticText(panel, wxID_STATIC, _("cards total")),
             wxSizerFlags().CentreVertical());

    CreateBox(*panel, _("Study Front to Back"), kForwardIds, ForwardTexts());
    CreateBox(*panel, _("Study Back to Front"), kReverseIds, ReverseTexts());
    CreateOutlook(*panel, outlook, now);

    auto* const column = new wxBoxSizer(wxVERTICAL);
    column->Add(panel, wxSizerFlags(1).Expand().Border(wxALL, border));
    column->Add(MakeOkCancel(*this),
                wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, 2 * border));
    SetSizer(column);
    FindWindow(wxID_OK)->SetFocus();
}

void LearningProgress::CreateBox(wxScrolledWindow& panel, const wxString& label,
                                 const NumberIds& ids, const NumberTexts& texts) {
    auto* const box = new wxStaticBoxSizer(wxVERTICAL, &panel, label);
    const int border = FromDIP(kBorder);
    mpLayout->Add(box, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
    auto* const table = new wxFlexGridSizer(2, border, border);
    box->Add(table, wxSizerFlags().Border(wxALL, border));
    const auto addRow = [&](int id, const wxString& text) {
        wxStaticText* const number = MakeNumber(box->GetStaticBox(), id, "0000");
        table->Add(number, wxSizerFlags().Right().CentreVertical());
        table->Add(new wxStaticText(box->GetStaticBox(), wxID_STATIC, text),
                   wxSizerFlags().Left().CentreVertical());
        return number;
    };
    texts.Ready = addRow(ids.Ready, _("cards ready for review"));
    texts.Memorized = addRow(ids.Memorized, _("cards memorized"));
    texts.Waiting = addRow(ids.Waiting, _("cards waiting for first review"));
    texts.Excluded = addRow(ids.Excluded, _("excluded from review"));
}

// Both directions stand side by side, in the order of the numbers in the list of categories, which
// add up to these.
void LearningProgress::CreateOutlook(wxScrolledWindow& panel, const StudyOutlook& outlook,
                                     const wxDateTime& now) {
    auto* const box = new wxStaticBoxSizer(wxVERTICAL, &panel, _("All categories"));
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

// A count that fails stays 0, as there is nothing better to show.
void LearningProgress::ShowCounts(Database& database, const Clock& clock) {
    int32_t total = 0;
    database.SelectCategoryIdCount(mCategoryId, total);
    SetNumber(*mpTotalText, total);

    for (const ReviewDirection direction : kEachDirection) {
        Counts counts;
        database.Count(direction, mCategoryId, counts.NotExcluded);
        database.CountIntroduced(direction, mCategoryId, counts.Introduced);
        database.CountReady(direction, mCategoryId, clock.Now(), counts.Ready);
        ShowDirection(total, counts, direction == kReviewForward ? ForwardTexts() : ReverseTexts());
    }
}

void LearningProgress::ShowDirection(int32_t total, const Counts& counts,
                                     const NumberTexts& texts) {
    SetNumber(*texts.Ready, counts.Ready);
    SetNumber(*texts.Memorized, counts.Introduced - counts.Ready);
    SetNumber(*texts.Waiting, counts.NotExcluded - counts.Introduced);
    SetNumber(*texts.Excluded, total - counts.NotExcluded);
}
