#pragma once
// Reads a movie back with FFmpeg's libraries: what its video stream says
// about itself, how many frames it holds, and any frame decoded to RGBA.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <QImage>
#include <QString>

struct MovieFacts {
    bool opened = false;
    QString codec;        // "prores", "qtrle"
    QString codecTag;     // "ap4h" for ProRes 4444
    QString pixelFormat;  // as decoded: "yuva444p12le", "argb"
    bool alpha = false;
    int rateNumerator = 0, rateDenominator = 1;
    int width = 0, height = 0;
    int fieldOrder = AV_FIELD_UNKNOWN;
    qint64 frames = 0;
    QImage decoded;  // the frame asked for, straight RGBA
};

// Counts every frame; decodes frame `keep` (if any) into `decoded`.
inline MovieFacts probeMovie(const QString& path, qint64 keep = -1)
{
    MovieFacts facts;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.toUtf8().constData(), nullptr, nullptr) < 0) return facts;
    if (avformat_find_stream_info(format, nullptr) < 0) {
        avformat_close_input(&format);
        return facts;
    }
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) {
        avformat_close_input(&format);
        return facts;
    }
    const AVStream* stream = format->streams[index];
    const AVCodecParameters* p = stream->codecpar;
    facts.opened = true;
    facts.codec = QString::fromLatin1(avcodec_get_name(p->codec_id));
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
    facts.codecTag = QString::fromLatin1(av_fourcc_make_string(tag, p->codec_tag));
    facts.pixelFormat = QString::fromLatin1(av_get_pix_fmt_name(AVPixelFormat(p->format)));
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(AVPixelFormat(p->format));
    facts.alpha = descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA);
    facts.rateNumerator = stream->avg_frame_rate.num;
    facts.rateDenominator = stream->avg_frame_rate.den;
    facts.width = p->width;
    facts.height = p->height;
    facts.fieldOrder = p->field_order;

    const AVCodec* decoder = avcodec_find_decoder(p->codec_id);
    AVCodecContext* codec = decoder ? avcodec_alloc_context3(decoder) : nullptr;
    if (codec && (avcodec_parameters_to_context(codec, p) < 0 || avcodec_open2(codec, decoder, nullptr) < 0))
        avcodec_free_context(&codec);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    auto take = [&] {
        while (codec && avcodec_receive_frame(codec, frame) >= 0) {
            if (facts.frames == keep) {
                facts.decoded = QImage(frame->width, frame->height, QImage::Format_RGBA8888);
                SwsContext* toRgba = sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), frame->width,
                                                    frame->height, AV_PIX_FMT_RGBA, SWS_POINT, nullptr, nullptr, nullptr);
                // Decoded by the matrix and range the movie is tagged with,
                // as a player would.
                const int space = frame->colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601;
                const int studioRange = frame->color_range != AVCOL_RANGE_JPEG ? 0 : 1;
                sws_setColorspaceDetails(toRgba, sws_getCoefficients(space), studioRange, sws_getCoefficients(SWS_CS_DEFAULT),
                                         1, 0, 1 << 16, 1 << 16);
                uint8_t* planes[] = {facts.decoded.bits()};
                const int strides[] = {int(facts.decoded.bytesPerLine())};
                sws_scale(toRgba, frame->data, frame->linesize, 0, frame->height, planes, strides);
                sws_freeContext(toRgba);
            }
            ++facts.frames;
        }
    };
    while (av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == index) {
            if (codec) avcodec_send_packet(codec, packet);
            else ++facts.frames;
            take();
        }
        av_packet_unref(packet);
    }
    if (codec) {
        avcodec_send_packet(codec, nullptr);
        take();
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    return facts;
}
