#include "media/PictureFile.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "media/PictureProcess.h"

namespace {

using namespace std::string_view_literals;

// No file may be larger than this, and no drawing larger than that.
constexpr int64_t kMostBytes = int64_t{64} << 20;
constexpr int64_t kMostDrawingBytes = int64_t{2} << 20;
// What decoding may take at once, beside the picture that is shown.
constexpr int64_t kMostMemory = int64_t{100} << 20;
constexpr int32_t kLongestSide = 30000;
// What is shown has no more points each way. A JPEG is decoded to less than twice that.
constexpr int32_t kLargestRoom = 2880;
constexpr size_t kHeadBytes = 4096;

// Reads bytes of a file at any place, as numbers of either order. What is not there is 0.
class FileBytes {
  public:
    explicit FileBytes(int file) : mFile(file) {}

    std::string Read(int64_t at, size_t count) const {
        std::string bytes(count, '\0');
        const ssize_t read = ::pread(mFile, bytes.data(), count, at);
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(read, 0)));
        return bytes;
    }
    uint32_t Number(int64_t at, size_t bytes, bool isLittle = false) const {
        std::string read = Read(at, bytes);
        read.resize(bytes);
        if (isLittle) {
            std::reverse(read.begin(), read.end());
        }
        uint32_t number = 0;
        for (const char byte : read) {
            number = number << 8 | static_cast<unsigned char>(byte);
        }
        return number;
    }

  private:
    int mFile;
};

void SetSize(PictureHead& head, uint32_t width, uint32_t height) {
    constexpr uint32_t kMost = 0x7FFFFFFF;
    head.Width = static_cast<int32_t>(std::min(width, kMost));
    head.Height = static_cast<int32_t>(std::min(height, kMost));
}

// Reads the orientation in the Exif part that begins there.
int ReadOrientation(const FileBytes& file, int64_t at, int64_t end) {
    if (file.Read(at, 6) != "Exif\0\0"sv) {
        return 1;
    }
    const int64_t start = at + 6;
    const bool isLittle = file.Read(start, 2) == "II";
    const int64_t table = start + file.Number(start + 4, 4, isLittle);
    const uint32_t count = std::min<uint32_t>(file.Number(table, 2, isLittle), 200);
    constexpr uint32_t kOrientation = 0x112;
    for (uint32_t i = 0; i < count && table + 2 + int64_t{12} * (i + 1) <= end; ++i) {
        const int64_t entry = table + 2 + int64_t{12} * i;
        if (file.Number(entry, 2, isLittle) == kOrientation) {
            const uint32_t value = file.Number(entry + 8, 2, isLittle);
            return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
        }
    }
    return 1;
}

// A JPEG is a chain of segments. That of the frame has the size, and that of the first scan tells
// whether all colours come at once; the decoder keeps a picture of several scans as a whole.
bool ReadJpegHead(const FileBytes& file, PictureHead& head) {
    constexpr int kMostSegments = 1000;
    uint32_t colours = 0;
    int64_t at = 2;
    for (int i = 0; i < kMostSegments; ++i) {
        if (file.Number(at, 1) != 0xFF) {
            return false;
        }
        const uint32_t kind = file.Number(at + 1, 1);
        if (kind == 0xFF) {
            ++at;
            continue;
        }
        const uint32_t length = file.Number(at + 2, 2);
        if (length < 2) {
            return false;
        }
        const bool isFrame =
            kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC;
        if (isFrame && colours == 0) {
            head.IsProgressive = kind != 0xC0 && kind != 0xC1;
            SetSize(head, file.Number(at + 7, 2), file.Number(at + 5, 2));
            colours = std::max(file.Number(at + 9, 1), 1U);
        } else if (kind == 0xE1) {
            head.Orientation = ReadOrientation(file, at + 4, at + 2 + length);
        } else if (kind == 0xDA) {
            head.IsProgressive = head.IsProgressive || file.Number(at + 4, 1) < colours;
            if (head.Orientation >= 5) {
                std::swap(head.Width, head.Height);
            }
            return colours > 0;
        }
        at += 2 + length;
    }
    return false;
}

