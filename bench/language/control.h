// A conversation with a program that acts on the bench while it runs.
#pragma once

#include "bench/language/runner.h"

namespace bench {

/// Takes a line, does the step that it is, and answers with one line:
///
///     ok              the step is done, or the expectation is met
///     ok VALUE        to `get [car] NAME`, as a person reads it
///     failed: TEXT    the expectation is not met
///     error: TEXT     nothing was done, and why
///
/// `events` asks for what happens from now on. The steps of several conversations on one stage are
/// done side by side.
class Control : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxLine = 64 * 1024; ///< Bytes.

    explicit Control(const Stage &stage, QObject *parent = nullptr);

    /// The next line, without its line end; not while busy.
    void take(const QByteArray &line);
    /// In place of a line of more than kMaxLine.
    void takeTooLong();
    /// A step is being done.
    bool isBusy() const { return mBusy; }
    bool wantsEvents() const { return mWantsEvents; }

signals:
    /// Without a line end; what is in it may be of any origin.
    void answered(const QString &answer);
    void said(const QString &text);

private:
    void answerGet(LineReader &line);
    void doStep(const QString &text);
    void onFinished(Runner::Result result);

    const Stage mStage;
    Runner mRunner;
    bool mBusy = false;
    bool mWantsEvents = false;
};

} // namespace bench
