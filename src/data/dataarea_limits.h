// Settings of the data area that messages quote.
#pragma once
#include <cstdint>

namespace korvu {
extern int32_t matsize; // `set matsize`, default 400
}
