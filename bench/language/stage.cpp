#include "bench/language/stage.h"

namespace bench {

QVector<Mistake> findObstacles(const QVector<Step> &steps, int present)
{
    QVector<Mistake> mistakes;
    const auto complain = [&mistakes](const Step &step, const char *why) {
        if (mistakes.isEmpty() || mistakes.last().line != step.line)
            mistakes.append({step.line, step.column,
                             QStringLiteral("'%1' %2").arg(step.text, QLatin1String(why))});
    };
    for (const Step &step : steps) {
        if (step.needs & NeedsHost & ~present)
            complain(step, "needs the bench's own host, which is not here");
        else if (step.needs & NeedsBox & ~present)
            complain(step, "needs the virtual box, and this box is a real one");
    }
    return mistakes;
}

} // namespace bench
