#include "edit/EditSchedulePanel.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/spinctrl.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "plot/PlotControl.h"
#include "scheduler/ReviewArithmetic.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kLowestDifficulty = 0;
constexpr int kHighestDifficulty = 32;
constexpr int kHighestScore = 5;
// The unit of an interval that is put in place of several ones.
constexpr int kDays = 3;
// The least width of a number, in pixels at 1x.
constexpr int kNumberWidth = 80;
// The least size of the plot of reviews, likewise.
const wxSize kLifeSize(160, 84);

constexpr const char* kUnits[] = {wxTRANSLATE("second(s)"), wxTRANSLATE("minute(s)"),
                                  wxTRANSLATE("hour(s)"),   wxTRANSLATE("day(s)"),
                                  wxTRANSLATE("week(s)"),   wxTRANSLATE("month(s)"),
                                  wxTRANSLATE("year(s)")};
static_assert(std::size(kUnits) == kIntervalUnitCount);

// The texts of the scores from 5 to 0.
constexpr const char* kScores[] = {
    wxTRANSLATE("5 - Pass (no hesitation)"),   wxTRANSLATE("4 - Pass (some hesitation)"),
    wxTRANSLATE("3 - Pass (with difficulty)"), wxTRANSLATE("2 - Pass (not confident)"),
    wxTRANSLATE("1 - Pass (by guessing)"),     wxTRANSLATE("0 - Fail (incorrect)\n")};
static_assert(std::size(kScores) == kHighestScore + 1);

template <size_t kCount>
wxArrayString Translated(const char* const (&texts)[kCount]) {
    wxArrayString translated;
    for (const char* const text : texts) {
        translated.Add(wxGetTranslation(text));
    }
    return translated;
}

// Reads a number with white space around it. Returns false for a blank text and for any other.
bool ReadNumber(const wxString& text, double& number) {
    const wxString trimmed = TrimWide(text);
    return !trimmed.empty() && ParseDecimal(trimmed, number);
}

bool ReadDifficulty(const wxString& text, uint8_t& difficulty) {
    double number = 0.0;
    if (!ReadNumber(text, number) || !(number >= kLowestDifficulty) ||
        number > kHighestDifficulty || number != std::floor(number)) {
        return false;
    }
    difficulty = static_cast<uint8_t>(number);
    return true;
}

// Returns true when a bad text must stay in the control, so that a save can tell the user about it.
// The platform's control replaces any text by a number within its range as soon as it loses the
// focus: 40 becomes 32, and a blank text 0. Other numbers, such as those of the arrows, may replace
// the text.
bool KeepsText(const wxString& text, double value) {
    uint8_t difficulty = 0;
    double number = 0.0;
    const double made = ReadNumber(text, number)
                            ? std::clamp<double>(number, kLowestDifficulty, kHighestDifficulty)
                            : kLowestDifficulty;
    return !ReadDifficulty(text, difficulty) && value == made;
}

wxString After(unsigned count, int unit) {
    const wxString texts[] = {wxPLURAL("in %i second", "in %i seconds", count),
                              wxPLURAL("in %i minute", "in %i minutes", count),
                              wxPLURAL("in %i hour", "in %i hours", count),
                              wxPLURAL("in %i day", "in %i days", count),
                              wxPLURAL("in %i week", "in %i weeks", count),
                              wxPLURAL("in %i month", "in %i months", count),
                              wxPLURAL("in %i year", "in %i years", count)};
    return wxString::Format(texts[unit], static_cast<int>(count));
}

wxString Before(unsigned count, int unit) {
    const wxString texts[] = {wxPLURAL("%i second ago", "%i seconds ago", count),
                              wxPLURAL("%i minute ago", "%i minutes ago", count),
                              wxPLURAL("%i hour ago", "%i hours ago", count),
                              wxPLURAL("%i day ago", "%i days ago", count),
                              wxPLURAL("%i week ago", "%i weeks ago", count),
                              wxPLURAL("%i month ago", "%i months ago", count),
                              wxPLURAL("%i year ago", "%i years ago", count)};
    return wxString::Format(texts[unit], static_cast<int>(count));
}

}  // namespace

