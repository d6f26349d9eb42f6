#include "statistics/StatisticsFrame.h"

#include <wx/bitmap.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/clipbrd.h>
#include <wx/dataobj.h>
#include <wx/dcclient.h>
#include <wx/file.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/listbox.h>
#include <wx/listctrl.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/wrapsizer.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <utility>

#include "base/Job.h"
#include "base/Text.h"
#include "plot/PlotControl.h"
#include "plot/PlotDrawing.h"
#include "scheduler/Backlog.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Forms.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "shell/StudySettings.h"
#include "shell/Toolkit.h"
#include "statistics/CostlyCards.h"
#include "statistics/StatisticsHints.h"
#include "store/CardSort.h"
#include "store/CategoryTree.h"
#include "store/Database.h"

// One count. The history belongs to the window, which leaves it alone meanwhile.
struct FiguresJob {
    FiguresJob(Database& database, const ReviewQuery& query, const DayLimits& limits,
               ReviewHistory& history, std::function<void()> atEnd)
        : Query(query),
          Limits(limits),
          Path(database.GetPath()),
          Reading(
              [this, &database, &history](const std::atomic<bool>& isCancelled) {
                  Read(database, history, isCancelled);
              },
              std::move(atEnd)) {}

    void Read(Database& database, ReviewHistory& history, const std::atomic<bool>& isCancelled) {
        std::vector<CardSchedules> cards;
        Result = ReadReviewFigures(database, Query, history, isCancelled, Figures, &cards);
        const int32_t measure = Limits.AnswersPerDay(Figures.Habit.SecondsPerAnswer);
        if (Result == 0 && measure > 0) {
            const BacklogPlan plan{StudiedSchedules(cards, Query), Figures.Habit, measure,
                                   Limits.RelearnShare, Query.Now.GetTicks()};
            Figures.Due.LeftOver = ForecastBacklog(plan, isCancelled).LeftOver;
            Figures.Due.Measure = measure;
        }
    }

    const ReviewQuery Query;
    const DayLimits Limits;
    const wxString Path;
    // Written by the worker and read once it has ended.
    int Result = -1;
    ReviewFigures Figures;
    Job Reading;
};

namespace {

constexpr StatisticsPage kTiles[] = {StatisticsPage::Due, StatisticsPage::Reviews,
                                     StatisticsPage::RememberedByInterval,
                                     StatisticsPage::Categories};
constexpr float kNumberSize = 2.0F;
constexpr int kFirstTileId = 11200;

}  // namespace

// The first page of the statistics: large numbers that answer a learner's first questions, a
// sentence on what they mean, what the last month suggests, and four of the plots in small. A
// double click or Enter on a plot opens its page. Main thread only.
class StatisticsOverview : public wxPanel {
  public:
    using PageOpener = std::function<void(StatisticsPage)>;

    StatisticsOverview(wxWindow* parent, const PageOpener& openPage);

    // Shows the plots, the answers and the advice.
    void SetPlots(const StatisticsPlots& plots);
    void SetHints(std::vector<StatisticsHint> hints) { mpHints->SetHints(std::move(hints)); }

  private:
    static constexpr size_t kTileCount = 4;

    void WrapAdvice();

    std::array<wxStaticText*, kAnswerCount> mNumbers{};
    std::array<wxStaticText*, kAnswerCount> mCaptions{};
    std::array<PlotControl*, kTileCount> mTiles{};
    wxStaticText* mpAdvice = nullptr;
    HintsPanel* mpHints = nullptr;
    wxString mAdvice;
    int mWrapWidth = -1;
};

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
    mpHints = new HintsPanel(this, [this] {
        wxCommandEvent open(wxEVT_MENU, wxID_PREFERENCES);
        // The application has the command.
        wxGetTopLevelParent(this)->ProcessWindowEvent(open);
    });
    column->Add(mpHints, wxSizerFlags().Expand());
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

// Lists the numbers of a plot. Makes each row only when it is shown.
class NumbersList : public wxListCtrl {
  public:
    NumbersList(wxWindow* parent, wxWindowID id)
        : wxListCtrl(parent, id, wxDefaultPosition, wxDefaultSize,
                     wxLC_REPORT | wxLC_VIRTUAL | wxLC_SINGLE_SEL, wxDefaultValidator, "numbers") {
        Bind(wxEVT_LIST_ITEM_FOCUSED, &NumbersList::OnItemFocused, this);
    }
    ~NumbersList() override {
        // The base class sends this event in its destructor, when this part of the object is gone.
        Unbind(wxEVT_LIST_ITEM_FOCUSED, &NumbersList::OnItemFocused, this);
    }
    NumbersList(const NumbersList&) = delete;
    NumbersList& operator=(const NumbersList&) = delete;

