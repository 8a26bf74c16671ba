#pragma once
// Runs velloran-cli's command line in-process and captures what it prints.

#include "cli/Command.h"

#include <QStringList>
#include <QTextStream>

struct CliResult {
    int code = 0;
    QString out;
    QString err;
};

inline CliResult runCli(const QStringList& args)
{
    CliResult result;
    QTextStream out(&result.out), err(&result.err);
    cli::Streams io{out, err};
    result.code = cli::runCommandLine(args, io);
    out.flush();
    err.flush();
    return result;
}
