#include "media_module/media_module.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>

#include "media_module/video_support.h"
#include "model/evidence.h"

namespace kinfolio::MediaModule {

using ExampleFolder::VideoSpec;

namespace {

// Timestamps of the picture stream: a clock that counts whole ticks for
// every common frame rate (24, 25, 30, 60 per second) and stays within what
// the MPEG-4 Part 2 encoder accepts.
constexpr AVRational kTick = {1, 30000};
constexpr int kSampleRate = 44100;

[[noreturn]] void fail(const std::string& what) {
    throw EvidenceError("The example video could not be made (" + what + ").");
}

// The .mp4 grows in memory; the muxer seeks back to write sizes it learns
// at the end.
struct MemoryOutput {
    std::string bytes;
    int64_t position = 0;
};

int writeMemory(void* opaque, uint8_t* data, int size) {
    auto* out = static_cast<MemoryOutput*>(opaque);
    auto end = static_cast<size_t>(out->position) + static_cast<size_t>(size);
    if (end > out->bytes.size()) out->bytes.resize(end);
    std::memcpy(out->bytes.data() + out->position, data, static_cast<size_t>(size));
    out->position = static_cast<int64_t>(end);
    return size;
}

int64_t seekMemory(void* opaque, int64_t offset, int whence) {
    auto* out = static_cast<MemoryOutput*>(opaque);
    return seekInMemory(out->position, static_cast<int64_t>(out->bytes.size()), offset, whence);
}

struct OutputDeleter {
    void operator()(AVFormatContext* f) const { avformat_free_context(f); }
};
struct SurfaceDeleter {
    void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
struct CairoDeleter {
    void operator()(cairo_t* c) const { cairo_destroy(c); }
};

// One encoder feeding one stream of the file.
struct Track {
    CodecPtr encoder;
    AVStream* stream = nullptr;
    // The length each frame is shown, by its timestamp, for the packets that
    // leave the encoder in another order.
    std::map<int64_t, int64_t> durations;
};

void writePackets(AVFormatContext* file, Track& track, const AVFrame* frame) {
    if (avcodec_send_frame(track.encoder.get(), frame) < 0) fail("encoding");
    PacketPtr packet(av_packet_alloc());
    if (!packet) fail("memory");
    while (avcodec_receive_packet(track.encoder.get(), packet.get()) >= 0) {
        if (auto it = track.durations.find(packet->pts); it != track.durations.end())
            packet->duration = it->second;
        av_packet_rescale_ts(packet.get(), track.encoder->time_base, track.stream->time_base);
        packet->stream_index = track.stream->index;
        if (av_interleaved_write_frame(file, packet.get()) < 0) fail("writing");
    }
}

std::vector<double> frameTimesOf(const VideoSpec& spec) {
    if (!spec.frameTimes.empty()) return spec.frameTimes;
    std::vector<double> times;
    for (int i = 0; i / spec.framesPerSecond < spec.duration - 1e-9; ++i)
        times.push_back(i / spec.framesPerSecond);
    return times;
}

// Maps the shown picture's coordinates onto the stored pixels, which the
// player turns clockwise by `rotation` degrees.
void drawUpright(cairo_t* cr, int width, int height, int rotation) {
    cairo_matrix_t m;
    if (rotation == 90)
        cairo_matrix_init(&m, 0, -1, 1, 0, 0, height);
    else if (rotation == 180)
        cairo_matrix_init(&m, -1, 0, 0, -1, width, height);
    else if (rotation == 270)
        cairo_matrix_init(&m, 0, 1, -1, 0, width, 0);
    else
        cairo_matrix_init_identity(&m);
    cairo_set_matrix(cr, &m);
}

Track pictureTrack(AVFormatContext* file, const VideoSpec& spec) {
    // libx264 writes what phones write; the native MPEG-4 encoder is in
    // every FFmpeg build.
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (!codec) codec = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
    if (!codec) fail("no video encoder");
    Track track;
    track.encoder.reset(avcodec_alloc_context3(codec));
    AVCodecContext* c = track.encoder.get();
    if (!c) fail("memory");
    c->width = spec.width;
    c->height = spec.height;
    c->pix_fmt = AV_PIX_FMT_YUV420P;
    c->sample_aspect_ratio = av_d2q(spec.pixelAspect, 255);
    c->time_base = kTick;
    c->framerate = av_d2q(spec.framesPerSecond, 1000);
    c->gop_size =
        std::max(1, static_cast<int>(std::lround(spec.keyFrameInterval * spec.framesPerSecond)));
    c->color_range = AVCOL_RANGE_MPEG;
    c->colorspace = AVCOL_SPC_BT709;
    // One thread, and no library version written by the muxer: the same
    // bytes on every run with the same libraries.
    c->thread_count = 1;
    c->flags |= AV_CODEC_FLAG_BITEXACT;
    if (file->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* options = nullptr;
    if (std::string_view(codec->name) == "libx264") {
        av_dict_set(&options, "preset", "medium", 0);
        av_dict_set(&options, "crf", "26", 0);
    } else {
        c->flags |= AV_CODEC_FLAG_QSCALE;
        c->global_quality = FF_QP2LAMBDA * 8;
    }
    int opened = avcodec_open2(c, codec, &options);
    av_dict_free(&options);
    if (opened < 0) fail("opening the video encoder");

    track.stream = avformat_new_stream(file, nullptr);
    if (!track.stream || avcodec_parameters_from_context(track.stream->codecpar, c) < 0)
        fail("memory");
    track.stream->time_base = c->time_base;
    track.stream->sample_aspect_ratio = c->sample_aspect_ratio;
    if (spec.rotation != 0) {
        auto* matrix = reinterpret_cast<int32_t*>(
            av_stream_new_side_data(track.stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t)));
        if (!matrix) fail("memory");
        av_display_rotation_set(matrix, spec.rotation);  // clockwise degrees
    }
    return track;
}

void writePictures(AVFormatContext* file, Track& track, const VideoSpec& spec) {
    const std::vector<double> times = frameTimesOf(spec);
    for (size_t i = 0; i < times.size(); ++i) {
        double next = i + 1 < times.size() ? times[i + 1] : spec.duration;
        if (times[i] < 0 || next <= times[i]) fail("frame times must rise within the duration");
        int64_t pts = std::llround(times[i] * kTick.den);
        track.durations[pts] = std::llround(next * kTick.den) - pts;
    }

    std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, spec.width, spec.height));
    ScalerPtr scaler(sws_getContext(
        spec.width, spec.height, AV_PIX_FMT_0RGB32, spec.width, spec.height, AV_PIX_FMT_YUV420P,
        SWS_BICUBIC | SWS_ACCURATE_RND | SWS_BITEXACT, nullptr, nullptr, nullptr));
    FramePtr frame(av_frame_alloc());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS || !scaler || !frame)
        fail("memory");
    // Cairo's pixels are sRGB; the stream says BT.709, studio range.
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(SWS_CS_DEFAULT), 1,
                             sws_getCoefficients(SWS_CS_ITU709), 0, 0, 1 << 16, 1 << 16);
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = spec.width;
    frame->height = spec.height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) fail("memory");

    for (double t : times) {
        {
            std::unique_ptr<cairo_t, CairoDeleter> cr(cairo_create(surface.get()));
            drawUpright(cr.get(), spec.width, spec.height, spec.rotation);
            if (spec.scene) {
                spec.scene(cr.get(), t);
            } else {
                double grey = ExampleFolder::timeGrey(t) / 255.0;
                cairo_set_source_rgb(cr.get(), grey, grey, grey);
                cairo_paint(cr.get());
            }
        }
        cairo_surface_flush(surface.get());
        if (av_frame_make_writable(frame.get()) < 0) fail("memory");
        const uint8_t* pixels[1] = {cairo_image_surface_get_data(surface.get())};
        const int stride[1] = {cairo_image_surface_get_stride(surface.get())};
        sws_scale(scaler.get(), pixels, stride, 0, spec.height, frame->data, frame->linesize);
        frame->pts = std::llround(t * kTick.den);
        writePackets(file, track, frame.get());
    }
    writePackets(file, track, nullptr);
}

