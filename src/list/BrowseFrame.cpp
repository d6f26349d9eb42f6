#include "list/BrowseFrame.h"

#include <wx/button.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Makers.h"
#include "shell/MenuBar.h"
#include "shell/Settings.h"
#include "store/Database.h"

namespace {

constexpr const char* kPositionKey = "BrowseFramePosition";
constexpr int kBorder = 12;

constexpr int kForeignCommands[] = {ID_SAVE_CLOSE, ID_SAVE_NEW, ID_STUDY_FORWARD, ID_STUDY_REVERSE,
                                    ID_CUSTOMIZE_MENU};

wxString CategoryName(Database& database, int32_t id) {
    if (id == -1) {
        return _("Deleted Items");
    }
    std::list<Category> categories;
    const bool found = database.SelectCategoryById(id, categories) >= 0 && !categories.empty();
    return found ? categories.front().Name : wxString(_("Error"));
}

// What the store holds, in words.
wxString Figures(Database& database, int32_t currentCategory) {
    int32_t cards = 0;
    std::list<Category> categories;
    if (database.CountAllCards(cards) < 0 || database.SelectAllCategories(categories) < 0) {
        return _("The flash card store cannot be read.");
    }
    const auto cardCount = static_cast<unsigned>(cards);
    const auto categoryCount = static_cast<unsigned>(categories.size());
    return wxString::Format(wxPLURAL("%u flash card", "%u flash cards", cardCount), cardCount) +
           "\n" +
           wxString::Format(wxPLURAL("%u category", "%u categories", categoryCount),
                            categoryCount) +
           "\n" +
           wxString::Format(_("Current category: %s"), CategoryName(database, currentCategory));
}

}  // namespace

BrowseFrame::BrowseFrame(AppServices& services)
    : wxFrame(nullptr, ID_WINDOW_LIST, _("List - Velomind"), wxDefaultPosition, wxSize(640, 480),
              wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMINIMIZE_BOX | wxMAXIMIZE_BOX)),
      mServices(services) {
    InitFrame(*this, "browse_window");
    for (const int id : kForeignCommands) {
        RemoveMenuItem(*GetMenuBar(), id);
    }
    BuildControls();
    UseSettings();
    Centre();
    if (!RestoreWindowPosition(kPositionKey, kApplicationName, *this)) {
        SetSize(wxSize(wxMax(GetSize().x, 640), wxMax(GetSize().y, 480)));
        Centre();
    }
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);

    Bind(wxEVT_ACTIVATE, &BrowseFrame::OnActivate, this);
    Bind(wxEVT_CLOSE_WINDOW, &BrowseFrame::OnClose, this);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(false); }, wxID_CLOSE);
    Bind(
        wxEVT_UPDATE_UI, [](wxUpdateUIEvent& event) { event.Check(true); }, ID_WINDOW_LIST);
}

void BrowseFrame::SetDatabase(Database* database) {
    mpDatabase = database;
    mStoreAttachment.Attach(database, this);
    ShowFigures();
}

void BrowseFrame::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        SaveWindowPosition(kPositionKey, kApplicationName, *this);
        UseSettings();
        RestoreWindowPosition(kPositionKey, kApplicationName, *this);
    } else {
        ShowFigures();
    }
}

void BrowseFrame::BuildControls() {
    auto* const panel = new wxPanel(this);
    mpFigures = new wxStaticText(panel, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize, 0,
                                 "figures");
    auto* const guide = new wxStaticText(
        panel, wxID_ANY,
        _("To study the current category, press Study: look at the front of a card, turn it over,"
          " and score your answer from 0 to 5."));
    guide->Wrap(560);
    mpStudy = new wxButton(panel, wxID_ANY, _("&Study"), wxDefaultPosition, wxDefaultSize, 0,
                           wxDefaultValidator, "study");
    mpStudy->Bind(wxEVT_BUTTON, &BrowseFrame::OnStudy, this);
    mpStudy->SetDefault();
    mpStudy->SetFocus();

    auto* const column = new wxBoxSizer(wxVERTICAL);
    const auto line = wxSizerFlags().Border(wxALL, kBorder);
    column->Add(mpFigures, line);
    column->Add(guide, line);
    column->Add(mpStudy, line);
    panel->SetSizer(column);
}

void BrowseFrame::UseSettings() {
    mpFigures->SetFont(ReadFontSetting("BrowseFont"));
    mpFigures->GetParent()->Layout();
}

void BrowseFrame::ShowFigures() {
    // A category's name may hold the mark of a mnemonic.
    mpFigures->SetLabelText(
        mpDatabase == nullptr ? wxString()
                              : Figures(*mpDatabase, mServices.GetCurrentCategoryId(*mpDatabase)));
    mpFigures->GetParent()->Layout();
}

void BrowseFrame::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (event.GetActive()) {
        mServices.FrameActivated(*this);
    }
}

void BrowseFrame::OnClose(wxCloseEvent& event) {
    event.Skip();
    SaveWindowPosition(kPositionKey, kApplicationName, *this);
    WriteStringSetting("LastWindow", "Browse");
    // The window itself ends later, and the store may be gone by then.
    mSettingsAttachment.Detach();
    mStoreAttachment.Detach();
    mpDatabase = nullptr;
    mServices.FrameClosed(*this);
}

void BrowseFrame::OnStudy(wxCommandEvent&) {
    wxCommandEvent command(wxEVT_MENU, ID_WINDOW_STUDY);
    command.SetEventObject(this);
    ProcessWindowEvent(command);
}