wxString DescribeTime(const wxDateTime& time, const wxDateTime& now) {
    const auto seconds = (time - now).GetSeconds().ToDouble();
    const IntervalInUnits distance = SplitInterval(static_cast<float>(std::abs(seconds)));
    const auto count = static_cast<unsigned>(std::lround(distance.Value));
    const bool isThisYear = time.GetYear() == now.GetYear();
    const wxString date =
        FormatDate(time, isThisYear ? _("%a %d %b %H:%M") : _("%a %d %b %Y %H:%M"));
    return (seconds < 0 ? Before(count, distance.Unit) : After(count, distance.Unit)) + ", " + date;
}

EditSchedulePanel::EditSchedulePanel(wxWindow* parent, wxWindowID id, const wxString& title)
    : wxPanel(parent, id, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "panel") {
    CreateControls();
    LayOut(title);
    // The heading may be scrolled away, and the tool tips still tell the two panels apart.
    SetToolTip(title);
    for (wxWindow* const child : GetChildren()) {
        child->SetToolTip(title);
    }
    UsePanelColour();
    Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
        event.Skip();
        UsePanelColour();
    });
}

void EditSchedulePanel::CreateControls() {
    mpIntroduced = new wxCheckBox(this, ID_INTRODUCED, _("Introduced"), wxDefaultPosition,
                                  wxDefaultSize, wxCHK_3STATE);
    mpReset = new wxButton(this, ID_RESET_SCHEDULE, _("Reset"));
    mpReset->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Reset(); });
    mpReset->Hide();
    mpLastReview = CreateReadOnlyText(ID_LAST_REVIEW);
    mpLastReviewHere = CreateDescription();
    mpReviewInterval = new wxTextCtrl(this, ID_REVIEW_INTERVAL);
    mpReviewInterval->SetMinSize(FromDIP(wxSize(kNumberWidth, -1)));
    mpIntervalUnit =
        new wxChoice(this, ID_INTERVAL_UNIT, wxDefaultPosition, wxDefaultSize, Translated(kUnits));
    mpIntervalUnit->SetSelection(0);
    mpNextReview = CreateReadOnlyText(ID_NEXT_REVIEW);
    mpNextReviewHere = CreateDescription();
    mpDifficulty =
        new wxSpinCtrl(this, ID_DIFFICULTY, "0", wxDefaultPosition, wxDefaultSize, wxSP_ARROW_KEYS,
                       kLowestDifficulty, kHighestDifficulty, 0, "wxSpinCtrl");
    KeepSpinText(*mpDifficulty, KeepsText);
    mpLastScore =
        new wxChoice(this, ID_LAST_SCORE, wxDefaultPosition, wxDefaultSize, Translated(kScores));
    mpLife = new PlotControl(this, ID_CARD_LIFE, PlotControl::Form::Compact);
    mpLife->SetMinSize(FromDIP(kLifeSize));
    mpLife->HideTitle();
    mpLife->Hide();
}

wxTextCtrl* EditSchedulePanel::CreateReadOnlyText(int id) {
    auto* const text =
        new wxTextCtrl(this, id, wxString(), wxDefaultPosition, wxDefaultSize, wxTE_READONLY);
    // Just wide enough for a time, which leaves room for the description beside it.
    text->SetMinSize(text->GetSizeFromText(FormatTimeStamp(CurrentTime()) + "00"));
    return text;
}

// Makes a text that is wide enough for any time from the start, so that the form keeps its width.
wxStaticText* EditSchedulePanel::CreateDescription() {
    const wxDateTime now = CurrentTime();
    const wxString longest = DescribeTime(now + wxDateSpan(1, 1), now);
    return new wxStaticText(this, wxID_ANY, wxString(), wxDefaultPosition, GetTextExtent(longest),
                            wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END);
}

