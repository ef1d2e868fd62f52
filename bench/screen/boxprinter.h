// What happens at the box's end of the line, printed.
#pragma once

#include "bench/box/boxwatch.h"
#include "bench/screen/printer.h"

namespace bench {

void print(const BoxEvent &event, Printer &printer);

} // namespace bench
