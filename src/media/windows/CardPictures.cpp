#include "media/windows/CardPictures.h"

#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <wx/brush.h>
#include <wx/pen.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

namespace {

// What all pictures of a window together may take.
constexpr int64_t kMostBytes = int64_t{96} << 20;

bool IsSameFile(const struct stat& one, const struct stat& other) {
    return one.st_ino == other.st_ino && one.st_size == other.st_size &&
           one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
           one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

struct SurfaceRelease {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceRelease>;

// Returns the points as they are drawn: whole words, each colour already multiplied by how opaque
// the point is. Null when the memory does not suffice.
Surface MakeSurface(const GdkPixbuf& pixels) {
    const int width = gdk_pixbuf_get_width(&pixels);
    const int height = gdk_pixbuf_get_height(&pixels);
    const int channels = gdk_pixbuf_get_n_channels(&pixels);
    const bool hasAlpha = gdk_pixbuf_get_has_alpha(&pixels) != 0;
    Surface surface(cairo_image_surface_create(hasAlpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24,
                                               width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    const guint8* const source = gdk_pixbuf_read_pixels(&pixels);
    unsigned char* const target = cairo_image_surface_get_data(surface.get());
    const auto sourceStride = static_cast<size_t>(gdk_pixbuf_get_rowstride(&pixels));
    const auto targetStride = static_cast<size_t>(cairo_image_surface_get_stride(surface.get()));
    const auto times = [](uint32_t colour, uint32_t alpha) { return (colour * alpha + 127) / 255; };
    for (size_t y = 0; y < static_cast<size_t>(height); ++y) {
        const guint8* from = source + y * sourceStride;
        auto* to = reinterpret_cast<uint32_t*>(static_cast<void*>(target + y * targetStride));
        for (int x = 0; x < width; ++x, from += channels) {
            const uint32_t alpha = hasAlpha ? from[3] : 255;
            *to++ = alpha << 24 | times(from[0], alpha) << 16 | times(from[1], alpha) << 8 |
                    times(from[2], alpha);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// Lets a file for the printer keep a photograph as such, in a tenth of the bytes of its points.
void AttachJpeg(GdkPixbuf& pixels, cairo_surface_t* surface) {
    gchar* bytes = nullptr;
    gsize count = 0;
    if (gdk_pixbuf_save_to_buffer(&pixels, &bytes, &count, "jpeg", nullptr, "quality", "88",
                                  nullptr) != 0) {
        const auto* const data = reinterpret_cast<unsigned char*>(bytes);
        if (cairo_surface_set_mime_data(surface, CAIRO_MIME_TYPE_JPEG, data, count, g_free,
                                        bytes) != CAIRO_STATUS_SUCCESS) {
            g_free(bytes);
        }
    }
}

double LightnessOf(double red, double green, double blue) {
    return (0.299 * red + 0.587 * green + 0.114 * blue) / 255;
}

// Returns how light the points of a picture are, or nothing where most of its ground is its own.
std::optional<double> FindLightness(const GdkPixbuf& pixels) {
    if (gdk_pixbuf_get_has_alpha(&pixels) == 0) {
        return std::nullopt;
    }
    const auto width = static_cast<size_t>(gdk_pixbuf_get_width(&pixels));
    const auto height = static_cast<size_t>(gdk_pixbuf_get_height(&pixels));
    const auto stride = static_cast<size_t>(gdk_pixbuf_get_rowstride(&pixels));
    const guint8* const source = gdk_pixbuf_read_pixels(&pixels);
    double opaque = 0;
    double light = 0;
    for (size_t y = 0; y < height; ++y) {
        for (const guint8* at = source + y * stride; at < source + y * stride + width * 4;
             at += 4) {
            opaque += at[3];
            light += at[3] * LightnessOf(at[0], at[1], at[2]);
        }
    }
    constexpr double kOwnGround = 0.8;
    const double share = opaque / 255 / static_cast<double>(width * height);
    return share <= 0 || share > kOwnGround ? std::nullopt : std::optional(light / opaque);
}

}  // namespace

struct CardPictures::Reading {
    wxString Name;
    FileDescriptor File;
    struct stat Status {};
    PictureSize Room;
    bool StaysJpeg = false;
    // Written by the worker.
    PictureFault Fault = PictureFault::kDamaged;
    Surface Drawn;
    std::optional<double> Lightness;

    void Run(const std::atomic<bool>& isCancelled) {
        PicturePixels pixels;
        Fault = ReadPicture(File.Get(), Room, isCancelled, pixels);
        Drawn = pixels == nullptr ? nullptr : MakeSurface(*pixels);
        if (Fault == PictureFault::kNone && Drawn == nullptr) {
            Fault = PictureFault::kTooLarge;
        }
        Lightness = pixels == nullptr ? std::nullopt : FindLightness(*pixels);
        if (StaysJpeg && Drawn != nullptr) {
            AttachJpeg(*pixels, Drawn.get());
        }
    }
};

CardPictures::CardPictures(std::function<void()> changed) : mChanged(std::move(changed)) {}

CardPictures::~CardPictures() {
    mpJob.reset();
}

void CardPictures::SetStore(const wxString& storePath) {
    mWanted.clear();
    mpJob.reset();
    mpReading.reset();
    mPictures.clear();
    mFolder = MediaFolder(storePath);
}

// One that is missing is looked for again, as it may come by an import or from "unused".
CardPictures::Picture* CardPictures::Find(const wxString& name) {
    const auto known = mPictures.find(name);
    if (known != mPictures.end()) {
        return &known->second;
    }
    const FileDescriptor file = mFolder.Open(name);
    if (!file.IsOpen()) {
        return nullptr;
    }
    Picture& picture = mPictures[name];
    ::fstat(file.Get(), &picture.Status);
    picture.Fault = ReadPictureHead(file.Get(), picture.Head);
    return &picture;
}

// Forgets a picture whose file is gone or another one.
void CardPictures::DropOther(const wxString& name) {
    const auto known = mPictures.find(name);
    if (known == mPictures.end()) {
        return;
    }
    const FileDescriptor file = mFolder.Open(name);
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 ||
        !IsSameFile(status, known->second.Status)) {
        mPictures.erase(known);
    }
}

wxSize CardPictures::FindSize(const wxString& name) {
    DropOther(name);
    const Picture* const picture = Find(name);
    return picture == nullptr || picture->Fault != PictureFault::kNone
               ? wxSize()
               : wxSize(picture->Head.Width, picture->Head.Height);
}

std::optional<PictureSize> CardPictures::FindMissingPoints(Picture& picture, const wxRect& place,
                                                           double scale) {
    picture.LastUse = ++mUses;
    PictureSize points{static_cast<int32_t>(std::lround(place.width * scale)),
                       static_cast<int32_t>(std::lround(place.height * scale))};
    if (picture.Head.Format != PictureFormat::kSvg) {
        points = FitPicture({picture.Head.Width, picture.Head.Height}, points);
    }
    // A picture that is somewhat too large is made smaller while it is drawn.
    const bool isSharp =
        picture.Points.Width + 1 >= points.Width && picture.Points.Width <= 2 * points.Width + 1;
    return isSharp ? std::nullopt : std::optional(points);
}

bool CardPictures::Draw(wxGraphicsContext& context, const wxString& name, const wxRect& place,
                        double scale, const wxColour& ground) {
    Picture* const picture = Find(name);
    if (picture == nullptr || picture->Fault != PictureFault::kNone) {
        return false;
    }
    // One that is too small shows until the sharp one is there.
    if (const auto points = FindMissingPoints(*picture, place, scale)) {
        Ask(name, *points);
    }
    return DrawInto(context, *picture, place, ground);
}

bool CardPictures::DrawNow(wxGraphicsContext& context, const wxString& name, const wxRect& place,
                           double scale, const wxColour& ground) {
    Picture* const picture = Find(name);
    if (picture == nullptr || picture->Fault != PictureFault::kNone) {
        return false;
    }
    if (const auto points = FindMissingPoints(*picture, place, scale)) {
        Reading reading;
        reading.Name = name;
        reading.File = mFolder.Open(name);
        ::fstat(reading.File.Get(), &reading.Status);
        reading.Room = *points;
        reading.StaysJpeg = picture->Head.Format == PictureFormat::kJpeg;
        const std::atomic<bool> isCancelled{false};
        reading.Run(isCancelled);
        Take(reading);
    }
    return DrawInto(context, *picture, place, ground);
}

bool CardPictures::DrawInto(wxGraphicsContext& context, const Picture& picture, const wxRect& place,
                            const wxColour& ground) {
    if (picture.Bitmap.IsNull()) {
        return false;
    }
    constexpr double kLeastContrast = 0.3;
    const double light = LightnessOf(ground.Red(), ground.Green(), ground.Blue());
    if (picture.Lightness && std::abs(*picture.Lightness - light) < kLeastContrast) {
        constexpr unsigned char kDarkSheet = 48;
        const bool isDark = light < 0.5;
        context.SetPen(*wxTRANSPARENT_PEN);
        context.SetBrush(wxBrush(isDark ? *wxWHITE : wxColour(kDarkSheet, kDarkSheet, kDarkSheet)));
        context.DrawRectangle(place.x, place.y, place.width, place.height);
    }
    context.SetInterpolationQuality(wxINTERPOLATION_GOOD);
    context.DrawBitmap(picture.Bitmap, place.x, place.y, place.width, place.height);
    return true;
}

void CardPictures::Ask(const wxString& name, const PictureSize& points) {
    const bool isRead =
        mpReading != nullptr && mpReading->Name == name && mpReading->Room.Width == points.Width;
    if (isRead) {
        return;
    }
    const auto same = std::find_if(mWanted.begin(), mWanted.end(),
                                   [&name](const Request& one) { return one.Name == name; });
    if (same != mWanted.end()) {
        same->Points = points;
        return;
    }
    mWanted.push_back({name, points});
    ReadNext();
}

void CardPictures::ReadNext() {
    if (mpJob != nullptr || mWanted.empty()) {
        return;
    }
    const Request request = mWanted.front();
    mWanted.erase(mWanted.begin());
    mpReading = std::make_unique<Reading>();
    mpReading->Name = request.Name;
    mpReading->File = mFolder.Open(request.Name);
    ::fstat(mpReading->File.Get(), &mpReading->Status);
    mpReading->Room = request.Points;
    const int number = ++mNumber;
    const auto finish = [this, number] { CallAfter([this, number] { Finish(number); }); };
    mpJob = std::make_unique<Job>(
        [&reading = *mpReading](const std::atomic<bool>& isCancelled) { reading.Run(isCancelled); },
        finish);
    if (!mpJob->Start()) {
        finish();
    }
}

void CardPictures::Finish(int number) {
    if (number != mNumber || mpJob == nullptr) {
        return;
    }
    mpJob->Join();
    mpJob.reset();
    const std::unique_ptr<Reading> reading = std::move(mpReading);
    Take(*reading);
    ReadNext();
    mChanged();
}

void CardPictures::Take(Reading& reading) {
    const auto known = mPictures.find(reading.Name);
    if (known == mPictures.end() || !IsSameFile(known->second.Status, reading.Status)) {
        return;
    }
    Picture& picture = known->second;
    picture.Fault = reading.Fault;
    picture.Lightness = reading.Lightness;
    if (reading.Drawn != nullptr) {
        picture.Points = {cairo_image_surface_get_width(reading.Drawn.get()),
                          cairo_image_surface_get_height(reading.Drawn.get())};
        // The bitmap takes the surface over.
        picture.Bitmap = wxGraphicsRenderer::GetDefaultRenderer()->CreateBitmapFromNativeBitmap(
            reading.Drawn.release());
    }
    MakeRoom();
}

void CardPictures::MakeRoom() {
    int64_t bytes = 0;
    std::vector<Picture*> oldest;
    for (auto& [name, picture] : mPictures) {
        bytes += picture.Bytes();
        oldest.push_back(&picture);
    }
    std::sort(oldest.begin(), oldest.end(), [](const Picture* one, const Picture* other) {
        return one->LastUse < other->LastUse;
    });
    // The one used last stays, however large.
    for (size_t i = 0; i + 1 < oldest.size() && bytes > kMostBytes; ++i) {
        bytes -= oldest[i]->Bytes();
        oldest[i]->Bitmap = wxGraphicsBitmap();
        oldest[i]->Points = PictureSize();
    }
}
