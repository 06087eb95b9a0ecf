// Process entry, staged start-up and shutdown.
#pragma once

namespace korvu {
int korvu_main(int argc, char** argv);
}
