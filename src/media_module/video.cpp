#include "media_module/media_module.h"

#include <glib.h>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <vector>
#include <vips/vips8>

#include "importers/dates.h"
#include "media/images.h"
#include "media_module/video_support.h"
#include "model/files.h"

namespace kinfolio::MediaModule {

using namespace Scanner;

namespace {

// The frame shown is the one at half the length, but never later than this:
// the first second is what the person filming meant to show, and a later
// target would make long clips decode more.
constexpr double kLatestFrame = 1.0;

// Two frame threads, one per core of the smallest machines Kinfolio runs
// on; the scan reads one video at a time, so they are all the work there is.
constexpr int kDecoderThreads = 2;

// Between the key frame before the target and the target lie at most one
// second of frames (240 for slow motion); a stream that still has not
// reached it after this many is broken, and its last frame is used.
constexpr int kMaxDecodedFrames = 600;
// Packets of any stream read while looking for the frame, for a stream whose
// packets never decode into frames at all.
constexpr int kMaxPackets = 20000;

// Level 1 of 9: the frame is read again only to make the page's JPEG. For
// a camera's grainy 1600 × 900 frame level 6 took 0.44 s against 0.09 s, for
// a file a tenth smaller.
constexpr int kPngCompression = 1;

constexpr int kReadBufferSize = 64 * 1024;

// Demuxers that read what phones and cameras write under the extensions the
// scan sends here. Others (HLS playlists, image sequences) can name further
// files or addresses to open.
constexpr const char* kDemuxers = "mov,avi";

// The file's bytes, read through FFmpeg's I/O layer.
struct MemoryInput {
    std::string_view bytes;
    int64_t position = 0;
};

int readMemory(void* opaque, uint8_t* buffer, int size) {
    auto* in = static_cast<MemoryInput*>(opaque);
    int64_t left = static_cast<int64_t>(in->bytes.size()) - in->position;
    if (left <= 0 || size <= 0) return AVERROR_EOF;
    int n = static_cast<int>(std::min<int64_t>(size, left));
    std::memcpy(buffer, in->bytes.data() + in->position, static_cast<size_t>(n));
    in->position += n;
    return n;
}

int64_t seekMemory(void* opaque, int64_t offset, int whence) {
    auto* in = static_cast<MemoryInput*>(opaque);
    return seekInMemory(in->position, static_cast<int64_t>(in->bytes.size()), offset, whence);
}

// A container that names another file or an address (a reference movie, a
// playlist) gets nothing: Kinfolio reads the bytes it was given and never
// opens a connection.
int refuseOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

struct FormatDeleter {
    void operator()(AVFormatContext* f) const { avformat_close_input(&f); }
};

// An opened container. The I/O context outlives the format context, which
// reads through it until it is closed.
struct Container {
    MemoryInput input;
    IOPtr io;
    std::unique_ptr<AVFormatContext, FormatDeleter> format;
};

// Holds `input` by address, so the container is made in place.
bool open(Container& c, std::string_view bytes) {
    c.input.bytes = bytes;
    auto* buffer = static_cast<unsigned char*>(av_malloc(kReadBufferSize));
    if (!buffer) return false;
    c.io.reset(
        avio_alloc_context(buffer, kReadBufferSize, 0, &c.input, readMemory, nullptr, seekMemory));
    if (!c.io) {
        av_free(buffer);
        return false;
    }
    AVFormatContext* format = avformat_alloc_context();
    if (!format) return false;
    format->pb = c.io.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    format->io_open = refuseOpen;
    format->format_whitelist = av_strdup(kDemuxers);
    // On failure the context is freed and the pointer cleared.
    if (avformat_open_input(&format, nullptr, nullptr, nullptr) < 0) return false;
    c.format.reset(format);
    return true;
}

// The picture stream; a cover image attached to a sound file is none.
AVStream* videoStream(AVFormatContext* format) {
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        AVStream* st = format->streams[i];
        if (st->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            !(st->disposition & AV_DISPOSITION_ATTACHED_PIC) && st->codecpar->width > 0 &&
            st->codecpar->height > 0)
            return st;
    }
    return nullptr;
}

// Seconds; not finite when neither the container nor the stream tells.
double durationOf(const AVFormatContext* format, const AVStream* st) {
    if (format->duration != AV_NOPTS_VALUE && format->duration > 0)
        return static_cast<double>(format->duration) / AV_TIME_BASE;
    if (st->duration != AV_NOPTS_VALUE && st->duration > 0 && st->time_base.den > 0)
        return static_cast<double>(st->duration) * av_q2d(st->time_base);
    return NAN;
}

// "2024-08-16T19:05:12+0100" as iPhones write their local creation date:
// the wall-clock digits, without the offset (every time is kept as the clock
// showed it). None for any other form.
std::optional<Instant> localDate(std::string_view text) {
    if (text.size() < 24 || (text[19] != '+' && text[19] != '-')) return std::nullopt;
    return Importer::date(text.substr(0, 19), DateOrder::automatic);
}

std::optional<Instant> dateOf(const AVFormatContext* format, const AVStream* st) {
    // The phone's own clock first: creation_time is in UTC, hours away from
    // what the couple's clocks showed.
    if (const AVDictionaryEntry* local =
            av_dict_get(format->metadata, "com.apple.quicktime.creationdate", nullptr, 0);
        local && local->value)
        if (auto date = localDate(local->value)) return date;
    const AVDictionaryEntry* tag = av_dict_get(format->metadata, "creation_time", nullptr, 0);
    if (!tag) tag = av_dict_get(st->metadata, "creation_time", nullptr, 0);
    if (!tag || !tag->value) return std::nullopt;
    std::string text = tag->value;
    if (auto date = Importer::date(text, DateOrder::automatic)) return date;
    // FFmpeg writes "2025-06-14T10:00:00.000000Z": the same time with the
    // fraction of a second and the zone letter, which the written-date
    // patterns do not take.
    if (text.ends_with('Z')) text.pop_back();
    if (size_t dot = text.find('.'); dot != std::string::npos) text.erase(dot);
    return Importer::date(text, DateOrder::automatic);
}

// Clockwise degrees (0, 90, 180 or 270) that turn the stored picture upright,
// from the display matrix phones write for clips filmed in portrait.
int clockwiseTurn(const AVStream* st) {
    size_t size = 0;
    const uint8_t* matrix = av_stream_get_side_data(st, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t)) return 0;
    int32_t values[9];
    std::memcpy(values, matrix, sizeof values);  // side data carries no alignment promise
    double counterClockwise = av_display_rotation_get(values);
    if (!std::isfinite(counterClockwise)) return 0;
    int turn = static_cast<int>(std::lround(-counterClockwise / 90.0)) * 90;
    return ((turn % 360) + 360) % 360;
}

