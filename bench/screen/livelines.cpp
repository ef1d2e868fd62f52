#include "bench/screen/livelines.h"

#include "bench/screen/output.h"

#include <unistd.h>
#include <utility>

namespace bench {

namespace {

constexpr int kMostUnread = 1024 * 1024; // bytes

} // namespace

LiveLines::LiveLines(Printer::Format format)
    : mOutlet(STDOUT_FILENO)
    , mPrinter(format, [this](const QByteArray &line) { mOutlet.write(line); })
{
    connect(&mOutlet, &Outlet::drained, this, &LiveLines::tellLeftOut);
    connect(&mOutlet, &Outlet::failed, this, [this] {
        standardOutput().bytes(mOutlet.takeUnread()); // It meets the same error, and tells it.
        standardOutput().flush();
    });
}

// Once one line is left out, all are until the reader has caught up: a gap, and not a sieve.
void LiveLines::put(const QByteArray &line)
{
    if (standardOutput().isLost())
        return;
    if (mLeftOut > 0 || mOutlet.unread() + line.size() > kMostUnread)
        ++mLeftOut;
    else
        mOutlet.write(line);
}

void LiveLines::tellLeftOut()
{
    const int count = std::exchange(mLeftOut, 0);
    if (count > 0)
        mPrinter.outcome(
            QStringLiteral("-- %1 lines are left out here, because nobody read them").arg(count),
            {{"leftOut", count}});
}

void LiveLines::finish()
{
    tellLeftOut();
    standardOutput().bytes(mOutlet.takeUnread());
}

} // namespace bench
