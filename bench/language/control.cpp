#include "bench/language/control.h"

#include "bench/language/parser.h"

namespace bench {

namespace {

QString error(const QString &text) { return QStringLiteral("error: ") + text; }

} // namespace

Control::Control(const Stage &stage, QObject *parent)
    : QObject(parent)
    , mStage(stage)
    , mRunner(stage, 1)
{
    connect(&mRunner, &Runner::said, this, &Control::said);
    connect(&mRunner, &Runner::finished, this, &Control::onFinished);
}

void Control::takeTooLong()
{
    emit answered(error(QStringLiteral("this line is longer than %1 bytes").arg(kMaxLine)));
}

void Control::take(const QByteArray &line)
{
    QString text;
    Mistake mistake{1, 0, {}};
    if (!readUtf8(line, &text))
        return answered(error(QStringLiteral("this line is not UTF-8 text")));
    const QVector<Token> tokens = cutLine(text, &mistake);
    if (!mistake.text.isEmpty())
        return answered(error(mistake.text));
    if (tokens.isEmpty())
        return answered(QStringLiteral("ok"));
    LineReader reader(tokens, 1);
    if (reader.accept("get"))
        return answerGet(reader);
    if (!reader.accept("events"))
        return doStep(text);
    reader.end();
    if (reader.failed())
        return answered(error(reader.mistake().text));
    mWantsEvents = true;
    emit answered(QStringLiteral("ok"));
}

// One name may be a getter's and a value's of the car. The host comes first, where it is ours.
void Control::answerGet(LineReader &line)
{
    const bool ofCar = line.accept("car");
    const QString name = line.text("the name of a getter or of a car value");
    line.end();
    if (line.failed())
        return answered(error(line.mistake().text));
    const auto isHere = [this](const Observable &found) {
        return found.isKnown() && !(found.needs & ~mStage.present());
    };
    Observable found = Observable::find(name);
    if (ofCar || !isHere(found))
        found = Observable::ofCar(name);
    if (isHere(found))
        return answered(QStringLiteral("ok ") + found.text(mStage));
    if (found.isKnown() || Observable::find(name).isKnown())
        return answered(error(QStringLiteral("'%1' cannot be seen here: %2 is not the bench's own")
                                  .arg(name, mStage.host ? "the box" : "the host")));
    emit answered(error(unknownName(ofCar, name)));
}

void Control::doStep(const QString &text)
{
    Scenario scenario;
    ParseContext context{&scenario, mStage.host && mStage.host->isStarted(),
                         mStage.box && mStage.box->isPlugged()};
    parseLine(text, 1, context);
    if (scenario.mistakes.isEmpty())
        scenario.mistakes = findObstacles(scenario.steps, mStage.present());
    if (!scenario.mistakes.isEmpty())
        return answered(error(scenario.mistakes.first().text));
    if (!context.repetitions.isEmpty())
        return answered(error(QStringLiteral("only a scenario can repeat steps")));
    if (scenario.steps.isEmpty())
        return answered(error(QStringLiteral("the car model is chosen at the start, by --model")));
    mBusy = true;
    mRunner.run(scenario.steps);
}

void Control::onFinished(Runner::Result result)
{
    mBusy = false;
    emit answered(result == Runner::Passed  ? QStringLiteral("ok")
                  : result == Runner::Unmet ? QStringLiteral("failed: ") + mRunner.failure()
                                            : error(mRunner.failure()));
}

} // namespace bench
