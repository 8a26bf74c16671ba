// velloran-cli doc new|add|info|export|apply|dump: composition documents
// without the editor. Every change is saved through the document's own save,
// so the package gets its composition file, info file and thumbnail.

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "cli/DocEdits.h"
#include "cli/DocJson.h"
#include "cli/TerminalProgress.h"
#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "document/CompositionExport.h"
#include "document/DocumentJournal.h"
#include "document/FieldSchema.h"
#include "document/TextCheck.h"
#include "document/Thumbnail.h"
#include "quartz/QuartzComposition.h"
#include "runtime/Composition.h"
#include "model/Composition.h"
#include "model/StoreFile.h"
#include "model/VideoModeCatalogue.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QUrl>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <optional>

namespace cli {

namespace {

using document::CompositionDocument;

int usage(Streams& io, const QString& problem)
{
    io.err << "velloran-cli doc: " << problem << "\n";
    for (const Command& c : commands())
        if (QLatin1String(c.name) == QLatin1String("doc"))
            for (const QString& line : QString::fromUtf8(c.synopsis).split(QLatin1Char('\n')))
                io.err << "  velloran-cli " << line << "\n";
    return kUsage;
}

int failure(Streams& io, const QString& reason)
{
    io.err << "velloran-cli: " << reason << "\n";
    return kFailure;
}

std::unique_ptr<CompositionDocument> openDocument(const QString& path, Streams& io)
{
    QString error;
    auto document = CompositionDocument::open(path, &error);
    if (!document) io.err << "velloran-cli: cannot open " << path << ": " << error << "\n";
    return document;
}

int save(CompositionDocument& document, Streams& io)
{
    QString error;
    bool saved = false;
    {
        TerminalProgress progress(io.err, QStringLiteral("saving %1").arg(QFileInfo(document.fileURL()).fileName()));
        saved = document.save(&error, progress.callback());
    }
    if (!saved) return failure(io, QStringLiteral("cannot save %1: %2").arg(document.fileURL(), error));
    return kSuccess;
}

void printJson(Streams& io, const QJsonValue& json)
{
    const QJsonDocument doc = json.isArray() ? QJsonDocument(json.toArray()) : QJsonDocument(json.toObject());
    io.out << doc.toJson(QJsonDocument::Indented);
}

int runNew(const QStringList& args, Streams& io)
{
    QString mode = model::VideoResolution::defaultVideoResolution().title();
    double duration = -1;
    QString path;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--mode") && i + 1 < args.size()) {
            mode = args[++i];
        } else if (args[i] == QLatin1String("--duration") && i + 1 < args.size()) {
            bool ok = false;
            duration = args[++i].toDouble(&ok);
            if (!ok || duration <= 0) return usage(io, QStringLiteral("--duration needs a positive number of seconds"));
        } else if (args[i].startsWith(QLatin1Char('-')) || !path.isEmpty()) {
            return usage(io, QStringLiteral("unexpected argument '%1'").arg(args[i]));
        } else {
            path = args[i];
        }
    }
    if (path.isEmpty()) return usage(io, QStringLiteral("no document path"));
    if (!model::VideoModeCatalogue::modeNamed(mode))
        return failure(io, QStringLiteral("unknown video mode \"%1\" (see velloran-cli modes)").arg(mode));
    if (QFileInfo::exists(path)) return failure(io, QStringLiteral("%1 already exists").arg(path));
    auto document = CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(mode));
    if (duration > 0) document->composition()->setDuration(duration);
    QString error;
    if (!document->saveAs(path, &error)) return failure(io, QStringLiteral("cannot save %1: %2").arg(path, error));
    return kSuccess;
}

int runAdd(const QStringList& args, Streams& io)
{
    if (args.size() < 2) return usage(io, QStringLiteral("doc add needs a document and at least one file"));
    auto document = openDocument(args[0], io);
    if (!document) return kFailure;
    for (const QString& path : args.mid(1))
        if (!QFileInfo(path).isFile()) return failure(io, QStringLiteral("no file %1").arg(path));
    document::DropResult result;
    {
        TerminalProgress progress(io.err, QStringLiteral("adding %1").arg(args.mid(1).join(QStringLiteral(", "))));
        result = document::addComponentsFromPaths(*document->composition(), args.mid(1), false, {}, progress.callback());
    }
    if (!result.warnings.isEmpty()) io.err << document::importWarningText(result.warnings) << "\n";
    if (!result.ok || result.componentsAdded == 0)
        return failure(io, QStringLiteral("no component could be made of %1").arg(args.mid(1).join(QStringLiteral(", "))));
    return save(*document, io);
}

