// A decoded recording on standard output, as text, JSON or CSV.
#pragma once

#include "decode.h"
#include "eventprinter.h"

namespace bench {

class DecodePrinter
{
public:
    enum Format { Text, Json, Csv };

    /// Prints what \p decoder finds, a line each, from now on; CSV begins with its heading.
    DecodePrinter(TraceDecoder *decoder, Format format);

    /// The counts, at the end; nothing in CSV.
    void printSummary();

private:
    void print(bool fromBox, const LineItem &item);
    void printCsv(const Event &event);

    TraceDecoder *const mDecoder;
    const Format mFormat;
    EventPrinter mEvents;
};

} // namespace bench