void EditSchedulePanel::LayOut(const wxString& title) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    wxBoxSizer* const group = AddFormGroup(*column, *this, title);
    // At the top it is seen even where the window shows only the head of the schedules.
    group->Add(mpLife, FormRow(*this));
    auto* const introduced = new wxBoxSizer(wxHORIZONTAL);
    introduced->Add(mpIntroduced, wxSizerFlags(1).CentreVertical());
    introduced->Add(mpReset, wxSizerFlags().CentreVertical());
    group->Add(introduced, FormRow(*this));
    SetAccessibleName(*mpReset, title + ": " + mpReset->GetLabel());
    SetAccessibleName(*mpIntroduced, title + ": " + mpIntroduced->GetLabel());

    auto* const grid = new wxFlexGridSizer(2, FromDIP(wxSize(kFormEdge, kFormGap)));
    grid->AddGrowableCol(1, 1);
    const auto beside = [this](wxWindow& time, wxWindow& description) {
        auto* const row = new wxBoxSizer(wxHORIZONTAL);
        row->Add(&time, wxSizerFlags().CentreVertical());
        row->Add(&description, wxSizerFlags(1).CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
        return row;
    };
    AddRow(*grid, _("Last Review"), *mpLastReview, title, beside(*mpLastReview, *mpLastReviewHere));
    auto* const interval = new wxBoxSizer(wxHORIZONTAL);
    interval->Add(mpReviewInterval, wxSizerFlags(1).CentreVertical());
    interval->Add(mpIntervalUnit,
                  wxSizerFlags().CentreVertical().Border(wxLEFT, FromDIP(kFormGap)));
    SetAccessibleName(*mpIntervalUnit, title + ": " + _("Unit of the Review Interval"));
    AddRow(*grid, _("Review Interval"), *mpReviewInterval, title, interval);
    AddRow(*grid, _("Next Review"), *mpNextReview, title, beside(*mpNextReview, *mpNextReviewHere));
    AddRow(*grid, _("Difficulty"), *mpDifficulty, title);
    AddRow(*grid, _("Last Score"), *mpLastScore, title);
    group->Add(grid, FormRow(*this));
    SetSizer(column);
}

// Adds a row to the grid: the label, and the control or the sizer that it stands in.
void EditSchedulePanel::AddRow(wxFlexGridSizer& grid, const wxString& label, wxWindow& control,
                               const wxString& title, wxSizer* field) {
    grid.Add(MakeFormLabel(label, control, title + ": " + label), wxSizerFlags().CentreVertical());
    if (field != nullptr) {
        grid.Add(field, wxSizerFlags().Expand());
    } else {
        grid.Add(&control, wxSizerFlags().Expand());
    }
}

// Gives the read-only texts the colour of the panel. The colour is copied, so this runs again when
// the desktop's colours change.
void EditSchedulePanel::UsePanelColour() {
    for (wxTextCtrl* const text : {mpLastReview, mpNextReview}) {
        text->SetBackgroundColour(GetBackgroundColour());
    }
}

void EditSchedulePanel::Load(const CardSchedule& schedule) {
    mpReset->Hide();
    ShowSchedule(schedule, ScheduleParts());
}

void EditSchedulePanel::LoadMany(const CardSchedule& schedule, const ScheduleParts& several) {
    mpReset->Show();
    ShowSchedule(schedule, several);
}

