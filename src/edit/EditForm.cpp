#include "edit/EditForm.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/clntdata.h>
#include <wx/combobox.h>
#include <wx/hyperlink.h>
#include <wx/intl.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <map>

#include "base/Text.h"
#include "base/Unicode.h"
#include "edit/EditSchedulePanel.h"
#include "edit/MediaStrip.h"
#include "shell/Forms.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"

namespace {

// The least width of a text field, in pixels at 1x.
constexpr int kTextWidth = 320;
// Lines that a field of several lines shows at least.
constexpr int kLeastLines = 4;

enum class FieldKind { Lines, Line, Short, Choice };

struct FieldRow {
    int Id;
    // Its mnemonic differs from those of the menus and the buttons, which work in the same window.
    const char* Label;
    FieldKind Kind;
};

constexpr FieldRow kRows[kCardFieldCount] = {
    {EditForm::ID_FRONT, wxTRANSLATE("F&ront"), FieldKind::Lines},
    {EditForm::ID_BACK, wxTRANSLATE("&Back"), FieldKind::Lines},
    {EditForm::ID_CATEGORY, wxTRANSLATE("Cate&gory"), FieldKind::Choice},
    {EditForm::ID_AUTHOR, wxTRANSLATE("&Author"), FieldKind::Line},
    {EditForm::ID_CHAPTER, wxTRANSLATE("Cha&pter"), FieldKind::Line},
    {EditForm::ID_NOTES, wxTRANSLATE("&Notes"), FieldKind::Lines},
    {EditForm::ID_INTRODUCTION_ORDER, wxTRANSLATE("&Introduction Order"), FieldKind::Short}};

// The id of the category whose name a row of the choice shows.
class RowCategory : public wxClientData {
  public:
    explicit RowCategory(int32_t id) : mId(id) {}
    int32_t GetId() const { return mId; }

  private:
    int32_t mId;
};

int32_t GetRowCategory(const wxComboBox& choice, unsigned row) {
    return static_cast<const RowCategory*>(choice.GetClientObject(row))->GetId();
}

// Replaces what would break the display: the toolkit ends a text at a NUL, and shows nothing at all
// of a text with half a surrogate pair.
wxString MakeShowable(const wxString& text) {
    wxString showable = FromUtf8(ToUtf8(text));
    showable.Replace(wxString(wxUniChar(0)), wxString(wxUniChar(0xFFFD)));
    return showable;
}

wxString FormatOrder(int32_t order) {
    return order == kBlankOrder ? wxString() : wxString::Format("%i", order);
}

}  // namespace

EditForm::EditForm(wxWindow* parent)
    : wxScrolledWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                       wxHSCROLL | wxVSCROLL | wxTAB_TRAVERSAL) {
    SetScrollRate(1, 1);
    // Keys pressed inside a composite control, such as a choice's button, arrive here.
    Bind(wxEVT_CHAR, &EditForm::OnFieldChar, this);
    wxBoxSizer* const column = MakeFormColumn(*this);
    AddFields(*column, _("Text"), EditField::Front, EditField::Back);
    AddFields(*column, _("Details"), EditField::Category, EditField::IntroductionOrder);
    AlignLabels();
    AddSchedules(*column);
    // Tab goes from text to text first.
    for (size_t i = 0; i < mStrips.size(); ++i) {
        mStripButtons.at(i)->MoveAfterInTabOrder(GetChildren().GetLast()->GetData());
        mStrips.at(i)->MoveAfterInTabOrder(GetChildren().GetLast()->GetData());
    }
    BindFields(*this);
    LetFormScroll(*this);
    TextUndo::AttachTo(*this);
    FitTextHeights(*this);
    FitInside();
}

// Adds a titled group with a row for each of the fields.
void EditForm::AddFields(wxBoxSizer& column, const wxString& title, EditField first,
                         EditField last) {
    wxBoxSizer* const group = AddFormGroup(column, *this, title);
    auto* const grid = new wxFlexGridSizer(2, FromDIP(wxSize(kFormEdge, kFormGap)));
    grid->AddGrowableCol(1, 1);
    for (auto field = static_cast<size_t>(first); field <= static_cast<size_t>(last); ++field) {
        AddField(*grid, static_cast<EditField>(field));
    }
    if (last == EditField::IntroductionOrder) {
        AddExclusions(*grid);
    }
    group->Add(grid, FormRow(*this).Proportion(1));
    if (first == EditField::Front) {
        // The sides of the card get the room that a tall window has to spare.
        column.GetItem(group)->SetProportion(1);
    }
}

