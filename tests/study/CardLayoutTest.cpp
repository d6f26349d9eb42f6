#include "study/CardLayout.h"

#include <gtest/gtest.h>

namespace {

TEST(CardLayout, TheDividerLeavesTheMiddleOnlyForATextThatNeedsIt) {
    const wxSize client(200, 101);
    const struct {
        const char* What;
        int32_t FirstText, SecondText;
        int32_t FirstHeight, VirtualHeight;
    } rows[] = {
        {"two short texts", 20, 30, 50, 101},
        {"a long first text", 60, 20, 60, 101},
        {"a long second text", 20, 60, 40, 101},
        {"both too long", 60, 60, 60, 121},
        {"a short first and an endless second text", 20, 300, 20, 321},
    };
    for (const auto& row : rows) {
        const CardLayout layout = ArrangeCard(wxVERTICAL, client, row.FirstText, row.SecondText);
        EXPECT_EQ(layout.VirtualHeight, row.VirtualHeight) << row.What;
        EXPECT_EQ(layout.First, wxRect(0, 0, 200, row.FirstHeight)) << row.What;
        EXPECT_EQ(layout.Second,
                  wxRect(0, row.FirstHeight + 1, 200, row.VirtualHeight - row.FirstHeight - 1))
            << row.What;
    }
}

TEST(CardLayout, ColumnsShareTheWidthAndTheHeightOfTheLongerText) {
    for (const int32_t width : {200, 201}) {
        const CardLayout layout = ArrangeCard(wxHORIZONTAL, wxSize(width, 101), 20, 300);
        const int32_t column = width == 200 ? 99 : 100;
        EXPECT_EQ(layout.First, wxRect(0, 0, column, 300));
        EXPECT_EQ(layout.Second, wxRect(column + 1, 0, 100, 300));
    }
    EXPECT_EQ(CardHeightNeeded(wxHORIZONTAL, 20, 300), 300);
    EXPECT_EQ(CardHeightNeeded(wxVERTICAL, 20, 300), 321);
}

}  // namespace
