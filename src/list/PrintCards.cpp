#include "list/PrintCards.h"

#include <wx/button.h>
#include <wx/dcmemory.h>
#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/graphics.h>
#include <wx/intl.h>
#include <wx/radiobox.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "base/Unicode.h"
#include "media/MediaLines.h"
#include "media/windows/CardPictures.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"
#include "store/CardRow.h"
#include "store/Database.h"

// A font has its size from the resolution of what it is drawn on, and the library's printer, screen
// and preview do not agree about it. So all texts are measured on one bitmap, at the scale of the
// paper's units, and a page first finds out how much larger or smaller its own device draws them.

namespace {

// A4, for a printer that does not say what paper it has.
const wxSize kUsualPaper(5953, 8419);

// Pictures are printed with so many points an inch, as a larger file would be no better to look at.
constexpr int kPointsPerInch = 200;
// The points that an inch of the screen is taken to have, for a picture's own size.
constexpr int kScreenPoints = 96;
// More pictures of a side than anybody looks at are printed as their names.
constexpr size_t kMostPictures = 12;

const wchar_t* const kSample = L"nnnnnoooooiiiii";

wxFont MakeFont(const PrintFont& font, double scale) {
    wxFont made = ReadFontSetting(kSettingBrowseFont);
    made.SetFractionalPointSize(font.Points * kPaperUnits / TextResolution() * scale);
    made.SetWeight(font.IsBold ? wxFONTWEIGHT_BOLD : wxFONTWEIGHT_NORMAL);
    return made;
}

// Measures texts in the units of the paper.
class PaperMeasure {
  public:
    PaperMeasure() : mBitmap(1, 1), mDc(mBitmap) {}

    wxSize operator()(const wxString& text, const PrintFont& font) {
        if (font.Points != mFont.Points || font.IsBold != mFont.IsBold) {
            mFont = font;
            mDc.SetFont(MakeFont(font, 1.0));
        }
        return mDc.GetTextExtent(text);
    }

