#include "bench/screen/terminal.h"

#include "bench/screen/output.h"

#include <algorithm>
#include <csignal>
#include <iterator>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace bench {

namespace {

// Another screen, so that what was on the first one is there again afterwards; no cursor, and what
// is wider than it seems (a CJK character) does not run into the next line.
constexpr char kEnter[] = "\033[?1049h\033[?25l\033[?7l";
constexpr char kLeave[] = "\033[?7h\033[?25h\033[?1049l";
constexpr char kHome[] = "\033[H";
constexpr char kClearToLineEnd[] = "\033[K"; // Before the text: behind a full line it would take
                                             // the last column away.
constexpr char kClearToScreenEnd[] = "\033[J";
constexpr const char *kStyles[] = {"", "\033[1m", "\033[2m", "\033[1;31m"};
constexpr char kReset[] = "\033[0m";
constexpr QChar kCut = 0x2026; // An ellipsis.

// They end the program, but not with the terminal in its hands.
constexpr int kFatal[] = {SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGFPE, SIGSEGV};

// For the signal handler, which reaches nothing else.
termios theBefore;
struct sigaction theActions[std::size(kFatal)];

void giveBack(int number)
{
    [[maybe_unused]] const ssize_t count = write(STDOUT_FILENO, kLeave, sizeof kLeave - 1);
    tcsetattr(STDIN_FILENO, TCSANOW, &theBefore);
    static_cast<void>(raise(number)); // Its default action is in place again.
}

void put(const QByteArray &bytes)
{
    standardOutput().bytes(bytes);
    standardOutput().flush();
}

// Whole characters, no more than there are columns.
QString fitting(const QString &text, int columns)
{
    QString result = printable(text);
    if (result.size() <= columns)
        return result;
    const auto characters = result.toUcs4();
    if (characters.size() <= columns)
        return result;
    return QString::fromUcs4(characters.constData(), std::max(0, columns - 1)) + kCut;
}

} // namespace

Terminal::Terminal(QObject *parent)
    : QObject(parent)
    , mColours(qEnvironmentVariableIsEmpty("NO_COLOR"))
    , mSignals({SIGTSTP, SIGCONT, SIGWINCH})
    , mNotifier(STDIN_FILENO, QSocketNotifier::Read)
{
    tcgetattr(STDIN_FILENO, &theBefore);
    struct sigaction action = {};
    action.sa_handler = giveBack;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < std::size(kFatal); ++i)
        sigaction(kFatal[i], &action, &theActions[i]);
    enter();
    connect(&mSignals, &UnixSignals::caught, this, &Terminal::onSignal);
    connect(&mNotifier, &QSocketNotifier::activated, this, &Terminal::onReadable);
}

Terminal::~Terminal()
{
    leave();
    for (std::size_t i = 0; i < std::size(kFatal); ++i)
        sigaction(kFatal[i], &theActions[i], nullptr);
}

bool Terminal::isAvailable()
{
    const QByteArray kind = qgetenv("TERM");
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && !kind.isEmpty() &&
           kind != "dumb";
}

QSize Terminal::size() const
{
    winsize window{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0)
        return {80, 24};
    return {window.ws_col, window.ws_row};
}

void Terminal::show(const QVector<ScreenLine> &lines)
{
    mLines = lines;
    draw();
}

void Terminal::enter()
{
    termios single = theBefore;
    single.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    single.c_cc[VMIN] = 1;
    single.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &single);
    put(kEnter);
}

void Terminal::leave()
{
    put(kLeave);
    tcsetattr(STDIN_FILENO, TCSANOW, &theBefore);
}

void Terminal::stop()
{
    leave();
    sigset_t stopping;
    sigemptyset(&stopping);
    sigaddset(&stopping, SIGTSTP);
    static_cast<void>(raise(SIGTSTP));
    pthread_sigmask(SIG_UNBLOCK, &stopping, nullptr); // Stops here, where there is a shell.
    pthread_sigmask(SIG_BLOCK, &stopping, nullptr);
    enter();
}

void Terminal::draw()
{
    const QSize room = size();
    QByteArray bytes = kHome;
    const int count = std::min(mLines.size(), room.height());
    for (int i = 0; i < count; ++i) {
        const ScreenLine &line = mLines.at(i);
        const char *style = mColours ? kStyles[line.style] : "";
        bytes += kClearToLineEnd;
        bytes += style + fitting(line.text, room.width()).toUtf8() + (*style ? kReset : "");
        // A line feed on the last line would scroll the screen.
        if (i + 1 < room.height())
            bytes += "\r\n";
    }
    put(count < room.height() ? bytes + kClearToScreenEnd : bytes);
}

void Terminal::onSignal(int number)
{
    if (number == SIGTSTP)
        stop();
    else if (number == SIGCONT)
        enter(); // The shell had the terminal, if something else than Ctrl-Z stopped the program.
    draw();
}

void Terminal::onReadable()
{
    char keys[32];
    const ssize_t count = ::read(STDIN_FILENO, keys, sizeof keys);
    // A terminal that is gone is readable for ever.
    if (count <= 0)
        mNotifier.setEnabled(false);
    // An escape sequence is an arrow or function key, and none of ours.
    if (count > 0 && keys[0] != '\033')
        std::for_each(keys, keys + count, [this](char key) { emit keyPressed(key); });
}

} // namespace bench