void EditSchedulePanel::ShowSchedule(const CardSchedule& schedule, const ScheduleParts& several) {
    mSchedule = schedule;
    mSeveral = several;
    mIsReset = false;
    const auto show = [](wxTextCtrl& field, const wxString& text, bool isSeveral) {
        field.ChangeValue(isSeveral ? wxString() : text);
        ShowWhileEmpty(field, isSeveral ? _("(several)") : wxString());
    };
    mpIntroduced->Set3StateValue(IsSeveral(SchedulePart::kIntroduced) ? wxCHK_UNDETERMINED
                                 : schedule.Introduced                ? wxCHK_CHECKED
                                                                      : wxCHK_UNCHECKED);
    const bool hasLastReviews = IsSeveral(SchedulePart::kLastReview);
    const bool hasIntervals = IsSeveral(SchedulePart::kReviewInterval);
    show(*mpLastReview, FormatTimeStamp(schedule.LastReview), hasLastReviews);
    const IntervalInUnits interval = SplitInterval(schedule.ReviewInterval);
    show(*mpReviewInterval, wxString::Format("%.2f", static_cast<double>(interval.Value)),
         hasIntervals);
    mpIntervalUnit->SetSelection(hasIntervals ? kDays : interval.Unit);
    const bool hasDifficulties = IsSeveral(SchedulePart::kDifficulty);
    mpDifficulty->SetValue(hasDifficulties ? kLowestDifficulty : schedule.Difficulty);
    if (hasDifficulties) {
        mpDifficulty->SetValue(wxString());
    }
    ShowWhileEmpty(*mpDifficulty, hasDifficulties ? _("(several)") : wxString());
    show(*mpNextReview, FormatTimeStamp(schedule.NextReview()), hasLastReviews || hasIntervals);
    while (mpLastScore->GetCount() > std::size(kScores)) {
        mpLastScore->Delete(mpLastScore->GetCount() - 1);
    }
    if (IsSeveral(SchedulePart::kLastScore)) {
        mpLastScore->SetSelection(mpLastScore->Append(_("(several)")));
    } else {
        // A damaged store may hold a score above 5, which has no text.
        mpLastScore->SetSelection(
            schedule.LastScore <= kHighestScore ? kHighestScore - schedule.LastScore : wxNOT_FOUND);
    }
    for (wxWindow* const child : GetChildren()) {
        TextUndo::Restart(*child);
    }
    DescribeTimes();
    mSaved = GetState();
}

// A card that was not introduced has times too, but they stand for no review.
void EditSchedulePanel::DescribeTimes() {
    const wxDateTime now = CurrentTime();
    const bool isKnown = mSchedule.Introduced && !IsSeveral(SchedulePart::kIntroduced) &&
                         !IsSeveral(SchedulePart::kLastReview) &&
                         !IsSeveral(SchedulePart::kReviewInterval);
    const auto describe = [&](const wxDateTime& time) {
        return isKnown ? DescribeTime(time, now) : wxString();
    };
    mpLastReviewHere->SetLabel(describe(mSchedule.LastReview));
    mpNextReviewHere->SetLabel(describe(mSchedule.NextReview()));
}

void EditSchedulePanel::Follow(const CardSchedule& schedule) {
    if (!IsModified() && schedule != mSchedule) {
        Load(schedule);
    }
    DescribeTimes();
}

void EditSchedulePanel::FollowMany(const CardSchedule& schedule, const ScheduleParts& several) {
    if (!IsModified() && (schedule != mSchedule || several != mSeveral)) {
        ShowSchedule(schedule, several);
    }
    DescribeTimes();
}

// Puts the values of a card that was never studied into the controls. A save writes all of them,
// whatever was studied meanwhile, and then those that the user has put in their place.
void EditSchedulePanel::Reset() {
    mIsReset = true;
    const CardSchedule fresh;
    const IntervalInUnits interval = SplitInterval(fresh.ReviewInterval);
    mpIntroduced->Set3StateValue(wxCHK_UNCHECKED);
    mpReviewInterval->SetValue(wxString::Format("%.2f", static_cast<double>(interval.Value)));
    mpIntervalUnit->SetSelection(interval.Unit);
    mpDifficulty->SetValue(fresh.Difficulty);
    mpLastScore->SetSelection(kHighestScore - fresh.LastScore);
}

