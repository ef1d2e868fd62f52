// Between a head unit and its box.
#include "bench/box/serialdevice.h"
#include "bench/commands/controlchannel.h"
#include "bench/commands/sessionrun.h"
#include "bench/language/parser.h"
#include "bench/screen/livelines.h"
#include "bench/wire/linecutter.h"
#include "bench/wire/linespoiler.h"
#include "bench/wire/reports.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <optional>

namespace bench {

namespace {

/// How long chunks were under way here, in microseconds.
class Delays
{
public:
    void add(qint64 microseconds)
    {
        ++mCounts[static_cast<std::size_t>(std::min<qint64>(microseconds, kLast))];
        ++mTotal;
        mLongest = std::max(mLongest, microseconds);
    }

    QVector<QPair<QString, qint64>> summary() const
    {
        return {{QStringLiteral("chunks"), mTotal},
                {QStringLiteral("p50"), percentile(50)},
                {QStringLiteral("p99"), percentile(99)},
                {QStringLiteral("max"), mLongest}};
    }

private:
    static constexpr int kLast = 100'000; ///< And above.

    qint64 percentile(int share) const
    {
        qint64 below = 0;
        for (int delay = 0; delay < kLast; ++delay) {
            below += mCounts[static_cast<std::size_t>(delay)];
            if (below * 100 >= mTotal * share)
                return delay;
        }
        return mLongest;
    }

    std::array<qint64, kLast + 1> mCounts{};
    qint64 mTotal = 0;
    qint64 mLongest = 0;
};

/// The two lines and what passes between them.
class Tap
{
public:
    Tap(const QString &host, const QString &box, Printer::Format format, const QString &control)
        : mHost(host)
        , mBox(box)
        , mControl(control)
        , mLines(format)
        , mPrinter(
              printerFor(control, format, [this](const QByteArray &line) { mLines.put(line); }))
        , mEventPrinter(Printer::Json, [this](const QByteArray &json) { mChannel.publish(json); })
    {
        for (Printer *printer : {&mPrinter, &mEventPrinter})
            printer->setOrigin(QDateTime::currentMSecsSinceEpoch() * 1000 - mClock.microseconds());
        QObject::connect(&*mSignals, &UnixSignals::caught,
                         [](int number) { QCoreApplication::exit(SignalBase + number); });
        QObject::connect(&mChannel, &ControlChannel::ended, [] { QCoreApplication::exit(Done); });
        QObject::connect(&mChannel, &ControlChannel::said,
                         [this](const QString &text) { mPrinter.heading(text, seconds()); });
        connectLines(mBox, true);
        connectLines(mHost, false);
    }

    QString open()
    {
        for (SerialDevice *line : {&mHost, &mBox})
            if (!line->plug())
                return line->errorString();
        return {};
    }

    /// Spoils a direction from now on.
    /// \returns an empty text, or a fault that cannot be had here.
    QString spoil(bool isFromBox, const FaultPlan &plan, quint32 seed)
    {
        auto &spoiler = isFromBox ? mSpoilerFromBox : mSpoilerToBox;
        spoiler = std::make_unique<LineSpoiler>(seed);
        QObject::connect(spoiler.get(), &LineSpoiler::passed, &mHost,
                         [this, isFromBox](const QByteArray &bytes) {
                             send(isFromBox, bytes);
                             pass(isFromBox, bytes);
                         });
        return spoiler->setPlan(plan);
    }

    TraceRecorder &recorder() { return mRecorder; }
    ControlChannel &channel() { return mChannel; }

