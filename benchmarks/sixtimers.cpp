// A plug-in with six timers and nothing else: what loading one costs at least.
#include <QTimer>

class SixTimers : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.quendal.CanServicePlugin")

public:
    /// Starts one of the timers, as the service's first start does.
    Q_INVOKABLE void start() { mTimers[0].start(2000); }

private:
    QTimer mTimers[6];
};

#include "sixtimers.moc"
