#include "shell/MenuBar.h"

#include <wx/translation.h>

#include <algorithm>
#include <map>
#include <set>

#include "support/GuiTest.h"

namespace {

using MenuBarTest = GuiTest;

// Calls the function for each entry of a menu and of its submenus.
void ForEachEntry(const wxMenu& menu, const std::function<void(const wxMenuItem&)>& look) {
    for (const wxMenuItem* const item : menu.GetMenuItems()) {
        look(*item);
        if (item->IsSubMenu()) {
            ForEachEntry(*item->GetSubMenu(), look);
        }
    }
}

std::vector<int> CommandsOf(const wxMenu& menu) {
    std::vector<int> ids;
    ForEachEntry(menu, [&ids](const wxMenuItem& item) {
        if (!item.IsSeparator() && !item.IsSubMenu()) {
            ids.push_back(item.GetId());
        }
    });
    return ids;
}

bool HasLooseLine(const wxMenu& menu) {
    const wxMenuItemList& items = menu.GetMenuItems();
    bool isAfterLine = true;
    for (const wxMenuItem* const item : items) {
        if (item->IsSeparator() && isAfterLine) {
            return true;
        }
        isAfterLine = item->IsSeparator();
    }
    return !items.empty() && isAfterLine;
}

// The texts of a language while the object lives.
struct Language {
    explicit Language(const wxString& name) {
        wxFileTranslationsLoader::AddCatalogLookupPathPrefix(VELOMIND_LOCALES);
        auto* const translations = new wxTranslations;
        wxTranslations::Set(translations);
        translations->SetLanguage(name);
        EXPECT_TRUE(translations->AddCatalog("velomind") || name == "en") << name;
    }
    ~Language() { wxTranslations::Set(nullptr); }
};

TEST_F(MenuBarTest, AKeyOfTheMenuBarMeansOneCommandAndAMarkedLetterOneEntryOfItsMenu) {
    for (const char* const name : {"en", "de", "ja"}) {
        const Language language(name);
        auto* const frame = new wxFrame(nullptr, wxID_ANY, "frame");
        InitFrame(*frame, "topic");
        AddStudyEntries(*frame->GetMenuBar());
        std::map<wxString, std::set<int>> keys;
        std::set<wxString> titles;
        for (size_t i = 0; i < frame->GetMenuBar()->GetMenuCount(); ++i) {
            const wxString title = frame->GetMenuBar()->GetMenuLabel(i);
            EXPECT_TRUE(titles.insert(title.AfterFirst('&').Left(1).Lower()).second) << title;
            std::set<wxString> letters;
            ForEachEntry(*frame->GetMenuBar()->GetMenu(i), [&](const wxMenuItem& item) {
                const wxString label = item.GetItemLabel();
                if (label.Contains("\t")) {
                    keys[label.AfterFirst('\t')].insert(item.GetId());
                }
                const wxString letter = label.AfterFirst('&').Left(1).Lower();
                EXPECT_TRUE(letter.empty() || letters.insert(letter).second) << label;
            });
        }
        EXPECT_EQ(titles.count(wxString()), 0U) << name;
        EXPECT_GT(keys.size(), 20U);
        for (const auto& [key, ids] : keys) {
            EXPECT_EQ(ids.size(), 1U) << key;
        }
    }
}

TEST_F(MenuBarTest, NoLineOfAMenuStandsLooseWhateverEntriesAWindowLacks) {
    const std::unique_ptr<wxMenuBar> whole(BuildMenuBar());
    for (size_t i = 0; i < whole->GetMenuCount(); ++i) {
        std::vector<int> order = CommandsOf(*whole->GetMenu(i));
        for (const bool isForward : {true, false}) {
            if (!isForward) {
                std::reverse(order.begin(), order.end());
            }
            const std::unique_ptr<wxMenuBar> bar(BuildMenuBar());
            for (size_t removed = 0; removed + 1 < order.size(); ++removed) {
                RemoveMenuItem(*bar, order[removed]);
                EXPECT_FALSE(HasLooseLine(*bar->GetMenu(i))) << order[removed];
            }
        }
    }
    // An entry that a bar does not have, or no longer, is no difficulty.
    RemoveMenuItem(*whole, wxID_HIGHEST + 1);
    RemoveMenuOf(*whole, wxID_COPY);
    EXPECT_EQ(whole->FindItem(wxID_COPY), nullptr);
    RemoveMenuOf(*whole, wxID_COPY);
    EXPECT_EQ(whole->GetMenuCount(), 5U);
}

}  // namespace
