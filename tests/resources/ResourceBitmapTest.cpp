#include "resources/ResourceBitmap.h"

#include <gtest/gtest.h>
#include <wx/bitmap.h>
#include <wx/icon.h>
#include <wx/image.h>

#include <algorithm>

namespace {

bool ShowsSomething(const wxBitmap& bitmap) {
    const wxImage image = bitmap.ConvertToImage();
    const auto pixels =
        static_cast<size_t>(image.GetWidth()) * static_cast<size_t>(image.GetHeight());
    return !image.HasAlpha() ||
           std::any_of(image.GetAlpha(), image.GetAlpha() + pixels, [](auto a) { return a > 0; });
}

TEST(ResourceBitmap, EveryCommandHasItsPictureInBothSizes) {
    const wxArrayString names = wxSplit(
        "about_menu back_menu blank_menu browse_menu category_list copy_menu cut_menu delete_menu "
        "editcard_menu export_menu forum_menu forward_menu help_menu import_menu newcard_menu "
        "newcategory_menu paste_menu preferences_menu progress_menu save_menu save_new_menu "
        "search_field_cancel search_menu search_field_search sendfeedback_menu undo_menu "
        "search_field_search_menu back_tool",
        ' ');
    for (const wxString& name : names) {
        SCOPED_TRACE(name);
        const wxBitmapBundle bundle = LoadResourceBitmap("icons/" + name + ".png");
        ASSERT_TRUE(bundle.IsOk());
        EXPECT_EQ(wxSize(16, 16), bundle.GetDefaultSize());
        const wxBitmap large = bundle.GetBitmap(wxSize(32, 32));
        EXPECT_EQ(wxSize(32, 32), large.GetSize());
        EXPECT_EQ(name != "blank_menu", ShowsSomething(large));
    }
}

}  // namespace
