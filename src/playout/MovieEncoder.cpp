#include "playout/MovieEncoder.h"

#include <algorithm>
#include <array>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace playout {

namespace {

// 1 is the finest; 2 is visually lossless and a tenth smaller.
constexpr int kProResQuantiser = 2;

QString describe(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

// Premultiplied to straight colour into a picture kept from frame to frame.
// Keyed graphics are mostly fully transparent or fully opaque, which need
// no division.
void unpremultiply(const QImage& source, QImage& target)
{
    static const auto reciprocals = [] {
        std::array<quint32, 256> table{};
        for (int a = 1; a < 256; ++a) table[std::size_t(a)] = quint32((255u << 16) + a / 2) / quint32(a);
        return table;
    }();
    const int width = source.width(), height = source.height();
    for (int y = 0; y < height; ++y) {
        const auto* in = reinterpret_cast<const quint32*>(source.constScanLine(y));
        auto* out = reinterpret_cast<quint32*>(target.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const quint32 p = in[x];
            const quint32 a = p >> 24;
            if (a == 255 || a == 0) {
                out[x] = a ? p : 0;
                continue;
            }
            const quint32 r = reciprocals[a];
            auto channel = [&](int shift) { return std::min<quint32>(255, (((p >> shift) & 0xff) * r + 0x8000) >> 16); };
            out[x] = (a << 24) | (channel(16) << 16) | (channel(8) << 8) | channel(0);
        }
    }
}

}  // namespace

struct MovieEncoder::State {
    AVFormatContext* format = nullptr;
    AVCodecContext* codec = nullptr;
    AVStream* stream = nullptr;
    std::vector<AVFrame*> frames;  // one per slot
    AVPacket* packet = nullptr;
    SwsContext* convert = nullptr;
    QImage straight;  // the picture with its alpha divided out
    qint64 nextPts = 0;
    bool headerWritten = false;
    bool interlaced = false;
    bool upperFirst = true;

    ~State()
    {
        sws_freeContext(convert);
        av_packet_free(&packet);
        for (AVFrame*& frame : frames) av_frame_free(&frame);
        avcodec_free_context(&codec);
        if (format) {
            if (format->pb) avio_closep(&format->pb);
            avformat_free_context(format);
        }
    }

