#include "shell/MenuBar.h"

#include "support/GuiTest.h"

namespace {

// The entries of a menu in one line: labels less mnemonics and keys, "-" for a separator, a
// submenu's entries in brackets.
std::string Describe(const wxMenu& menu) {
    std::string text;
    for (const wxMenuItem* item : menu.GetMenuItems()) {
        text += text.empty() ? "" : ", ";
        text += item->IsSeparator() ? "-" : item->GetItemLabelText().utf8_string();
        if (item->IsSubMenu()) {
            text += " [" + Describe(*item->GetSubMenu()) + "]";
        }
    }
    return text;
}

std::vector<std::string> Describe(const wxMenuBar& bar) {
    std::vector<std::string> menus;
    for (size_t i = 0; i < bar.GetMenuCount(); ++i) {
        menus.push_back(bar.GetMenuLabel(i).utf8_string() + ": " + Describe(*bar.GetMenu(i)));
    }
    return menus;
}

}  // namespace

using MenuBarTest = GuiTest;

TEST_F(MenuBarTest, AWindowsBarHasOnlyWhatWindowsOffer) {
    wxFrame window(nullptr, wxID_ANY, "Window");
    InitFrame(window, "study_window");
    const std::string tools =
        "&Tools: Study Front to Back, Study Back to Front, -, Learning Progress..., Options..., "
        "Customize [Compact Scoring Controls, Show Status Bar, -, Horizontal Card Layout, "
        "Vertical Card Layout]";
    EXPECT_THAT(Describe(*window.GetMenuBar()),
                ::testing::ElementsAre(
                    "&File: New Card, New Category, Edit..., -, Save and Close, Save and New, -, "
                    "Import..., Export...",
                    "&Edit: Undo, -, Cut, Copy, Paste, Delete, -, Select All, -, Rename, -, Find",
                    "View: List View, Study", tools,
                    "&Help: User Guide..., -, Support..., Feedback..., Forums, -, About..."));
    WriteBooleanSetting("Test", true);
    wxFrame testers(nullptr, wxID_ANY, "Window");
    InitFrame(testers, "study_window");
    EXPECT_EQ(Describe(*testers.GetMenuBar())[3], tools + ", Test [Crash Test]");
}

TEST_F(MenuBarTest, ARemovalTakesOneSeparatorThatPartsNothing) {
    const struct {
        std::vector<int> Removed;
        const char* Expected;
    } cases[] = {
        {{1}, "2, -, 3, -, 4"},     {{1, 2}, "3, -, 4"}, {{3}, "1, 2, -, 4"},
        {{4}, "1, 2, -, 3"},        {{3, 4}, "1, 2"},    {{1, 2, 3, 4}, ""},
        {{99}, "1, 2, -, 3, -, 4"},
    };
    for (const auto& row : cases) {
        auto* const menu = new wxMenu;
        for (const int id : {1, 2, 0, 3, 0, 4}) {
            id == 0 ? menu->AppendSeparator() : menu->Append(id, wxString::Format("%i", id));
        }
        wxMenuBar bar;
        bar.Append(menu, "Menu");
        for (const int id : row.Removed) {
            RemoveMenuItem(bar, id);
        }
        EXPECT_EQ(Describe(*menu), row.Expected);
    }
}
