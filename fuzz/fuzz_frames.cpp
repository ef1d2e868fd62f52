// Well-formed frames of random types and lengths, whole or in two pieces, mixed with calls of the
// host with random arguments.
#include "comparison.h"

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    FuzzedDataProvider data(bytes, size);
    prepareProcess(data.ConsumeIntegral<quint8>() >= 0xF0);
    Comparison both(randomCar(data));
    int step = 0;
    while (data.remaining_bytes() > 0) {
        if (data.ConsumeIntegralInRange(0, 3) == 0) {
            both.call(data);
        } else {
            const QByteArray frame = randomFrame(data);
            const int split = data.ConsumeBool() ? data.ConsumeIntegralInRange(1, 260) : 0;
            if (split > 0)
                both.receive(frame.left(split));
            if (split < frame.size())
                both.receive(frame.mid(split));
        }
        both.compareJournal();
        if (++step % 4 == 0)
            both.compareState();
    }
    both.compareState();
    return 0;
}