// The stream's timestamp of `seconds` after its start, rounded down so a
// frame exactly at that time counts as reaching it.
int64_t streamTime(const AVStream* st, double seconds) {
    int64_t start = st->start_time != AV_NOPTS_VALUE ? st->start_time : 0;
    auto micro = static_cast<int64_t>(std::llround(seconds * AV_TIME_BASE));
    return start + av_rescale_q_rnd(micro, AV_TIME_BASE_Q, st->time_base, AV_ROUND_DOWN);
}

// The decoded frame shown at `seconds`: seek to the key frame before it and
// decode forward until a frame's time reaches it. The last frame decoded
// when the stream ends first (or breaks off); none when nothing decodes.
FramePtr frameAt(AVFormatContext* format, AVStream* st, double seconds) {
    // A header may claim any size; nothing larger than the largest photo
    // Kinfolio decodes is worth the memory.
    if (int64_t{st->codecpar->width} * st->codecpar->height > kMaxImagePixels) return nullptr;
    const AVCodec* codec = avcodec_find_decoder(st->codecpar->codec_id);
    if (!codec) return nullptr;
    CodecPtr decoder(avcodec_alloc_context3(codec));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), st->codecpar) < 0) return nullptr;
    decoder->thread_count = kDecoderThreads;
    // The stream may claim a larger picture than its container did.
    decoder->max_pixels = kMaxImagePixels;
    decoder->pkt_timebase = st->time_base;
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0) return nullptr;

    const int64_t target = streamTime(st, seconds);
    // When seeking fails the reading goes on from the start, which was just
    // opened: the same frame, decoded from further back.
    if (av_seek_frame(format, st->index, target, AVSEEK_FLAG_BACKWARD) >= 0)
        avcodec_flush_buffers(decoder.get());

    FramePtr frame(av_frame_alloc()), last(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!frame || !last || !packet) return nullptr;
    bool haveFrame = false, draining = false;
    int decoded = 0;
    for (int packets = 0; packets < kMaxPackets; ++packets) {
        if (!draining) {
            if (av_read_frame(format, packet.get()) < 0) {
                draining = true;
                avcodec_send_packet(decoder.get(), nullptr);
            } else {
                bool ours = packet->stream_index == st->index;
                // A damaged packet is passed over; the next key frame recovers.
                if (ours) avcodec_send_packet(decoder.get(), packet.get());
                av_packet_unref(packet.get());
                if (!ours) continue;
            }
        }
        int status = 0;
        while ((status = avcodec_receive_frame(decoder.get(), frame.get())) >= 0) {
            av_frame_unref(last.get());
            av_frame_move_ref(last.get(), frame.get());
            haveFrame = true;
            int64_t at = last->best_effort_timestamp;
            if ((at != AV_NOPTS_VALUE && at >= target) || ++decoded >= kMaxDecodedFrames)
                return last;
        }
        if (draining || status == AVERROR_EOF) break;
    }
    return haveFrame ? std::move(last) : nullptr;
}

