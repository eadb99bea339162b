#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>

// What the video reader shares with the example generator, which encodes
// its clips with the same libraries: the log switched off, and owners that
// free each FFmpeg object the way the library frees it.
namespace kinfolio::MediaModule {

// FFmpeg otherwise writes every damaged packet to the terminal. Safe to call
// before every use.
inline void startVideoLibraries() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

// A custom I/O context owns its buffer, which FFmpeg may have replaced.
struct IODeleter {
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};
struct CodecDeleter {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameDeleter {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketDeleter {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct ScalerDeleter {
    void operator()(SwsContext* s) const { sws_freeContext(s); }
};

// A seek of FFmpeg's I/O layer over `size` bytes held in memory: moves
// `position` and returns it, or the size for AVSEEK_SIZE. A place outside the
// bytes is refused with AVERROR(EINVAL); offsets read from a file may be
// anything.
inline int64_t seekInMemory(int64_t& position, int64_t size, int64_t offset, int whence) {
    if (whence & AVSEEK_SIZE) return size;
    int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
        case SEEK_SET:
            base = 0;
            break;
        case SEEK_CUR:
            base = position;
            break;
        case SEEK_END:
            base = size;
            break;
        default:
            return AVERROR(EINVAL);
    }
    if (offset < -base || offset > size - base) return AVERROR(EINVAL);
    position = base + offset;
    return position;
}

using IOPtr = std::unique_ptr<AVIOContext, IODeleter>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using ScalerPtr = std::unique_ptr<SwsContext, ScalerDeleter>;

}  // namespace kinfolio::MediaModule
