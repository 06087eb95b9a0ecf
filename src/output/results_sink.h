// The results window of the console edition: rendered lines go to standard
// output, or to the batch log.
#pragma once
#include "output/ptl.h"

namespace korvu {

void results_sink_attach(Ptl* p);
void results_sink_to_fd(int fd);
void results_sink_close();

} // namespace korvu
