// A stream of bytes in random chunks, with the parse-out time-out between some of them. The first
// byte of the input chooses the chunks.
#include "comparison.h"

#include <random>

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    if (size == 0)
        return 0;
    prepareProcess(*data >= 0xF0);
    std::minstd_rand random(*data + 1U);
    QByteArray stream(reinterpret_cast<const char *>(data) + 1, static_cast<int>(size) - 1);

    Comparison both(static_cast<int>(random() % 128));
    int step = 0;
    while (!stream.isEmpty()) {
        const int chunk = 1 + static_cast<int>(random() % (1U << random() % 8));
        both.receive(stream.left(chunk));
        stream.remove(0, chunk);
        if (random() % 16 == 0 && both.model.running[ServiceModel::ParseOut])
            both.fire(ServiceModel::ParseOut);
        both.compareJournal();
        if (++step % 4 == 0)
            both.compareState();
    }
    both.compareState();
    return 0;
}
