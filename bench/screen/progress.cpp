#include "bench/screen/progress.h"

#include <QByteArray>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace bench {

namespace {

bool isTerminal()
{
    const QByteArray kind = qgetenv("TERM");
    return isatty(STDERR_FILENO) && !kind.isEmpty() && kind != "dumb";
}

} // namespace

Progress::Progress()
    : mVisible(isTerminal())
{
}

void Progress::show(double elapsed, std::optional<double> total)
{
    if (!mVisible)
        return;
    clear();
    mShown = true;
    if (total)
        std::fprintf(stderr, "%.1f s of %.1f s, %.1f s left", std::min(elapsed, *total), *total,
                     std::max(0.0, *total - elapsed));
    else
        std::fprintf(stderr, "%.1f s, until Ctrl-C", elapsed);
}

void Progress::showShare(double share)
{
    const int percent = static_cast<int>(100 * share);
    if (!mVisible || percent == mPercent)
        return;
    clear();
    mShown = true;
    mPercent = percent;
    std::fprintf(stderr, "%d %%", percent);
}

void Progress::clear()
{
    if (!mShown)
        return;
    mShown = false;
    std::fputs("\r\033[K", stderr);
}

} // namespace bench
