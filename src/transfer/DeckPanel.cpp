#include "transfer/DeckPanel.h"

#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/listbox.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "base/Worker.h"
#include "shell/Forms.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"
#include "transfer/ProgressDialog.h"

namespace {

constexpr int kFieldsHeight = 80;
// Five lines: most decks lose in fewer ways.
constexpr int kSummaryHeight = 120;
// Real kinds of notes have up to twenty fields; a hostile one would fill the window with controls.
constexpr size_t kMostChoices = 100;
constexpr size_t kMostTypes = 1000;
constexpr size_t kLongestName = 40;

// In the order of FieldRole.
wxArrayString RoleLabels() {
    wxArrayString labels;
    labels.push_back(_("Front"));
    labels.push_back(_("Front, second text"));
    labels.push_back(_("Back"));
    labels.push_back(_("Back, second text"));
    labels.push_back(_("Notes"));
    labels.push_back(_("Leave out"));
    return labels;
}

wxString CutName(const wxString& name) {
    return CutWithEllipsis(name, kLongestName);
}

// Longer work shows its progress.
constexpr long kPatienceMilliseconds = 200;

// Prepares a deck's file, unless that was done before, and reads the deck.
class SurveyThread : public Worker {
  public:
    // The database is not owned.
    SurveyThread(const wxString& path, std::shared_ptr<DeckFile> file, DeckOptions options,
                 Database& database)
        : mPath(path), mFile(std::move(file)), mOptions(std::move(options)), mDatabase(database) {}
    ~SurveyThread() override { SurveyThread::Cancel(); }

    // Valid after Join.
    const DeckSurvey& GetSurvey() const { return mSurvey; }
    const std::shared_ptr<DeckFile>& GetFile() const { return mFile; }

    int32_t GetMaximum() const override { return 1000; }
    int32_t GetPosition() const override { return mProgress.Position; }
    void Cancel() override {
        mProgress.IsCancelled = true;
        Worker::Cancel();
    }

  protected:
    void Work() override {
        if (mFile == nullptr) {
            DeckFileOptions options;
            options.IsCancelled = &mProgress.IsCancelled;
            options.Position = &mProgress.Position;
            mFile = DeckFile::Open(mPath, mSurvey.Failure, options);
        }
        if (mFile != nullptr) {
            mSurvey = SurveyDeck(mFile, mOptions, mDatabase, mProgress);
        }
    }
    void OnFailure(const wxString& message) override { mSurvey.Failure = message; }

  private:
    wxString mPath;
    std::shared_ptr<DeckFile> mFile;
    DeckOptions mOptions;
    Database& mDatabase;
    DeckSurvey mSurvey;
    SurveyProgress mProgress;
};

}  // namespace

DeckPanel::DeckPanel(wxWindow* parent, Database& database, FatalErrorReport& report,
                     std::function<void()> onChange)
    : wxPanel(parent), mDatabase(database), mReport(report), mOnChange(std::move(onChange)) {
    MakeControls();
}

void DeckPanel::MakeControls() {
    wxArrayString names;
    names.push_back(_("Whole name of the deck"));
    names.push_back(_("Last part of the name"));
    mpNames = MakeChoice(*this, ID_NAMES, names);
    mpSchedules = new wxCheckBox(this, ID_SCHEDULES, _("Take over what was learned"));
    mpSchedules->SetValue(true);
    mpType = new wxChoice(this, ID_TYPE);
    mpFields = new wxScrolledWindow(this, wxID_ANY, wxDefaultPosition,
                                    FromDIP(wxSize(-1, kFieldsHeight)), wxVSCROLL);
    mpFields->SetScrollRate(0, FromDIP(kFormGap));
    KeepScrollBarVisible(*mpFields);
    const int gap = FromDIP(kFormGap);
    mpFieldGrid = new wxFlexGridSizer(2, gap, gap);
    mpFieldGrid->AddGrowableCol(1);
    mpFields->SetSizer(mpFieldGrid);
    mpSummary =
        new wxListBox(this, ID_SUMMARY, wxDefaultPosition, FromDIP(wxSize(-1, kSummaryHeight)));

    auto* const grid = new wxFlexGridSizer(2, gap, gap);
    grid->AddGrowableCol(1);
    grid->Add(MakeFormLabel(_("Category"), *mpNames), wxSizerFlags().CentreVertical());
    grid->Add(mpNames, wxSizerFlags().Expand());
    grid->Add(MakeFormLabel(_("Kind of note"), *mpType), wxSizerFlags().CentreVertical());
    grid->Add(mpType, wxSizerFlags().Expand());
    auto* const choices = new wxBoxSizer(wxVERTICAL);
    choices->Add(mpSchedules, wxSizerFlags().Border(wxBOTTOM, gap));
    choices->Add(grid, wxSizerFlags().Expand());
    // Side by side, they leave room for the preview on a small screen.
    auto* const halves = new wxBoxSizer(wxHORIZONTAL);
    halves->Add(choices, wxSizerFlags(1).Border(wxRIGHT, FromDIP(kFormEdge)));
    halves->Add(mpFields, wxSizerFlags(1).Expand().ReserveSpaceEvenIfHidden());
    auto* const rows = new wxBoxSizer(wxVERTICAL);
    rows->Add(halves, wxSizerFlags(1).Expand());
    // Over the whole width the sentences are not cut.
    rows->Add(MakeFormLabel(_("What comes along"), *mpSummary),
              wxSizerFlags().Border(wxTOP, FromDIP(kFormEdge)));
    rows->Add(mpSummary, wxSizerFlags(1).Expand().Border(wxTOP, gap));
    SetSizer(rows);

    mpNames->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { OnChoice(); });
    mpSchedules->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { OnChoice(); });
    mpType->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { ShowFields(); });
}

