#include "shell/MenuBar.h"

#include <wx/accel.h>
#include <wx/control.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/settings.h>
#include <wx/translation.h>

#include <iterator>
#include <vector>

#include "resources/ResourceBitmap.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "shell/Toolkit.h"

namespace {

// One entry of the tables below, which read from top to bottom as the menus do.
struct MenuRow {
    // A command, a submenu's own id, or wxID_SEPARATOR.
    int Id;
    const char* Label = "";
    // The path of a resource, for normal entries, or null for none.
    const char* Picture = nullptr;
    wxItemKind Kind = wxITEM_NORMAL;
    const char* Help = "";
    // The rows of a submenu.
    const MenuRow* SubmenuFirst = nullptr;
    const MenuRow* SubmenuEnd = nullptr;
};

constexpr MenuRow kLine = {wxID_SEPARATOR};

// Stands in the menu of the last stores before it is first opened, and while there are none.
constexpr MenuRow kNoRecentRows[] = {{ID_RECENT_STORE_FIRST, wxTRANSLATE("No Other Store")}};

constexpr MenuRow kFileRows[] = {
    {wxID_NEW, wxTRANSLATE("&New Card\tCtrl+N"), "icons/newcard_menu.png", wxITEM_NORMAL,
     wxTRANSLATE("Creates a new flash card.")},
    {ID_NEW_CATEGORY, wxTRANSLATE("New &Category\tCtrl+Shift+N"), "icons/newcategory_menu.png"},
    {wxID_OPEN, wxTRANSLATE("&Edit...\tCtrl+E"), "icons/editcard_menu.png"},
    kLine,
    {ID_SAVE_CLOSE, wxTRANSLATE("&Save and Close\tCtrl+Enter"), "icons/save_menu.png"},
    {ID_SAVE_NEW, wxTRANSLATE("Save and New\tAlt+Enter"), "icons/save_new_menu.png"},
    kLine,
    {ID_IMPORT, wxTRANSLATE("&Import...\tCtrl+I"), "icons/import_menu.png"},
    {ID_EXPORT, wxTRANSLATE("Export..."), "icons/export_menu.png"},
    kLine,
    {ID_OPEN_STORE, wxTRANSLATE("&Open Store..."), "icons/blank_menu.png"},
    {ID_RECENT_STORES, wxTRANSLATE("&Recent Stores"), nullptr, wxITEM_NORMAL, "",
     std::begin(kNoRecentRows), std::end(kNoRecentRows)},
    kLine,
    {ID_BACK_UP, wxTRANSLATE("&Back Up..."), "icons/blank_menu.png"},
    {ID_RESTORE, wxTRANSLATE("Res&tore..."), "icons/blank_menu.png"},
    {ID_EXCHANGE, wxTRANSLATE("E&xchange\tF9"), "icons/blank_menu.png"},
    kLine,
    {wxID_PRINT, wxTRANSLATE("Print...\tCtrl+P"), "icons/print_menu.png"},
    kLine,
    {wxID_CLOSE, wxTRANSLATE("Close\tCtrl+W"), "icons/blank_menu.png"}};

constexpr MenuRow kEditRows[] = {
    {wxID_UNDO, wxTRANSLATE("&Undo\tCtrl+Z"), "icons/undo_menu.png"},
    {wxID_REDO, wxTRANSLATE("R&edo\tCtrl+Shift+Z"), "icons/redo_menu.png"},
    kLine,
    {wxID_CUT, wxTRANSLATE("Cu&t\tCtrl+X"), "icons/cut_menu.png"},
    {wxID_COPY, wxTRANSLATE("&Copy\tCtrl+C"), "icons/copy_menu.png"},
    {wxID_PASTE, wxTRANSLATE("&Paste\tCtrl+V"), "icons/paste_menu.png"},
    {wxID_DELETE, wxTRANSLATE("&Delete\tDelete"), "icons/delete_menu.png"},
    kLine,
    {wxID_SELECTALL, wxTRANSLATE("&Select All\tCtrl+A"), "icons/blank_menu.png"},
    kLine,
    {ID_RENAME, wxTRANSLATE("&Rename\tCtrl+R"), "icons/blank_menu.png"},
    kLine,
    {wxID_FIND, wxTRANSLATE("&Find\tCtrl+F"), "icons/search_menu.png"},
    {ID_REPLACE, wxTRANSLATE("Find and Rep&lace...\tCtrl+H"), "icons/blank_menu.png"},
    {ID_DUPLICATES, wxTRANSLATE("Dupl&icates..."), "icons/blank_menu.png"}};

constexpr MenuRow kViewRows[] = {
    {ID_WINDOW_LIST, wxTRANSLATE("List View\tCtrl+1"), nullptr, wxITEM_RADIO},
    {ID_WINDOW_STUDY, wxTRANSLATE("Study\tCtrl+2"), nullptr, wxITEM_RADIO}};

constexpr MenuRow kSpeakRows[] = {
    {ID_SPEAK_FRONT, wxTRANSLATE("Speak the Front"), nullptr, wxITEM_CHECK},
    {ID_SPEAK_BACK, wxTRANSLATE("Speak the Back"), nullptr, wxITEM_CHECK},
    kLine,
    {ID_SPEAK_AGAIN, wxTRANSLATE("Say Again\tF8")},
    {ID_VOICES, wxTRANSLATE("Voices...")}};

constexpr MenuRow kStudyRows[] = {
    {ID_CHOOSE_CATEGORY, wxTRANSLATE("Choose Category\tAlt+Down")},
    {ID_NEXT_DUE_CATEGORY, wxTRANSLATE("Next Category with Due Cards\tCtrl+D")},
    {ID_SHOW_MORE_TODAY, wxTRANSLATE("Show More Today")},
    kLine,
    {ID_TYPE_ANSWER, wxTRANSLATE("Type the Answer"), nullptr, wxITEM_CHECK},
    {ID_SPEAK, wxTRANSLATE("Speak"), nullptr, wxITEM_NORMAL, "", std::begin(kSpeakRows),
     std::end(kSpeakRows)},
    {ID_PLAY_SOUNDS, wxTRANSLATE("Play Sounds"), nullptr, wxITEM_CHECK},
    {ID_SHOW_PICTURE, wxTRANSLATE("Show Picture\tCtrl+Space")},
    kLine,
    {wxID_ZOOM_IN, wxTRANSLATE("Larger Text\tCtrl++")},
    {wxID_ZOOM_OUT, wxTRANSLATE("Smaller Text\tCtrl+-")},
    {wxID_ZOOM_100, wxTRANSLATE("Normal Text Size\tCtrl+0")}};

constexpr MenuRow kCustomizeRows[] = {
    {ID_COMPACT_SCORING, wxTRANSLATE("Compact Scoring Controls"), nullptr, wxITEM_CHECK},
    {ID_STATUS_BAR, wxTRANSLATE("Show Status Bar"), nullptr, wxITEM_CHECK},
    kLine,
    {ID_LAYOUT_HORIZONTAL, wxTRANSLATE("Horizontal Card Layout"), nullptr, wxITEM_RADIO},
    {ID_LAYOUT_VERTICAL, wxTRANSLATE("Vertical Card Layout"), nullptr, wxITEM_RADIO}};

constexpr MenuRow kTestRows[] = {{ID_CRASH_TEST, wxTRANSLATE("Crash Test")}};

constexpr MenuRow kToolsRows[] = {
    {ID_STUDY_FORWARD, wxTRANSLATE("Study Front to Back"), nullptr, wxITEM_RADIO},
    {ID_STUDY_REVERSE, wxTRANSLATE("Study Back to Front"), nullptr, wxITEM_RADIO},
    kLine,
    {ID_LEARNING_PROGRESS, wxTRANSLATE("Learning &Progress...\tCtrl+L"), "icons/progress_menu.png"},
    {ID_STATISTICS, wxTRANSLATE("&Statistics...\tCtrl+T"), "icons/progress_menu.png"},
    {ID_CHANGED_ON_BOTH, wxTRANSLATE("Changed on &Both..."), "icons/blank_menu.png"},
    {ID_MEDIA, wxTRANSLATE("Media..."), "icons/blank_menu.png"},
    {wxID_PREFERENCES, wxTRANSLATE("Options..."), "icons/preferences_menu.png"},
    {ID_CUSTOMIZE_MENU, wxTRANSLATE("Customize"), nullptr, wxITEM_NORMAL, "",
     std::begin(kCustomizeRows), std::end(kCustomizeRows)},
    {ID_TEST_MENU, wxTRANSLATE("Test"), nullptr, wxITEM_NORMAL, "", std::begin(kTestRows),
     std::end(kTestRows)}};

constexpr MenuRow kWindowRows[] = {
    {ID_MINIMIZE, wxTRANSLATE("Minimize\tCtrl+M")},
    {ID_MINIMIZE_ALL, wxTRANSLATE("Minimize All\tCtrl+Alt+M")},
    {ID_ZOOM, wxTRANSLATE("Zoom")},
    {ID_BRING_ALL_TO_FRONT, wxTRANSLATE("Bring All to Front")},
    {ID_WINDOW_LIST, wxTRANSLATE("List View\tCtrl+1"), nullptr, wxITEM_CHECK},
    {ID_WINDOW_STUDY, wxTRANSLATE("Study\tCtrl+2"), nullptr, wxITEM_CHECK}};

constexpr MenuRow kHelpRows[] = {
    {ID_QUICK_HELP, wxTRANSLATE("&Quick Help..."), "icons/quickhelp_menu.png"},
    {wxID_HELP, wxTRANSLATE("&User Guide...\tF1"), "icons/help_menu.png"},
    kLine,
    {ID_SUPPORT, wxTRANSLATE("Support..."), "icons/sendfeedback_menu.png"},
    {ID_FEEDBACK, wxTRANSLATE("&Feedback..."), "icons/sendfeedback_menu.png"},
    {ID_FORUMS, wxTRANSLATE("Forums"), "icons/forum_menu.png"},
    kLine,
    {wxID_ABOUT, wxTRANSLATE("&About..."), "icons/about_menu.png"}};

// Where a label names no key, the library shows the usual key of the id. Only Edit names its key:
// it has the id of opening a file, which has another.
constexpr MenuRow kCardRows[] = {
    {wxID_NEW, wxTRANSLATE("&New"), "icons/newcard_menu.png", wxITEM_NORMAL,
     wxTRANSLATE("Creates a new flash card.")},
    {wxID_OPEN, wxTRANSLATE("&Edit\tCtrl+E"), "icons/editcard_menu.png"},
    kLine,
    {wxID_CUT, wxTRANSLATE("Cu&t"), "icons/cut_menu.png"},
    {wxID_COPY, wxTRANSLATE("&Copy"), "icons/copy_menu.png"},
    {wxID_PASTE, wxTRANSLATE("&Paste"), "icons/paste_menu.png"},
    {wxID_DELETE, wxTRANSLATE("&Delete"), "icons/delete_menu.png"}};

constexpr MenuRow kCategoryRows[] = {
    {ID_NEW_CATEGORY, wxTRANSLATE("New &Category"), "icons/newcategory_menu.png"},
    {ID_RENAME_CATEGORY, wxTRANSLATE("Rename..."), "icons/blank_menu.png"},
    {wxID_DELETE, wxTRANSLATE("Delete"), "icons/delete_menu.png"}};

// Translates a text of the tables. The translation of an empty text would be the catalogue's
// header.
wxString Translated(const char* text) {
    return *text == '\0' ? wxString() : wxGetTranslation(text);
}

void AppendRows(wxMenu& menu, const MenuRow* first, const MenuRow* end);
std::unique_ptr<wxMenu> BuildMenu(const MenuRow* first, const MenuRow* end);

std::unique_ptr<wxMenuItem> BuildItem(wxMenu& menu, const MenuRow& row) {
    std::unique_ptr<wxMenu> submenu;
    if (row.SubmenuFirst != nullptr) {
        submenu = BuildMenu(row.SubmenuFirst, row.SubmenuEnd);
    }
    auto item = std::make_unique<wxMenuItem>(&menu, row.Id, Translated(row.Label),
                                             Translated(row.Help), row.Kind, submenu.release());
    if (row.Picture != nullptr) {
        const wxBitmapBundle picture = LoadResourceBitmap(row.Picture);
        if (picture.IsOk()) {
            item->SetBitmap(picture);
        }
    }
    return item;
}

std::unique_ptr<wxMenu> BuildMenu(const MenuRow* first, const MenuRow* end) {
    auto menu = std::make_unique<wxMenu>();
    AppendRows(*menu, first, end);
    return menu;
}

void AppendRows(wxMenu& menu, const MenuRow* first, const MenuRow* end) {
    for (const MenuRow* row = first; row != end; ++row) {
        if (row->Id == wxID_SEPARATOR) {
            menu.AppendSeparator();
        } else {
            menu.Append(BuildItem(menu, *row).release());
        }
    }
}

template <size_t kCount>
std::unique_ptr<wxMenu> BuildMenu(const MenuRow (&rows)[kCount]) {
    return BuildMenu(std::begin(rows), std::end(rows));
}

// Tells whether a separator stands first, last or after another one.
bool IsLooseLine(const wxMenu& menu, size_t position) {
    const wxMenuItem* const item = menu.FindItemByPosition(position);
    return item->IsSeparator() && (position == 0 || position + 1 == menu.GetMenuItemCount() ||
                                   menu.FindItemByPosition(position - 1)->IsSeparator());
}

// Fills the menu of the last stores, without the open one, which is the first in the settings. A
// menu that is right already stays untouched, as it may just be on the screen.
void ShowRecentStores(wxFrame& frame) {
    const wxMenuItem* const item = frame.GetMenuBar()->FindItem(ID_RECENT_STORES);
    const std::vector<wxString> paths = ReadRecentTexts(kSettingRecentStore);
    if (item == nullptr || paths.size() < 2) {
        return;
    }
    wxMenu& menu = *item->GetSubMenu();
    bool isRight = menu.GetMenuItemCount() == paths.size() - 1;
    for (size_t i = 1; i < paths.size() && isRight; ++i) {
        isRight =
            menu.FindItemByPosition(i - 1)->GetItemLabel() == wxControl::EscapeMnemonics(paths[i]);
    }
    if (isRight) {
        return;
    }
    while (menu.GetMenuItemCount() > 0) {
        menu.Destroy(menu.FindItemByPosition(0));
    }
    int id = ID_RECENT_STORE_FIRST;
    for (size_t i = 1; i < paths.size(); ++i) {
        menu.Append(id++, wxControl::EscapeMnemonics(paths[i]));
    }
}

// The frame keeps a copy of the colour, which is renewed whenever the desktop's colours change.
void UseFaceColour(wxFrame& frame) {
    frame.SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    frame.Bind(wxEVT_SYS_COLOUR_CHANGED, [&frame](wxSysColourChangedEvent& event) {
        event.Skip();
        frame.SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
        frame.Refresh();
    });
}

}  // namespace

