#include "statistics/StatisticsOverview.h"

#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/wrapsizer.h>

#include "plot/PlotControl.h"
#include "shell/Forms.h"

namespace {

constexpr StatisticsPage kTiles[] = {StatisticsPage::Due, StatisticsPage::Reviews,
                                     StatisticsPage::RememberedByInterval,
                                     StatisticsPage::Categories};
constexpr float kNumberSize = 2.0F;
constexpr int kFirstTileId = 11200;

}  // namespace

StatisticsOverview::StatisticsOverview(wxWindow* parent, const PageOpener& openPage) {
    wxPanel::Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL,
                    "overview");
    auto* const column = new wxBoxSizer(wxVERTICAL);
    auto* const answers = new wxWrapSizer(wxHORIZONTAL);
    for (size_t i = 0; i < kAnswerCount; ++i) {
        auto* const answer = new wxBoxSizer(wxVERTICAL);
        mNumbers[i] = new wxStaticText(this, wxID_ANY, wxString());
        mNumbers[i]->SetFont(GetFont().Scaled(kNumberSize).Bold());
        mCaptions[i] = new wxStaticText(this, wxID_ANY, wxString());
        answer->Add(mNumbers[i]);
        answer->Add(mCaptions[i]);
        answers->Add(answer, wxSizerFlags().Border(wxRIGHT, FromDIP(3 * kFormEdge)));
    }
    column->Add(answers, wxSizerFlags().Expand());
    mpAdvice = new wxStaticText(this, wxID_ANY, wxString());
    column->Add(mpAdvice, wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, FromDIP(kFormEdge)));
    auto* const tiles = new wxGridSizer(2, FromDIP(wxSize(kFormEdge, kFormEdge)));
    for (size_t i = 0; i < kTileCount; ++i) {
        const int id = kFirstTileId + static_cast<int>(i);
        mTiles[i] = new PlotControl(this, id, PlotControl::Form::Tile);
        mTiles[i]->Bind(wxEVT_BUTTON,
                        [openPage, page = kTiles[i]](wxCommandEvent&) { openPage(page); });
        tiles->Add(mTiles[i], wxSizerFlags().Expand());
    }
    column->Add(tiles, wxSizerFlags(1).Expand());
    SetSizer(column);
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        WrapAdvice();
    });
}

void StatisticsOverview::SetPlots(const StatisticsPlots& plots) {
    const Plot& own = plots[static_cast<size_t>(StatisticsPage::Overview)];
    for (size_t i = 0; i < kAnswerCount; ++i) {
        const bool isKnown = i < own.Table.Rows.size();
        mCaptions[i]->SetLabelText(isKnown ? own.Table.Rows[i][0] : wxString());
        mNumbers[i]->SetLabelText(isKnown ? own.Table.Rows[i][1] : wxString());
    }
    for (size_t i = 0; i < kTileCount; ++i) {
        mTiles[i]->SetPlot(plots[static_cast<size_t>(kTiles[i])]);
    }
    mAdvice = own.EmptyText.empty() ? own.Summary : own.EmptyText;
    mWrapWidth = -1;
    WrapAdvice();
    Layout();
}

void StatisticsOverview::WrapAdvice() {
    const int width = GetClientSize().x;
    if (width == mWrapWidth || width <= 0) {
        return;
    }
    mWrapWidth = width;
    mpAdvice->SetLabelText(mAdvice);
    mpAdvice->Wrap(width);
}
