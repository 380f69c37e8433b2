#include "Player.hpp"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace KeloViewer {

namespace {

using Seconds = std::chrono::duration<double>;

/// Calls one of libav's functions that take the address of a pointer and clear it.
template <auto release>
struct Release {
    template <class T>
    void operator()(T* pointer) const {
        release(&pointer);
    }
};

/// Decodes the best video stream of a file, from the start again after its end.
class Decoder {
public:
    explicit Decoder(const std::string& path) {
        AVFormatContext* file = nullptr;
        if (avformat_open_input(&file, path.c_str(), nullptr, nullptr) < 0) {
            return;
        }
        _file.reset(file);
        const AVCodec* codec = nullptr;
        if (avformat_find_stream_info(file, nullptr) < 0 ||
            (_stream = av_find_best_stream(file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0)) < 0) {
            return;
        }
        _codec.reset(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(_codec.get(), file->streams[_stream]->codecpar);
        _codec->thread_count = 1; // small videos: more threads cost more than they save
        if (avcodec_open2(_codec.get(), codec, nullptr) < 0) {
            _codec.reset();
        }
    }

    /// The next frame; null at the end.
    const AVFrame* next() {
        while (_codec != nullptr) {
            const int received = avcodec_receive_frame(_codec.get(), _frame.get());
            if (received == 0) {
                return _frame.get();
            }
            if (received != AVERROR(EAGAIN) || !feed()) {
                return nullptr;
            }
        }
        return nullptr;
    }

    void rewind() {
        av_seek_frame(_file.get(), _stream, 0, AVSEEK_FLAG_BACKWARD);
        avcodec_flush_buffers(_codec.get());
    }

    /// When the frame is due, counted from the start of the video.
    Seconds timeOf(const AVFrame& frame) const { return seconds(frame.best_effort_timestamp); }
    Seconds endOf(const AVFrame& frame) const {
        return seconds(frame.best_effort_timestamp + frame.pkt_duration);
    }

private:
    /// Hands the decoder its next packet, or tells it that the last one has come.
    bool feed() {
        while (av_read_frame(_file.get(), _packet.get()) >= 0) {
            const bool isVideo = _packet->stream_index == _stream;
            const bool isTaken = isVideo && avcodec_send_packet(_codec.get(), _packet.get()) >= 0;
            av_packet_unref(_packet.get());
            if (isVideo) {
                return isTaken;
            }
        }
        return avcodec_send_packet(_codec.get(), nullptr) >= 0;
    }

    Seconds seconds(std::int64_t timestamp) const {
        return Seconds(static_cast<double>(timestamp) * av_q2d(_file->streams[_stream]->time_base));
    }

    std::unique_ptr<AVFormatContext, Release<&avformat_close_input>> _file;
    std::unique_ptr<AVCodecContext, Release<&avcodec_free_context>> _codec;
    std::unique_ptr<AVFrame, Release<&av_frame_free>> _frame{av_frame_alloc()};
    std::unique_ptr<AVPacket, Release<&av_packet_free>> _packet{av_packet_alloc()};
    int _stream = -1;
};

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;

QImage pictureOf(const AVFrame& frame, QSize size, Scaler& scaler) {
    scaler.reset(sws_getCachedContext(
        scaler.release(), frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
        size.width(), size.height(), AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr));
    QImage picture(size, QImage::Format_RGB32);
    std::uint8_t* const lines[] = {picture.bits()};
    const int strides[] = {static_cast<int>(picture.bytesPerLine())};
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, lines, strides);
    return picture;
}

} // namespace

void playOverAndOver(const std::stop_token& stop, const std::string& path, QSize size,
                     const ShowPicture& show) {
    Decoder decoder(path);
    Scaler scaler;
    std::mutex mutex;
    std::condition_variable_any never;
    using Clock = std::chrono::steady_clock;
    // One clock for all rounds: what a seam costs is made up for before the next frame is due.
    auto start = Clock::now();
    Seconds length(0);
    bool hasLooped = false;
    while (!stop.stop_requested()) {
        const AVFrame* frame = decoder.next();
        if (frame == nullptr) {
            if (length <= Seconds(0)) {
                return;
            }
            start += std::chrono::duration_cast<Clock::duration>(length);
            length = Seconds(0);
            hasLooped = true;
            decoder.rewind();
            continue;
        }
        QImage picture = pictureOf(*frame, size, scaler);
        const auto due =
            start + std::chrono::duration_cast<Clock::duration>(decoder.timeOf(*frame));
        length = decoder.endOf(*frame);
        std::unique_lock lock(mutex);
        never.wait_until(lock, stop, due, [] { return false; });
        if (!stop.stop_requested()) {
            show(std::move(picture), std::exchange(hasLooped, false));
        }
    }
}

} // namespace KeloViewer