    // Moves every finished packet into the file.
    bool drain(QString* error)
    {
        for (;;) {
            const int got = avcodec_receive_packet(codec, packet);
            if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return true;
            if (got < 0) {
                if (error) *error = QStringLiteral("the encoder failed: %1").arg(describe(got));
                return false;
            }
            av_packet_rescale_ts(packet, codec->time_base, stream->time_base);
            packet->stream_index = stream->index;
            const int written = av_interleaved_write_frame(format, packet);
            av_packet_unref(packet);
            if (written < 0) {
                if (error) *error = QStringLiteral("cannot write the movie: %1").arg(describe(written));
                return false;
            }
        }
    }
};

MovieEncoder::MovieEncoder() = default;

MovieEncoder::~MovieEncoder() = default;

bool MovieEncoder::open(const QString& path, MovieCodec kind, QSize size, const VideoTiming& timing, int threads,
                        int slots, QString* error)
{
    auto fail = [&](const QString& why) {
        if (error) *error = why;
        state_.reset();
        return false;
    };
    state_ = std::make_unique<State>();
    State& s = *state_;
    const QByteArray file = path.toUtf8();
    if (avformat_alloc_output_context2(&s.format, nullptr, "mov", file.constData()) < 0 || !s.format)
        return fail(QStringLiteral("FFmpeg cannot write QuickTime movies"));
    const bool prores = kind == MovieCodec::ProRes4444;
    const AVCodec* encoder = avcodec_find_encoder_by_name(prores ? "prores_ks" : "qtrle");
    if (!encoder) return fail(QStringLiteral("FFmpeg has no %1 encoder").arg(prores ? "ProRes" : "Animation"));
    s.stream = avformat_new_stream(s.format, nullptr);
    s.codec = avcodec_alloc_context3(encoder);
    if (!s.stream || !s.codec) return fail(QStringLiteral("out of memory"));

    s.codec->width = size.width();
    s.codec->height = size.height();
    s.codec->time_base = AVRational{timing.rateDenominator(), timing.rateNumerator()};
    s.codec->framerate = AVRational{timing.rateNumerator(), timing.rateDenominator()};
    s.codec->pix_fmt = prores ? AV_PIX_FMT_YUVA444P10LE : AV_PIX_FMT_ARGB;
    s.codec->thread_count = std::max(1, threads);
    s.interlaced = timing.interlaced();
    s.upperFirst = timing.fieldOrder() != FieldOrder::LowerFirst;
    if (s.interlaced) s.codec->field_order = s.upperFirst ? AV_FIELD_TT : AV_FIELD_BB;
    // Standard-definition sizes use the older matrix.
    const bool hd = size.height() > 576;
    if (prores) {
        av_opt_set(s.codec->priv_data, "profile", "4444", 0);
        // A fixed fine quantiser: the encoder's own search for the best
        // one per slice takes four times as long and, on flat graphics,
        // settles on the finest ones anyway (see decisions.md).
        s.codec->global_quality = kProResQuantiser * FF_QP2LAMBDA;
        s.codec->flags |= AV_CODEC_FLAG_QSCALE;
        // ProRes codes the two fields of an interlaced frame apart.
        if (s.interlaced) s.codec->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
        s.codec->color_range = AVCOL_RANGE_MPEG;
        s.codec->colorspace = hd ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
        s.codec->color_primaries = hd ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
        s.codec->color_trc = hd ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    }
    if (s.format->oformat->flags & AVFMT_GLOBALHEADER) s.codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (const int opened = avcodec_open2(s.codec, encoder, nullptr); opened < 0)
        return fail(QStringLiteral("cannot start the encoder: %1").arg(describe(opened)));
    if (avcodec_parameters_from_context(s.stream->codecpar, s.codec) < 0) return fail(QStringLiteral("out of memory"));
    s.stream->time_base = s.codec->time_base;
    s.stream->avg_frame_rate = s.codec->framerate;

    s.packet = av_packet_alloc();
    if (!s.packet) return fail(QStringLiteral("out of memory"));
    for (int i = 0; i < std::max(1, slots); ++i) {
        AVFrame* frame = av_frame_alloc();
        s.frames.push_back(frame);
        if (!frame) return fail(QStringLiteral("out of memory"));
        frame->format = s.codec->pix_fmt;
        frame->width = s.codec->width;
        frame->height = s.codec->height;
        if (av_frame_get_buffer(frame, 0) < 0) return fail(QStringLiteral("out of memory"));
    }
    s.straight = QImage(size, QImage::Format_ARGB32);
    // QImage's ARGB32 lies in memory as B, G, R, A.
    s.convert = sws_getContext(size.width(), size.height(), AV_PIX_FMT_BGRA, size.width(), size.height(), s.codec->pix_fmt,
                               SWS_POINT, nullptr, nullptr, nullptr);
    if (!s.convert) return fail(QStringLiteral("FFmpeg cannot convert the pictures"));
    if (prores) {
        // Full-range RGB to studio-range Y'CbCr of the mode's matrix.
        const int* matrix = sws_getCoefficients(hd ? SWS_CS_ITU709 : SWS_CS_ITU601);
        sws_setColorspaceDetails(s.convert, matrix, 1, matrix, 0, 0, 1 << 16, 1 << 16);
    }

    if (!(s.format->oformat->flags & AVFMT_NOFILE)) {
        if (const int opened = avio_open(&s.format->pb, file.constData(), AVIO_FLAG_WRITE); opened < 0)
            return fail(QStringLiteral("cannot write %1: %2").arg(path, describe(opened)));
    }
    if (const int written = avformat_write_header(s.format, nullptr); written < 0)
        return fail(QStringLiteral("cannot write %1: %2").arg(path, describe(written)));
    s.headerWritten = true;
    return true;
}

bool MovieEncoder::convert(const QImage& picture, int slot, QString* error)
{
    if (!state_ || slot < 0 || slot >= int(state_->frames.size())) {
        if (error) *error = QStringLiteral("the movie is not open");
        return false;
    }
    State& s = *state_;
    if (picture.size() != s.straight.size() || picture.format() != QImage::Format_ARGB32_Premultiplied) {
        if (error) *error = QStringLiteral("a frame of another size or format");
        return false;
    }
    AVFrame* frame = s.frames[std::size_t(slot)];
    if (av_frame_make_writable(frame) < 0) {
        if (error) *error = QStringLiteral("out of memory");
        return false;
    }
    // Both codecs carry straight colour beside the alpha.
    unpremultiply(picture, s.straight);
    const uint8_t* source[] = {s.straight.constBits()};
    const int sourceStride[] = {int(s.straight.bytesPerLine())};
    sws_scale(s.convert, source, sourceStride, 0, s.straight.height(), frame->data, frame->linesize);
    return true;
}

bool MovieEncoder::encode(int slot, QString* error)
{
    if (!state_ || slot < 0 || slot >= int(state_->frames.size())) {
        if (error) *error = QStringLiteral("the movie is not open");
        return false;
    }
    State& s = *state_;
    AVFrame* frame = s.frames[std::size_t(slot)];
    frame->pts = s.nextPts++;
    // ProRes writes the matrix into every picture's header from the frame.
    frame->colorspace = s.codec->colorspace;
    frame->color_primaries = s.codec->color_primaries;
    frame->color_trc = s.codec->color_trc;
    frame->color_range = s.codec->color_range;
    frame->interlaced_frame = s.interlaced ? 1 : 0;
    frame->top_field_first = s.interlaced && s.upperFirst ? 1 : 0;
    if (const int sent = avcodec_send_frame(s.codec, frame); sent < 0) {
        if (error) *error = QStringLiteral("the encoder failed: %1").arg(describe(sent));
        return false;
    }
    return s.drain(error);
}

bool MovieEncoder::finish(QString* error)
{
    if (!state_) return false;
    State& s = *state_;
    bool ok = avcodec_send_frame(s.codec, nullptr) >= 0 && s.drain(error);
    if (s.headerWritten) {
        if (const int written = av_write_trailer(s.format); written < 0) {
            if (ok && error) *error = QStringLiteral("cannot finish the movie: %1").arg(describe(written));
            ok = false;
        }
    }
    state_.reset();
    return ok;
}

}  // namespace playout
