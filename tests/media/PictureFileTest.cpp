#include "media/PictureFile.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/StoreFixture.h"

namespace {

const std::atomic<bool> kGoOn{false};

FileDescriptor OpenCorpus(const std::string& name) {
    return FileDescriptor(::open((std::string(VELOMIND_CORPUS) + "/" + name).c_str(), O_RDONLY));
}

TEST(PictureFile, TheBytesTellTheFormatAndTheSizeAtTheScreen) {
    const struct {
        const char* Name;
        PictureFormat Format;
        int32_t Width;
        int32_t Height;
    } cases[] = {
        {"good.png", PictureFormat::kPng, 40, 30}, {"good.jpg", PictureFormat::kJpeg, 40, 30},
        {"good.gif", PictureFormat::kGif, 40, 30}, {"good.webp", PictureFormat::kWebp, 40, 30},
        {"good.svg", PictureFormat::kSvg, 76, 57}, {"sideways.jpg", PictureFormat::kJpeg, 30, 40}};
    for (const auto& each : cases) {
        const FileDescriptor file = OpenCorpus(each.Name);
        PictureHead head;
        ASSERT_EQ(ReadPictureHead(file.Get(), head), PictureFault::kNone) << each.Name;
        EXPECT_EQ(head.Format, each.Format) << each.Name;
        EXPECT_EQ(head.Width, each.Width) << each.Name;
        EXPECT_EQ(head.Height, each.Height) << each.Name;
        for (const PictureSize room : {PictureSize{1000, 1000}, PictureSize{20, 1000}}) {
            PicturePixels pixels;
            ASSERT_EQ(ReadPicture(file.Get(), room, kGoOn, pixels), PictureFault::kNone)
                << each.Name;
            const bool isDrawing = head.Format == PictureFormat::kSvg;
            const PictureSize fit = isDrawing && room.Width > 20
                                        ? PictureSize{1000, 750}
                                        : FitPicture({head.Width, head.Height}, room);
            EXPECT_EQ(gdk_pixbuf_get_width(pixels.get()), fit.Width) << each.Name;
            EXPECT_NEAR(gdk_pixbuf_get_height(pixels.get()), fit.Height, 4) << each.Name;
        }
    }
}

// Reads a picture in a process of its own, and gives the fault and the most memory that it took.
PictureFault ReadApart(const std::string& name, int64_t& bytes) {
    const pid_t child = ::fork();
    if (child == 0) {
        const FileDescriptor file = OpenCorpus(name);
        PicturePixels pixels;
        ::_exit(static_cast<int>(ReadPicture(file.Get(), {2880, 2880}, kGoOn, pixels)));
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    bytes = int64_t{usage.ru_maxrss} * 1024;
    EXPECT_TRUE(WIFEXITED(status)) << name;
    return static_cast<PictureFault>(WEXITSTATUS(status));
}

TEST(PictureFile, HostileFilesTakeLittleMemoryAndEndNothing) {
    const struct {
        const char* Name;
        PictureFault Fault;
    } cases[] = {
        {"huge.png", PictureFault::kTooLarge},    {"wide.png", PictureFault::kTooLarge},
        {"most.png", PictureFault::kNone},        {"most.webp", PictureFault::kNone},
        {"huge.webp", PictureFault::kTooLarge},   {"progressive.jpg", PictureFault::kTooLarge},
        {"scans.jpg", PictureFault::kTooLarge},   {"large.jpg", PictureFault::kNone},
        {"screen.gif", PictureFault::kTooLarge},  {"frame.gif", PictureFault::kUnknown},
        {"cut.png", PictureFault::kNone},         {"cut.gif", PictureFault::kDamaged},
        {"cut.webp", PictureFault::kNone},        {"text.png", PictureFault::kUnknown},
        {"entities.svg", PictureFault::kDamaged}, {"uses.svg", PictureFault::kDamaged},
        {"filters.svg", PictureFault::kDamaged},
    };
    for (const auto& each : cases) {
        int64_t bytes = 0;
        EXPECT_EQ(ReadApart(each.Name, bytes), each.Fault) << each.Name;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        EXPECT_LT(bytes, int64_t{200} << 20) << each.Name;
#endif
        ::testing::Test::RecordProperty(each.Name, std::to_string(bytes >> 20));
    }
}

TEST(PictureFile, ADrawingFetchesNothingFromOutside) {
    const FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(::bind(listener.Get(), any, length), 0);
    ASSERT_EQ(::listen(listener.Get(), 4), 0);
    ASSERT_EQ(::getsockname(listener.Get(), any, &length), 0);
    const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    const std::string local = std::string("file://") + VELOMIND_CORPUS + "/good.png";

    const TestDirectory directory;
    const wxString path = directory.Path("links.svg");
    WriteBytes(path, "<!DOCTYPE svg SYSTEM \"" + url +
                         "a.dtd\">"
                         "<?xml-stylesheet href=\"" +
                         url +
                         "b.css\"?>"
                         "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"30\" "
                         "xmlns:xlink=\"http://www.w3.org/1999/xlink\">"
                         "<style>@import url(" +
                         url +
                         "c.css);</style>"
                         "<script xlink:href=\"" +
                         url + "d.js\">fetch('" + url +
                         "')</script>"
                         "<image width=\"40\" height=\"30\" xlink:href=\"" +
                         url +
                         "e.png\"/>"
                         "<image width=\"40\" height=\"30\" xlink:href=\"" +
                         local +
                         "\"/>"
                         "<use xlink:href=\"" +
                         url + "f.svg#a\"/></svg>");
    const FileDescriptor file(::open(path.utf8_str(), O_RDONLY));
    PicturePixels pixels;
    ASSERT_EQ(ReadPicture(file.Get(), {100, 100}, kGoOn, pixels), PictureFault::kNone);
    // Nothing of the picture in the other file is seen, and nobody has asked the server.
    const guchar* const middle =
        gdk_pixbuf_get_pixels(pixels.get()) + 15 * gdk_pixbuf_get_rowstride(pixels.get()) + 20 * 4;
    EXPECT_EQ(middle[3], 0);
    pollfd waiting{listener.Get(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 0), 0);
}

}  // namespace
