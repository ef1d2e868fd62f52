// `canbench run` on a terminal: the state as a steady picture, the latest events below it, and keys
// that act on the car, the box and the host.
#pragma once

#include "bench/headunit/session.h"
#include "bench/screen/terminal.h"
#include "bench/wire/tables.h"

#include <QTimer>

namespace bench {

/// A key that acts: each is a step of the language.
struct ViewKey
{
    char key;
    const char *help;
    const char *steps; ///< Several are separated by line feeds.
};

Span<ViewKey> viewKeys();

class LiveView : public QObject
{
    Q_OBJECT

public:
    /// Takes the terminal over until it is destroyed.
    explicit LiveView(Session *session, QObject *parent = nullptr);
    ~LiveView() override;

    void show(const Event &event);
    /// A line among the events.
    void note(const QString &text);

signals:
    void quit();
    /// A key that stands for steps.
    void acted(const QString &steps);

private:
    void onKey(char key);
    void drawSoon();
    void draw();
    QString linkText() const;
    ScreenLine headLine(int columns, int helpPages) const;
    QStringList stateLines(const QSize &size) const;

    Session *const mSession;
    QtMessageHandler mMessages;
    Terminal mTerminal;
    QTimer mDrawTmr;
    QStringList mEvents; ///< The latest last.
    QString mKey = QStringLiteral("none");
    int mHelpPage = 0; ///< Of the keys, from 1; 0 for none.
};

} // namespace bench
