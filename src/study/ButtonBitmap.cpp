#include "study/ButtonBitmap.h"

#include <wx/brush.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/pen.h>

#include <cmath>

namespace {

// The picture is painted at four times its size: scaling it down rounds the corners smoothly.
constexpr int32_t kOversampling = 4;

wxColour Blend(const wxColour& from, const wxColour& to, double t) {
    const auto channel = [t](unsigned char a, unsigned char b) {
        return static_cast<unsigned char>(a * (1.0 - t) + b * t);
    };
    return wxColour(channel(from.Red(), to.Red()), channel(from.Green(), to.Green()),
                    channel(from.Blue(), to.Blue()));
}

// From the background outside to nearly grey inside.
void PaintShadow(wxDC& dc, wxRect shadow, int32_t radius, const wxColour& background) {
    constexpr int32_t kSteps = 8;
    const wxColour grey(127, 127, 127);
    for (int32_t k = 1; k <= kSteps; ++k) {
        const wxColour colour = Blend(background, grey, static_cast<double>(k) / kSteps);
        dc.SetPen(wxPen(colour, kSteps));
        dc.SetBrush(wxBrush(colour));
        dc.DrawRoundedRectangle(shadow, radius);
        shadow.Deflate(1);
    }
}

// Returns how many pixels further in row y of a rounded rectangle begins.
int32_t RowInset(int32_t y, int32_t height, int32_t radius) {
    int32_t d = 0;
    if (y < radius) {
        d = radius - y;
    } else if (y > height - radius) {
        d = y - height + radius;
    } else {
        return 0;
    }
    return radius - static_cast<int32_t>(std::sqrt(static_cast<double>(radius * radius - d * d)));
}

void PaintGradient(wxDC& dc, const wxRect& button, int32_t radius, const wxColour& top,
                   const wxColour& bottom) {
    for (int32_t y = 0; y < button.height; ++y) {
        const double t = button.height > 1 ? static_cast<double>(y) / (button.height - 1) : 0.0;
        const int32_t inset = RowInset(y, button.height, radius);
        dc.SetPen(wxPen(Blend(top, bottom, t), 1));
        dc.DrawLine(button.x + inset, button.y + y, button.x + button.width - inset, button.y + y);
    }
}

}  // namespace

wxBitmap MakeButtonBitmap(int32_t size, const wxColour& background, const wxColour& top,
                          const wxColour& bottom, bool sunk, double scale) {
    const int32_t s = kOversampling;
    const int32_t edge = size - 1;
    const int32_t radius = edge / 4 * s;
    wxBitmap canvas(size * s, size * s);
    wxMemoryDC dc(canvas);
    dc.SetPen(wxPen(background));
    dc.SetBrush(wxBrush(background));
    dc.DrawRectangle(0, 0, size * s, size * s);

    const int32_t origin = sunk ? s : 0;
    wxRect button(origin, origin, edge * s, edge * s);
    button.Deflate(2);
    if (!sunk) {
        wxRect shadow = button;
        shadow.Offset(s, s);
        PaintShadow(dc, shadow, radius, background);
    }
    PaintGradient(dc, button, radius, sunk ? bottom : top, sunk ? top : bottom);
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    dc.SetPen(wxPen(wxColour(102, 102, 102), s));
    dc.DrawRoundedRectangle(button, radius);
    dc.SelectObject(wxNullBitmap);

    const int pixels = static_cast<int>(std::lround(size * scale));
    const wxImage image = canvas.ConvertToImage();
    // A whole divisor is averaged by the plain scaling; any other one would leave pixels out.
    const auto quality =
        image.GetWidth() % pixels == 0 ? wxIMAGE_QUALITY_NORMAL : wxIMAGE_QUALITY_HIGH;
    return wxBitmap(image.Scale(pixels, pixels, quality), wxBITMAP_SCREEN_DEPTH, scale);
}