int runInfo(const QStringList& args, Streams& io)
{
    if (args.size() != 1) return usage(io, QStringLiteral("doc info needs one document"));
    auto document = openDocument(args[0], io);
    if (!document) return kFailure;
    printJson(io, compositionInfoJson(*document->composition()));
    return kSuccess;
}

int runExport(const QStringList& args, Streams& io)
{
    const bool background = args.contains(QStringLiteral("--background"));
    QStringList paths = args;
    paths.removeAll(QStringLiteral("--background"));
    if (paths.size() != 2) return usage(io, QStringLiteral("doc export needs a document and an output file"));
    auto document = openDocument(paths[0], io);
    if (!document) return kFailure;
    bool exported = false;
    {
        TerminalProgress progress(io.err, QStringLiteral("exporting %1").arg(QFileInfo(paths[1]).fileName()));
        exported = document::CompositionExport::exportToPath(*document->composition(), paths[1], background,
                                                             &document::CompositionExport::documentKey, progress.callback());
    }
    if (!exported) return failure(io, QStringLiteral("cannot export to %1").arg(paths[1]));
    return kSuccess;
}

// Takes the flags out of `args`; false when one that is not known is left.
bool takeFlags(QStringList& args, std::initializer_list<const char*> known, QSet<QString>& given)
{
    for (const char* flag : known)
        if (args.removeAll(QLatin1String(flag)) > 0) given.insert(QLatin1String(flag));
    return std::none_of(args.begin(), args.end(), [](const QString& a) { return a.startsWith(QLatin1String("--")); });
}

int runApply(const QStringList& arguments, Streams& io)
{
    QStringList args = arguments;
    QSet<QString> flags;
    if (!takeFlags(args, {"--dump", "--dry-run"}, flags) || args.size() != 2)
        return usage(io, QStringLiteral("doc apply needs a document and an edits file, and takes only --dump and --dry-run"));
    QFile file(args[1]);
    if (!file.open(QIODevice::ReadOnly)) return failure(io, QStringLiteral("cannot read %1").arg(args[1]));
    QJsonParseError parse;
    const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &parse);
    if (parse.error != QJsonParseError::NoError)
        return failure(io, QStringLiteral("%1 at byte %2: %3").arg(args[1]).arg(parse.offset).arg(parse.errorString()));
    if (!json.isArray()) return failure(io, QStringLiteral("%1 must hold a JSON array of edits").arg(args[1]));
    auto document = openDocument(args[0], io);
    if (!document) return kFailure;
    QString error;
    QStringList messages;
    if (!applyEdits(*document, json.array(), &error, &messages)) return failure(io, error);
    for (const QString& m : messages) io.err << m << "\n";
    // The model as the edits left it, playhead and selection included.
    if (flags.contains(QStringLiteral("--dump"))) printJson(io, compositionJson(*document->composition()));
    if (flags.contains(QStringLiteral("--dry-run"))) return kSuccess;
    return save(*document, io);
}

int runDump(const QStringList& args, Streams& io)
{
    QStringList rest = args;
    std::optional<double> time;
    bool missing = false;
    if (const auto text = takeOption(rest, QStringLiteral("--time"), &missing); text || missing) {
        bool ok = false;
        const double t = text ? text->toDouble(&ok) : 0.0;
        if (!ok || !std::isfinite(t)) return usage(io, QStringLiteral("--time needs a number of seconds"));
        time = t;
    }
    if (rest.size() != 1 || rest[0].startsWith(QLatin1String("--"))) return usage(io, QStringLiteral("doc dump needs one document"));
    auto document = openDocument(rest[0], io);
    if (!document) return kFailure;
    // Values are read where the playhead would stand: on the frame grid.
    if (time) document->composition()->setEditorTimepointForNearestTick(*time);
    printJson(io, compositionJson(*document->composition()));
    return kSuccess;
}