// The screen of a GIF has the size, but the decoder also makes room for the first picture on it.
bool ReadGifHead(const FileBytes& file, PictureHead& head) {
    constexpr int kMostBlocks = 10000;
    const auto tableBytes = [](uint32_t flags) {
        return (flags & 0x80U) != 0 ? int64_t{3} << ((flags & 7U) + 1) : 0;
    };
    SetSize(head, file.Number(6, 2, true), file.Number(8, 2, true));
    int64_t at = 13 + tableBytes(file.Number(10, 1));
    for (int i = 0; i < kMostBlocks; ++i) {
        const uint32_t kind = file.Number(at, 1);
        if (kind == 0x2C) {
            return file.Number(at + 5, 2, true) <= static_cast<uint32_t>(head.Width) &&
                   file.Number(at + 7, 2, true) <= static_cast<uint32_t>(head.Height);
        }
        if (kind != 0x21) {
            return false;
        }
        at += 2;
        for (uint32_t length = 1; length != 0 && i < kMostBlocks; ++i) {
            length = file.Number(at, 1);
            at += 1 + length;
        }
    }
    return false;
}

bool ReadWebpHead(const FileBytes& file, PictureHead& head) {
    const std::string kind = file.Read(12, 4);
    if (kind == "VP8X") {
        SetSize(head, file.Number(24, 3, true) + 1, file.Number(27, 3, true) + 1);
    } else if (kind == "VP8L") {
        const uint32_t bits = file.Number(21, 4, true);
        SetSize(head, (bits & 0x3FFF) + 1, (bits >> 14 & 0x3FFF) + 1);
    } else if (kind == "VP8 ") {
        SetSize(head, file.Number(26, 2, true) & 0x3FFF, file.Number(28, 2, true) & 0x3FFF);
    } else {
        return false;
    }
    return true;
}

// Returns the value of an attribute in the tag of a drawing; empty for none.
std::string Attribute(const std::string& tag, const std::string& name) {
    for (size_t at = tag.find(name); at != std::string::npos; at = tag.find(name, at + 1)) {
        const size_t equals = tag.find_first_not_of(" \t\r\n", at + name.size());
        const bool isWhole =
            at > 0 && std::string_view(" \t\r\n").find(tag[at - 1]) != std::string_view::npos;
        if (!isWhole || equals == std::string::npos || tag[equals] != '=') {
            continue;
        }
        const size_t quote = tag.find_first_of("\"'", equals);
        const size_t end = quote == std::string::npos ? quote : tag.find(tag[quote], quote + 1);
        return end == std::string::npos ? std::string() : tag.substr(quote + 1, end - quote - 1);
    }
    return std::string();
}

// Returns a length in points; 0 for none, and for a part of a page that is not there.
double Length(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    const std::string_view unit(end);
    struct UnitRow {
        std::string_view Name;
        double Points;
    };
    constexpr UnitRow kUnits[] = {{"", 1.0},         {"px", 1.0},        {"pt", 96.0 / 72},
                                  {"mm", 96 / 25.4}, {"cm", 960 / 25.4}, {"in", 96.0},
                                  {"pc", 16.0},      {"em", 16.0}};
    for (const UnitRow& row : kUnits) {
        if (unit == row.Name && std::isfinite(number) && number > 0) {
            return number * row.Points;
        }
    }
    return 0;
}

bool ReadSvgHead(const FileBytes& file, PictureHead& head) {
    const std::string start = file.Read(0, kHeadBytes);
    const size_t begin = start.find("<svg");
    const size_t text = start.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    if (begin == std::string::npos || start[text] != '<') {
        return false;
    }
    const std::string tag = start.substr(begin, start.find('>', begin) - begin);
    double width = Length(Attribute(tag, "width"));
    double height = Length(Attribute(tag, "height"));
    if (width <= 0 || height <= 0) {
        std::string box = Attribute(tag, "viewBox");
        std::replace(box.begin(), box.end(), ',', ' ');
        std::array<double, 4> numbers{};
        const char* at = box.c_str();
        for (double& number : numbers) {
            char* end = nullptr;
            number = std::strtod(at, &end);
            at = end;
        }
        const bool hasBox = numbers[2] > 0 && numbers[3] > 0;
        const double ratio = hasBox ? numbers[3] / numbers[2] : 1.0;
        constexpr double kUsual = 300.0;
        width = width > 0 ? width : height > 0 ? height / ratio : hasBox ? numbers[2] : kUsual;
        height = height > 0 ? height : width * ratio;
    }
    constexpr double kMost = kLongestSide;
    head.Width = static_cast<int32_t>(std::clamp(std::round(width), 1.0, kMost));
    head.Height = static_cast<int32_t>(std::clamp(std::round(height), 1.0, kMost));
    return true;
}