int EditSchedulePanel::Save(CardSchedule& schedule) {
    const State state = GetState();
    CardSchedule changed = mIsReset ? CardSchedule() : schedule;
    if (state.Introduced != mSaved.Introduced) {
        changed.Introduced = state.Introduced == wxCHK_CHECKED;
    }
    if (state.Score != mSaved.Score && state.Score != wxNOT_FOUND) {
        changed.LastScore = static_cast<uint8_t>(kHighestScore - state.Score);
    }
    if (CollectInterval(state, changed.ReviewInterval) < 0 ||
        CollectDifficulty(state, changed.Difficulty) < 0) {
        return -1;
    }
    schedule = changed;
    return 0;
}

int EditSchedulePanel::CollectInterval(const State& state, float& seconds) {
    const bool isTouched = state.Interval != mSaved.Interval || state.Unit != mSaved.Unit;
    if (isTouched && !ReadInterval(seconds)) {
        ShowValidationMessage(_("ReviewInterval must be a number"));
        mpReviewInterval->SetFocus();
        mpReviewInterval->SelectAll();
        return -1;
    }
    return 0;
}

int EditSchedulePanel::CollectDifficulty(const State& state, uint8_t& difficulty) {
    if (state.Difficulty != mSaved.Difficulty && !ReadDifficulty(state.Difficulty, difficulty)) {
        ShowValidationMessage(
            wxString::Format(_("Difficulty must be a while number between %i and %i"),
                             kLowestDifficulty, kHighestDifficulty));
        mpDifficulty->SetFocus();
        mpDifficulty->SetSelection(-1, -1);
        return -1;
    }
    return 0;
}

bool EditSchedulePanel::ReadInterval(float& seconds) const {
    constexpr float kGreatest = std::numeric_limits<float>::max();
    double number = 0.0;
    if (!ReadNumber(mpReviewInterval->GetValue(), number) || !(number >= 0.0) ||
        number > static_cast<double>(kGreatest)) {
        return false;
    }
    const auto value = static_cast<float>(number);
    const float unit = IntervalUnitSeconds(mpIntervalUnit->GetSelection());
    seconds = value > kGreatest / unit ? kGreatest : value * unit;
    return true;
}

bool EditSchedulePanel::ShowLife(Plot plot, bool isShown) {
    mpLife->SetPlot(std::move(plot));
    return mpLife->Show(isShown);
}

bool EditSchedulePanel::IsModified() const {
    return mIsReset || !(GetState() == mSaved);
}

ScheduleParts EditSchedulePanel::GetTouched() const {
    ScheduleParts parts;
    if (mIsReset) {
        return parts.set();
    }
    const State state = GetState();
    const auto note = [&parts](SchedulePart part, bool isTouched) {
        parts.set(static_cast<size_t>(part), isTouched);
    };
    note(SchedulePart::kIntroduced, state.Introduced != mSaved.Introduced);
    note(SchedulePart::kReviewInterval,
         state.Interval != mSaved.Interval || state.Unit != mSaved.Unit);
    note(SchedulePart::kDifficulty, state.Difficulty != mSaved.Difficulty);
    note(SchedulePart::kLastScore, state.Score != mSaved.Score);
    return parts;
}

EditSchedulePanel::State EditSchedulePanel::GetState() const {
    return {mpIntroduced->Get3StateValue(), mpLastReview->GetValue(),
            mpReviewInterval->GetValue(),   mpIntervalUnit->GetSelection(),
            mpDifficulty->GetTextValue(),   mpLastScore->GetSelection()};
}

bool EditSchedulePanel::State::operator==(const State& other) const {
    return std::tie(Introduced, LastReview, Interval, Unit, Difficulty, Score) ==
           std::tie(other.Introduced, other.LastReview, other.Interval, other.Unit,
                    other.Difficulty, other.Score);
}