  private:
    wxBitmap mBitmap;
    wxMemoryDC mDc;
    PrintFont mFont;
};

// Returns the factor for fonts with which a text is as long on the device as it was measured.
double FindFontScale(wxDC& dc) {
    constexpr PrintFont kFont = {20, false};
    dc.SetFont(MakeFont(kFont, 1.0));
    const int drawn = dc.GetTextExtent(kSample).x;
    return drawn > 0 ? static_cast<double>(PaperMeasure()(kSample, kFont).x) / drawn : 1.0;
}

void DrawLine(wxDC& dc, const PrintLine& line) {
    // The mark gives a line its direction even where it begins with a word of another script.
    const wxString text = line.IsRightToLeft ? wxString(L'\u200F') + line.Text : line.Text;
    const int free = line.Place.width - dc.GetTextExtent(text).x;
    int left = line.Place.x;
    if (line.Alignment != PrintLine::Side::kLeft && free > 0) {
        left += line.Alignment == PrintLine::Side::kCentre ? free / 2 : free;
    }
    if (free >= 0) {
        dc.DrawText(text, left, line.Place.y);
        return;
    }
    const wxDCClipper clip(dc, line.Place);
    dc.DrawText(text, left, line.Place.y);
}

// Takes the pictures out of a text. A sound leaves a mark, and a picture that cannot be shown its
// name.
wxString TakePictures(const wxString& text, CardPictures& store,
                      std::vector<PrintLayout::Picture>& pictures) {
    return ReplaceMediaLines(text, [&](const MediaLine& line) {
        const wxString whole = MakeMediaLine(line.Kind, line.Name);
        if (line.Kind == MediaKind::kSound) {
            return WithMediaMarks(whole);
        }
        const wxSize size = store.FindSize(line.Name);
        if (size.x <= 0 || pictures.size() == kMostPictures) {
            return WithNamedMediaMarks(whole);
        }
        pictures.push_back({line.Name, size * kPaperUnits / kScreenPoints});
        return wxString();
    });
}

// A picture whose points turn out to be damaged has a frame with its name.
void DrawPictures(wxDC& dc, const std::vector<PrintPicture>& pictures, CardPictures& store) {
    if (pictures.empty()) {
        return;
    }
    const wxBusyCursor busy;
    std::vector<const PrintPicture*> damaged;
    {
        const std::unique_ptr<wxGraphicsContext> context(
            wxGraphicsContext::CreateFromUnknownDC(dc));
        constexpr double kScale = static_cast<double>(kPointsPerInch) / kPaperUnits;
        for (const PrintPicture& picture : pictures) {
            if (context == nullptr ||
                !store.DrawNow(*context, picture.Name, picture.Place, kScale, *wxWHITE)) {
                damaged.push_back(&picture);
            }
        }
    }
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    for (const PrintPicture* const picture : damaged) {
        dc.DrawRectangle(picture->Place);
        const wxDCClipper clip(dc, picture->Place);
        dc.DrawText(picture->Name, picture->Place.GetTopLeft());
    }
}

// Asks in which form, and whether to print or to look first.
class PrintDialog : public wxDialog {
  public:
    PrintDialog(wxWindow* parent, size_t count) : wxDialog(parent, wxID_ANY, _("Print Cards")) {
        wxBoxSizer* const rows = MakeFormColumn(*this);
        const auto number = static_cast<int>(count);
        const wxString what = wxString::Format(
            wxPLURAL("%i card", "%i cards", static_cast<unsigned>(number)), number);
        rows->Add(new wxStaticText(this, wxID_ANY, what));
        const wxString forms[] = {_("&List of fronts and backs"), _("Cards to c&ut out")};
        mpForm = new wxRadioBox(this, wxID_ANY, _("Layout"), wxDefaultPosition, wxDefaultSize,
                                wxArrayString(std::size(forms), forms), 1, wxRA_SPECIFY_COLS);
        LetArrowsChoose(*mpForm);
        rows->Add(mpForm, FormRow(*this));
        auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
        const wxSizerFlags apart = wxSizerFlags().Border(wxLEFT, FromDIP(kFormGap));
        buttons->AddStretchSpacer();
        buttons->Add(AddButton(wxID_PREVIEW, _("Pre&view...")), apart);
        buttons->Add(AddButton(wxID_CANCEL, wxString()), apart);
        wxButton* const print = AddButton(wxID_PRINT, _("&Print..."));
        print->SetDefault();
        buttons->Add(print, apart);
        rows->Add(buttons, wxSizerFlags().Expand().Border(wxTOP, FromDIP(kFormEdge)));
        GetSizer()->SetSizeHints(this);
        CentreOnParent();
        LetReturnPressDefault(*this);
        mpForm->SetFocus();
    }

    PrintForm GetForm() const { return static_cast<PrintForm>(mpForm->GetSelection()); }

  private:
    wxButton* AddButton(int id, const wxString& label) {
        auto* const button = new wxButton(this, id, label);
        button->Bind(wxEVT_BUTTON, [this, id](wxCommandEvent&) { EndModal(id); });
        return button;
    }

    wxRadioBox* mpForm = nullptr;
};

void Print(wxWindow& parent, const PrintedCards& cards, const wxString& title) {
    wxPrinter printer;
    CardPrintout printout(title, cards);
    if (!printer.Print(&parent, &printout, true) && wxPrinter::GetLastError() == wxPRINTER_ERROR) {
        ShowMessageBox(_("The cards could not be printed."), _("Print Cards"), wxOK | wxCENTRE,
                       &parent);
    }
}

wxFrame* Preview(wxWindow& parent, const PrintedCards& cards, const wxString& title) {
    wxPrintDialogData data;
    data.GetPrintData().SetPaperId(wxPAPER_A4);
    auto preview = std::make_unique<wxPrintPreview>(new CardPrintout(title, cards),
                                                    new CardPrintout(title, cards), &data);
    if (!preview->IsOk()) {
        ShowMessageBox(_("The cards could not be printed."), _("Print Cards"), wxOK | wxCENTRE,
                       &parent);
        return nullptr;
    }
    auto* const frame = new wxPreviewFrame(preview.release(), &parent, _("Print Preview"));
    frame->InitializeWithModality(wxPreviewFrame_AppModal);
    frame->SetSize(parent.FromDIP(wxSize(720, 800)));
    frame->CentreOnParent();
    frame->Show();
    frame->Raise();
    return frame;
}

}  // namespace