void EditForm::CreateControl(EditField field) {
    const FieldRow& row = kRows[static_cast<size_t>(field)];
    Field& added = At(field);
    if (row.Kind == FieldKind::Choice) {
        mpCategory = new wxComboBox(this, row.Id, wxString(), wxDefaultPosition, wxDefaultSize, 0,
                                    nullptr, wxCB_DROPDOWN);
        added.Control = mpCategory;
        added.Entry = mpCategory;
    } else {
        const long style = row.Kind == FieldKind::Lines ? wxTE_MULTILINE : 0;
        auto* const text =
            new wxTextCtrl(this, row.Id, wxString(), wxDefaultPosition, wxDefaultSize, style);
        added.Control = text;
        added.Entry = text;
    }
    const wxString label = wxGetTranslation(row.Label);
    added.Label = MakeFormLabel(label, *added.Control, wxControl::RemoveMnemonics(label));
    added.Control->Bind(wxEVT_TEXT, [this, field](wxCommandEvent& event) {
        event.Skip();
        if (At(field).IsSeveral) {
            // The history of the field, which tells whether it is touched, hears of it first.
            CallAfter([this, field] { At(field).SayWhetherSeveral(); });
        }
    });
}

void EditForm::AddField(wxFlexGridSizer& grid, EditField field) {
    CreateControl(field);
    const FieldKind kind = kRows[static_cast<size_t>(field)].Kind;
    const Field& added = At(field);
    const bool isLong = kind == FieldKind::Lines;
    if (isLong) {
        grid.AddGrowableRow(grid.GetItemCount() / 2, 1);
    }
    const bool isSide = field == EditField::Front || field == EditField::Back;
    MediaStrip* strip = nullptr;
    if (isSide) {
        // The room below the label is that of the button.
        strip = new MediaStrip(this, *static_cast<wxTextCtrl*>(added.Control));
        mStrips.at(static_cast<size_t>(field)) = strip;
        auto* const rows = new wxBoxSizer(wxVERTICAL);
        rows->Add(added.Label, wxSizerFlags().Border(wxTOP, FromDIP(kFormGap) / 2));
        wxWindow* const button = strip->MakeButton(this);
        mStripButtons.at(static_cast<size_t>(field)) = button;
        rows->Add(button, wxSizerFlags().Border(wxTOP, FromDIP(kFormGap)));
        grid.Add(rows);
    } else {
        // The label of a long text stands beside its first line.
        grid.Add(added.Label, isLong ? wxSizerFlags().Border(wxTOP, FromDIP(kFormGap) / 2)
                                     : wxSizerFlags().CentreVertical());
    }
    grid.Add(added.Control, kind == FieldKind::Short ? wxSizerFlags() : wxSizerFlags().Expand());
    if (kind != FieldKind::Short) {
        // Without a minimum the longest category name would set the width of the form.
        const int height = isLong ? kLeastLines * GetCharHeight() : -1;
        added.Control->SetMinSize(wxSize(FromDIP(kTextWidth), height));
    }
    if (isSide) {
        grid.AddSpacer(0);
        grid.Add(strip, wxSizerFlags().Expand());
    }
    if (field == EditField::Front) {
        mpSameFront = new wxHyperlinkCtrl(this, ID_SAME_FRONT, " ", "#");
        mpSameFront->Hide();
        grid.AddSpacer(0);
        grid.Add(mpSameFront, wxSizerFlags().Expand());
    }
}

wxTextCtrl& EditForm::GetFront() {
    return *static_cast<wxTextCtrl*>(At(EditField::Front).Control);
}

void EditForm::SetStore(const wxString& storePath) {
    for (MediaStrip* const strip : mStrips) {
        strip->SetStore(storePath);
    }
}

void EditForm::AddExclusions(wxFlexGridSizer& grid) {
    At(EditField::IntroductionOrder)
        .Control->SetToolTip(_("This value controls the order that new cards are introduced.\nCards"
                               " with a higher Introduction Order are introduced after cards with a"
                               " lower Introduction Order.\nLeave this value blank to introduce"
                               " this card after all of the other cards in its category."));
    const auto add = [&](int id, const wxString& label, const wxString& toolTip) {
        auto* const box =
            new wxCheckBox(this, id, label, wxDefaultPosition, wxDefaultSize, wxCHK_3STATE);
        box->SetToolTip(toolTip);
        grid.AddSpacer(0);
        grid.Add(box);
        return box;
    };
    mForwardX.Control = add(ID_FORWARD_X, _("E&xclude from Front to Back study"),
                            _("Use this option to prevent the card from appearing when reviewing"
                              " the cards from front to back."));
    mReverseX.Control = add(ID_REVERSE_X, _("Exc&lude from Back to Front study"),
                            _("Use this option to prevent the card from appearing when reviewing"
                              " the cards from back to front."));
}

