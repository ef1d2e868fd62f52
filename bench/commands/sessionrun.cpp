#include "bench/commands/sessionrun.h"

#include "bench/headunit/pluginfile.h"

#include <QDateTime>

namespace bench {

namespace {

constexpr int kSettleMs = 1000;

} // namespace

void addSessionOptions(CommandLine *line)
{
    line->addOptions({
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"seed", "The same seed gives the same faults (default 1).", "N"},
        {"trace", "Record the serial line to the trace FILE.", "FILE"},
        {"force", "Replace FILE if it exists."},
        {"json", "One JSON object a line."},
        {"log", "Show the service's own log on standard error."},
    });
}

RunOptions readSessionOptions(CommandLine *line)
{
    RunOptions options;
    options.session.plugin = line->value("plugin");
    options.session.seed = static_cast<quint32>(line->number("seed", 1, 0, 0x7FFFFFFF));
    options.format = line->isSet("json") ? Printer::Json : Printer::Text;
    options.force = line->isSet("force");
    if (line->isSet("trace") && line->value("trace").isEmpty())
        line->complain("--trace needs the name of a file");
    options.trace = line->value("trace");
    return options;
}

QString pluginFile(const SessionOptions &options)
{
    return options.plugin.isEmpty() ? defaultPluginFile() : options.plugin;
}

SessionRun::SessionRun(const RunOptions &options)
    : mOptions(options)
    , mSession(options.session)
    , mChannel(Stage(mSession))
    , mPrinter(printerFor(options.control, options.format))
    , mEventPrinter(Printer::Json, [this](const QByteArray &json) { mChannel.publish(json); })
{
    mPrinter.setTerse(options.terse);
    for (Printer *printer : {&mPrinter, &mEventPrinter})
        printer->setOrigin(QDateTime::currentMSecsSinceEpoch() * 1000 -
                           mSession.clock().microseconds());
    QObject::connect(&mSession, &Session::happened, &mChannel, [this](const Event &event) {
        if (mChannel.hasListeners())
            mEventPrinter.print(event, mSession.state());
    });
    if (mSession.boxEnd())
        mWitness = std::make_unique<Witness>(&mSession);
}

QString SessionRun::open()
{
    if (!mOptions.trace.isEmpty()) {
        const QString &device = mOptions.session.device;
        const OutputTarget target{mOptions.trace,
                                  QStringList(pluginFile(mOptions.session)) + mOptions.inputs,
                                  mOptions.force};
        const QString problem =
            mRecorder.start(target, device.isEmpty() ? QStringLiteral("canbox") : device,
                            {mOptions.session.carModel, mOptions.session.carIndex});
        if (!problem.isEmpty())
            return problem;
        mRecorder.watchPorts();
    }
    return mSession.open();
}

int SessionRun::finish(int code)
{
    QStringList differences;
    if (mWitness && code == Done && mSignals.latest() == 0 && mWitness->settle(kSettleMs))
        differences = mWitness->differences();
    mSession.stop();
    mPrinter.print(mSession.summary(), mSession.seconds());
    if (mSession.boxEnd() && mSession.boxEnd()->faults().wasUsed())
        mPrinter.print("faults", mSession.boxEnd()->faults().summary());
    bool isWrong = !differences.isEmpty();
    if (mWitness) {
        isWrong = isWrong || !mWitness->history().unexplained.isEmpty();
        if (isWrong || mOptions.format == Printer::Json || mSession.boxEnd()->faults().wasUsed())
            mPrinter.print("values", mWitness->summary(differences));
        for (const QString &value : mWitness->history().unexplained)
            fail(QStringLiteral("%1 was shown, which no frame said").arg(value));
    }
    for (const QString &difference : qAsConst(differences))
        fail(QStringLiteral("the host does not know the car: %1").arg(difference));
    if (!mRecorder.problem().isEmpty())
        isWrong = fail(mRecorder.problem()) != Done;
    return isWrong && code == Done ? int(Failed) : code;
}

} // namespace bench
