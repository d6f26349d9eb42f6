#include "shell/MenuBar.h"

#include "support/GuiTest.h"

namespace {

// The entries of a menu in one line, "-" for a separator.
std::string Describe(const wxMenu& menu) {
    std::string text;
    for (const wxMenuItem* item : menu.GetMenuItems()) {
        text += text.empty() ? "" : ", ";
        text += item->IsSeparator() ? "-" : item->GetItemLabelText().utf8_string();
    }
    return text;
}

}  // namespace

using MenuBarTest = GuiTest;

TEST_F(MenuBarTest, ARemovalTakesOneSeparatorThatPartsNothing) {
    const std::pair<std::vector<int>, const char*> cases[] = {
        {{1}, "2, -, 3, -, 4"},     {{1, 2}, "3, -, 4"}, {{3}, "1, 2, -, 4"},
        {{4}, "1, 2, -, 3"},        {{3, 4}, "1, 2"},    {{1, 2, 3, 4}, ""},
        {{99}, "1, 2, -, 3, -, 4"},
    };
    for (const auto& [removed, expected] : cases) {
        auto* const menu = new wxMenu;
        for (const int id : {1, 2, 0, 3, 0, 4}) {
            id == 0 ? menu->AppendSeparator() : menu->Append(id, wxString::Format("%i", id));
        }
        wxMenuBar bar;
        bar.Append(menu, "Menu");
        for (const int id : removed) {
            RemoveMenuItem(bar, id);
        }
        EXPECT_EQ(Describe(*menu), expected);
    }
}