wxMenuBar* BuildMenuBar() {
    ShowMenuPictures();
    auto bar = std::make_unique<wxMenuBar>();
    bar->Append(BuildMenu(kFileRows).release(), _("&File"));
    bar->Append(BuildMenu(kEditRows).release(), _("&Edit"));
    bar->Append(BuildMenu(kViewRows).release(), _("&View"));
    bar->Append(BuildMenu(kToolsRows).release(), _("&Tools"));
    bar->Append(BuildMenu(kWindowRows).release(), _("&Window"));
    bar->Append(BuildMenu(kHelpRows).release(), _("&Help"));
    return bar.release();
}

std::unique_ptr<wxMenu> BuildCardMenu() {
    ShowMenuPictures();
    return BuildMenu(kCardRows);
}

std::unique_ptr<wxMenu> BuildCategoryMenu() {
    return BuildMenu(kCategoryRows);
}

void PopUpMenu(wxWindow& window, wxMenu& menu, const wxContextMenuEvent& event) {
    const bool isByKey = event.GetPosition() == wxDefaultPosition;
    const wxPoint corner(window.GetCharHeight(), window.GetCharHeight());
    window.PopupMenu(&menu, isByKey ? corner : wxDefaultPosition);
}

void InitFrame(wxFrame& frame, const wxString&) {
    static const wxFont font = wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT);
    frame.SetFont(font);
    std::unique_ptr<wxMenuBar> bar(BuildMenuBar());
    for (const int id : {int{wxID_CLOSE}, int{ID_QUICK_HELP}}) {
        RemoveMenuItem(*bar, id);
    }
    RemoveMenuOf(*bar, ID_MINIMIZE);
    if (!ReadBooleanSetting(kSettingTest)) {
        wxMenu* menu = nullptr;
        wxMenuItem* const test = bar->FindItem(ID_TEST_MENU, &menu);
        menu->Destroy(test);
    }
    // What stands in the menu of the last stores now is no command.
    bar->Enable(ID_RECENT_STORE_FIRST, false);
    frame.SetMenuBar(bar.release());
    frame.Bind(wxEVT_MENU_OPEN, [&frame](wxMenuEvent& event) {
        event.Skip();
        ShowRecentStores(frame);
    });
    // No entry of the bar closes the window or the program, but users of a desktop expect the keys.
    const wxAcceleratorEntry keys[] = {{wxACCEL_CTRL, 'W', wxID_CLOSE},
                                       {wxACCEL_CTRL, 'Q', wxID_EXIT}};
    frame.SetAcceleratorTable(wxAcceleratorTable(static_cast<int>(std::size(keys)), keys));
    frame.SetIcons(LoadApplicationIcon());
    UseFaceColour(frame);
}

void AddStudyEntries(wxMenuBar& bar) {
    wxMenu* menu = nullptr;
    bar.FindItem(ID_WINDOW_STUDY, &menu);
    menu->AppendSeparator();
    AppendRows(*menu, std::begin(kStudyRows), std::end(kStudyRows));
}

void RemoveMenuItem(wxMenuBar& bar, int id) {
    wxMenu* menu = nullptr;
    wxMenuItem* const item = bar.FindItem(id, &menu);
    if (item == nullptr) {
        return;
    }
    menu->Destroy(item);
    for (size_t i = 0; i < menu->GetMenuItemCount(); ++i) {
        if (IsLooseLine(*menu, i)) {
            menu->Destroy(menu->FindItemByPosition(i));
            return;
        }
    }
}

void RemoveMenuOf(wxMenuBar& bar, int id) {
    for (size_t i = 0; i < bar.GetMenuCount(); ++i) {
        if (bar.GetMenu(i)->FindChildItem(id) != nullptr) {
            delete bar.Remove(i);
            return;
        }
    }
}
