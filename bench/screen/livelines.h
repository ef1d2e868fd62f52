// Lines on standard output for whoever cannot wait for their reader.
#pragma once

#include "bench/screen/outlet.h"
#include "bench/screen/printer.h"

namespace bench {

/// While the reader is behind, lines are kept, up to a megabyte. Those beyond are left out, and a
/// line in their place says how many.
class LiveLines : public QObject
{
    Q_OBJECT

public:
    explicit LiveLines(Printer::Format format);

    /// A line with its line end: a Printer's sink.
    void put(const QByteArray &line);
    /// Hands what is unread to standardOutput(), which waits for its reader.
    void finish();

private:
    void tellLeftOut();

    Outlet mOutlet;
    Printer mPrinter;
    int mLeftOut = 0;
};

} // namespace bench
