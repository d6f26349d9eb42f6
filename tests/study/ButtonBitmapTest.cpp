#include "study/ButtonBitmap.h"

#include <gtest/gtest.h>
#include <wx/image.h>

// The red channel tells the top colour from the bottom one.
TEST(ButtonBitmap, IsAGradientWithRoundCornersThatTurnsAndShiftsWhenSunk) {
    for (const int scale : {1, 2}) {
        const auto makeImage = [scale](bool sunk) {
            return MakeButtonBitmap(20, wxColour(10, 20, 30), *wxWHITE, *wxBLUE, sunk, scale)
                .ConvertToImage();
        };
        const int middle = 10 * scale;
        const wxImage raised = makeImage(false);
        ASSERT_EQ(raised.GetSize(), wxSize(20 * scale, 20 * scale));
        EXPECT_EQ(raised.GetRed(0, 0), 10);
        EXPECT_GT(raised.GetRed(middle, 3 * scale), 200);
        EXPECT_LT(raised.GetRed(middle, 16 * scale), 60);
        // The outline, and outside of it the shadow at the right.
        EXPECT_NEAR(raised.GetRed(0, middle), 102, 40);
        EXPECT_GT(raised.GetRed(20 * scale - 1, middle), 10);

        const wxImage sunk = makeImage(true);
        EXPECT_LT(sunk.GetRed(middle, 4 * scale), 80);
        EXPECT_GT(sunk.GetRed(middle, 16 * scale), 180);
        EXPECT_EQ(sunk.GetRed(0, middle), 10);
    }
}
