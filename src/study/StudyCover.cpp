#include "study/StudyCover.h"

#include <wx/image.h>

namespace {

constexpr int kHeight = 256;

unsigned char Blend(unsigned char top, unsigned char bottom, int step) {
    return static_cast<unsigned char>((top * (kHeight - step) + bottom * step) / kHeight);
}

}  // namespace

wxBitmap MakeStudyCover(const wxColour& top, const wxColour& bottom) {
    wxImage image(1, kHeight, false);
    for (int y = 0; y < kHeight; ++y) {
        const int step = y + 1;
        image.SetRGB(0, y, Blend(top.Red(), bottom.Red(), step),
                     Blend(top.Green(), bottom.Green(), step),
                     Blend(top.Blue(), bottom.Blue(), step));
    }
    return wxBitmap(image);
}