void DeckPanel::Open(const wxString& path) {
    Survey(path);
    mTypes = mSurvey.Types;
    mTypes.resize(std::min(mTypes.size(), kMostTypes));
    mIsChosen.assign(mTypes.size(), false);
    mpType->Clear();
    for (const DeckNoteType& type : mTypes) {
        mpType->Append(CutName(type.Name));
    }
    mpType->Enable(!mTypes.empty());
    if (!mTypes.empty()) {
        mpType->SetSelection(0);
    }
    ShowFields();
}

// Shows a choice for each field of the chosen kind of note.
void DeckPanel::ShowFields() {
    mpFieldGrid->Clear(true);
    const int selection = mpType->GetSelection();
    if (selection != wxNOT_FOUND) {
        const DeckNoteType& type = mTypes[static_cast<size_t>(selection)];
        for (size_t i = 0; i < std::min(type.Fields.size(), kMostChoices); ++i) {
            wxChoice* const role =
                MakeChoice(*mpFields, ID_FIRST_FIELD + static_cast<int>(i), RoleLabels());
            role->SetSelection(static_cast<int>(type.Roles[i]));
            role->Enable(!type.IsCloze);
            role->Bind(wxEVT_CHOICE,
                       [this, i](wxCommandEvent& event) { ChooseRole(i, event.GetSelection()); });
            const wxString name = wxControl::EscapeMnemonics(CutName(type.Fields[i]));
            mpFieldGrid->Add(MakeFormLabel(name, *role), wxSizerFlags().CentreVertical());
            mpFieldGrid->Add(role, wxSizerFlags().Expand());
        }
    }
    mpFields->Show(selection != wxNOT_FOUND);
    mpFields->FitInside();
    Layout();
}

void DeckPanel::ChooseRole(size_t field, int role) {
    const auto type = static_cast<size_t>(mpType->GetSelection());
    mTypes[type].Roles[field] = static_cast<FieldRole>(role);
    mIsChosen[type] = true;
    OnChoice();
}

void DeckPanel::OnChoice() {
    Survey(wxString());
    mOnChange();
}

// Returns the window that questions belong to: the dialog may not be on the screen yet.
wxWindow* DeckPanel::FindParent() {
    wxWindow* const dialog = wxGetTopLevelParent(this);
    return dialog->IsShown() ? dialog : dialog->GetParent();
}

// Asks once whether a deck may go beyond the bounds. Returns true when it may from now on.
bool DeckPanel::AskAboutSize() {
    if (!mSurvey.IsTooLarge || mWasAsked) {
        return false;
    }
    mWasAsked = true;
    const wxString question =
        mSurvey.Failure + "\n" +
        _("Decks that people make are smaller.  Do you want to read it all the same?");
    mMayBeLarge =
        ShowMessageBox(question, _("Import"), wxYES_NO | wxNO_DEFAULT, FindParent()) == wxYES;
    return mMayBeLarge;
}

// Reads the whole deck and shows the outcome. Needs the path the first time.
void DeckPanel::Survey(const wxString& path) {
    ReadDeck(path);
    if (AskAboutSize()) {
        ReadDeck(path);
    }
}

void DeckPanel::ReadDeck(const wxString& path) {
    wxWindow* const parent = FindParent();
    const bool wasOpen = mFile != nullptr;
    SurveyThread thread(path, mFile, GetOptions(), mDatabase);
    {
        const wxBusyCursor busy;
        RunWithProgress(parent, thread, mReport, _("Unable to start a thread for the import."),
                        kPatienceMilliseconds);
    }
    mFile = thread.GetFile();
    mSurvey = thread.GetSurvey();
    const wxString failure = mSurvey.Failure;
    if (wasOpen && thread.IsCancelled()) {
        // The deck was read before, so only the numbers are missing.
        mSurvey.Failure.clear();
    }
    mpSummary->Set(failure.empty() ? DescribeSurvey(mSurvey) : std::vector<wxString>{failure});
}

DeckOptions DeckPanel::GetOptions() const {
    DeckOptions options;
    options.WithSchedules = mpSchedules->GetValue();
    options.WholeDeckNames = mpNames->GetSelection() == 0;
    options.MayBeLarge = mMayBeLarge;
    for (size_t i = 0; i < mTypes.size(); ++i) {
        if (mIsChosen[i]) {
            options.Roles[mTypes[i].Id] = mTypes[i].Roles;
        }
    }
    return options;
}

DeckReaderMaker DeckPanel::GetReaderMaker() const {
    return [file = mFile, choice = GetOptions(), fault = mSurvey.Failure](
               Database& database, const std::atomic<bool>& isCancelled,
               wxString& message) -> std::unique_ptr<CardRecordReader> {
        if (file == nullptr) {
            message = fault;
            return nullptr;
        }
        DeckOptions options = choice;
        options.IsCancelled = &isCancelled;
        return MakeDeckReader(file, options, database, message);
    };
}
