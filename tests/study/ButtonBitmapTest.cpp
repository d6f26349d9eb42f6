#include "study/ButtonBitmap.h"

#include <gtest/gtest.h>
#include <wx/image.h>

namespace {

const wxColour kBackground(10, 20, 30);

wxImage MakeImage(bool sunk, double scale) {
    const wxBitmap bitmap = MakeButtonBitmap(20, kBackground, wxColour(255, 255, 255),
                                             wxColour(0, 0, 255), sunk, scale);
    EXPECT_EQ(bitmap.GetScaleFactor(), scale);
    return bitmap.ConvertToImage();
}

// The channel that tells the top colour from the bottom one.
int RedAt(const wxImage& image, int x, int y) {
    return image.GetRed(x, y);
}

TEST(ButtonBitmap, IsAGradientWithRoundCornersAtEveryScale) {
    for (const int scale : {1, 2}) {
        const wxImage image = MakeImage(false, scale);
        ASSERT_EQ(image.GetSize(), wxSize(20 * scale, 20 * scale));
        EXPECT_EQ(RedAt(image, 0, 0), kBackground.Red());
        const int middle = 10 * scale;
        EXPECT_GT(RedAt(image, middle, 3 * scale), 200);
        EXPECT_LT(RedAt(image, middle, 16 * scale), 60);
        // The outline, and outside of it the shadow at the right but none at the left.
        EXPECT_NEAR(RedAt(image, 0, middle), 102, 40);
        EXPECT_GT(RedAt(image, 20 * scale - 1, middle), kBackground.Red());
    }
}

TEST(ButtonBitmap, ASunkButtonIsLightBelowAndCastsNoShadow) {
    const wxImage image = MakeImage(true, 1);
    EXPECT_LT(RedAt(image, 10, 4), 80);
    EXPECT_GT(RedAt(image, 10, 16), 180);
    EXPECT_EQ(RedAt(image, 0, 10), kBackground.Red());
}

}  // namespace
