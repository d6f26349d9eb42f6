#include "shell/Toolkit.h"

#include <gtk/gtk.h>

#include <algorithm>

#include "support/GuiTest.h"

TEST(ToolkitTest, AFieldHasRoomForItsFontAndGivesItBack) {
    wxFrame frame(nullptr, wxID_ANY, "frame");
    auto* const panel = new wxPanel(&frame);
    auto* const field = new wxTextCtrl(panel, wxID_ANY, "Ag");
    wxFont font = field->GetFont();
    FitTextHeights(frame);
    const int usual = field->GetMinSize().y;
    EXPECT_GE(usual, field->GetCharHeight());
    field->SetFont(wxFont(font).Scaled(4));
    FitTextHeights(frame);
    EXPECT_GE(field->GetMinSize().y, field->GetCharHeight());
    field->SetFont(font);
    FitTextHeights(frame);
    EXPECT_EQ(field->GetMinSize().y, usual);
}

namespace {

// A list in a window, under a desktop whose theme and text size change while it is open.
struct DesktopStyleTest : GuiTest {
    DesktopStyleTest() {
        // It would overrule the theme that the settings name.
        wxUnsetEnv("GTK_THEME");
        WatchDesktop([](wxTopLevelWindow& window) { TakeDesktopStyle(window); });
        mpList->AppendColumn("Heading");
        mpList->InsertItem(0, "some words in a row");
        mpList->SetFont(mpList->GetFont());
        ShowAndWait(*mpFrame);
    }
    ~DesktopStyleTest() override {
        gtk_settings_reset_property(gtk_settings_get_default(), "gtk-xft-dpi");
        gtk_settings_reset_property(gtk_settings_get_default(),
                                    "gtk-application-prefer-dark-theme");
        wxSetEnv("GTK_THEME", "Adwaita");
    }

    static void Set(const char* property, int value) {
        g_object_set(gtk_settings_get_default(), property, value, nullptr);
    }

    wxWindow& Headings() {
        wxWindow* const first = mpList->GetChildren().front();
        return first == &GetRowsWindow(*mpList) ? *mpList->GetChildren().back() : *first;
    }

    // Counts the dark and the light points that the X server has of a part of the window.
    std::pair<int, int> CountDarkAndLight(const wxWindow& part) const {
        const wxPoint corner = mpFrame->ScreenToClient(part.GetScreenPosition());
        const wxSize size = part.GetSize();
        GdkWindow* const window = gtk_widget_get_window(mpFrame->GetHandle());
        GdkPixbuf* const picture =
            gdk_pixbuf_get_from_window(window, corner.x, corner.y, size.x, size.y);
        std::pair<int, int> counts;
        if (picture != nullptr) {
            guint length = 0;
            const guchar* const bytes = gdk_pixbuf_get_pixels_with_length(picture, &length);
            counts.first = static_cast<int>(
                std::count_if(bytes, bytes + length, [](guchar byte) { return byte < 80; }));
            counts.second = static_cast<int>(
                std::count_if(bytes, bytes + length, [](guchar byte) { return byte > 175; }));
            g_object_unref(picture);
        }
        return counts;
    }

    wxFrame* mpFrame = new wxFrame(nullptr, wxID_ANY, "window");
    wxListCtrl* mpList =
        new wxListCtrl(mpFrame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT);
};

TEST_F(DesktopStyleTest, AListIsInkOnPaperInEachTheme) {
    for (const bool isDark : {true, false, true}) {
        Set("gtk-application-prefer-dark-theme", isDark ? 1 : 0);
        for (const wxWindow* const part : {&GetRowsWindow(*mpList), &Headings()}) {
            EXPECT_TRUE(WaitFor([&] {
                const auto [dark, light] = CountDarkAndLight(*part);
                const int ink = isDark ? light : dark;
                return ink > 20 && ink < (isDark ? dark : light) / 2;
            })) << (isDark ? "dark " : "light ")
                << part->GetName();
        }
    }
}

TEST_F(DesktopStyleTest, AListHasRoomForAnotherSizeOfTexts) {
    const int usual = mpList->GetCharHeight();
    for (const int dpi : {240, 96}) {
        Set("gtk-xft-dpi", dpi * 1024);
        EXPECT_TRUE(WaitFor([&] {
            wxRect row;
            mpList->GetItemRect(0, row);
            const int line = mpList->GetCharHeight();
            return (line > usual * 2) == (dpi == 240) && row.height >= line &&
                   row.height < 2 * line && Headings().GetSize().y >= Headings().GetCharHeight();
        })) << dpi;
    }
}

}  // namespace