    /// Gives the lines back and tells what there was. What is not read yet is waited for, and a
    /// signal ends that as it ends any program.
    int finish(int code)
    {
        for (SerialDevice *line : {&mHost, &mBox}) {
            line->blockSignals(true);
            line->unplug();
        }
        const double end = seconds();
        mChannel.close();
        mSignals.reset();
        mLines.finish();

        Summary summary;
        summary.fromBox = mFromBox.counts();
        summary.toBox = mToBox.counts();
        Printer printer = printerFor(mControl, mPrinter.format());
        printer.print(summary, end);
        printer.print("delay in us", mDelays->summary());
        if (mSpoilerFromBox)
            printer.print("faults from the box", mSpoilerFromBox->summary());
        if (mSpoilerToBox)
            printer.print("faults to the box", mSpoilerToBox->summary());
        if (mBytesForNobody > 0)
            printer.print("lost bytes", {{"for a side that was away", mBytesForNobody}});
        const qint64 lost = mHost.lostBytes() + mBox.lostBytes();
        if (lost > 0)
            code =
                fail(QStringLiteral("%1 bytes are lost, because the other side did not take them")
                         .arg(lost));
        if (!mRecorder.problem().isEmpty() && code == Done)
            return fail(mRecorder.problem());
        return code;
    }

private:
    double seconds() const { return static_cast<double>(mClock.nanoseconds()) / 1e9; }

    void send(bool isFromBox, const QByteArray &bytes)
    {
        SerialDevice &to = isFromBox ? mHost : mBox;
        if (!to.isPlugged())
            mBytesForNobody += bytes.size();
        to.write(bytes);
    }

    // What a side has got: recorded and shown.
    void pass(bool isFromBox, const QByteArray &bytes)
    {
        mRecorder.record(isFromBox, bytes);
        (isFromBox ? mFromBox : mToBox).feed(bytes, mClock.microseconds());
    }

    // The bytes go on before anything else is done with them.
    void connectLines(SerialDevice &from, bool isFromBox)
    {
        LineCutter &cutter = isFromBox ? mFromBox : mToBox;
        QObject::connect(&from, &SerialLine::received, [this, isFromBox](const QByteArray &bytes) {
            const qint64 begin = mClock.nanoseconds();
            if (const auto &spoiler = isFromBox ? mSpoilerFromBox : mSpoilerToBox)
                return spoiler->feed(bytes, begin / 1000);
            send(isFromBox, bytes);
            mDelays->add((mClock.nanoseconds() - begin) / 1000);
            pass(isFromBox, bytes);
        });
        QObject::connect(&cutter, &LineCutter::item, [this, isFromBox](const LineItem &item) {
            mPrinter.print(isFromBox, item, seconds());
            if (mChannel.hasListeners())
                mEventPrinter.print(isFromBox, item, seconds());
        });
        QObject::connect(&from, &SerialLine::pluggedChanged, [this, &cutter, isFromBox](bool on) {
            cutter.reset();
            const QString text =
                QStringLiteral("%1 %2").arg(QLatin1String(isFromBox ? "the box" : "the head unit"),
                                            QLatin1String(on ? "is there" : "has gone"));
            mPrinter.note(seconds(), "line", text, {{"text", text}});
            mRecorder.comment(text);
        });
    }