// Lets the fields of both groups begin at the same place.
void EditForm::AlignLabels() {
    int width = 0;
    for (const Field& field : mFields) {
        width = std::max(width, field.Label->GetBestSize().x);
    }
    for (const Field& field : mFields) {
        field.Label->SetMinSize(wxSize(width, -1));
    }
}

void EditForm::AddSchedules(wxBoxSizer& column) {
    mpForwardSchedule =
        new EditSchedulePanel(this, ID_FORWARD_SCHEDULE, _("Forward review schedule"));
    mpReverseSchedule =
        new EditSchedulePanel(this, ID_REVERSE_SCHEDULE, _("Reverse review schedule"));
    const int gap = FromDIP(kFormEdge);
    mpSchedules = new wxBoxSizer(wxVERTICAL);
    mpSchedules->Add(mpForwardSchedule, wxSizerFlags(1).Expand());
    mpSchedules->Add(gap, gap);
    mpSchedules->Add(mpReverseSchedule, wxSizerFlags(1).Expand());
    column.Add(mpSchedules, wxSizerFlags().Expand().Border(wxTOP, gap));
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        // The scrolled window lays itself out after this.
        event.Skip();
        ArrangeSchedules();
    });
}

// Puts the schedules side by side where the window is wide enough, else one below the other.
void EditForm::ArrangeSchedules() {
    mpSchedules->SetOrientation(wxHORIZONTAL);
    if (GetSizer()->CalcMin().x > GetClientSize().x) {
        mpSchedules->SetOrientation(wxVERTICAL);
    }
    // The scrolled window keeps the size that it needed the other way.
    InvalidateBestSize();
}

wxSize EditForm::GetWantedSize(const wxSize& largest) {
    mpSchedules->SetOrientation(wxVERTICAL);
    wxSize wanted = GetSizer()->CalcMin();
    if (wanted.y > largest.y) {
        mpSchedules->SetOrientation(wxHORIZONTAL);
        const wxSize wide = GetSizer()->CalcMin();
        wanted = wide.x <= largest.x ? wide : wanted;
    }
    ArrangeSchedules();
    if (wanted.y > largest.y) {
        wanted.y = largest.y;
        wanted.x += std::max(wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this), 0);
    }
    return wanted;
}

void EditForm::BindFields(wxWindow& parent) {
    for (wxWindow* const child : parent.GetChildren()) {
        child->Bind(wxEVT_CHAR, &EditForm::OnFieldChar, this);
        BindFields(*child);
    }
}

// Escape presses Cancel. Input methods use Escape too, and only what they leave arrives here.
void EditForm::OnFieldChar(wxKeyEvent& event) {
    if (event.GetKeyCode() != WXK_ESCAPE || event.HasAnyModifiers()) {
        event.Skip();
        return;
    }
    wxCommandEvent click(wxEVT_BUTTON, wxID_CANCEL);
    click.SetEventObject(this);
    ProcessWindowEvent(click);
}

// Returns what the fields show of a card, in their order.
EditForm::Texts EditForm::GetTexts(const FlashCard& card, const wxString& categoryName) {
    return {card.Front,
            card.Back,
            categoryName,
            card.Author,
            card.Chapter,
            card.Notes,
            FormatOrder(card.IntroductionOrder)};
}

void EditForm::Load(const FlashCard& card, const wxString& categoryName) {
    const Texts texts = GetTexts(card, categoryName);
    for (size_t i = 0; i < texts.size(); ++i) {
        LoadField(static_cast<EditField>(i), texts.at(i));
    }
    mForwardX.Load(card.ForwardX);
    mReverseX.Load(card.ReverseX);
    mpForwardSchedule->Load(card.Forward);
    mpReverseSchedule->Load(card.Reverse);
}

