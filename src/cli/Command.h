#pragma once
// velloran-cli subcommands. Each takes the words after its own name and
// writes JSON for machines on stdout, messages for people on stderr.
// Exit codes: 0 success, 1 failure (one-line reason), 2 bad usage.

#include <QStringList>
#include <QTextStream>

namespace cli {

enum ExitCode { kSuccess = 0, kFailure = 1, kUsage = 2, kTextOverflows = 3 };

struct Streams {
    QTextStream& out;
    QTextStream& err;
};

struct Command {
    const char* name;
    const char* synopsis;  // one or more lines of usage, without the program name
    int (*run)(const QStringList& args, Streams& io);
};

// Every command the program knows, in the order --help lists them.
const std::vector<Command>& commands();

// Runs a whole command line (without the program name).
int runCommandLine(const QStringList& args, Streams& io);

int runPlistCommand(const QStringList& args, Streams& io);
int runPsdCommand(const QStringList& args, Streams& io);
int runQtzCommand(const QStringList& args, Streams& io);
int runRenderCommand(const QStringList& args, Streams& io);
int runDocCommand(const QStringList& args, Streams& io);
int runModesCommand(const QStringList& args, Streams& io);
int runPlayCommand(const QStringList& args, Streams& io);

}  // namespace cli