    void SetTable(const PlotTable& table) {
        mpTable = &table;
        DeleteAllColumns();
        for (size_t i = 0; i < table.Headings.size(); ++i) {
            AppendColumn(table.Headings[i], i == 0 ? wxLIST_FORMAT_LEFT : wxLIST_FORMAT_RIGHT,
                         WidthOfColumn(i));
        }
        SetItemCount(static_cast<long>(table.Rows.size()));
        if (!table.Rows.empty() && GetFocusedItem() < 0) {
            SetItemState(0, wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED,
                         wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED);
        }
        Refresh();
        Tell();
    }

  protected:
    wxString OnGetItemText(long item, long column) const override {
        return mpTable->Rows[static_cast<size_t>(item)][static_cast<size_t>(column)];
    }

  private:
    void OnItemFocused(wxListEvent& event) {
        event.Skip();
        Tell();
    }
    // Makes a screen reader say the row that the keys act on.
    void Tell() {
        TellRow(*this, mpTable->Describe(static_cast<int>(GetFocusedItem())), _("Numbers"));
    }
    // Wide enough for the heading and the first rows, but not for a whole card.
    int WidthOfColumn(size_t column) const {
        constexpr size_t kRowsMeasured = 100;
        int width = GetTextExtent(mpTable->Headings[column]).x;
        const size_t rows = std::min(mpTable->Rows.size(), kRowsMeasured);
        for (size_t i = 0; i < rows; ++i) {
            width = std::max(width, GetTextExtent(mpTable->Rows[i][column]).x);
        }
        return std::min(width, FromDIP(320)) + FromDIP(24);
    }
    long GetFocusedItem() const { return GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED); }

    const PlotTable* mpTable = nullptr;
};

namespace {

const wxSize kFirstSize(960, 680);
const wxSize kSmallestSize(760, 560);
// A longer name of a category would push the other choices out of the window.
constexpr int kWidestCategory = 180;
const wxSize kPictureSize(900, 520);
constexpr int kPictureScale = 2;

// Commands of other windows.
constexpr int kForeignCommands[] = {wxID_OPEN,        ID_SAVE_CLOSE,    ID_SAVE_NEW,
                                    ID_STUDY_FORWARD, ID_STUDY_REVERSE, ID_CUSTOMIZE_MENU,
                                    ID_REPLACE,       ID_DUPLICATES,    wxID_PRINT};

// In the order of the choice of directions.
constexpr int kDirections[] = {kReviewForward | kReviewReverse, kReviewForward, kReviewReverse};

// Puts the bytes into a file, in place of what was there only once all are written.
bool WriteWhole(const wxString& path, const void* bytes, size_t size) {
    wxTempFile file(path);
    return file.IsOpened() && file.Write(bytes, size) && file.Commit();
}

// Returns a title as a file name: without characters that some file systems refuse.
wxString FileNameOf(const wxString& title) {
    wxString name = title;
    for (const wxUniChar character : wxFileName::GetForbiddenChars() + wxString("/\\")) {
        name.Replace(wxString(character), "_");
    }
    return name;
}

}  // namespace

StatisticsFrame::StatisticsFrame(AppServices& services)
    : wxFrame(nullptr, ID_WINDOW_STATISTICS, _("Statistics - Velomind"), wxDefaultPosition,
              wxDefaultSize, wxDEFAULT_FRAME_STYLE | wxTAB_TRAVERSAL, "frame"),
      mServices(services),
      mPlots(MakeUncountedPlots()) {
    InitFrame(*this, "statistics_window");
    for (const int id : kForeignCommands) {
        RemoveMenuItem(*GetMenuBar(), id);
    }
    BuildControls();
    BindCommands();
    SetMinSize(FromDIP(kSmallestSize));
    SetSize(FromDIP(kFirstSize));
    Centre(wxBOTH);
    RestoreWindowPosition(kSettingStatisticsFramePosition, kApplicationName, *this);
    ShowPage(StatisticsPage::Overview);
    ShowPlots();
    mpPages->SetFocus();
}

