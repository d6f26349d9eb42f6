#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

// The library's own name.
struct _GdkPixbuf;  // NOLINT(bugprone-reserved-identifier)

// Reads the pictures of cards, which may come from anybody. The first bytes alone tell what a file
// is, whatever its name says, and how large the picture is. A picture that would take too much
// memory is refused before anything of it is decoded, and only these formats are ever decoded. One
// of drawing commands (SVG) could draw for hours, so it is drawn by a process of its own
// (PictureProcess.h).

enum class PictureFormat { kNone, kPng, kJpeg, kGif, kWebp, kSvg };

enum class PictureFault { kNone, kUnknown, kTooLarge, kDamaged };

struct PictureHead {
    PictureFormat Format = PictureFormat::kNone;
    // In points, as the picture is to be seen.
    int32_t Width = 0;
    int32_t Height = 0;
    // How a camera was held, 1 to 8, as Exif has it. 5 and more exchange width and height.
    int Orientation = 1;
    // Whether the decoder keeps the whole picture in a form of its own until the end.
    bool IsProgressive = false;
};

// Reads the head of an open file.
PictureFault ReadPictureHead(int file, PictureHead& head);

struct PictureRelease {
    void operator()(_GdkPixbuf* picture) const;
};
using PicturePixels = std::unique_ptr<_GdkPixbuf, PictureRelease>;

struct PictureSize {
    int32_t Width = 0;
    int32_t Height = 0;
};

// Returns the size of a picture that has to fit into some room: never larger than it is, never
// distorted, at least a point each way.
PictureSize FitPicture(const PictureSize& picture, const PictureSize& room);

// Makes pictures that stand one below the other smaller until they fit into a room together, but
// none lower than the least height. One that needs less than its share leaves the rest to others.
void FitPictures(std::vector<PictureSize>& pictures, const PictureSize& room, int32_t leastHeight);

// Decodes an open file, of which only the first picture counts, to a size that fits into the room;
// a drawing fills it. Any thread. A picture that was cut is read as far as it goes. The flag ends
// the work early, with kDamaged.
PictureFault ReadPicture(int file, const PictureSize& room, const std::atomic<bool>& isCancelled,
                         PicturePixels& pixels);

// Decodes a picture of one format from an open file or pipe; for the process of its own.
PictureFault DecodePicture(int file, PictureFormat format, const PictureSize& room,
                           const std::atomic<bool>& isCancelled, PicturePixels& pixels);
