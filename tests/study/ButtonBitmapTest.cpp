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

// The red channel tells the top colour from the bottom one.
TEST(ButtonBitmap, IsAGradientWithRoundCornersAtEveryScale) {
    for (const int scale : {1, 2}) {
        const wxImage image = MakeImage(false, scale);
        ASSERT_EQ(image.GetSize(), wxSize(20 * scale, 20 * scale));
        const int middle = 10 * scale;
        EXPECT_EQ(image.GetRed(0, 0), kBackground.Red());
        EXPECT_GT(image.GetRed(middle, 3 * scale), 200);
        EXPECT_LT(image.GetRed(middle, 16 * scale), 60);
        // The outline, and outside of it the shadow at the right.
        EXPECT_NEAR(image.GetRed(0, middle), 102, 40);
        EXPECT_GT(image.GetRed(20 * scale - 1, middle), kBackground.Red());
    }
}

TEST(ButtonBitmap, ASunkButtonIsLightBelowAndStandsFurtherRight) {
    const wxImage image = MakeImage(true, 1);
    EXPECT_LT(image.GetRed(10, 4), 80);
    EXPECT_GT(image.GetRed(10, 16), 180);
    EXPECT_EQ(image.GetRed(0, 10), kBackground.Red());
}

}  // namespace
