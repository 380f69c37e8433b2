// Decodes a video file with libav.
#pragma once

#include <chrono>
#include <optional>
#include <QImage>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

/// A frame of a video, and the times since the video's start from which and until which it is
/// shown.
struct Frame {
    QImage picture;
    std::chrono::nanoseconds start;
    std::chrono::nanoseconds end;
};

/// Decodes the best video stream of a file, from the start again after its end.
class Decoder {
public:
    /// The pictures are scaled to `size`.
    Decoder(const std::string& path, QSize size)
        : _size(size) {
        const AVCodec* codec = nullptr;
        if (avformat_open_input(&_file, path.c_str(), nullptr, nullptr) < 0 ||
            avformat_find_stream_info(_file, nullptr) < 0 ||
            (_stream = av_find_best_stream(_file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0)) < 0) {
            return;
        }
        _codec = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(_codec, _file->streams[_stream]->codecpar);
        _codec->thread_count = 1; // small videos: more threads cost more than they save
        avcodec_open2(_codec, codec, nullptr); // without it, no frame comes
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() {
        sws_freeContext(_scaler);
        av_packet_free(&_packet);
        av_frame_free(&_frame);
        avcodec_free_context(&_codec);
        avformat_close_input(&_file);
    }

    /// The next frame; none at the end, and where the file is not a video.
    std::optional<Frame> next() {
        int state = AVERROR_EOF;
        do {
            state = _codec ? avcodec_receive_frame(_codec, _frame) : AVERROR_EOF;
        } while (state == AVERROR(EAGAIN) && feed());
        if (state < 0) {
            return std::nullopt;
        }
        const std::int64_t start = _frame->best_effort_timestamp;
        return Frame{picture(), time(start), time(start + _frame->pkt_duration)};
    }

    void rewind() {
        av_seek_frame(_file, _stream, 0, AVSEEK_FLAG_BACKWARD);
        avcodec_flush_buffers(_codec);
    }

private:
    /// Hands the decoder its next packet, or tells it that the last one has come.
    bool feed() {
        int state = 0;
        do {
            av_packet_unref(_packet);
            state = av_read_frame(_file, _packet);
        } while (state >= 0 && _packet->stream_index != _stream);
        return avcodec_send_packet(_codec, state < 0 ? nullptr : _packet) >= 0;
    }

    QImage picture() {
        _scaler = sws_getCachedContext(_scaler, _frame->width, _frame->height,
                                       static_cast<AVPixelFormat>(_frame->format), _size.width(),
                                       _size.height(), AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr,
                                       nullptr, nullptr);
        QImage picture(_size, QImage::Format_RGB32);
        std::uint8_t* const lines[] = {picture.bits()};
        const int strides[] = {static_cast<int>(picture.bytesPerLine())};
        sws_scale(_scaler, _frame->data, _frame->linesize, 0, _frame->height, lines, strides);
        return picture;
    }

    std::chrono::nanoseconds time(std::int64_t timestamp) const {
        const AVRational unit = _file->streams[_stream]->time_base;
        return std::chrono::nanoseconds(av_rescale_q(timestamp, unit, {1, std::nano::den}));
    }

    const QSize _size;
    AVFormatContext* _file = nullptr;
    AVCodecContext* _codec = nullptr;
    AVFrame* _frame = av_frame_alloc();
    AVPacket* _packet = av_packet_alloc();
    SwsContext* _scaler = nullptr;
    int _stream = -1;
};
