#include "cli/Command.h"
#include "plist/PropertyList.h"

#include <QSaveFile>

namespace cli {

int runPlistCommand(const QStringList& args, Streams& io)
{
    if (args.size() != 4 || args[0] != QLatin1String("convert") ||
        (args[1] != QLatin1String("--xml") && args[1] != QLatin1String("--binary"))) {
        io.err << "usage: velloran-cli plist convert --xml|--binary IN OUT\n";
        return kUsage;
    }
    const plist::Format format = args[1] == QLatin1String("--xml") ? plist::Format::Xml : plist::Format::Binary;
    std::string error;
    const auto root = plist::readFile(args[2].toStdString(), &error);
    if (!root) {
        io.err << "velloran-cli: cannot read " << args[2] << ": " << QString::fromStdString(error) << "\n";
        return kFailure;
    }
    const auto bytes = plist::write(*root, format, &error);
    if (!bytes) {
        io.err << "velloran-cli: cannot convert " << args[2] << ": " << QString::fromStdString(error) << "\n";
        return kFailure;
    }
    QSaveFile file(args[3]);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes->data(), qint64(bytes->size())) != qint64(bytes->size()) ||
        !file.commit()) {
        io.err << "velloran-cli: cannot write " << args[3] << ": " << file.errorString() << "\n";
        return kFailure;
    }
    return kSuccess;
}

}  // namespace cli
