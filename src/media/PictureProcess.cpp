#include "media/PictureProcess.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/Files.h"

namespace {

constexpr char kWord[] = "--draw-picture";
// More than any honest drawing takes.
constexpr rlim_t kMostSeconds = 3;
constexpr rlim_t kMostMemory = rlim_t{160} << 20;

// What stands before the points in the pipe: four bytes for each.
struct DrawnHead {
    int32_t Width = 0;
    int32_t Height = 0;
};

bool WriteAll(int file, const void* bytes, size_t count) {
    const auto* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(file, at, count);
        if (written <= 0) {
            return false;
        }
        at += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

void Limit(int resource, rlim_t most) {
    const rlimit limit{most, most};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

// The process that draws. Ends with its pipe closed and is waited for.
class Drawer {
  public:
    Drawer(int file, const PictureSize& room) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            return;
        }
        mOutput = FileDescriptor(ends[0]);
        const FileDescriptor input(ends[1]);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, file, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, input.Get(), STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::string name = "velomind";
        std::string word = kWord;
        std::string width = std::to_string(room.Width);
        std::string height = std::to_string(room.Height);
        const std::array<char*, 5> arguments = {name.data(), word.data(), width.data(),
                                                height.data(), nullptr};
        if (::posix_spawn(&mProcess, "/proc/self/exe", &actions, nullptr, arguments.data(),
                          environ) != 0) {
            mProcess = -1;
        }
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Drawer() {
        mOutput.Close();
        if (mProcess > 0) {
            ::kill(mProcess, SIGKILL);
            while (::waitpid(mProcess, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
    }
    Drawer(const Drawer&) = delete;
    Drawer& operator=(const Drawer&) = delete;

    // Returns false at an early end, and when the drawing is no longer wanted.
    bool Read(void* bytes, size_t count, const std::atomic<bool>& isCancelled) const {
        auto* at = static_cast<char*>(bytes);
        constexpr int kLookAgain = 50;
        while (mProcess > 0 && count > 0 && !isCancelled) {
            pollfd waiting{mOutput.Get(), POLLIN, 0};
            const int ready = ::poll(&waiting, 1, kLookAgain);
            const ssize_t read = ready > 0 ? ::read(mOutput.Get(), at, count) : 0;
            if (ready > 0 && read <= 0) {
                return false;
            }
            at += read;
            count -= static_cast<size_t>(read);
        }
        return mProcess > 0 && count == 0;
    }

  private:
    pid_t mProcess = -1;
    FileDescriptor mOutput;
};

}  // namespace

PictureFault DrawInProcess(int file, const PictureSize& room, const std::atomic<bool>& isCancelled,
                           PicturePixels& pixels) {
    const Drawer drawer(file, room);
    DrawnHead head;
    if (!drawer.Read(&head, sizeof(head), isCancelled) || head.Width <= 0 || head.Height <= 0 ||
        head.Width > room.Width || head.Height > room.Height) {
        return PictureFault::kDamaged;
    }
    pixels.reset(gdk_pixbuf_new(GDK_COLORSPACE_RGB, 1, 8, head.Width, head.Height));
    if (pixels == nullptr) {
        return PictureFault::kTooLarge;
    }
    guchar* const points = gdk_pixbuf_get_pixels(pixels.get());
    const auto stride = static_cast<size_t>(gdk_pixbuf_get_rowstride(pixels.get()));
    for (size_t row = 0; row < static_cast<size_t>(head.Height); ++row) {
        if (!drawer.Read(points + row * stride, static_cast<size_t>(head.Width) * 4, isCancelled)) {
            pixels.reset();
            return PictureFault::kDamaged;
        }
    }
    return PictureFault::kNone;
}

int DrawIfAsked(int argc, char** argv) {
    if (argc != 4 || std::strcmp(argv[1], kWord) != 0) {
        return -1;
    }
    Limit(RLIMIT_CPU, kMostSeconds);
    Limit(RLIMIT_FSIZE, 0);
    Limit(RLIMIT_CORE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    Limit(RLIMIT_DATA, kMostMemory);
#endif
    const PictureSize room{std::atoi(argv[2]), std::atoi(argv[3])};
    const std::atomic<bool> isCancelled{false};
    PicturePixels pixels;
    if (DecodePicture(STDIN_FILENO, PictureFormat::kSvg, room, isCancelled, pixels) !=
            PictureFault::kNone ||
        gdk_pixbuf_get_n_channels(pixels.get()) != 4) {
        return 1;
    }
    const DrawnHead head{gdk_pixbuf_get_width(pixels.get()), gdk_pixbuf_get_height(pixels.get())};
    bool isWritten = WriteAll(STDOUT_FILENO, &head, sizeof(head));
    const guchar* const points = gdk_pixbuf_get_pixels(pixels.get());
    const auto stride = static_cast<size_t>(gdk_pixbuf_get_rowstride(pixels.get()));
    for (size_t row = 0; isWritten && row < static_cast<size_t>(head.Height); ++row) {
        isWritten =
            WriteAll(STDOUT_FILENO, points + row * stride, static_cast<size_t>(head.Width) * 4);
    }
    return isWritten ? 0 : 1;
}
