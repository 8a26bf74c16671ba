// velloran-cli's progress line: drawn in place only for a terminal, redrawn
// when the percentage changes, ended with a newline; nothing at all for a
// pipe, so scripts reading stderr see what they always saw.

#include "cli/TerminalProgress.h"

#include <gtest/gtest.h>

namespace {

QString drawn(bool shown, const std::vector<std::pair<qint64, qint64>>& steps)
{
    QString text;
    QTextStream err(&text);
    {
        cli::TerminalProgress progress(err, QStringLiteral("saving A.composition"), shown);
        const document::WorkProgress told = progress.callback();
        for (const auto& [done, total] : steps) EXPECT_TRUE(told(done, total)) << "the line never stops the work";
    }
    err.flush();
    return text;
}

TEST(TerminalProgress, OneLineRedrawnAsThePercentageChanges)
{
    const QString text = drawn(true, {{0, 4}, {1, 4}, {1, 4}, {2, 400}, {4, 4}});
    EXPECT_EQ(text, QStringLiteral("\rvelloran-cli: saving A.composition 0%\x1b[K"
                                   "\rvelloran-cli: saving A.composition 25%\x1b[K"
                                   "\rvelloran-cli: saving A.composition 0%\x1b[K"
                                   "\rvelloran-cli: saving A.composition 100%\x1b[K\n"));
}

TEST(TerminalProgress, UnknownTotalsShowTheLabelAloneAndPipesGetNothing)
{
    EXPECT_EQ(drawn(true, {{5, 0}}), QStringLiteral("\rvelloran-cli: saving A.composition\x1b[K\n"));
    EXPECT_EQ(drawn(false, {{0, 4}, {4, 4}}), QString());
    EXPECT_EQ(drawn(true, {}), QString()) << "no work told, no line";
}

}  // namespace
