// velloran-cli modes: the video-mode catalogue as JSON.

#include "cli/Command.h"
#include "cli/DocJson.h"

#include <QJsonDocument>

namespace cli {

int runModesCommand(const QStringList& args, Streams& io)
{
    if (!args.isEmpty()) {
        io.err << "velloran-cli modes: takes no arguments\n";
        return kUsage;
    }
    io.out << QJsonDocument(videoModesJson()).toJson(QJsonDocument::Indented);
    return kSuccess;
}

}  // namespace cli
