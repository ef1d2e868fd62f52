// The name that was probably meant.
#pragma once

#include <QStringList>

namespace bench {

/// How many letters have to be inserted, removed, replaced or swapped with their neighbour to make
/// one text of the other.
int editDistance(const QString &one, const QString &other);

/// `; did you mean 'NAME'?` with the candidate nearest to \p name, or an empty text when none is
/// near: at most one edit per three letters.
QString didYouMean(const QString &name, const QStringList &candidates);

/// `; possible: A, B`, with what didYouMean() says. \param others before the candidates.
QString possible(const QString &name, const QStringList &candidates, const QString &others = {});

} // namespace bench
