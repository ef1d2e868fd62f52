#include "bench/recording/pagerecorder.h"

#include "bench/headunit/session.h"

#include <QDateTime>

namespace bench {

PageRecorder::PageRecorder(Session *session)
    : mSession(session)
{
    connect(&mFromBox, &LineCutter::item, this,
            [this](const LineItem &item) { mPage.item(now(), true, item); });
    connect(&mToBox, &LineCutter::item, this,
            [this](const LineItem &item) { mPage.item(now(), false, item); });
}

QString PageRecorder::start(const OutputTarget &target, const QString &title)
{
    const QString problem = mFile.open(target, OutputFile::Whole);
    if (!problem.isEmpty())
        return problem;
    mPage.setAbout(
        {title, mSession->options().carModel, QDateTime::currentMSecsSinceEpoch() * 1000 - now()});
    connect(mSession, &Session::carried, this, &PageRecorder::take);
    connect(mSession, &Session::happened, this, &PageRecorder::onHappened);
    return {};
}

void PageRecorder::say(const QString &text) { mPage.say(now(), text); }

void PageRecorder::unmet(const QString &text) { mPage.unmet(now(), text); }

QString PageRecorder::finish()
{
    mFromBox.finish();
    mToBox.finish();
    const QString problem = mPage.write(mFile.device());
    return problem.isEmpty() ? mFile.commit() : problem;
}

qint64 PageRecorder::now() const { return mSession->clock().microseconds(); }

void PageRecorder::onHappened(const Event &event)
{
    if (!mHasState && mSession->state().isWatching()) {
        mHasState = true;
        mPage.state(mSession->state(), now());
    }
    mPage.event(event);
}

void PageRecorder::take(bool fromBox, const QByteArray &bytes)
{
    const QString &device = mSession->options().device;
    const qint64 time = now();
    mPage.chunk(time, device.isEmpty() ? QByteArray("canbox") : device.toLatin1(), fromBox,
                bytes.size());
    (fromBox ? mFromBox : mToBox).feed(bytes, time);
}

} // namespace bench
