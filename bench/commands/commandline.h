// What the subcommands of canbench share.
#pragma once

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

namespace bench {

enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2, ExpectationFailed = 3, SignalBase = 128 };

/// A subcommand: \p run gets the arguments after its name and returns an exit code.
struct Subcommand
{
    const char *name;
    const char *summary;
    int (*run)(const QStringList &arguments);
};

int boxCommand(const QStringList &arguments);
int runCommand(const QStringList &arguments);
int tapCommand(const QStringList &arguments);
int sendCommand(const QStringList &arguments);
int playCommand(const QStringList &arguments);
int decodeCommand(const QStringList &arguments);
int diffCommand(const QStringList &arguments);
int replayCommand(const QStringList &arguments);
int exportCommand(const QStringList &arguments);
int tourCommand(const QStringList &arguments);
int soakCommand(const QStringList &arguments);
int doctorCommand(const QStringList &arguments);
int namesCommand(const QStringList &arguments);

/// The arguments of one subcommand. Options and positional arguments are added to it before
/// parse().
class CommandLine : public QCommandLineParser
{
public:
    /// \param usage what follows `canbench NAME`. \param examples a line each, without indent.
    CommandLine(const char *name, const char *usage, const char *description, const char *examples);

    /// \returns nothing to go on, or the exit code: 0 after the help text, 2 after an error.
    /// More than \p maxPositional positional arguments are an error.
    std::optional<int> read(const QStringList &arguments, int maxPositional = 0);

    /// A whole number given by \p option, or \p fallback without it. Out of range is an error that
    /// read() reports: call it after read() and ask isWrong() then.
    int number(const QString &option, int fallback, int low, int high);
    /// The same for a number of seconds.
    double seconds(const QString &option, double fallback, double low, double high);
    /// The same for a number without unit.
    double factor(const QString &option, double fallback, double low, double high);

    /// Says on standard error what is wrong and how to get help. \returns the exit code for it.
    int complain(const QString &problem);
    bool isWrong() const { return mWrong; }

private:
    QString help() const;
    QString problem() const;
    double real(const QString &option, const char *what, double fallback, double low, double high);

    const QString mName;
    const QString mUsage;
    const QString mExamples;
    bool mWrong = false;
};

/// Lists the names with \p text in them. \param ofCar only those that `set` takes.
/// \returns an exit code: Failed if there is none.
int sayNames(const QString &text, bool json, bool ofCar);

struct ParseContext;
/// Reads the `KIND[=RATE],...` of --faults into the step that it stands for.
/// \returns an empty text, or what is wrong.
QString readFaultOption(const QString &text, ParseContext &context);

/// A line on standard error, with the program's name in front. \returns Failed.
int fail(const QString &problem);

/// Lines of our own on standard output, which are there at once.
void say(const QString &line);

} // namespace bench
