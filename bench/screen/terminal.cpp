#include "bench/screen/terminal.h"

#include <QSocketNotifier>

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

// Another screen, so that what was on the first one is there again afterwards; no cursor.
constexpr char kEnter[] = "\033[?1049h\033[?25l";
constexpr char kLeave[] = "\033[?25h\033[?1049l";
constexpr char kHome[] = "\033[H";
constexpr char kClearToLineEnd[] = "\033[K";
constexpr char kClearToScreenEnd[] = "\033[J";
constexpr char kReset[] = "\033[0m";

const char *escape(ScreenLine::Style style)
{
    switch (style) {
    case ScreenLine::Title:
        return "\033[1m";
    case ScreenLine::Faint:
        return "\033[2m";
    case ScreenLine::Alarm:
        return "\033[1;31m";
    case ScreenLine::Plain:
        break;
    }
    return "";
}

void put(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace

Terminal::Terminal(QObject *parent)
    : QObject(parent)
    , mColours(qEnvironmentVariableIsEmpty("NO_COLOR"))
    , mBefore(std::make_unique<termios>())
    , mNotifier(new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this))
{
    tcgetattr(STDIN_FILENO, mBefore.get());
    termios single = *mBefore;
    single.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    tcsetattr(STDIN_FILENO, TCSANOW, &single);
    put(kEnter);
    connect(mNotifier, &QSocketNotifier::activated, this, &Terminal::onReadable);
}

Terminal::~Terminal()
{
    put(kLeave);
    tcsetattr(STDIN_FILENO, TCSANOW, mBefore.get());
}

bool Terminal::isAvailable()
{
    const QByteArray kind = qgetenv("TERM");
    return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO) && !kind.isEmpty() && kind != "dumb";
}

QSize Terminal::size() const
{
    winsize window{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0)
        return {80, 24};
    return {window.ws_col, window.ws_row};
}

void Terminal::show(const QVector<ScreenLine> &lines)
{
    const QSize room = size();
    QByteArray bytes = kHome;
    const int count = std::min(lines.size(), room.height());
    for (int i = 0; i < count; ++i) {
        const ScreenLine &line = lines.at(i);
        const QByteArray text = line.text.left(room.width()).toUtf8();
        const char *style = mColours ? escape(line.style) : "";
        bytes += style + text + (*style ? kReset : "") + kClearToLineEnd;
        // A line feed on the last line would scroll the screen.
        if (i + 1 < count)
            bytes += "\r\n";
    }
    put(bytes + kClearToScreenEnd);
}

void Terminal::onReadable()
{
    char keys[32];
    const ssize_t count = ::read(STDIN_FILENO, keys, sizeof keys);
    // A terminal that is gone is readable for ever.
    if (count <= 0)
        mNotifier->setEnabled(false);
    // An escape sequence is an arrow or function key, and none of ours.
    if (count > 0 && keys[0] != '\033')
        std::for_each(keys, keys + count, [this](char key) { emit keyPressed(key); });
}

} // namespace bench