void EditForm::Follow(const FlashCard& card, const wxString& categoryName) {
    const Texts texts = GetTexts(card, categoryName);
    for (size_t i = 0; i < texts.size(); ++i) {
        FollowField(static_cast<EditField>(i), texts.at(i));
    }
    if (!mForwardX.IsTouched()) {
        mForwardX.Load(card.ForwardX);
    }
    if (!mReverseX.IsTouched()) {
        mReverseX.Load(card.ReverseX);
    }
    mpForwardSchedule->Follow(card.Forward);
    mpReverseSchedule->Follow(card.Reverse);
}

namespace {

// Returns the parts of a schedule among the parts of a card.
ScheduleParts PartsOfSchedule(const CardParts& parts, CardPart first) {
    ScheduleParts schedule;
    for (size_t i = 0; i < schedule.size(); ++i) {
        schedule.set(i, parts.test(static_cast<size_t>(first) + i));
    }
    return schedule;
}

}  // namespace

void EditForm::LoadMany(const CommonCard& cards, const wxString& categoryName) {
    const Texts texts = GetTexts(cards.Card, categoryName);
    for (size_t i = 0; i < texts.size(); ++i) {
        LoadField(static_cast<EditField>(i), texts.at(i), cards.Several.test(i));
    }
    mForwardX.Load(cards.Card.ForwardX, HasPart(cards.Several, CardPart::kForwardX));
    mReverseX.Load(cards.Card.ReverseX, HasPart(cards.Several, CardPart::kReverseX));
    mpForwardSchedule->LoadMany(cards.Card.Forward,
                                PartsOfSchedule(cards.Several, CardPart::kIntroduced));
    mpReverseSchedule->LoadMany(cards.Card.Reverse,
                                PartsOfSchedule(cards.Several, CardPart::kReverseIntroduced));
}

void EditForm::FollowMany(const CommonCard& cards, const wxString& categoryName) {
    const Texts texts = GetTexts(cards.Card, categoryName);
    for (size_t i = 0; i < texts.size(); ++i) {
        FollowField(static_cast<EditField>(i), texts.at(i), cards.Several.test(i));
    }
    if (!mForwardX.IsTouched()) {
        mForwardX.Load(cards.Card.ForwardX, HasPart(cards.Several, CardPart::kForwardX));
    }
    if (!mReverseX.IsTouched()) {
        mReverseX.Load(cards.Card.ReverseX, HasPart(cards.Several, CardPart::kReverseX));
    }
    mpForwardSchedule->FollowMany(cards.Card.Forward,
                                  PartsOfSchedule(cards.Several, CardPart::kIntroduced));
    mpReverseSchedule->FollowMany(cards.Card.Reverse,
                                  PartsOfSchedule(cards.Several, CardPart::kReverseIntroduced));
}

void EditForm::LoadField(EditField field, const wxString& own, bool isSeveral) {
    Field& loaded = At(field);
    loaded.IsSeveral = isSeveral;
    loaded.Entry->ChangeValue(isSeveral ? wxString() : MakeShowable(own));
    TextUndo::Restart(*loaded.Control);
    loaded.Loaded = loaded.Entry->GetValue();
    loaded.Own = isSeveral ? wxString() : own;
    loaded.SayWhetherSeveral();
    if (field == EditField::Front || field == EditField::Back) {
        mStrips.at(static_cast<size_t>(field))->ShowLines();
    }
}

void EditForm::FollowField(EditField field, const wxString& own, bool isSeveral) {
    const bool isSame = isSeveral == At(field).IsSeveral && (isSeveral || own == At(field).Own);
    if (isSame || IsTouched(field)) {
        return;
    }
    wxTextEntry& entry = *At(field).Entry;
    long from = 0;
    long to = 0;
    entry.GetSelection(&from, &to);
    LoadField(field, own);
    const long last = entry.GetLastPosition();
    entry.SetSelection(std::min(from, last), std::min(to, last));
}

// What was typed into a field of several values and deleted again is an empty text for all cards.
// Taken back, it is none.
bool EditForm::Field::IsTouched() const {
    const TextUndo* const history = IsSeveral ? TextUndo::Find(Control) : nullptr;
    return Entry->GetValue() != Loaded || (history != nullptr && history->CanUndo());
}

void EditForm::Field::SayWhetherSeveral() const {
    const bool isShown = IsSeveral && !IsTouched();
    ShowWhileEmpty(*Control, isShown ? _("(several)") : wxString());
    const wxString name = wxControl::RemoveMnemonics(Label->GetLabel());
    SetAccessibleName(*Control, isShown ? name + " " + _("(several)") : name);
}

