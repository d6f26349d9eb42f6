#include "edit/EditForm.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/clntdata.h>
#include <wx/combobox.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stockitem.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <map>

#include "base/Text.h"
#include "base/Unicode.h"
#include "edit/EditSchedulePanel.h"
#include "shell/Forms.h"
#include "shell/Toolkit.h"

namespace {

enum : int {
    ID_REVERSE_SCHEDULE = 10000,
    ID_FRONT = 10001,
    ID_BACK = 10002,
    ID_AUTHOR = 10003,
    ID_INTRODUCTION_ORDER = 10004,
    ID_FORWARD_SCHEDULE = 10005,
    ID_REVERSE_X = 10006,
    ID_FORWARD_X = 10008,
    ID_CHAPTER = 10009,
    ID_NOTES = 10010,
    ID_CATEGORY = 10013
};

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
    LabelPlace Place;
};

constexpr FieldRow kRows[kCardFieldCount] = {
    {ID_FRONT, wxTRANSLATE("F&ront"), FieldKind::Lines, LabelPlace::First},
    {ID_BACK, wxTRANSLATE("&Back"), FieldKind::Lines, LabelPlace::Later},
    {ID_CATEGORY, wxTRANSLATE("Cate&gory"), FieldKind::Choice, LabelPlace::First},
    {ID_AUTHOR, wxTRANSLATE("&Author"), FieldKind::Line, LabelPlace::Later},
    {ID_CHAPTER, wxTRANSLATE("Cha&pter"), FieldKind::Line, LabelPlace::Later},
    {ID_NOTES, wxTRANSLATE("&Notes"), FieldKind::Lines, LabelPlace::Later},
    {ID_INTRODUCTION_ORDER, wxTRANSLATE("&Introduction Order"), FieldKind::Short,
     LabelPlace::Later}};

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

// Makes a stock button. The id is set late, since a button created with a stock id has a hidden
// picture, about which the toolkit complains whenever the form is scrolled.
wxButton* MakeButton(wxWindow& parent, int id) {
    auto* const button = new wxButton(&parent, wxID_ANY, wxGetStockLabel(id));
    button->SetId(id);
    return button;
}

}  // namespace

EditForm::EditForm(wxWindow* parent)
    : wxScrolledWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                       wxHSCROLL | wxVSCROLL | wxTAB_TRAVERSAL) {
    SetScrollRate(1, 1);
    // Keys pressed inside a composite control, such as a choice's button, arrive here.
    Bind(wxEVT_CHAR, &EditForm::OnFieldChar, this);
    auto* const column = new wxBoxSizer(wxVERTICAL);
    SetSizer(column);
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        AddField(*column, static_cast<CardField>(i));
    }
    At(CardField::IntroductionOrder)
        .Control->SetToolTip(_("This value controls the order that new cards are introduced.\nCards"
                               " with a higher Introduction Order are introduced after cards with a"
                               " lower Introduction Order.\nLeave this value blank to introduce"
                               " this card after all of the other cards in its category."));
    mForwardX.Control =
        AddExclusion(*column, ID_FORWARD_X, _("E&xclude from Front to Back study"),
                     _("Use this option to prevent the card from appearing when reviewing"
                       " the cards from front to back."));
    mReverseX.Control =
        AddExclusion(*column, ID_REVERSE_X, _("Exc&lude from Back to Front study"),
                     _("Use this option to prevent the card from appearing when reviewing"
                       " the cards from back to front."));
    mpForwardSchedule =
        new EditSchedulePanel(this, ID_FORWARD_SCHEDULE, _("Forward review schedule"));
    column->Add(mpForwardSchedule, wxSizerFlags().Expand());
    mpReverseSchedule =
        new EditSchedulePanel(this, ID_REVERSE_SCHEDULE, _("Reverse review schedule"));
    column->Add(mpReverseSchedule, wxSizerFlags().Expand());
    AddButtons(*column);
    FitTextHeights(*this);
    FitInside();
}

void EditForm::AddField(wxBoxSizer& column, CardField field) {
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
    AddFormLabel(column, label, *added.Control, wxControl::RemoveMnemonics(label), row.Place);
    wxSizerFlags flags(row.Kind == FieldKind::Lines ? 1 : 0);
    flags.Border(kFieldSides, kFormBorder);
    if (row.Kind != FieldKind::Short) {
        flags.Expand();
        // Without a minimum the longest category name would set the width of the form.
        const int height = row.Kind == FieldKind::Lines ? kLeastLines * GetCharHeight() : -1;
        added.Control->SetMinSize(wxSize(FromDIP(kTextWidth), height));
    }
    column.Add(added.Control, flags);
}

wxCheckBox* EditForm::AddExclusion(wxBoxSizer& column, int id, const wxString& label,
                                   const wxString& toolTip) {
    auto* const box = new wxCheckBox(this, id, label);
    box->SetToolTip(toolTip);
    column.Add(box, wxSizerFlags().Border(kFieldSides, kFormBorder));
    return box;
}

void EditForm::AddButtons(wxBoxSizer& column) {
    auto* const row = new wxStdDialogButtonSizer;
    auto* const ok = MakeButton(*this, wxID_OK);
    auto* const cancel = MakeButton(*this, wxID_CANCEL);
    row->AddButton(ok);
    row->AddButton(cancel);
    row->Realize();
    column.Add(row, wxSizerFlags(1).Right().Border(wxALL, kFormBorder));
    ok->SetDefault();
    BindFields(*this);
    LetFormScroll(*this);
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
        LoadField(static_cast<CardField>(i), texts.at(i));
    }
    mForwardX.Load(card.ForwardX);
    mReverseX.Load(card.ReverseX);
    mpForwardSchedule->Load(card.Forward);
    mpReverseSchedule->Load(card.Reverse);
}

void EditForm::Follow(const FlashCard& card, const wxString& categoryName) {
    const Texts texts = GetTexts(card, categoryName);
    for (size_t i = 0; i < texts.size(); ++i) {
        FollowField(static_cast<CardField>(i), texts.at(i));
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

void EditForm::LoadField(CardField field, const wxString& own) {
    Field& loaded = At(field);
    loaded.Entry->ChangeValue(MakeShowable(own));
    loaded.Loaded = loaded.Entry->GetValue();
    loaded.Own = own;
}

void EditForm::FollowField(CardField field, const wxString& own) {
    if (own == At(field).Own || IsTouched(field)) {
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

bool EditForm::Exclusion::IsTouched() const {
    return Control->GetValue() != Loaded;
}

void EditForm::Exclusion::Load(bool excluded) {
    Control->SetValue(excluded);
    Loaded = excluded;
}

bool EditForm::IsModified() const {
    const bool hasOtherText = std::any_of(mFields.begin(), mFields.end(), [](const Field& field) {
        return field.Entry->GetValue() != field.Loaded;
    });
    return hasOtherText || mForwardX.IsTouched() || mReverseX.IsTouched() ||
           mpForwardSchedule->IsModified() || mpReverseSchedule->IsModified();
}

bool EditForm::IsTouched(CardField field) const {
    return At(field).Entry->GetValue() != At(field).Loaded;
}

wxString EditForm::GetTrimmed(CardField field) const {
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
    At(CardField::Front).Control->SetFocus();
}

void EditForm::PointAt(CardField field) {
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
    Field& field = At(CardField::Category);
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
    }
}

void EditForm::SetTextFont(const wxFont& font) {
    for (const CardField field : {CardField::Front, CardField::Back, CardField::Category,
                                  CardField::Author, CardField::Chapter, CardField::Notes}) {
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
