#include "StandardComponents.h"

#include "FileBuilders.h"
#include "GraphWriter.h"

#include "plist/PropertyList.h"

#include <QDir>
#include <QSaveFile>

namespace standardcomponents {

std::vector<GeneratedFile> generateAll(QString* error)
{
    using Builder = std::unique_ptr<QuartzComposition> (*)();
    const std::pair<const char*, Builder> compositions[] = {
        {"Renderer.qtz", makeRendererFile},
        {"Background.qtz", makeBackgroundFile},
        {"MovieBackground.qtz", makeMovieBackgroundFile},
        {"FPS.qtz", makeFrameRateFile},
        {"Text.qtz", makeTextFile},
        {"TextComponent.qtz", makeTextComponentFile},
        {"LowerThird.qtz", makeLowerThirdFile},
        {"Ticker.qtz", makeTickerFile},
        {"Clock.qtz", makeClockFile},
        {"Box.qtz", makeBoxFile},
        {"ImageComponent.qtz", makeImageComponentFile},
    };
    std::vector<GeneratedFile> files;
    for (const auto& [name, build] : compositions) {
        QString message;
        QByteArray data = fileData(*build(), &message);
        if (data.isEmpty()) {
            if (error) *error = QStringLiteral("%1: %2").arg(QLatin1String(name), message);
            return {};
        }
        files.push_back({QString::fromLatin1(name), std::move(data)});
    }
    std::string message;
    const auto toolbar = plist::writeXml(makeToolbarComponents(), &message);
    if (!toolbar) {
        if (error) *error = QStringLiteral("ToolbarComponents.plist: %1").arg(QString::fromStdString(message));
        return {};
    }
    files.push_back({QStringLiteral("ToolbarComponents.plist"), QByteArray::fromStdString(*toolbar)});
    return files;
}

bool writeAll(const QString& folder, QString* error)
{
    const std::vector<GeneratedFile> files = generateAll(error);
    if (files.empty()) return false;
    if (!QDir().mkpath(folder)) {
        if (error) *error = QStringLiteral("cannot make the folder %1").arg(folder);
        return false;
    }
    for (const GeneratedFile& file : files) {
        QSaveFile out(QDir(folder).filePath(file.name));
        if (!out.open(QIODevice::WriteOnly) || out.write(file.data) != file.data.size() || !out.commit()) {
            if (error) *error = QStringLiteral("cannot write %1: %2").arg(out.fileName(), out.errorString());
            return false;
        }
    }
    return true;
}

}  // namespace standardcomponents
