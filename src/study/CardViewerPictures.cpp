// The pictures of a CardViewer: their places below the text, and their drawing.

#include <wx/brush.h>
#include <wx/graphics.h>
#include <wx/pen.h>

#include <algorithm>
#include <utility>

#include "media/MediaFolder.h"
#include "media/MediaLines.h"
#include "media/windows/CardPictures.h"
#include "study/CardViewer.h"

namespace {

// Logical pixels between pictures, and the least height that one is given.
constexpr int32_t kPictureGap = 8;
constexpr int32_t kLeastPicture = 64;
// More pictures of a side than anybody looks at stay lines of text.
constexpr size_t kMostPictures = 50;
// A card with a sound has this where its line stands, with the name of one that is missing.
constexpr wchar_t kSoundMark[] = L"\u266A";
// How much of the text's colour the place of a picture has.
constexpr unsigned char kPlaceAlpha = 28;
constexpr unsigned char kFrameAlpha = 90;

wxColour WithAlpha(const wxColour& colour, unsigned char alpha) {
    return wxColour(colour.Red(), colour.Green(), colour.Blue(), alpha);
}

}  // namespace

void CardViewer::TakeMedia(CardViewerSide& side) {
    side.Pictures.clear();
    side.PicturesHeight = 0;
    side.HasMedia = !FindMediaLines(side.Text).empty();
    if (!side.HasMedia) {
        side.Words.clear();
        return;
    }
    if (mpPictures == nullptr) {
        mpPictures = std::make_unique<CardPictures>([this] { Refresh(); });
        mpPictures->SetStore(mStore);
    }
    mpPictures->DropRequests();
    side.Words = ReplaceMediaLines(side.Text, [&](const MediaLine& line) {
        if (line.Kind == MediaKind::kSound) {
            const bool isThere = MediaFolder(mStore).Open(line.Name).IsOpen();
            return isThere ? wxString(kSoundMark) : kSoundMark + (" " + line.Name);
        }
        if (side.Pictures.size() == kMostPictures) {
            return MakeMediaLine(line.Kind, line.Name);
        }
        side.Pictures.push_back({line.Name, mpPictures->FindSize(line.Name), wxSize()});
        return wxString();
    });
}

void CardViewer::SizePictures(CardViewerSide& side, int32_t room) const {
    const int32_t gap = FromDIP(kPictureGap);
    const int32_t column = mColumnWidth;
    const auto gaps = gap * (static_cast<int32_t>(side.Pictures.size()) + 1);
    room -= gaps;
    std::vector<PictureSize> sizes;
    for (SidePicture& picture : side.Pictures) {
        if (picture.Natural.x <= 0) {
            // The frame with its name is as high as that needs.
            const wxSize text = GetTextExtent(picture.Name);
            picture.Size = wxSize(std::min(text.x + 2 * gap, column), text.y + 2 * gap);
            room -= picture.Size.y;
        } else {
            const wxSize natural = FromDIP(picture.Natural);
            sizes.push_back({natural.x, natural.y});
        }
    }
    FitPictures(sizes, {column, room}, FromDIP(kLeastPicture));
    side.PicturesHeight = side.Pictures.empty() ? 0 : gaps;
    auto size = sizes.begin();
    for (SidePicture& picture : side.Pictures) {
        if (picture.Natural.x > 0) {
            picture.Size = wxSize(size->Width, size->Height);
            ++size;
        }
        side.PicturesHeight += picture.Size.y;
    }
}

void CardViewer::SizePictures(int32_t height, int32_t firstText, int32_t secondText) {
    constexpr int32_t kDividerHeight = 1;
    if (mLayout == wxHORIZONTAL) {
        SizePictures(mFirst, height - firstText);
        SizePictures(mSecond, height - secondText);
        return;
    }
    // Each side has half of the window, unless the text of the other one needs more.
    const int32_t half = (height - kDividerHeight) / 2;
    const int32_t rest = height - kDividerHeight - firstText - secondText;
    SizePictures(mFirst, std::min(half - firstText, rest));
    SizePictures(mSecond, std::min(half - secondText, rest));
}

int32_t CardViewer::TopOf(const CardViewerSide& side) const {
    if (mScrollNeeded) {
        return side.Rect.y;
    }
    const auto lines = static_cast<int32_t>(LinesOf(side).Lines.size());
    return side.Rect.y + (side.Rect.height - lines * mLineHeight - side.PicturesHeight) / 2;
}

template <class Function>
void CardViewer::VisitPictures(const CardViewerSide& side, Function visit) const {
    const int32_t gap = FromDIP(kPictureGap);
    const auto lines = static_cast<int32_t>(LinesOf(side).Lines.size());
    int32_t y = TopOf(side) + lines * mLineHeight + gap;
    for (const SidePicture& picture : side.Pictures) {
        const int32_t x = side.Rect.x + (side.Rect.width - picture.Size.x) / 2;
        visit(picture, wxRect(wxPoint(x, y), picture.Size));
        y += picture.Size.y + gap;
    }
}

const SidePicture* CardViewer::FindPicture(const wxPoint& point) const {
    const wxPoint place = CalcUnscrolledPosition(point);
    const SidePicture* found = nullptr;
    for (const CardViewerSide* const side : {&mFirst, &mSecond}) {
        VisitPictures(*side, [&](const SidePicture& picture, const wxRect& rect) {
            if (picture.Natural.x > 0 && rect.Contains(place)) {
                found = &picture;
            }
        });
    }
    return found;
}

void CardViewer::PaintPictures(wxGraphicsContext& context, const CardViewerSide& side,
                               const wxRect& visible) const {
    const double scale = GetContentScaleFactor();
    VisitPictures(side, [&](const SidePicture& picture, const wxRect& place) {
        if (!place.Intersects(visible) ||
            (picture.Natural.x > 0 &&
             mpPictures->Draw(context, picture.Name, place, scale, GetBackgroundColour()))) {
            return;
        }
        context.SetBrush(wxBrush(WithAlpha(side.TextColour, kPlaceAlpha)));
        context.SetPen(wxPen(WithAlpha(side.TextColour, kFrameAlpha)));
        context.DrawRectangle(place.x + 0.5, place.y + 0.5, place.width - 1, place.height - 1);
        // What is only not read yet has no name, which would flash.
        if (mpPictures->FindSize(picture.Name).x <= 0) {
            context.SetFont(GetFont(), side.TextColour);
            double width = 0;
            double height = 0;
            context.GetTextExtent(picture.Name, &width, &height);
            context.Clip(place.x, place.y, place.width, place.height);
            context.DrawText(picture.Name, place.x + std::max((place.width - width) / 2, 0.0),
                             place.y + (place.height - height) / 2);
            context.ResetClip();
        }
    });
}
