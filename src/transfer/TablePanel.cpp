#include "transfer/TablePanel.h"

#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "shell/Forms.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kColumnWidth = 120;
constexpr int kRowsHeight = 150;
// A hostile table has thousands of columns; nobody chooses for more than these by hand.
constexpr size_t kMostShownColumns = 40;

wxArrayString UseLabels() {
    wxArrayString labels;
    for (size_t i = 0; i < static_cast<size_t>(ColumnUse::kCount); ++i) {
        labels.push_back(DescribeUse(static_cast<ColumnUse>(i)));
    }
    return labels;
}

}  // namespace

TablePanel::TablePanel(wxWindow* parent, std::function<void()> onChange)
    : wxPanel(parent), mOnChange(std::move(onChange)) {
    mpHasHeader = new wxCheckBox(this, ID_HAS_HEADER, _("First row holds column names"));
    mpQuotesAreText = new wxCheckBox(this, ID_QUOTES_ARE_TEXT, _("Quotes are text"));
    mpRows = new wxScrolledWindow(this, ID_ROWS, wxDefaultPosition,
                                  FromDIP(wxSize(-1, kRowsHeight)), wxHSCROLL | wxVSCROLL);
    SetAccessibleName(*mpRows, _("First rows"));
    mpRows->SetScrollRate(1, 1);
    LetFormScroll(*mpRows);
    auto* const boxes = new wxBoxSizer(wxHORIZONTAL);
    boxes->Add(mpHasHeader);
    boxes->Add(mpQuotesAreText, wxSizerFlags().Border(wxLEFT, FromDIP(kFormEdge)));
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(boxes);
    rows->Add(mpRows, wxSizerFlags(1).Expand().Border(wxTOP, FromDIP(kFormGap)));
    SetSizer(rows);
    mpHasHeader->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent& event) {
        mChoice.HasHeader = event.IsChecked();
        SurveyAgain();
    });
    mpQuotesAreText->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent& event) {
        mChoice.QuotesAreText = event.IsChecked();
        SurveyAgain();
    });
}

void TablePanel::SurveyAgain() {
    mIsChanged = true;
    mSurvey = SurveyTable(mFileName, mChoice);
    TakeRememberedUses();
    ShowRows();
    mOnChange();
}

void TablePanel::Survey(const wxString& fileName, wxFontEncoding encoding,
                        const std::wstring& separator) {
    if (fileName == mFileName && encoding == mChoice.Encoding && separator == mChoice.Separator) {
        return;
    }
    const wxBusyCursor busy;
    mFileName = fileName;
    mChoice = {encoding, separator, std::nullopt, mChoice.QuotesAreText};
    // A table of the program's own form has a layout only while the user has changed something.
    mIsChanged = mChoice.QuotesAreText;
    mSurvey = SurveyTable(mFileName, mChoice);
    TakeRememberedUses();
    ShowRows();
}

void TablePanel::ShowRows() {
    mpHasHeader->SetValue(mSurvey.Layout.HasHeader);
    const size_t columns = std::min(mSurvey.Layout.Columns.size(), kMostShownColumns);
    mUses.clear();
    mpRows->DestroyChildren();
    const int gap = FromDIP(kFormGap);
    auto* const grid =
        new wxFlexGridSizer(std::max(1, static_cast<int>(columns)), wxSize(2 * gap, gap / 2));
    for (size_t i = 0; i < columns; ++i) {
        grid->AddGrowableCol(i);
        auto* const name = new wxStaticText(mpRows, wxID_ANY, wxString());
        name->SetLabelText(CutWithEllipsis(NameOfColumn(i), 40));
        name->SetFont(name->GetFont().Bold());
        grid->Add(name);
    }
    for (size_t i = 0; i < columns; ++i) {
        AddColumnHead(i, *grid);
    }
    for (const std::vector<wxString>& row : mSurvey.Rows) {
        for (size_t i = 0; i < columns; ++i) {
            auto* const cell =
                new wxStaticText(mpRows, wxID_ANY, wxString(), wxDefaultPosition,
                                 FromDIP(wxSize(kColumnWidth, -1)), wxST_ELLIPSIZE_END);
            cell->SetLabelText(CellText(row[i]));
            grid->Add(cell, wxSizerFlags().Expand());
        }
    }
    mpRows->SetSizer(grid, true);
    mpRows->FitInside();
    mpRows->Show(columns > 0);
    mpHasHeader->Enable(columns > 0);
    mpQuotesAreText->Enable(columns > 0 || mChoice.QuotesAreText);
    Layout();
}

