// The person in front of the program.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSize>
#include <QStringList>
#include <QVector>

#include <memory>

class QSocketNotifier;
struct termios;

namespace bench {

/// A line on the screen; it is cut at the screen's width.
struct ScreenLine
{
    enum Style { Plain, Title, Faint, Alarm };

    QString text;
    Style style = Plain;
};

/// Takes a terminal over: keys come one by one, and the screen shows what show() is given. The
/// destructor gives the terminal back as it was. Ctrl-C still raises SIGINT.
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
    /// Draws over what was shown before.
    void show(const QVector<ScreenLine> &lines);

signals:
    void keyPressed(char key);

private:
    void onReadable();

    const bool mColours;
    std::unique_ptr<termios> mBefore;
    QSocketNotifier *mNotifier;
};

} // namespace bench
