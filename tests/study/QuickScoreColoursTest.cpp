#include <gtk/gtk.h>

#include <algorithm>
#include <numeric>

#include "study/QuickScore.h"
#include "support/GuiTest.h"

// White rows would shine in a dark window.
TEST(QuickScoreColoursTest, TheScoresAreAboutAsBrightAsTheirWindowAndTheirTextsAreNot) {
    constexpr int kAlike = 70;
    constexpr int kInk = 110;
    constexpr char kPreferDark[] = "gtk-application-prefer-dark-theme";
    const wxString labels[] = {"5 - Pass", "4 - Pass", "3 - Pass"};
    // It would overrule the theme that the settings name.
    wxUnsetEnv("GTK_THEME");
    for (const bool isDark : {false, true}) {
        g_object_set(gtk_settings_get_default(), kPreferDark, isDark ? 1 : 0, nullptr);
        // As the program does: the library keeps the colours of a theme until it hears of another.
        g_object_notify(G_OBJECT(gtk_settings_get_default()), "gtk-theme-name");
        wxFrame& frame = *new wxFrame(nullptr, wxID_ANY, "Score");
        QuickScore& score = *new QuickScore(&frame, wxID_ANY);
        score.SetItems(labels, WXSIZEOF(labels));
        frame.SetClientSize(score.GetBestSize());
        ShowAndWait(frame);
        const wxSize size = frame.GetClientSize();
        const int ground = static_cast<int>(frame.GetBackgroundColour().GetLuminance() * 255);
        EXPECT_EQ(ground < 128, isDark);
        EXPECT_TRUE(WaitFor([&] {
            GdkPixbuf* const picture = gdk_pixbuf_get_from_window(
                gtk_widget_get_window(frame.GetHandle()), 0, 0, size.x, size.y);
            guint length = 0;
            const guchar* const bytes = gdk_pixbuf_get_pixels_with_length(picture, &length);
            const int mean = std::accumulate(bytes, bytes + length, 0) / static_cast<int>(length);
            const auto [darkest, brightest] = std::minmax_element(bytes, bytes + length);
            const int ink = isDark ? *brightest - mean : mean - *darkest;
            g_object_unref(picture);
            return std::abs(mean - ground) < kAlike && ink > kInk;
        })) << (isDark ? "dark" : "light");
        frame.Destroy();
    }
    gtk_settings_reset_property(gtk_settings_get_default(), kPreferDark);
    wxSetEnv("GTK_THEME", "Adwaita");
}
