// velloran-cli play DOC.composition (--png DIR | --video FILE.mov) [--codec prores|animation]
//     [--from S] [--to S] [--trigger-at S]... [--size WxH] [--backend gl|raster] [--background]
// Every frame of the template as keyed playout plays it, into files.

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "document/CompositionDocument.h"
#include "playout/MovieWriter.h"
#include "playout/Player.h"
#include "runtime/BackendFactory.h"
#include "playout/PlayoutRender.h"
#include "playout/PngSequenceWriter.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace cli {

namespace {

constexpr const char* kUsageText =
    "usage: velloran-cli play DOC.composition (--png DIR | --video FILE.mov) [--codec prores|animation]\n"
    "                         [--from S] [--to S] [--trigger-at S]... [--size WxH] [--backend gl|raster] [--background]\n";

struct PlayRequest {
    std::optional<runtime::BackendPreference> backend;
    QString document;
    QString pngDirectory;
    QString movie;
    playout::MovieCodec codec = playout::MovieCodec::ProRes4444;
    playout::RenderRange range;
    QSize size;
    bool background = false;
};

bool readSeconds(const QStringList& args, int& i, double& value)
{
    bool ok = false;
    if (i + 1 < args.size()) value = args[++i].toDouble(&ok);
    return ok && std::isfinite(value) && value >= 0;
}

// Empty on success, else the usage problem.
QString parseArguments(const QStringList& args, PlayRequest& r)
{
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const bool hasValue = i + 1 < args.size();
        if (a == QLatin1String("--png") || a == QLatin1String("--video")) {
            if (!hasValue) return QStringLiteral("%1 needs a path").arg(a);
            (a == QLatin1String("--png") ? r.pngDirectory : r.movie) = args[++i];
        } else if (a == QLatin1String("--codec")) {
            const QString codec = hasValue ? args[++i] : QString();
            if (codec == QLatin1String("prores")) r.codec = playout::MovieCodec::ProRes4444;
            else if (codec == QLatin1String("animation")) r.codec = playout::MovieCodec::Animation;
            else return QStringLiteral("--codec is prores or animation");
        } else if (a == QLatin1String("--from")) {
            if (!readSeconds(args, i, r.range.from)) return QStringLiteral("--from needs seconds, 0 or more");
        } else if (a == QLatin1String("--to")) {
            double to = 0;
            if (!readSeconds(args, i, to)) return QStringLiteral("--to needs seconds, 0 or more");
            r.range.to = to;
        } else if (a == QLatin1String("--trigger-at")) {
            double at = 0;
            if (!readSeconds(args, i, at)) return QStringLiteral("--trigger-at needs seconds, 0 or more");
            if (!r.range.triggerTimes) r.range.triggerTimes.emplace();
            r.range.triggerTimes->push_back(at);
        } else if (a == QLatin1String("--backend")) {
            const auto preference = hasValue ? runtime::backendPreferenceFromName(args[++i]) : std::nullopt;
            if (!preference) return QStringLiteral("--backend is gl or raster");
            r.backend = preference;
        } else if (a == QLatin1String("--size")) {
            if (!hasValue) return QStringLiteral("--size needs WIDTHxHEIGHT");
            if (const QString problem = readFrameSize(args[++i], &r.size); !problem.isEmpty()) return problem;
        } else if (a == QLatin1String("--background")) {
            r.background = true;
        } else if (a.startsWith(QLatin1Char('-')) || !r.document.isEmpty()) {
            return QStringLiteral("unexpected argument '%1'").arg(a);
        } else {
            r.document = a;
        }
    }
    if (r.document.isEmpty()) return QStringLiteral("no document");
    if (r.pngDirectory.isEmpty() == r.movie.isEmpty()) return QStringLiteral("give either --png DIR or --video FILE.mov");
    if (r.range.to && *r.range.to <= r.range.from) return QStringLiteral("--to must be later than --from");
    return {};
}

const char* fieldOrderName(playout::FieldOrder order)
{
    switch (order) {
    case playout::FieldOrder::UpperFirst: return "upper";
    case playout::FieldOrder::LowerFirst: return "lower";
    case playout::FieldOrder::Progressive: break;
    }
    return "progressive";
}

}  // namespace

int runPlayCommand(const QStringList& args, Streams& io)
{
    PlayRequest request;
    if (const QString problem = parseArguments(args, request); !problem.isEmpty()) {
        io.err << "velloran-cli play: " << problem << "\n" << kUsageText;
        return kUsage;
    }
    const runtime::ScopedBackendPreference backend(request.backend);
    QString error;
    auto document = document::CompositionDocument::open(request.document, &error);
    if (!document) {
        io.err << "velloran-cli: cannot open " << request.document << ": " << error << "\n";
        return kFailure;
    }
    // Keyed playout: no background, and no clear, so that what is not drawn
    // stays transparent. --background plays the picture the preview shows.
    QTemporaryDir scratch;
    const playout::ExportRequest exportRequest{request.background, scratch.filePath(QStringLiteral("Play.qtz"))};
    auto played = playout::exportForPlayout(*document, exportRequest, &error);
    if (!played) {
        io.err << "velloran-cli: cannot play " << request.document << ": " << error << "\n";
        return kFailure;
    }
    playout::Player player;
    player.load(*played, playout::PlayerOptions{request.background, request.size, !request.range.triggerTimes});

    std::unique_ptr<playout::FrameSink> sink;
    if (!request.movie.isEmpty())
        sink = std::make_unique<playout::MovieWriter>(request.movie, request.codec);
    else
        sink = std::make_unique<playout::PngSequenceWriter>(request.pngDirectory);

    // A person watching gets a running count; logs and pipes do not.
    const bool showProgress = isatty(STDERR_FILENO);
    QElapsedTimer clock;
    clock.start();
    const playout::RenderOutcome outcome = playout::PlayoutRender::run(player, request.range, *sink, [&](qint64 done, qint64 total) {
        if (showProgress && (done == total || done % 5 == 0)) {
            io.err << "\rframe " << done << " of " << total;
            io.err.flush();
        }
        return true;
    });
    if (showProgress) io.err << "\n";
    for (const QString& warning : outcome.warnings) io.err << "velloran-cli: " << warning << "\n";
    if (!outcome.ok) {
        if (!request.movie.isEmpty()) QFile::remove(request.movie);
        io.err << "velloran-cli: " << outcome.error << "\n";
        return kFailure;
    }
    const double seconds = double(clock.nsecsElapsed()) * 1e-9;
    const playout::VideoTiming& timing = player.timing();
    QJsonObject summary{
        {QStringLiteral("output"), request.movie.isEmpty() ? request.pngDirectory : request.movie},
        {QStringLiteral("frames"), double(outcome.framesWritten)},
        {QStringLiteral("width"), player.frameSize().width()},
        {QStringLiteral("height"), player.frameSize().height()},
        {QStringLiteral("frameRate"), timing.framesPerSecond()},
        {QStringLiteral("fieldOrder"), QLatin1String(fieldOrderName(timing.fieldOrder()))},
        {QStringLiteral("seconds"), std::round(seconds * 1000) / 1000},
        {QStringLiteral("framesPerSecond"), seconds > 0 ? std::round(double(outcome.framesWritten) / seconds * 10) / 10 : 0.0},
    };
    io.out << QJsonDocument(summary).toJson(QJsonDocument::Indented);
    return kSuccess;
}

}  // namespace cli
