// What the commands with a session of their own have in common: run, play and tour.
#pragma once

#include "bench/commands/commandline.h"
#include "bench/commands/controlchannel.h"
#include "bench/headunit/witness.h"
#include "bench/recording/tracerecorder.h"
#include "bench/screen/printer.h"
#include "bench/screen/unixsignals.h"

namespace bench {

struct RunOptions
{
    SessionOptions session;
    Printer::Format format = Printer::Text;
    bool terse = false;
    QString control;    ///< Where other programs may act; empty for nowhere.
    QString trace;      ///< The recording to be made; empty for none.
    QString report;     ///< The page of plots to be made; empty for none.
    bool force = false; ///< They may replace a file.
    QStringList inputs; ///< What the command reads, besides the plug-in.
};

/// The options that name the plug-in, the car and the recording.
void addSessionOptions(CommandLine *line);
/// What was given for them. A mistake is told: ask CommandLine::isWrong().
RunOptions readSessionOptions(CommandLine *line);
/// The file of the plug-in that \p options name.
QString pluginFile(const SessionOptions &options);

/// A session with its recording, its witness, its output and its end on a signal of the system.
class SessionRun
{
public:
    explicit SessionRun(const RunOptions &options);

    /// Loads the plug-in. \returns an empty text, or what went wrong.
    QString open();
    /// Stops the service, prints the summaries, and tells what the host showed that is not the
    /// car's. \returns \p code, or 1 if something was lost or wrong.
    int finish(int code);

    Session &session() { return mSession; }
    Printer &printer() { return mPrinter; }
    ControlChannel &channel() { return mChannel; }
    UnixSignals &unixSignals() { return mSignals; }

private:
    const RunOptions mOptions;
    UnixSignals mSignals;
    Session mSession;
    ControlChannel mChannel;
    Printer mPrinter;
    Printer mEventPrinter; ///< For the clients of the channel.
    TraceRecorder mRecorder;
    std::unique_ptr<Witness> mWitness;
};

} // namespace bench
