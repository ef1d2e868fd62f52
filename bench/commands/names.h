// The list of names that more than one command shows.
#pragma once

#include <QString>

namespace bench {

/// Lists the names with \p text in them. \param ofCar only those that `set` takes.
/// \returns an exit code: Failed if there is none.
int sayNames(const QString &text, bool json, bool ofCar);

} // namespace bench
