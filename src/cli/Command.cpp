#include "cli/Command.h"

namespace cli {

const std::vector<Command>& commands()
{
    static const std::vector<Command> all = {
        {"modes", "modes", runModesCommand},
        {"plist", "plist convert --xml|--binary IN OUT", runPlistCommand},
        {"psd", "psd layers FILE.psd\npsd export FILE.psd DIR", runPsdCommand},
        {"qtz", "qtz inputs FILE.qtz\nqtz check FILE.qtz", runQtzCommand},
        {"render", "render FILE.qtz|DOC.composition --time T [--size WxH] [--backend gl|raster] [--input KEY=VALUE]... -o OUT.png",
         runRenderCommand},
        {"play",
         "play DOC.composition (--png DIR | --video FILE.mov) [--codec prores|animation] [--from S] [--to S]\n"
         "     [--trigger-at S]... [--size WxH] [--backend gl|raster] [--background]",
         runPlayCommand},
        {"doc",
         "doc new [--mode NAME] [--duration S] DOC.composition\n"
         "doc add DOC.composition PATH...\n"
         "doc info DOC.composition\n"
         "doc export DOC.composition OUT.qtz [--background]\n"
         "doc apply DOC.composition EDITS.json [--dump] [--dry-run]\n"
         "doc dump DOC.composition [--time S]\n"
         "doc repair DOC.composition\n"
         "doc recover DOC.composition [--apply|--discard]\n"
         "doc schema DOC.composition [-o FILE]\n"
         "doc thumbnails DOC.composition DIR [--size WxH]\n"
         "doc check-text DOC.composition [--samples FILE.txt]",
         runDocCommand},
    };
    return all;
}

static void printHelp(QTextStream& s)
{
    s << "velloran-cli: Velloran without a screen.\n\nUsage:\n";
    for (const Command& c : commands()) {
        for (const QString& line : QString::fromUtf8(c.synopsis).split(QLatin1Char('\n')))
            s << "  velloran-cli " << line << "\n";
    }
    s << "\nMachine output is JSON on stdout; exit code 0 success, 1 failure, 2 bad usage.\n";
}

int runCommandLine(const QStringList& args, Streams& io)
{
    if (args.isEmpty()) {
        printHelp(io.err);
        return kUsage;
    }
    const QString& name = args.first();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        printHelp(io.out);
        return kSuccess;
    }
    for (const Command& c : commands()) {
        if (name == QLatin1String(c.name)) return c.run(args.mid(1), io);
    }
    io.err << "velloran-cli: unknown command '" << name << "' (see velloran-cli --help)\n";
    return kUsage;
}

}  // namespace cli