StatisticsFrame::~StatisticsFrame() {
    LetGoOfStore();
}

void StatisticsFrame::SetDatabase(Database* database) {
    mpDatabase = database;
    mpCostly->SetDatabase(database);
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        ListCategories();
        Count();
    }
}

void StatisticsFrame::Update(Subject*) {
    ListCategories();
    Count();
}

StatisticsPage StatisticsFrame::GetPage() const {
    return static_cast<StatisticsPage>(std::max(0, mpPages->GetSelection()));
}

void StatisticsFrame::ShowPage(StatisticsPage page) {
    mpPages->SetSelection(static_cast<int>(page));
    ShowCurrent();
}

void StatisticsFrame::BuildControls() {
    auto* const panel = new wxPanel(this);
    auto* const column = new wxBoxSizer(wxVERTICAL);
    const int gap = FromDIP(kFormEdge);
    wxArrayString names;
    for (size_t i = 0; i < kStatisticsPageCount; ++i) {
        names.push_back(StatisticsPageName(static_cast<StatisticsPage>(i)));
    }
    mpPages = new wxListBox(panel, kPagesId, wxDefaultPosition, wxDefaultSize, names, wxLB_SINGLE);
    SetAccessibleName(*mpPages, _("Pages"));
    mpOverview = new StatisticsOverview(panel, [this](StatisticsPage page) {
        ShowPage(page);
        mpPages->SetFocus();
    });
    mpPlot = new PlotControl(panel, kPlotId);
    mpNumbers = new NumbersList(panel, kNumbersId);
    auto* const content = new wxBoxSizer(wxVERTICAL);
    for (wxWindow* const part : {static_cast<wxWindow*>(mpOverview), static_cast<wxWindow*>(mpPlot),
                                 static_cast<wxWindow*>(mpNumbers)}) {
        content->Add(part, wxSizerFlags(1).Expand());
    }
    mpCostly = new CostlyCardsPanel(panel, mServices);
    content->Add(mpCostly, wxSizerFlags().Expand().Border(wxTOP, gap));
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(mpPages, wxSizerFlags().Expand().Border(wxRIGHT, gap));
    row->Add(content, wxSizerFlags(1).Expand());
    column->Add(BuildChoices(), wxSizerFlags().Expand().Border(wxALL, gap));
    column->Add(row, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT, gap));
    column->Add(BuildButtons(), wxSizerFlags().Expand().Border(wxALL, gap));
    panel->SetSizer(column);
}

wxChoice* StatisticsFrame::AddChoice(wxSizer& row, int id, const wxString& label,
                                     const std::vector<wxString>& entries) {
    wxChoice* const choice =
        MakeChoice(*mpPages->GetParent(), id, wxArrayString(entries.size(), entries.data()));
    choice->MoveBeforeInTabOrder(mpPages);
    row.Add(MakeFormLabel(label, *choice),
            wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(kFormGap)));
    row.Add(choice, wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(2 * kFormEdge)));
    choice->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { Count(); });
    return choice;
}

wxSizer* StatisticsFrame::BuildChoices() {
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpCategory = AddChoice(*row, kCategoryId, _("Cate&gory:"), {_("All Categories")});
    mpDirection = AddChoice(*row, kDirectionId, _("&Direction:"),
                            {_("Both Directions"), _("Front to Back"), _("Back to Front")});
    mpSpan =
        AddChoice(*row, kSpanId, _("Ti&me:"), {_("1 Month"), _("3 Months"), _("1 Year"), _("All")});
    return row;
}

wxSizer* StatisticsFrame::BuildButtons() {
    wxWindow* const panel = mpPages->GetParent();
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    mpShowNumbers = new wxCheckBox(panel, kShowNumbersId, _("Show &Numbers"));
    mpCopy = new wxButton(panel, wxID_COPY, _("&Copy"));
    mpCopy->SetToolTip(_("Copies the numbers as a table, and the picture."));
    mpSave = new wxButton(panel, wxID_SAVEAS, _("Save Picture &As..."));
    row->Add(mpShowNumbers, wxSizerFlags().CentreVertical());
    row->AddStretchSpacer();
    row->Add(mpCopy, wxSizerFlags().Border(wxRIGHT, FromDIP(kFormGap)));
    row->Add(mpSave);
    return row;
}