// Opens what can be read of a damaged package, lists what was dropped and
// saves; the damaged store is kept beside it.
int runRepair(const QStringList& args, Streams& io)
{
    if (args.size() != 1 || args[0].startsWith(QLatin1String("--"))) return usage(io, QStringLiteral("doc repair needs one document"));
    QString error;
    auto document = CompositionDocument::open(args[0], &error, model::StoreReadMode::DropUnreadable);
    if (!document) return failure(io, QStringLiteral("cannot repair %1: %2").arg(args[0], error));
    const QStringList dropped = document->droppedOnRead();
    printJson(io, QJsonObject{{QStringLiteral("dropped"), QJsonArray::fromStringList(dropped)}});
    if (dropped.isEmpty()) return kSuccess;  // nothing to mend
    const QString store = QDir(args[0]).filePath(CompositionDocument::storeFileName());
    const QString kept = store + QStringLiteral(".damaged");
    QFile::remove(kept);
    if (!QFile::copy(store, kept)) return failure(io, QStringLiteral("cannot keep a copy of the damaged store as %1").arg(kept));
    io.err << "velloran-cli: the damaged store is kept as " << kept << "\n";
    return save(*document, io);
}

// What a crash left in the document's journal: listed, applied and saved,
// or dropped.
int runRecover(const QStringList& arguments, Streams& io)
{
    QStringList args = arguments;
    QSet<QString> flags;
    if (!takeFlags(args, {"--apply", "--discard"}, flags) || args.size() != 1 || flags.size() > 1)
        return usage(io, QStringLiteral("doc recover needs one document and takes --apply or --discard"));
    if (!QFileInfo(args[0]).isDir()) return failure(io, QStringLiteral("no document %1").arg(args[0]));
    const document::JournalStatus status = document::DocumentJournal::statusForPackage(args[0]);
    if (flags.contains(QStringLiteral("--discard"))) {
        document::DocumentJournal::discard(status.path);
        printJson(io, QJsonObject{{QStringLiteral("discarded"), status.records}});
        return kSuccess;
    }
    if (!flags.contains(QStringLiteral("--apply"))) {
        printJson(io, QJsonObject{{QStringLiteral("journal"), status.path},
                                  {QStringLiteral("records"), status.records},
                                  {QStringLiteral("problem"), status.problem},
                                  {QStringLiteral("savedSince"), status.baseChanged},
                                  {QStringLiteral("recoverable"), status.recoverable()}});
        return kSuccess;
    }
    if (!status.recoverable())
        return failure(io, status.baseChanged ? QStringLiteral("%1 was saved after the changes in its journal were made").arg(args[0])
                                              : QStringLiteral("%1 has no changes to recover").arg(args[0]));
    auto document = openDocument(args[0], io);
    if (!document) return kFailure;
    QString error;
    if (!document->recoverFromJournal(status, &error)) return failure(io, QStringLiteral("cannot recover %1: %2").arg(args[0], error));
    if (const int result = save(*document, io); result != kSuccess) return result;
    printJson(io, QJsonObject{{QStringLiteral("applied"), status.records}});
    return kSuccess;
}

// The operator's fields as a Graphics Data Definition, on stdout or to a file.
int runSchema(const QStringList& args, Streams& io)
{
    QStringList rest = args;
    bool missing = false;
    const QString output = takeOption(rest, QStringLiteral("-o"), &missing).value_or(QString());
    if (missing) return usage(io, QStringLiteral("-o needs a file"));
    if (rest.size() != 1 || rest[0].startsWith(QLatin1Char('-'))) return usage(io, QStringLiteral("doc schema needs one document"));
    auto document = openDocument(rest[0], io);
    if (!document) return kFailure;
    const QString title = QFileInfo(rest[0]).completeBaseName();
    if (output.isEmpty()) {
        printJson(io, document::fieldSchema(*document->composition(), title));
        return kSuccess;
    }
    QString error;
    if (!document::writeFieldSchema(*document->composition(), title, output, &error))
        return failure(io, QStringLiteral("cannot write %1: %2").arg(output, error));
    return kSuccess;
}

