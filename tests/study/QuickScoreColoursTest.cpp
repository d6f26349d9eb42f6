#include <gtk/gtk.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "study/QuickScore.h"
#include "support/GuiTest.h"

namespace {

struct QuickScoreColoursTest : GuiTest {
    // It would overrule the theme that the settings name.
    QuickScoreColoursTest() { wxUnsetEnv("GTK_THEME"); }
    ~QuickScoreColoursTest() override {
        gtk_settings_reset_property(gtk_settings_get_default(),
                                    "gtk-application-prefer-dark-theme");
        wxSetEnv("GTK_THEME", "Adwaita");
    }

    // The bytes of the colours that the X server has of the whole window.
    static std::vector<guchar> Photograph(const wxWindow& window) {
        const wxSize size = window.GetClientSize();
        GdkPixbuf* const picture = gdk_pixbuf_get_from_window(
            gtk_widget_get_window(window.GetHandle()), 0, 0, size.x, size.y);
        if (picture == nullptr) {
            return {0};
        }
        guint length = 0;
        const guchar* const bytes = gdk_pixbuf_get_pixels_with_length(picture, &length);
        std::vector<guchar> colours(bytes, bytes + length);
        g_object_unref(picture);
        return colours;
    }
};

// White rows would shine in a dark window.
TEST_F(QuickScoreColoursTest, TheScoresAreAboutAsBrightAsTheirWindowAndTheirTextsAreNot) {
    constexpr int kAlike = 70;
    constexpr int kInk = 110;
    const wxString labels[] = {"5 - Pass", "4 - Pass", "3 - Pass"};
    for (const bool isDark : {false, true}) {
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme",
                     isDark ? 1 : 0, nullptr);
        wxFrame& frame = *new wxFrame(nullptr, wxID_ANY, "Score");
        QuickScore& score = *new QuickScore(&frame, wxID_ANY);
        score.SetItems(labels, WXSIZEOF(labels));
        score.SetMark(1);
        frame.SetClientSize(score.GetBestSize());
        ShowAndWait(frame);
        const int ground = static_cast<int>(frame.GetBackgroundColour().GetLuminance() * 255);
        EXPECT_EQ(ground < 128, isDark);
        EXPECT_TRUE(WaitFor([&] {
            const std::vector<guchar> colours = Photograph(frame);
            const int mean = std::accumulate(colours.begin(), colours.end(), 0) /
                             static_cast<int>(colours.size());
            const auto [darkest, brightest] = std::minmax_element(colours.begin(), colours.end());
            return std::abs(mean - ground) < kAlike &&
                   (isDark ? *brightest - mean : mean - *darkest) > kInk;
        })) << (isDark ? "dark" : "light");
        frame.Destroy();
    }
}

}  // namespace