Track silenceTrack(AVFormatContext* file) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec) fail("no AAC encoder");
    Track track;
    track.encoder.reset(avcodec_alloc_context3(codec));
    AVCodecContext* c = track.encoder.get();
    if (!c) fail("memory");
    c->sample_fmt = AV_SAMPLE_FMT_FLTP;
    c->sample_rate = kSampleRate;
    c->time_base = {1, kSampleRate};
    c->bit_rate = 32000;
    c->flags |= AV_CODEC_FLAG_BITEXACT;
    av_channel_layout_default(&c->ch_layout, 1);
    if (file->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(c, codec, nullptr) < 0) fail("opening the AAC encoder");
    track.stream = avformat_new_stream(file, nullptr);
    if (!track.stream || avcodec_parameters_from_context(track.stream->codecpar, c) < 0)
        fail("memory");
    track.stream->time_base = c->time_base;
    return track;
}

void writeSilence(AVFormatContext* file, Track& track, const VideoSpec& spec) {
    const AVCodecContext* c = track.encoder.get();
    FramePtr frame(av_frame_alloc());
    if (!frame) fail("memory");
    frame->format = c->sample_fmt;
    frame->nb_samples = c->frame_size;
    frame->sample_rate = c->sample_rate;
    if (av_channel_layout_copy(&frame->ch_layout, &c->ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0)
        fail("memory");
    const auto samples = static_cast<int64_t>(std::llround(spec.duration * kSampleRate));
    for (int64_t at = 0; at < samples; at += c->frame_size) {
        if (av_frame_make_writable(frame.get()) < 0) fail("memory");
        av_samples_set_silence(frame->data, 0, frame->nb_samples, 1, c->sample_fmt);
        frame->pts = at;
        writePackets(file, track, frame.get());
    }
    writePackets(file, track, nullptr);
}

}  // namespace

