#include "bench/language/closestname.h"

#include <QVector>

#include <algorithm>

namespace bench {

int editDistance(const QString &one, const QString &other)
{
    // The last three rows of the table of distances between the beginnings of the two texts.
    QVector<int> beforeLast, last(other.size() + 1), row(other.size() + 1);
    for (int k = 0; k <= other.size(); ++k)
        last[k] = k;
    for (int i = 1; i <= one.size(); ++i) {
        row[0] = i;
        for (int k = 1; k <= other.size(); ++k) {
            const bool same = one.at(i - 1) == other.at(k - 1);
            row[k] = std::min({last[k] + 1, row[k - 1] + 1, last[k - 1] + (same ? 0 : 1)});
            if (i > 1 && k > 1 && one.at(i - 1) == other.at(k - 2) &&
                one.at(i - 2) == other.at(k - 1))
                row[k] = std::min(row[k], beforeLast[k - 2] + 1);
        }
        beforeLast = last;
        last = row;
    }
    return last.last();
}

QString didYouMean(const QString &name, const QStringList &candidates)
{
    constexpr int kLongestName = 64; // What is longer is no slip of the finger.
    if (name.size() > kLongestName)
        return {};
    QString best;
    int least = std::max(1, name.size() / 3) + 1;
    for (const QString &candidate : candidates) {
        const int distance = editDistance(name.toLower(), candidate.toLower());
        if (distance < least) {
            least = distance;
            best = candidate;
        }
    }
    return best.isEmpty() ? QString() : QStringLiteral("; did you mean '%1'?").arg(best);
}

QString possible(const QString &name, const QStringList &candidates, const QString &others)
{
    return QStringLiteral("; possible: ") + others + candidates.join(QStringLiteral(", ")) +
           didYouMean(name, candidates);
}

} // namespace bench