void CardPrintout::OnPreparePrinting() {
    const wxBusyCursor busy;
    const wxSize pixels = GetPaperRectPixels().GetSize();
    wxSize perInch;
    GetPPIPrinter(&perInch.x, &perInch.y);
    const bool isKnown = pixels.x > 0 && pixels.y > 0 && perInch.x > 0 && perInch.y > 0;
    mpLayout->SetPaper(
        isKnown ? wxSize(pixels.x * kPaperUnits / perInch.x, pixels.y * kPaperUnits / perInch.y)
                : kUsualPaper);
}

void CardPrintout::GetPageInfo(int* first, int* last, int* from, int* to) {
    *first = 1;
    *last = mpLayout->CountPages();
    *from = 1;
    *to = *last;
}

bool CardPrintout::OnPrintPage(int page) {
    if (GetDC() == nullptr || !HasPage(page)) {
        return false;
    }
    wxDC& dc = *GetDC();
    FitThisSizeToPaper(mpLayout->GetPaper());
    const double scale = FindFontScale(dc);
    // Paper is white whatever the theme.
    dc.SetTextForeground(*wxBLACK);
    dc.SetBackgroundMode(wxBRUSHSTYLE_TRANSPARENT);
    dc.SetPen(wxPen(wxColour(128, 128, 128), kPaperUnits / 144));
    const PrintPage made = mpLayout->MakePage(page);
    for (const auto& [from, to] : made.Rules) {
        dc.DrawLine(from, to);
    }
    for (const PrintLine& line : made.Lines) {
        dc.SetFont(MakeFont(line.Font, scale));
        DrawLine(dc, line);
    }
    DrawPictures(dc, made.Pictures, *mpPictures);
    return true;
}

PrintedCards LayOutCards(Database& database, std::vector<int64_t> rowIds, const wxString& heading,
                         PrintForm form) {
    const auto pictures = std::make_shared<CardPictures>([] {});
    pictures->SetStore(database.GetPath());
    PrintLayout::Source source;
    source.Count = rowIds.size();
    source.Heading = heading;
    source.Read = [&database, pictures, ids = std::move(rowIds)](size_t first, size_t count) {
        std::vector<PrintLayout::Sides> read(count);
        const auto begin = ids.begin() + static_cast<std::ptrdiff_t>(first);
        const std::vector<int64_t> wanted(begin, begin + static_cast<std::ptrdiff_t>(count));
        size_t place = 0;
        // The store itself reports a failure.
        database.VisitCardsByRowId(wanted, [&](const CardRow& row) {
            while (wanted[place] != row.RowId()) {
                ++place;
            }
            PrintLayout::Sides& sides = read[place];
            sides.Front = TakePictures(FromUtf16(row.Front()), *pictures, sides.FrontPictures);
            sides.Back = TakePictures(FromUtf16(row.Back()), *pictures, sides.BackPictures);
        });
        return read;
    };
    const auto measure = std::make_shared<PaperMeasure>();
    source.Measure = [measure](const wxString& text, const PrintFont& font) {
        return (*measure)(text, font);
    };
    return {std::make_shared<PrintLayout>(form, std::move(source)), pictures};
}

wxFrame* PrintCards(wxWindow& parent, Database& database, const std::vector<int64_t>& rowIds,
                    const wxString& heading) {
    int answer = wxID_CANCEL;
    PrintForm form = PrintForm::kList;
    {
        // The dialog is gone before the preview opens. Its end would take the focus from it.
        PrintDialog dialog(&parent, rowIds.size());
        answer = dialog.ShowModal();
        form = dialog.GetForm();
    }
    if (answer != wxID_PRINT && answer != wxID_PREVIEW) {
        return nullptr;
    }
    const PrintedCards cards = LayOutCards(database, rowIds, heading, form);
    if (answer == wxID_PREVIEW) {
        return Preview(parent, cards, heading);
    }
    Print(parent, cards, heading);
    return nullptr;
}
