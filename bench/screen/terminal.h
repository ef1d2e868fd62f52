// The person in front of the program.
#pragma once

#include "bench/screen/unixsignals.h"

#include <QObject>
#include <QSize>
#include <QSocketNotifier>
#include <QString>
#include <QVector>

namespace bench {

/// A line on the screen, whatever its text holds. What does not fit into the screen's width is cut
/// with a mark.
struct ScreenLine
{
    enum Style { Plain, Title, Faint, Alarm };

    QString text;
    Style style = Plain;
};

/// Takes a terminal over: keys come one by one, and the screen shows what show() is given. It is
/// given back as it was by the destructor, while the program is stopped (Ctrl-Z), and when a fatal
/// signal ends it. Ctrl-C still raises SIGINT. One at a time.
class Terminal : public QObject
{
    Q_OBJECT

public:
    explicit Terminal(QObject *parent = nullptr);
    ~Terminal() override;

    /// Whether standard input and output are a terminal, and one that can move its cursor.
    static bool isAvailable();

    /// Columns and lines, asked at each call, because a window may change its size.
    QSize size() const;
    /// Draws over what was shown before. It is drawn again when the window changes its size.
    void show(const QVector<ScreenLine> &lines);

signals:
    void keyPressed(char key);

private:
    void enter();
    void leave();
    void stop();
    void draw();
    void onSignal(int number);
    void onReadable();

    const bool mColours;
    QVector<ScreenLine> mLines;
    UnixSignals mSignals;
    QSocketNotifier mNotifier;
};

} // namespace bench
