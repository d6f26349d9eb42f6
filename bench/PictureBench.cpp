#include <benchmark/benchmark.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <wx/app.h>
#include <wx/frame.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <vector>

#include "base/Files.h"
#include "media/MediaFolder.h"
#include "media/windows/CardPictures.h"
#include "study/CardViewer.h"

// Measures the time from a card with a photograph to the photograph on the screen. Needs a display.
namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

// Writes a JPEG with some detail in every part of it.
bool WritePhotograph(const std::string& path) {
    GdkPixbuf* const pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, 0, 8, kWidth, kHeight);
    guchar* const points = gdk_pixbuf_get_pixels(pixels);
    const int stride = gdk_pixbuf_get_rowstride(pixels);
    uint32_t noise = 1;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1664525U + 1013904223U;
            guchar* const point = points + y * stride + x * 3;
            point[0] = static_cast<guchar>(x * 255 / kWidth);
            point[1] = static_cast<guchar>(y * 255 / kHeight);
            point[2] = static_cast<guchar>(100 + (noise >> 27));
        }
    }
    const bool isWritten =
        gdk_pixbuf_save(pixels, path.c_str(), "jpeg", nullptr, "quality", "85", nullptr) != 0;
    g_object_unref(pixels);
    return isWritten;
}

void FirstPhotograph(benchmark::State& state) {
    const TemporaryDirectory place;
    const wxString store = place.Path("store.vlm");
    const std::string photograph = place.Path("photograph.jpg").utf8_string();
    wxString name;
    if (!WritePhotograph(photograph) ||
        MediaFolder(store).Add(photograph, "photograph.jpg", name) != 0) {
        state.SkipWithError("no photograph");
        return;
    }
    auto* const frame =
        new wxFrame(nullptr, wxID_ANY, "Bench", wxDefaultPosition, wxSize(900, 900));
    double layout = 0;
    for (auto _ : state) {
        // A viewer of its own each time, so that nothing is read already.
        auto* const viewer = new CardViewer(frame, wxID_ANY);
        viewer->SetScrollRate(0, 1);
        viewer->SetSize(frame->GetClientSize());
        viewer->SetStore(store);
        frame->Show();
        for (int i = 0; i < 20; ++i) {
            wxTheApp->Yield();
        }
        const auto start = std::chrono::steady_clock::now();
        viewer->SetFirstText("[picture: photograph.jpg]");
        layout += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // The worker begins when the window is drawn, and ends before it is drawn once more.
        while (!viewer->GetPictures()->IsReading()) {
            wxTheApp->Yield();
        }
        while (viewer->GetPictures()->IsReading()) {
            wxTheApp->Yield();
        }
        wxTheApp->Yield();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        viewer->Destroy();
    }
    state.counters["layout_ms"] = 1000 * layout / static_cast<double>(state.iterations());
    frame->Destroy();
}
BENCHMARK(FirstPhotograph)->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