    SteadyClock mClock;
    std::optional<UnixSignals> mSignals{std::in_place};
    SerialDevice mHost, mBox;
    qint64 mBytesForNobody = 0; ///< That came while the other side was away.
    LineCutter mFromBox{LineCutter::Host};
    LineCutter mToBox{LineCutter::Box};
    std::unique_ptr<LineSpoiler> mSpoilerFromBox, mSpoilerToBox; ///< Null: as it is.
    const QString mControl;
    ControlChannel mChannel{Stage()};
    LiveLines mLines;
    Printer mPrinter;
    Printer mEventPrinter;
    TraceRecorder mRecorder;
    std::unique_ptr<Delays> mDelays = std::make_unique<Delays>();
};

// The faults of an option. \returns an empty text, or what is wrong with them.
QString readPlan(const QString &text, FaultPlan *plan)
{
    Scenario scenario;
    ParseContext context{&scenario};
    const QString problem = readFaultOption(text, context);
    for (const Step &step : qAsConst(scenario.steps))
        if (const auto *rates = std::get_if<steps::FaultRates>(&step.action))
            for (const auto &rate : rates->rates)
                plan->rate(rate.first) = rate.second;
    return problem;
}

} // namespace

int tapCommand(const QStringList &arguments)
{
    CommandLine line(
        "tap", "[options] HOST-DEVICE BOX-DEVICE",
        "Sits between a head unit and its box: passes every byte on, unchanged and at once,\n"
        "and shows what passes. Either side may go and come back. Ends with what there was,\n"
        "and with the delay from the reading of bytes to their writing.",
        "canbench tap /dev/ttyUSB0 /dev/ttyUSB1\n"
        "canbench tap --trace trip.trace /dev/ttyUSB0 /dev/ttyUSB1");
    line.addPositionalArgument("HOST-DEVICE", "The serial device that the head unit is at.");
    line.addPositionalArgument("BOX-DEVICE", "The serial device that the box is at.");
    line.addOptions({
        {"duration", "End after S seconds; without it, on Ctrl-C.", "S"},
        {"faults",
         "Spoil what comes from the box: KIND[=RATE],... with faults of bytes and frames, "
         "bit-flip to flood; RATE is a probability per frame (default 0.02).",
         "KINDS"},
        {"faults-to-box", "The same for what goes to the box.", "KINDS"},
        {"seed", "The same seed gives the same faults (default 1).", "N"},
        {"control", kControlHelp, "PATH"},
        {"trace", "Record the serial line to the trace FILE.", "FILE"},
        {"force", "Replace the trace FILE if it exists."},
        {"json", "One JSON object a line."},
    });
    if (const auto code = line.read(arguments, 2))
        return *code;
    const double duration = line.seconds("duration", 0, 0.001, 1e6);
    const auto seed = static_cast<quint32>(line.number("seed", 1, 0, 0x7FFFFFFF));
    if (line.isWrong())
        return WrongUsage;
    for (const char *option : {"control", "trace"})
        if (line.isSet(option) && line.value(option).isEmpty())
            return line.complain(QStringLiteral("--%1 needs a name").arg(option));
    const QStringList devices = line.positionalArguments();
    if (devices.size() < 2)
        return line.complain("name the device of the head unit and that of the box");
    const QString first = QFileInfo(devices.first()).canonicalFilePath(); // Empty for none.
    if (devices.first() == devices.last() ||
        (!first.isEmpty() && first == QFileInfo(devices.last()).canonicalFilePath()))
        return line.complain("the head unit and the box are at two devices, not at one");

    const QString control = line.value("control");
    Tap tap(devices.first(), devices.last(), line.isSet("json") ? Printer::Json : Printer::Text,
            control);
    for (const char *option : {"faults", "faults-to-box"}) {
        FaultPlan plan;
        if (!line.isSet(option))
            continue;
        const QString wrong = readPlan(line.value(option), &plan);
        if (!wrong.isEmpty())
            return line.complain(wrong);
        const QString other = tap.spoil(isSameText(option, "faults"), plan, seed);
        if (!other.isEmpty())
            return line.complain(QStringLiteral("--%1 cannot have '%2' in a line between two "
                                                "others; it has faults of bytes and frames: %3")
                                     .arg(QLatin1String(option), other,
                                          faultNames()
                                              .mid(0, static_cast<int>(Fault::SplitWrite))
                                              .join(QStringLiteral(", "))));
    }
    QString problem = control.isEmpty() ? QString() : tap.channel().open(control);
    if (!problem.isEmpty()) {
        fail(problem);
        return WrongUsage;
    }
    if (line.isSet("trace"))
        problem = tap.recorder().start({line.value("trace"), devices, line.isSet("force")},
                                       devices.last(), {1, 1});
    if (problem.isEmpty())
        problem = tap.open();
    if (!problem.isEmpty())
        return fail(problem);
    if (duration > 0)
        QTimer::singleShot(static_cast<int>(duration * 1000), [] { QCoreApplication::exit(Done); });
    return tap.finish(QCoreApplication::exec());
}

} // namespace bench
