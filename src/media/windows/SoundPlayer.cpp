#include "media/windows/SoundPlayer.h"

#include <gst/gst.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

// A longer sound is none of a card.
constexpr int64_t kMostBytes = int64_t{64} << 20;
// The library keeps the error of a file that breaks off within its head to itself, and waits.
constexpr guint kLongestStart = 2000;

// What may take part in decoding: the containers and codecs of Ogg, Opus, MP3, WAV and FLAC, with
// the parts that read tags in front of them.
constexpr std::string_view kDecoders[] = {
    "oggdemux",  "oggparse",       "vorbisdec",      "vorbisparse", "ivorbisdec", "opusdec",
    "opusparse", "mpegaudioparse", "mpg123audiodec", "avdec_mp3",   "flump3dec",  "wavparse",
    "flacparse", "flacdec",        "id3demux",       "apedemux",    "speexdec"};

// What decodebin understands by the answer to "autoplug-select".
enum PlugAnswer : gint { kTry = 0, kSkip = 2 };

gint OnPlug(GstElement*, GstPad*, GstCaps*, GstElementFactory* factory, gpointer) {
    const std::string_view name = gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory));
    const bool isKnown =
        std::find(std::begin(kDecoders), std::end(kDecoders), name) != std::end(kDecoders);
    return isKnown ? kTry : kSkip;
}

// Connects the first stream that comes out of the decoder; called on a thread of GStreamer.
void OnPad(GstElement*, GstPad* pad, gpointer convert) {
    GstPad* const target = gst_element_get_static_pad(GST_ELEMENT(convert), "sink");
    if (gst_pad_is_linked(target) == 0) {
        gst_pad_link(pad, target);
    }
    gst_object_unref(target);
}

// Whether the first bytes are those of a sound. Lists of addresses and texts are none.
bool IsSound(int file) {
    char bytes[12] = {};
    struct stat status {};
    if (::fstat(file, &status) != 0 || status.st_size > kMostBytes ||
        ::pread(file, bytes, sizeof(bytes), 0) != sizeof(bytes)) {
        return false;
    }
    const std::string_view start(bytes, sizeof(bytes));
    const bool isFrame =
        start[0] == '\xFF' && (static_cast<unsigned char>(start[1]) & 0xE0) == 0xE0;
    return isFrame || start.substr(0, 4) == "OggS" || start.substr(0, 3) == "ID3" ||
           start.substr(0, 4) == "fLaC" ||
           (start.substr(0, 4) == "RIFF" && start.substr(8) == "WAVE");
}

GstElement* MakeElement(GstElement* pipeline, const char* name) {
    GstElement* const element = gst_element_factory_make(name, nullptr);
    if (element != nullptr) {
        gst_bin_add(GST_BIN(pipeline), element);
    }
    return element;
}

void ForgetTimer(unsigned& timer) {
    if (timer != 0) {
        g_source_remove(std::exchange(timer, 0));
    }
}

}  // namespace

SoundPlayer::SoundPlayer(std::function<void()> failed, std::string sink)
    : mFailed(std::move(failed)), mSink(std::move(sink)) {}

SoundPlayer::~SoundPlayer() {
    Stop();
}

void SoundPlayer::Play(std::vector<FileDescriptor> files) {
    Stop();
    for (FileDescriptor& file : files) {
        mWaiting.push_back(std::move(file));
    }
    PlayNext();
}

void SoundPlayer::Stop() {
    mWaiting.clear();
    End();
}

void SoundPlayer::End() {
    if (mpPipeline != nullptr) {
        g_source_remove(std::exchange(mWatch, 0));
        ForgetTimer(mPatience);
        gst_element_set_state(mpPipeline, GST_STATE_NULL);
        gst_object_unref(std::exchange(mpPipeline, nullptr));
    }
    mFile.Close();
}

void SoundPlayer::PlayNext() {
    while (mpPipeline == nullptr && !mWaiting.empty()) {
        mFile = std::move(mWaiting.front());
        mWaiting.pop_front();
        if (!Start()) {
            End();
            mFailed();
        }
    }
}

bool SoundPlayer::Start() {
    if (!mFile.IsOpen() || !IsSound(mFile.Get()) ||
        gst_init_check(nullptr, nullptr, nullptr) == 0) {
        return false;
    }
    mpPipeline = gst_pipeline_new(nullptr);
    gst_object_ref_sink(mpPipeline);
    GstBus* const bus = gst_element_get_bus(mpPipeline);
    mWatch = gst_bus_add_watch(
        bus,
        [](GstBus* of, GstMessage* message, gpointer player) -> gboolean {
            return OnMessage(of, message, player);
        },
        this);
    gst_object_unref(bus);
    GstElement* const source = MakeElement(mpPipeline, "filesrc");
    GstElement* const decode = MakeElement(mpPipeline, "decodebin");
    GstElement* const convert = MakeElement(mpPipeline, "audioconvert");
    GstElement* const resample = MakeElement(mpPipeline, "audioresample");
    GstElement* const sink = MakeElement(mpPipeline, mSink.c_str());
    if (source == nullptr || decode == nullptr || convert == nullptr || resample == nullptr ||
        sink == nullptr || gst_element_link_many(convert, resample, sink, nullptr) == 0 ||
        gst_element_link(source, decode) == 0) {
        return false;
    }
    // The file that is open, whatever its name has become.
    const std::string path = "/proc/self/fd/" + std::to_string(mFile.Get());
    g_object_set(source, "location", path.c_str(), nullptr);
    if (mSink == "fakesink") {
        g_object_set(sink, "sync", TRUE, nullptr);
    }
    g_signal_connect(decode, "autoplug-select", G_CALLBACK(OnPlug), nullptr);
    g_signal_connect(decode, "pad-added", G_CALLBACK(OnPad), convert);
    mPatience = g_timeout_add(
        kLongestStart, [](gpointer player) -> gboolean { return OnNoSound(player); }, this);
    return gst_element_set_state(mpPipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

int SoundPlayer::OnNoSound(void* data) {
    auto& player = *static_cast<SoundPlayer*>(data);
    player.mPatience = 0;
    player.Stop();
    player.mFailed();
    return G_SOURCE_REMOVE;
}

// Without a device the sink warns and goes on in silence.
int SoundPlayer::OnMessage(void*, GstMessage* message, void* data) {
    auto& player = *static_cast<SoundPlayer*>(data);
    switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ASYNC_DONE:
            ForgetTimer(player.mPatience);
            return G_SOURCE_CONTINUE;
        case GST_MESSAGE_EOS:
            player.End();
            player.PlayNext();
            return G_SOURCE_REMOVE;
        case GST_MESSAGE_ERROR:
        case GST_MESSAGE_WARNING:
            player.Stop();
            player.mFailed();
            return G_SOURCE_REMOVE;
        default:
            return G_SOURCE_CONTINUE;
    }
}