bool isFullRange(const AVFrame* frame) {
    switch (frame->format) {
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ444P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ411P:
            return true;
        default:
            return frame->color_range == AVCOL_RANGE_JPEG;
    }
}

struct Size {
    int width = 0, height = 0;
};

// The frame's shown size (non-square pixels widened or narrowed) fitted
// within kMaxFrameSide, never enlarged.
Size fittedSize(int width, int height, AVRational pixelAspect) {
    double shownWidth = width;
    // Camcorders use shapes between 8:9 and 2:1; further from square is a
    // damaged header, and the pixels are shown as stored.
    double aspect = pixelAspect.num > 0 && pixelAspect.den > 0 ? av_q2d(pixelAspect) : 1;
    if (aspect >= 0.25 && aspect <= 4) shownWidth *= aspect;
    double scale = std::min(1.0, kMaxFrameSide / std::max(shownWidth, double(height)));
    return {std::clamp(static_cast<int>(std::lround(shownWidth * scale)), 1, kMaxFrameSide),
            std::clamp(static_cast<int>(std::lround(height * scale)), 1, kMaxFrameSide)};
}

// 8-bit RGB at the fitted size; empty when the frame cannot be converted.
std::vector<unsigned char> scaledRGB(const AVFrame* frame, Size size) {
    auto format = static_cast<AVPixelFormat>(frame->format);
    ScalerPtr scaler(sws_getContext(frame->width, frame->height, format, size.width, size.height,
                                    AV_PIX_FMT_RGB24, SWS_BICUBIC, nullptr, nullptr, nullptr));
    if (!scaler) return {};
    // The frame's own colour matrix and range: HD video is BT.709, and many
    // phones record full-range pixels.
    const AVPixFmtDescriptor* described = av_pix_fmt_desc_get(format);
    if (described && !(described->flags & AV_PIX_FMT_FLAG_RGB)) {
        int matrix =
            frame->colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_DEFAULT : frame->colorspace;
        sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(matrix), isFullRange(frame),
                                 sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    }
    const int stride = size.width * 3;
    std::vector<unsigned char> rgb(static_cast<size_t>(stride) * size.height);
    uint8_t* planes[4] = {rgb.data(), nullptr, nullptr, nullptr};
    int strides[4] = {stride, 0, 0, 0};
    int rows =
        sws_scale(scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    if (rows != size.height) return {};
    return rgb;
}

// The frame upright and fitted, as PNG; none when it cannot be converted.
std::optional<std::string> pngOf(const AVFrame* frame, AVRational pixelAspect, int turn) {
    if (frame->width <= 0 || frame->height <= 0) return std::nullopt;
    Size size = fittedSize(frame->width, frame->height, pixelAspect);
    std::vector<unsigned char> rgb = scaledRGB(frame, size);
    if (rgb.empty()) return std::nullopt;
    startImageLibraries();
    try {
        vips::VImage image = vips::VImage::new_from_memory(rgb.data(), rgb.size(), size.width,
                                                           size.height, 3, VIPS_FORMAT_UCHAR);
        if (turn == 90)
            image = image.rot(VIPS_ANGLE_D90);
        else if (turn == 180)
            image = image.rot(VIPS_ANGLE_D180);
        else if (turn == 270)
            image = image.rot(VIPS_ANGLE_D270);
        void* buffer = nullptr;
        size_t length = 0;
        image.write_to_buffer(".png", &buffer, &length,
                              vips::VImage::option()->set("compression", kPngCompression));
        std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
        if (!buffer || length == 0) return std::nullopt;
        return std::string(static_cast<const char*>(buffer), length);
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

bool isPNGFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    char signature[8] = {};
    in.read(signature, sizeof signature);
    return in && std::string_view(signature, sizeof signature) == "\x89PNG\r\n\x1a\n";
}

// Where the frame of a file id is kept; none when the id cannot name a file
// or the cache cannot be used.
std::optional<std::string> framePath(const std::string& fileID) {
    if (!isCacheName(fileID)) return std::nullopt;
    auto folder = cacheFolder("frames");
    if (!folder) return std::nullopt;
    return *folder + "/" + fileID.substr(0, 16) + ".png";
}

}  // namespace

std::optional<VideoInfo> videoInfo(std::string_view bytes, const std::string& fileID) {
    startVideoLibraries();
    if (bytes.empty()) return std::nullopt;
    Container c;
    if (!open(c, bytes)) return std::nullopt;
    AVFormatContext* format = c.format.get();
    // What the container's header says is enough for phone and camera files;
    // probing the streams decodes several frames of each, which would make
    // even a scan whose frames are all cached decode every video.
    AVStream* st = videoStream(format);
    double duration = st ? durationOf(format, st) : NAN;
    if (!st || !std::isfinite(duration)) {
        if (avformat_find_stream_info(format, nullptr) < 0) return std::nullopt;
        st = videoStream(format);
        duration = st ? durationOf(format, st) : NAN;
    }
    if (!st || !std::isfinite(duration) || duration <= 0) return std::nullopt;

    VideoInfo info;
    info.duration = duration;
    info.date = dateOf(format, st);
    auto path = framePath(fileID);
    if (!path) return info;
    if (isPNGFile(*path)) {
        info.frame = *path;
        return info;
    }
    FramePtr frame = frameAt(format, st, std::min(duration * 0.5, kLatestFrame));
    if (!frame) return info;
    // The container's pixel shape before the stream's, as players take it.
    AVRational aspect = av_guess_sample_aspect_ratio(format, st, frame.get());
    auto png = pngOf(frame.get(), aspect, clockwiseTurn(st));
    if (!png) return info;
    try {
        writeFileAtomically(*path, *png);
        info.frame = *path;
    } catch (const std::exception&) {
        // Without its frame the video is still listed; the page says so.
    }
    return info;
}

}  // namespace kinfolio::MediaModule