std::string exampleVideo(const VideoSpec& spec) {
    startVideoLibraries();
    if (spec.width < 2 || spec.height < 2 || spec.width % 2 || spec.height % 2 ||
        spec.framesPerSecond <= 0 || spec.duration <= 0 || !(spec.pixelAspect > 0))
        fail("the picture needs an even size, a frame rate and a length");
    if (spec.rotation % 90 != 0) fail("turns are whole quarters");

    AVFormatContext* raw = nullptr;
    if (avformat_alloc_output_context2(&raw, nullptr, "mp4", nullptr) < 0) fail("no MP4 muxer");
    std::unique_ptr<AVFormatContext, OutputDeleter> file(raw);
    MemoryOutput output;
    constexpr int kBufferSize = 64 * 1024;
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    if (!buffer) fail("memory");
    IOPtr io(avio_alloc_context(buffer, kBufferSize, 1, &output, nullptr, writeMemory, seekMemory));
    if (!io) {
        av_free(buffer);
        fail("memory");
    }
    file->pb = io.get();
    file->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    if (!spec.creationTime.empty())
        av_dict_set(&file->metadata, "creation_time", spec.creationTime.c_str(), 0);

    AVDictionary* muxing = nullptr;
    if (!spec.localCreationDate.empty()) {
        av_dict_set(&file->metadata, "com.apple.quicktime.creationdate",
                    spec.localCreationDate.c_str(), 0);
        // Keys beyond the few MP4 names them are written as QuickTime
        // metadata, where iPhones keep them.
        av_dict_set(&muxing, "movflags", "use_metadata_tags", 0);
    }

    Track track = spec.audioOnly ? silenceTrack(file.get()) : pictureTrack(file.get(), spec);
    int written = avformat_write_header(file.get(), &muxing);
    av_dict_free(&muxing);
    if (written < 0) fail("writing the header");
    if (spec.audioOnly)
        writeSilence(file.get(), track, spec);
    else
        writePictures(file.get(), track, spec);
    if (av_write_trailer(file.get()) < 0) fail("writing the index");
    avio_flush(io.get());
    return output.bytes;
}

}  // namespace kinfolio::MediaModule