bool ReadAnyHead(const FileBytes& file, PictureHead& head) {
    const std::string mark = file.Read(0, 16);
    const std::string_view start(mark);
    if (start.substr(0, 8) == "\x89PNG\r\n\x1A\n"sv) {
        head.Format = PictureFormat::kPng;
        SetSize(head, file.Number(16, 4), file.Number(20, 4));
        return start.substr(12, 4) == "IHDR";
    }
    if (start.substr(0, 3) == "\xFF\xD8\xFF"sv) {
        head.Format = PictureFormat::kJpeg;
        return ReadJpegHead(file, head);
    }
    if (start.substr(0, 6) == "GIF87a" || start.substr(0, 6) == "GIF89a") {
        head.Format = PictureFormat::kGif;
        return ReadGifHead(file, head);
    }
    if (start.substr(0, 4) == "RIFF" && start.substr(8, 4) == "WEBP") {
        head.Format = PictureFormat::kWebp;
        return ReadWebpHead(file, head);
    }
    head.Format = PictureFormat::kSvg;
    return ReadSvgHead(file, head);
}

// Returns about how many bytes decoding takes.
int64_t MemoryFor(const PictureHead& head) {
    const int64_t points = int64_t{head.Width} * head.Height;
    switch (head.Format) {
        case PictureFormat::kJpeg:
            // A plain one is made smaller while it is decoded, to an eighth each way at most; one
            // in several passes is kept as six bytes for each point.
            return head.IsProgressive ? points * 6 : points * 3 / 4;
        case PictureFormat::kWebp:
            return points * 8;
        case PictureFormat::kSvg:
            return 0;
        default:
            return points * 4;
    }
}

const char* LoaderName(PictureFormat format) {
    switch (format) {
        case PictureFormat::kPng:
            return "png";
        case PictureFormat::kJpeg:
            return "jpeg";
        case PictureFormat::kGif:
            return "gif";
        case PictureFormat::kWebp:
            return "webp";
        case PictureFormat::kSvg:
            return "svg";
        case PictureFormat::kNone:
            break;
    }
    return "";
}

PictureSize Limited(const PictureSize& room) {
    return {std::clamp(room.Width, 1, kLargestRoom), std::clamp(room.Height, 1, kLargestRoom)};
}

// Returns the largest size with the picture's proportions in a room.
PictureSize Contain(const PictureSize& picture, const PictureSize& room, double mostScale) {
    const double wide = static_cast<double>(room.Width) / std::max(picture.Width, 1);
    const double high = static_cast<double>(room.Height) / std::max(picture.Height, 1);
    const double scale = std::min({wide, high, mostScale});
    return {std::max(static_cast<int32_t>(std::lround(picture.Width * scale)), 1),
            std::max(static_cast<int32_t>(std::lround(picture.Height * scale)), 1)};
}

struct DecodeAim {
    PictureSize Room;
    double MostScale;
};

void OnSizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
    const auto& aim = *static_cast<const DecodeAim*>(data);
    const PictureSize size = Contain({width, height}, aim.Room, aim.MostScale);
    gdk_pixbuf_loader_set_size(loader, size.Width, size.Height);
}

struct LoaderRelease {
    void operator()(GdkPixbufLoader* loader) const { g_object_unref(loader); }
};