void StatisticsFrame::BindCommands() {
    Bind(wxEVT_ACTIVATE, &StatisticsFrame::OnActivate, this);
    Bind(wxEVT_CLOSE_WINDOW, &StatisticsFrame::OnClose, this);
    Bind(wxEVT_CHAR_HOOK, &StatisticsFrame::OnCharHook, this);
    mpPages->Bind(wxEVT_LISTBOX, [this](wxCommandEvent&) { ShowCurrent(); });
    mpShowNumbers->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { ShowCurrent(); });
    mpPlot->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OpenCard(mpPlot->GetMarkedRow()); });
    mpNumbers->Bind(wxEVT_LIST_ITEM_ACTIVATED,
                    [this](wxListEvent& event) { OpenCard(static_cast<int>(event.GetIndex())); });
    const auto copy = [this](wxCommandEvent&) { Copy(); };
    Bind(wxEVT_BUTTON, copy, wxID_COPY);
    Bind(wxEVT_MENU, copy, wxID_COPY);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) { event.Enable(!CurrentPlot().Table.Rows.empty()); },
        wxID_COPY);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Save(); }, wxID_SAVEAS);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(false); }, wxID_CLOSE);
}

// Keeps the chosen category while the store has it.
void StatisticsFrame::ListCategories() {
    const int chosen = mpCategory->GetSelection();
    const int32_t id = chosen > 0 ? mCategories[static_cast<size_t>(chosen) - 1].Id : -1;
    std::list<Category> categories;
    // A failure is reported by the store itself.
    mpDatabase->SelectAllCategories(categories);
    SortByName(categories);
    mCategories.assign(categories.begin(), categories.end());
    wxArrayString names;
    names.push_back(_("All Categories"));
    int selection = 0;
    wxClientDC dc(mpCategory);
    dc.SetFont(mpCategory->GetFont());
    for (const Category& category : mCategories) {
        if (chosen > 0 && category.Id == id) {
            selection = static_cast<int>(names.size());
        }
        names.push_back(wxControl::Ellipsize(ShownName(category.Name), dc, wxELLIPSIZE_END,
                                             FromDIP(kWidestCategory), wxELLIPSIZE_FLAGS_NONE));
    }
    mpCategory->Set(names);
    mpCategory->SetSelection(selection);
    mpCategory->GetParent()->Layout();
}

ReviewQuery StatisticsFrame::ReadQuery() const {
    ReviewQuery query;
    const int category = mpCategory->GetSelection();
    if (category > 0) {
        query.Asked = ChooseAmong({mCategories.begin(), mCategories.end()},
                                  mCategories[static_cast<size_t>(category) - 1].Id);
    }
    query.Directions = kDirections[std::max(0, mpDirection->GetSelection())];
    query.Span = static_cast<ReviewSpan>(std::max(0, mpSpan->GetSelection()));
    query.Now = mServices.GetClock().Now();
    return query;
}

void StatisticsFrame::Count() {
    if (mpJob != nullptr) {
        mpJob->Reading.AskToStop();
        mCountAgain = true;
    } else {
        StartJob();
    }
}

void StatisticsFrame::StartJob() {
    mCountAgain = false;
    if (mpDatabase == nullptr || !mpDatabase->IsOpen()) {
        return;
    }
    mpJob = std::make_unique<FiguresJob>(*mpDatabase, ReadQuery(), ReadDayLimits(), mHistory,
                                         [this] { CallAfter(&StatisticsFrame::TakeFigures); });
    if (!mpJob->Reading.Start()) {
        mpJob->Reading.RunHere();
    }
}

void StatisticsFrame::TakeFigures() {
    // The window may be about to go.
    if (mpJob == nullptr || !mpJob->Reading.IsFinished()) {
        return;
    }
    const std::unique_ptr<FiguresJob> job = std::move(mpJob);
    job->Reading.Join();
    const wxString failure = job->Reading.TakeFailure();
    if (!failure.empty()) {
        wxLogError("%s", failure);
    }
    // The store may have been changed for another one meanwhile.
    if (job->Result == 0 && mpDatabase->GetPath() == job->Path && !mCountAgain) {
        mHardest = job->Figures.Hardest;
        mpCostly->SetCards(job->Figures.Costly);
        mpOverview->SetHints(MakeHints(job->Figures.Habit, job->Limits.RelearnShare));
        mPlots = MakeStatisticsPlots(job->Figures, job->Query.Span);
        ShowPlots();
    }
    if (mCountAgain) {
        StartJob();
    }
}

