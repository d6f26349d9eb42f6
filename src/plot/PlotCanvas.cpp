#include "plot/PlotCanvas.h"

#include <wx/brush.h>
#include <wx/graphics.h>
#include <wx/pen.h>

#include <cmath>

namespace {

// Returns the size of a text beside the usual one.
double PartOfUsual(PlotText style) {
    return style == PlotText::Small ? 0.85 : style == PlotText::Title ? 1.15 : 1.0;
}

}  // namespace

ScreenCanvas::ScreenCanvas(wxGraphicsContext& context, const wxFont& font)
    : mContext(context), mFont(font) {
    mContext.SetAntialiasMode(wxANTIALIAS_DEFAULT);
}

void ScreenCanvas::Fill(const wxRect2DDouble& box, const wxColour& colour) {
    mContext.SetPen(*wxTRANSPARENT_PEN);
    mContext.SetBrush(wxBrush(colour));
    mContext.DrawRectangle(box.m_x, box.m_y, box.m_width, box.m_height);
}

void ScreenCanvas::Disc(const wxPoint2DDouble& centre, double radius, const wxColour& colour) {
    mContext.SetPen(*wxTRANSPARENT_PEN);
    mContext.SetBrush(wxBrush(colour));
    mContext.DrawEllipse(centre.m_x - radius, centre.m_y - radius, 2 * radius, 2 * radius);
}

void ScreenCanvas::Line(const std::vector<wxPoint2DDouble>& points, const wxColour& colour,
                        double width, bool dashed) {
    if (points.size() < 2) {
        return;
    }
    mContext.SetPen(mContext.CreatePen(
        wxGraphicsPenInfo(colour, width, dashed ? wxPENSTYLE_SHORT_DASH : wxPENSTYLE_SOLID)
            .Cap(wxCAP_BUTT)
            .Join(wxJOIN_ROUND)));
    mContext.StrokeLines(points.size(), points.data());
}

void ScreenCanvas::Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
                         PlotText style, const wxColour& colour) {
    UseFont(style, colour);
    double width = 0.0;
    double height = 0.0;
    mContext.GetTextExtent(text, &width, &height);
    const double left = anchor == PlotAnchor::Left     ? 0.0
                        : anchor == PlotAnchor::Middle ? width / 2.0
                                                       : width;
    mContext.DrawText(text, place.m_x - left, place.m_y - height / 2.0);
}

double ScreenCanvas::WidthOf(const wxString& text, PlotText style) {
    UseFont(style, *wxBLACK);
    double width = 0.0;
    mContext.GetTextExtent(text, &width, nullptr);
    return width;
}

double ScreenCanvas::HeightOf(PlotText style) {
    UseFont(style, *wxBLACK);
    double height = 0.0;
    mContext.GetTextExtent("Mg", nullptr, &height);
    return height;
}

void ScreenCanvas::UseFont(PlotText style, const wxColour& colour) {
    const wxFont font = mFont.Scaled(static_cast<float>(PartOfUsual(style)));
    mContext.SetFont(style == PlotText::Title ? font.Bold() : font, colour);
}

namespace {

constexpr double kSvgFontSize = 13.0;
// Widths of characters in parts of the font's size.
constexpr double kUsualWidth = 0.58;
constexpr double kBoldWidth = 0.64;

double SvgFontSize(PlotText style) {
    return kSvgFontSize * PartOfUsual(style);
}

// Returns a number with a point, whatever the locale, and no more digits than a picture needs.
std::string Number(double value) {
    // The 0 turns a negative zero into a positive one.
    return wxString::FromCDouble(std::round(value * 100.0) / 100.0 + 0.0).utf8_string();
}

std::string Colour(const char* attribute, const wxColour& colour) {
    std::string text = std::string(" ") + attribute + "=\"" +
                       colour.GetAsString(wxC2S_HTML_SYNTAX).Left(7).utf8_string() + "\"";
    if (colour.Alpha() != wxALPHA_OPAQUE) {
        text +=
            std::string(" ") + attribute + "-opacity=\"" + Number(colour.Alpha() / 255.0) + "\"";
    }
    return text;
}

// Returns a text as the content of an element. Characters that XML cannot hold become spaces.
std::string Escaped(const wxString& text) {
    wxString escaped;
    for (const wxUniChar character : text) {
        switch (character.GetValue()) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += character.GetValue() < ' ' ? wxUniChar(' ') : character;
        }
    }
    return escaped.utf8_string();
}

}  // namespace

SvgCanvas::SvgCanvas(const wxSize& size, const wxString& title, const wxString& description) {
    const std::string width = std::to_string(size.x);
    const std::string height = std::to_string(size.y);
    mParts =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "role=\"img\" width=\"" +
        width + "\" height=\"" + height + "\" viewBox=\"0 0 " + width + " " + height +
        "\" font-family=\"sans-serif\">\n<title>" + Escaped(title) + "</title>\n";
    if (!description.empty()) {
        mParts += "<desc>" + Escaped(description) + "</desc>\n";
    }
}

void SvgCanvas::Fill(const wxRect2DDouble& box, const wxColour& colour) {
    mParts += "<rect x=\"" + Number(box.m_x) + "\" y=\"" + Number(box.m_y) + "\" width=\"" +
              Number(box.m_width) + "\" height=\"" + Number(box.m_height) + "\"" +
              Colour("fill", colour) + "/>\n";
}

void SvgCanvas::Disc(const wxPoint2DDouble& centre, double radius, const wxColour& colour) {
    mParts += "<circle cx=\"" + Number(centre.m_x) + "\" cy=\"" + Number(centre.m_y) + "\" r=\"" +
              Number(radius) + "\"" + Colour("fill", colour) + "/>\n";
}

void SvgCanvas::Line(const std::vector<wxPoint2DDouble>& points, const wxColour& colour,
                     double width, bool dashed) {
    mParts += "<polyline points=\"";
    for (size_t i = 0; i < points.size(); ++i) {
        mParts += (i == 0 ? "" : " ") + Number(points[i].m_x) + "," + Number(points[i].m_y);
    }
    mParts += "\" fill=\"none\" stroke-linejoin=\"round\" stroke-width=\"" + Number(width) + "\"" +
              Colour("stroke", colour) + (dashed ? " stroke-dasharray=\"5 4\"" : "") + "/>\n";
}

void SvgCanvas::Write(const wxString& text, const wxPoint2DDouble& place, PlotAnchor anchor,
                      PlotText style, const wxColour& colour) {
    const double size = SvgFontSize(style);
    const char* const anchors[] = {"start", "middle", "end"};
    // Viewers disagree about a middle line of text, so the base line is set a third of the size
    // below it.
    mParts += "<text x=\"" + Number(place.m_x) + "\" y=\"" + Number(place.m_y + size * 0.35) +
              "\" font-size=\"" + Number(size) + "\" text-anchor=\"" +
              anchors[static_cast<size_t>(anchor)] + "\"" +
              (style == PlotText::Title ? " font-weight=\"bold\"" : "") + Colour("fill", colour) +
              ">" + Escaped(text) + "</text>\n";
}

double SvgCanvas::WidthOf(const wxString& text, PlotText style) {
    const double usual = style == PlotText::Title ? kBoldWidth : kUsualWidth;
    double width = 0.0;
    for (const wxUniChar character : text) {
        width += character.GetValue() >= kFirstWideCharacter ? 1.0 : usual;
    }
    return width * SvgFontSize(style);
}

double SvgCanvas::HeightOf(PlotText style) {
    return SvgFontSize(style) * 1.35;
}

std::string SvgCanvas::GetFile() const {
    return mParts + "</svg>\n";
}