// Gives the bytes of the file to the loader, and closes it.
bool Feed(GdkPixbufLoader* loader, int file, const std::atomic<bool>& isCancelled) {
    std::vector<unsigned char> block(size_t{1} << 16);
    bool isFine = true;
    int64_t bytes = 0;
    while (isFine && !isCancelled) {
        const ssize_t count = ::read(file, block.data(), block.size());
        if (count <= 0) {
            break;
        }
        bytes += count;
        isFine =
            bytes <= kMostBytes &&
            gdk_pixbuf_loader_write(loader, block.data(), static_cast<gsize>(count), nullptr) != 0;
    }
    const bool isClosed = gdk_pixbuf_loader_close(loader, nullptr) != 0;
    return isFine && isClosed && !isCancelled;
}

}  // namespace

void PictureRelease::operator()(_GdkPixbuf* picture) const {
    g_object_unref(picture);
}

PictureSize FitPicture(const PictureSize& picture, const PictureSize& room) {
    return Contain(picture, room, 1.0);
}

void FitPictures(std::vector<PictureSize>& pictures, const PictureSize& room, int32_t leastHeight) {
    std::vector<std::pair<int32_t, PictureSize*>> byHeight;
    byHeight.reserve(pictures.size());
    for (PictureSize& picture : pictures) {
        picture = FitPicture(picture, {room.Width, picture.Height});
        byHeight.emplace_back(picture.Height, &picture);
    }
    std::stable_sort(byHeight.begin(), byHeight.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    auto left = static_cast<int32_t>(byHeight.size());
    int32_t height = room.Height;
    for (const auto& [needed, picture] : byHeight) {
        const int32_t share = std::max({height / left, leastHeight, 1});
        *picture = FitPicture(*picture, {room.Width, share});
        height -= picture->Height;
        --left;
    }
}

PictureFault ReadPictureHead(int file, PictureHead& head) {
    struct stat status {};
    head = PictureHead();
    if (::fstat(file, &status) != 0 || !ReadAnyHead(FileBytes(file), head)) {
        return PictureFault::kUnknown;
    }
    if (head.Width <= 0 || head.Height <= 0) {
        return PictureFault::kDamaged;
    }
    const int64_t most = head.Format == PictureFormat::kSvg ? kMostDrawingBytes : kMostBytes;
    const bool isLarge = head.Width > kLongestSide || head.Height > kLongestSide ||
                         MemoryFor(head) > kMostMemory || status.st_size > most;
    return isLarge ? PictureFault::kTooLarge : PictureFault::kNone;
}

PictureFault DecodePicture(int file, PictureFormat format, const PictureSize& room,
                           const std::atomic<bool>& isCancelled, PicturePixels& pixels) {
    const std::unique_ptr<GdkPixbufLoader, LoaderRelease> loader(
        gdk_pixbuf_loader_new_with_type(LoaderName(format), nullptr));
    if (loader == nullptr) {
        return PictureFault::kUnknown;
    }
    constexpr double kAnyScale = 1e6;
    DecodeAim aim{Limited(room), format == PictureFormat::kSvg ? kAnyScale : 1.0};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(OnSizePrepared), &aim);
    const bool isWhole = Feed(loader.get(), file, isCancelled);
    GdkPixbuf* const decoded = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (decoded == nullptr || isCancelled || !isWhole) {
        return PictureFault::kDamaged;
    }
    pixels.reset(gdk_pixbuf_apply_embedded_orientation(decoded));
    return pixels == nullptr ? PictureFault::kDamaged : PictureFault::kNone;
}

PictureFault ReadPicture(int file, const PictureSize& room, const std::atomic<bool>& isCancelled,
                         PicturePixels& pixels) {
    PictureHead head;
    const PictureFault fault = ReadPictureHead(file, head);
    if (fault != PictureFault::kNone || ::lseek(file, 0, SEEK_SET) != 0) {
        return fault;
    }
    if (head.Format == PictureFormat::kSvg) {
        return DrawInProcess(file, Limited(room), isCancelled, pixels);
    }
    // The decoder sees the picture as the camera held it.
    PictureSize upright = FitPicture({head.Width, head.Height}, room);
    if (head.Orientation >= 5) {
        std::swap(upright.Width, upright.Height);
    }
    return DecodePicture(file, head.Format, upright, isCancelled, pixels);
}