// The picture at each stop frame, as PNG files Step-01.png, ... in DIR.
int runThumbnails(const QStringList& args, Streams& io)
{
    QStringList rest = args;
    QSize size;
    bool missing = false;
    if (const auto text = takeOption(rest, QStringLiteral("--size"), &missing); text || missing) {
        const QString problem = text ? readFrameSize(*text, &size) : QStringLiteral("--size needs WIDTHxHEIGHT");
        if (!problem.isEmpty()) return usage(io, problem);
    }
    if (rest.size() != 2 || rest[0].startsWith(QLatin1Char('-')) || rest[1].startsWith(QLatin1Char('-')))
        return usage(io, QStringLiteral("doc thumbnails needs a document and a folder"));
    auto document = openDocument(rest[0], io);
    if (!document) return kFailure;
    QString error;
    const auto written = document::exportStepPictures(*document->composition(), rest[1], size, QUrl::fromLocalFile(rest[0]), &error);
    if (!written) return failure(io, error);
    printJson(io, QJsonObject{{QStringLiteral("pictures"), QJsonArray::fromStringList(*written)}});
    return kSuccess;
}

// Every operator text field tried with worst-case samples; exit 3 when one
// runs out of its component or the title-safe area.
int runCheckText(const QStringList& args, Streams& io)
{
    QStringList rest = args;
    QStringList samples;
    bool missing = false;
    const std::optional<QString> samplesFile = takeOption(rest, QStringLiteral("--samples"), &missing);
    if (missing) return usage(io, QStringLiteral("--samples needs a file"));
    if (samplesFile) {
        QFile file(*samplesFile);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return failure(io, QStringLiteral("cannot read %1").arg(*samplesFile));
        for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')))
            if (!line.trimmed().isEmpty()) samples.append(line);
        if (samples.isEmpty()) return failure(io, QStringLiteral("%1 holds no sample text").arg(*samplesFile));
    }
    if (rest.size() != 1 || rest[0].startsWith(QLatin1Char('-'))) return usage(io, QStringLiteral("doc check-text needs one document"));
    auto document = openDocument(rest[0], io);
    if (!document) return kFailure;
    QJsonArray report;
    bool allFit = true;
    QList<document::TextCheckResult> results;
    {
        TerminalProgress progress(io.err, QStringLiteral("checking the text fields"));
        results = document::checkTextFields(*document->composition(), samples, progress.callback());
    }
    for (const document::TextCheckResult& r : std::as_const(results)) {
        allFit = allFit && r.fits();
        report.append(QJsonObject{
            {QStringLiteral("field"), r.field},
            {QStringLiteral("component"), r.component},
            {QStringLiteral("key"), r.key},
            {QStringLiteral("sample"), r.sample},
            {QStringLiteral("time"), r.time},
            {QStringLiteral("fits"), r.fits()},
            {QStringLiteral("insideComponent"), r.insideComponent},
            {QStringLiteral("insideTitleSafe"), r.insideTitleSafe},
            {QStringLiteral("measuredWidth"), r.measuredWidth},
            {QStringLiteral("room"), r.room},
            {QStringLiteral("measuredHeight"), r.measuredHeight},
            {QStringLiteral("roomHeight"), r.roomHeight},
            {QStringLiteral("fallbackGlyph"), r.fallbackGlyph},
        });
    }
    printJson(io, QJsonObject{{QStringLiteral("allFit"), allFit}, {QStringLiteral("results"), report}});
    return allFit ? kSuccess : kTextOverflows;
}

}  // namespace

int runDocCommand(const QStringList& args, Streams& io)
{
    if (args.isEmpty()) return usage(io, QStringLiteral("missing subcommand"));
    const QString sub = args.first();
    const QStringList rest = args.mid(1);
    if (sub == QLatin1String("new")) return runNew(rest, io);
    if (sub == QLatin1String("add")) return runAdd(rest, io);
    if (sub == QLatin1String("info")) return runInfo(rest, io);
    if (sub == QLatin1String("export")) return runExport(rest, io);
    if (sub == QLatin1String("apply")) return runApply(rest, io);
    if (sub == QLatin1String("dump")) return runDump(rest, io);
    if (sub == QLatin1String("repair")) return runRepair(rest, io);
    if (sub == QLatin1String("recover")) return runRecover(rest, io);
    if (sub == QLatin1String("schema")) return runSchema(rest, io);
    if (sub == QLatin1String("thumbnails")) return runThumbnails(rest, io);
    if (sub == QLatin1String("check-text")) return runCheckText(rest, io);
    return usage(io, QStringLiteral("unknown subcommand '%1'").arg(sub));
}

}  // namespace cli
