// A page of plots of a session while it runs.
#pragma once

#include "bench/recording/outputfile.h"
#include "bench/recording/plotpage.h"

namespace bench {

class Session;
struct Event;

/// Of what the serial ports of this process carry, and of what the host of \p session hears.
class PageRecorder : public QObject
{
public:
    explicit PageRecorder(Session *session);

    /// \returns an empty text, or why \p target cannot be written.
    QString start(const OutputTarget &target, const QString &title);
    /// A heading of the scenario.
    void say(const QString &text);
    /// An expectation that was not met.
    void unmet(const QString &text);
    /// Writes the page. \returns an empty text, or why there is none.
    QString finish();

private:
    qint64 now() const;
    void onHappened(const Event &event);
    void take(bool fromBox, const QByteArray &bytes);

    Session *const mSession;
    LineCutter mFromBox{LineCutter::Host};
    LineCutter mToBox{LineCutter::Box};
    PlotPage mPage;
    OutputFile mFile;
    bool mHasState = false; ///< The values are there since the service was started.
};

} // namespace bench