void TablePanel::AddColumnHead(size_t column, wxFlexGridSizer& grid) {
    wxChoice* const use = MakeChoice(*mpRows, ID_FIRST_USE + static_cast<int>(column), UseLabels());
    use->SetSelection(static_cast<int>(mSurvey.Layout.Columns[column].Use));
    use->SetMinSize(FromDIP(wxSize(kColumnWidth, -1)));
    // Tells screen readers what the column holds.
    const wxString first = mSurvey.Rows.empty() ? wxString() : mSurvey.Rows.front()[column];
    SetAccessibleName(*use, NameOfColumn(column) + ": " + CellText(first));
    use->Bind(wxEVT_CHOICE,
              [this, column](wxCommandEvent& event) { ChooseUse(column, event.GetSelection()); });
    mUses.push_back(use);
    grid.Add(use, wxSizerFlags().Expand());
}

wxString TablePanel::NameOfColumn(size_t column) const {
    const wxString& heading = mSurvey.Layout.Columns[column].Heading;
    return heading.empty() ? wxString::Format(_("Column %i"), static_cast<int>(column) + 1)
                           : ShownName(heading);
}

void TablePanel::ChooseUse(size_t column, int selection) {
    std::vector<TableColumn>& columns = mSurvey.Layout.Columns;
    const auto chosen = static_cast<ColumnUse>(selection);
    const ColumnUse before = std::exchange(columns[column].Use, chosen);
    const bool isShared = chosen == ColumnUse::kIgnore || chosen == ColumnUse::kAppend;
    for (size_t i = 0; i < mUses.size() && !isShared; ++i) {
        // No attribute comes twice, so the columns change places.
        if (i != column && columns[i].Use == chosen) {
            columns[i].Use = before;
            mUses[i]->SetSelection(static_cast<int>(before));
        }
    }
    mIsChanged = true;
    mOnChange();
}

namespace {

// The settings remember this many layouts; a new one replaces another with the same number.
constexpr uint64_t kPlaces = 64;

// Returns a number that tables with the same separator and headings share.
uint64_t KindOfTable(const TableLayout& layout) {
    // FNV-1a, whose values stay the same from one build to the next.
    uint64_t hash = 14695981039346656037U;
    const auto add = [&hash](const wxString& text) {
        for (const char byte : ToUtf8(text) + "\n") {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
        }
    };
    add(layout.Separator);
    for (const TableColumn& column : layout.Columns) {
        add(column.Heading);
    }
    return hash;
}

wxString KeyOfKind(uint64_t kind) {
    return wxString::Format("%s%i", kSettingImportLayout, static_cast<int>(kind % kPlaces));
}

wxString KindText(uint64_t kind) {
    return wxString::Format("%016llx", static_cast<unsigned long long>(kind));
}

}  // namespace

void TablePanel::RememberUses() const {
    if (!mIsChanged || mSurvey.Layout.Columns.empty()) {
        return;
    }
    const uint64_t kind = KindOfTable(mSurvey.Layout);
    wxString text = KindText(kind);
    for (const TableColumn& column : mSurvey.Layout.Columns) {
        text += wxString::Format(",%i", static_cast<int>(column.Use));
    }
    WriteStringSetting(KeyOfKind(kind), text);
}

// A table of the program's own form names its columns itself.
void TablePanel::TakeRememberedUses() {
    const uint64_t kind = KindOfTable(mSurvey.Layout);
    const wxArrayString parts = wxSplit(ReadStringSetting(KeyOfKind(kind)), ',');
    std::vector<TableColumn>& columns = mSurvey.Layout.Columns;
    if (mSurvey.IsOwnForm || parts.size() != columns.size() + 1 || parts[0] != KindText(kind)) {
        return;
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        int32_t use = 0;
        if (ParseWholeNumber(parts[i + 1], use) && use >= 0 &&
            use < static_cast<int32_t>(ColumnUse::kCount)) {
            columns[i].Use = static_cast<ColumnUse>(use);
        }
    }
}