void StatisticsFrame::ShowPlots() {
    mpOverview->SetPlots(mPlots);
    ShowCurrent();
}

void StatisticsFrame::ShowCurrent() {
    const bool isOverview = GetPage() == StatisticsPage::Overview;
    const bool hasNumbers = mpShowNumbers->GetValue();
    mpPlot->SetPlot(CurrentPlot());
    mpOverview->Show(isOverview && !hasNumbers);
    mpPlot->Show(!isOverview && !hasNumbers);
    mpNumbers->Show(hasNumbers);
    mpCostly->Show(GetPage() == StatisticsPage::HardestCards && !mpCostly->IsEmpty());
    mpNumbers->GetParent()->Layout();
    mpNumbers->SetTable(CurrentPlot().Table);
    mpCopy->Enable(!CurrentPlot().Table.Rows.empty());
    mpSave->Enable(!isOverview && CurrentPlot().EmptyText.empty());
}

void StatisticsFrame::Copy() {
    const Plot& plot = CurrentPlot();
    if (plot.Table.Rows.empty() || !wxTheClipboard->Open()) {
        return;
    }
    auto* const data = new wxDataObjectComposite;
    data->Add(new wxTextDataObject(plot.Table.TabSeparated()), true);
    if (GetPage() != StatisticsPage::Overview && plot.EmptyText.empty()) {
        data->Add(new wxBitmapDataObject(DrawPlotAsBitmap(plot, kPictureSize, kPictureScale)));
    }
    wxTheClipboard->SetData(data);
    wxTheClipboard->Close();
}

void StatisticsFrame::Save() {
    wxFileDialog dialog(this, _("Save Picture"), wxString(), FileNameOf(CurrentPlot().Title),
                        _("Picture (*.png)") + "|*.png|" + _("Drawing (*.svg)") + "|*.svg",
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK) {
        return;
    }
    wxFileName file(dialog.GetPath());
    if (!file.GetExt().IsSameAs("svg", false) && !file.GetExt().IsSameAs("png", false)) {
        file.SetFullName(file.GetFullName() + (dialog.GetFilterIndex() == 1 ? ".svg" : ".png"));
    }
    if (!SavePicture(file.GetFullPath())) {
        ShowMessageBox(
            wxString::Format(_("The picture could not be written to \"%s\"."), file.GetFullPath()),
            _("Save Picture"), wxOK | wxCENTRE, this);
    }
}

bool StatisticsFrame::SavePicture(const wxString& path) const {
    const wxLogNull noMessages;
    if (wxFileName(path).GetExt().IsSameAs("svg", false)) {
        const std::string svg = DrawPlotAsSvg(CurrentPlot(), kPictureSize);
        return WriteWhole(path, svg.data(), svg.size());
    }
    wxMemoryOutputStream stream;
    const wxBitmap bitmap = DrawPlotAsBitmap(CurrentPlot(), kPictureSize, kPictureScale);
    return bitmap.ConvertToImage().SaveFile(stream, wxBITMAP_TYPE_PNG) &&
           WriteWhole(path, stream.GetOutputStreamBuffer()->GetBufferStart(), stream.GetSize());
}

// The store may have lost the card since it was counted; the editor then stays away.
void StatisticsFrame::OpenCard(int row) {
    if (GetPage() != StatisticsPage::HardestCards || row < 0 ||
        static_cast<size_t>(row) >= mHardest.size()) {
        return;
    }
    FlashCard card;
    card.CardId = mHardest[static_cast<size_t>(row)].CardId;
    mServices.OpenEditor(card);
}

// Called when the window closes: the object is destroyed later, when the store may be gone.
void StatisticsFrame::LetGoOfStore() {
    mpJob.reset();
    mStoreAttachment.Detach();
    mpDatabase = nullptr;
    mpCostly->SetDatabase(nullptr);
}

void StatisticsFrame::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (event.GetActive() && mpDatabase != nullptr) {
        mServices.FrameActivated(*this);
        // A score does not tell the windows, and time has passed.
        Count();
    }
}

void StatisticsFrame::OnClose(wxCloseEvent& event) {
    event.Skip();
    SaveWindowPosition(kSettingStatisticsFramePosition, kApplicationName, *this);
    LetGoOfStore();
    mServices.FrameClosed(*this);
}

void StatisticsFrame::OnCharHook(wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE && event.GetModifiers() == wxMOD_NONE) {
        Close(false);
    } else {
        event.Skip();
    }
}
