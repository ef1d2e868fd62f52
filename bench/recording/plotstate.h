// What the host sees, for the page of plots.
#pragma once

#include "bench/headunit/session.h"
#include "bench/recording/plotpage.h"

namespace bench {

/// All values as they are, at \p time, in microseconds.
void plotState(const StateWatch &state, qint64 time, PlotPage *page);
/// A signal, and the values that changed with it.
void plotEvent(const Event &event, PlotPage *page);

} // namespace bench