bool EditForm::Exclusion::IsTouched() const {
    return Control->Get3StateValue() != Loaded;
}

void EditForm::Exclusion::Load(bool excluded, bool isSeveral) {
    Loaded = isSeveral ? wxCHK_UNDETERMINED : excluded ? wxCHK_CHECKED : wxCHK_UNCHECKED;
    Control->Set3StateValue(Loaded);
}

bool EditForm::IsModified() const {
    const bool hasOtherText = std::any_of(mFields.begin(), mFields.end(),
                                          [](const Field& field) { return field.IsTouched(); });
    return hasOtherText || mForwardX.IsTouched() || mReverseX.IsTouched() ||
           mpForwardSchedule->IsModified() || mpReverseSchedule->IsModified();
}

bool EditForm::IsTouched(EditField field) const {
    return At(field).IsTouched();
}

CardParts EditForm::GetTouched() const {
    CardParts parts;
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        parts.set(i, IsTouched(static_cast<EditField>(i)));
    }
    parts.set(static_cast<size_t>(CardPart::kForwardX), mForwardX.IsTouched());
    parts.set(static_cast<size_t>(CardPart::kReverseX), mReverseX.IsTouched());
    const auto add = [&parts](const ScheduleParts& schedule, CardPart first) {
        for (size_t i = 0; i < schedule.size(); ++i) {
            parts.set(static_cast<size_t>(first) + i, schedule.test(i));
        }
    };
    add(mpForwardSchedule->GetTouched(), CardPart::kIntroduced);
    add(mpReverseSchedule->GetTouched(), CardPart::kReverseIntroduced);
    return parts;
}

wxString EditForm::GetTrimmed(EditField field) const {
    const Field& asked = At(field);
    return TrimWide(IsTouched(field) ? asked.Entry->GetValue() : asked.Own);
}

void EditForm::TakeExclusions(FlashCard& card) const {
    if (mForwardX.IsTouched()) {
        card.ForwardX = mForwardX.Control->GetValue();
    }
    if (mReverseX.IsTouched()) {
        card.ReverseX = mReverseX.Control->GetValue();
    }
}

void EditForm::FocusFront() {
    At(EditField::Front).Control->SetFocus();
}

void EditForm::PointAt(EditField field) {
    At(field).Control->SetFocus();
    At(field).Entry->SelectAll();
}

void EditForm::SetCategories(const std::list<Category>& categories) {
    std::map<int32_t, wxString> missing;
    for (const Category& category : categories) {
        missing.emplace(category.Id, MakeShowable(category.Name));
    }
    for (unsigned row = mpCategory->GetCount(); row-- > 0;) {
        const auto found = missing.find(GetRowCategory(*mpCategory, row));
        if (found == missing.end()) {
            const wxString text = mpCategory->GetValue();
            mpCategory->Delete(row);
            KeepCategoryText(text);
            continue;
        }
        if (mpCategory->GetString(row) != found->second) {
            RenameRow(row, found->second);
        }
        missing.erase(found);
    }
    for (const Category& category : categories) {
        const auto found = missing.find(category.Id);
        if (found != missing.end()) {
            mpCategory->Append(found->second, new RowCategory(category.Id));
        }
    }
}

void EditForm::RenameRow(unsigned row, const wxString& name) {
    const wxString former = mpCategory->GetString(row);
    const wxString text = mpCategory->GetValue();
    mpCategory->SetString(row, name);
    KeepCategoryText(text == former ? name : text);
    Field& field = At(EditField::Category);
    if (field.Loaded == former) {
        field.Loaded = name;
        field.Own = name;
    }
}

// Puts the text of the field back after a change of the rows, which may make the toolkit replace
// it.
void EditForm::KeepCategoryText(const wxString& text) {
    if (mpCategory->GetValue() != text) {
        mpCategory->ChangeValue(text);
        TextUndo::Restart(*mpCategory);
    }
}

void EditForm::SetTextFont(const wxFont& font) {
    for (const EditField field : {EditField::Front, EditField::Back, EditField::Category,
                                  EditField::Author, EditField::Chapter, EditField::Notes}) {
        wxWindow& control = *At(field).Control;
        control.SetFont(font);
        if (kRows[static_cast<size_t>(field)].Kind == FieldKind::Lines) {
            control.SetMinSize(
                wxSize(control.GetMinWidth(), kLeastLines * control.GetCharHeight()));
        }
    }
    FitTextHeights(*this);
    FitInside();
}
